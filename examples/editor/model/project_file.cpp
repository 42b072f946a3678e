#include "project_file.h"

#include "editor_error.h"

#include <torv/songs/input_file.h>
#include <torv/songs/song_error.h>
#include <torv/torv.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace editor {

namespace {

using Json = nlohmann::ordered_json; // keys stay in the order in which a reader wants them

constexpr int kVersion = 1;
constexpr const char* kVersionKey = "torv-editor";
constexpr const char* kIconKeys[kIconSlots] = {"attack", "release", "transition", "vibrato"};
constexpr const char* kCurveKeys[kCurveKinds] = {"dynamics", "pitch"};
constexpr size_t kMostBytes = 64 << 20;
constexpr size_t kMostItems = 1 << 20; // of a list besides notes and tracks
constexpr int64_t kLongestTempo = 0xFFFFFF;

Json Pair(uint32_t tick, const Json& value) { return Json::array({tick, value}); }

Json NoteJson(const Note& note) {
    Json json{{"tick", note.tick}, {"length", note.length}, {"key", note.key}, {"velocity", note.velocity}};
    if (!note.lyric.empty())
        json["lyric"] = note.lyric;
    for (size_t slot = 0; slot < kIconSlots; ++slot)
        if (!note.icons[slot].empty())
            json[kIconKeys[slot]] = note.icons[slot];
    return json;
}

Json TrackJson(const Track& track) {
    Json json{{"name", track.name}, {"voice", track.voice},   {"volume", track.volume},
              {"pan", track.pan},   {"muted", track.isMuted}, {"solo", track.isSolo}};
    for (size_t kind = 0; kind < kCurveKinds; ++kind)
        for (Json& points = json[kCurveKeys[kind]] = Json::array(); const CurvePoint& point : track.curves[kind])
            points.push_back(Pair(point.tick, point.value));
    for (Json& marks = json["marks"] = Json::array(); const Mark& mark : track.marks)
        marks.push_back(Pair(mark.tick, mark.icon));
    for (Json& notes = json["notes"] = Json::array(); const Note& note : track.notes)
        notes.push_back(NoteJson(note));
    return json;
}

/// A value of the file and the way to it, as errors name it: "tracks[0].notes[3].key".
class Place {
public:
    Place(const Json& json, std::string way, const std::string& file)
        : m_json(json), m_way(std::move(way)), m_file(file) {}

    [[noreturn]] void Fail(const std::string& what) const {
        throw EditorError(m_file + ": " + (m_way.empty() ? "the project" : m_way) + " " + what +
                          "; the file is damaged or was changed by hand");
    }
    Place Member(const char* key) const {
        const auto found = m_json.is_object() ? m_json.find(key) : m_json.end();
        if (!m_json.is_object() || found == m_json.end())
            Fail(std::string("has no \"") + key + "\"");
        return {*found, m_way.empty() ? key : m_way + "." + key, m_file};
    }
    Place Item(size_t index) const { return {m_json[index], m_way + "[" + std::to_string(index) + "]", m_file}; }
    bool Has(const char* key) const { return m_json.is_object() && m_json.contains(key); }

    size_t Count(size_t most) const {
        if (!m_json.is_array())
            Fail("is no list");
        if (m_json.size() > most)
            Fail("has " + std::to_string(m_json.size()) + " items, and there may be " + std::to_string(most));
        return m_json.size();
    }
    template <class Integer>
    Integer Number(int64_t least, int64_t most) const {
        // Whatever does not fit 64 bits is out of range too.
        const bool isOne =
            m_json.is_number_integer() && (!m_json.is_number_unsigned() || m_json.get<uint64_t>() <= INT64_MAX);
        if (!isOne || m_json.get<int64_t>() < least || m_json.get<int64_t>() > most)
            Fail("is not a number from " + std::to_string(least) + " to " + std::to_string(most));
        return m_json.get<Integer>();
    }
    double Real(double least, double most) const {
        if (!m_json.is_number() || !(m_json.get<double>() >= least && m_json.get<double>() <= most))
            Fail("is not a number from " + std::to_string(least) + " to " + std::to_string(most));
        return m_json.get<double>();
    }
    std::string Text() const { return m_json.is_string() ? m_json.get<std::string>() : (Fail("is no text"), ""); }
    bool Flag() const { return m_json.is_boolean() ? m_json.get<bool>() : (Fail("is neither true nor false"), false); }
    uint32_t Tick() const { return Number<uint32_t>(0, kLastTick); }

private:
    const Json& m_json;
    const std::string m_way;
    const std::string& m_file;
};

/// Lists come in their order, as they were written: every tick once.
template <class Item, class Read>
std::vector<Item> ReadList(const Place& place, size_t parts, Read read) {
    std::vector<Item> items;
    const size_t count = place.Count(kMostItems);
    for (size_t i = 0; i < count; ++i) {
        const Place each = place.Item(i);
        if (each.Count(parts) < parts)
            each.Fail("has too few values");
        items.push_back(read(each));
        if (i > 0 && items[i].tick <= items[i - 1].tick)
            each.Fail("does not lie behind the one before it");
    }
    return items;
}

Note ReadNote(const Place& place) {
    Note note;
    note.tick = place.Member("tick").Tick();
    note.length = place.Member("length").Number<uint32_t>(1, kLastTick - int64_t{note.tick});
    note.key = place.Member("key").Number<int>(0, kHighestKey);
    note.velocity = place.Member("velocity").Number<int>(1, 127);
    note.lyric = place.Has("lyric") ? place.Member("lyric").Text() : "";
    for (size_t slot = 0; slot < kIconSlots; ++slot)
        note.icons[slot] = place.Has(kIconKeys[slot]) ? place.Member(kIconKeys[slot]).Text() : "";
    return note;
}

Track ReadTrack(const Place& place) {
    Track track;
    track.name = place.Member("name").Text();
    track.voice = place.Member("voice").Text();
    track.volume = place.Member("volume").Real(-60, 12);
    track.pan = place.Member("pan").Real(-1, 1);
    track.isMuted = place.Member("muted").Flag();
    track.isSolo = place.Member("solo").Flag();
    for (size_t kind = 0; kind < kCurveKinds; ++kind)
        track.curves[kind] = ReadList<CurvePoint>(place.Member(kCurveKeys[kind]), 2, [kind](const Place& at) {
            return CurvePoint{at.Item(0).Tick(),
                              at.Item(1).Number<int>(kCurveRanges[kind].lowest, kCurveRanges[kind].highest)};
        });
    track.marks = ReadList<Mark>(place.Member("marks"), 2, [](const Place& at) {
        return Mark{at.Item(0).Tick(), at.Item(1).Text()};
    });
    const Place notes = place.Member("notes");
    const size_t count = notes.Count(kMostNotes);
    for (size_t i = 0; i < count; ++i)
        track.notes.push_back(ReadNote(notes.Item(i)));
    if (!std::is_sorted(track.notes.begin(), track.notes.end(), [](const Note& a, const Note& b) {
            return a.tick != b.tick ? a.tick < b.tick : a.key < b.key;
        }))
        notes.Fail("are not in their order");
    return track;
}

Document ReadDocument(const Place& place, const std::string& name) {
    if (place.Member(kVersionKey).Number<int64_t>(1, INT64_MAX) > kVersion)
        throw EditorError(name + ": was saved by a later editor, which this one does not understand");
    Document document;
    document.title = place.Member("title").Text();
    document.tempos = ReadList<TempoChange>(place.Member("tempos"), 2, [](const Place& at) {
        return TempoChange{at.Item(0).Tick(), at.Item(1).Number<uint32_t>(1, kLongestTempo)};
    });
    document.meters = ReadList<MeterChange>(place.Member("meters"), 3, [](const Place& at) {
        return MeterChange{at.Item(0).Tick(), at.Item(1).Number<int>(1, 255), at.Item(2).Number<int>(0, 7)};
    });
    if (document.tempos.empty() || document.tempos[0].tick > 0)
        place.Member("tempos").Fail("do not begin at tick 0");
    if (document.meters.empty() || document.meters[0].tick > 0)
        place.Member("meters").Fail("do not begin at tick 0");
    const Place tracks = place.Member("tracks");
    const size_t count = tracks.Count(kMostTracks);
    if (count == 0)
        tracks.Fail("are none");
    document.tracks.clear();
    for (size_t i = 0; i < count; ++i)
        document.tracks.push_back(ReadTrack(tracks.Item(i)));
    return document;
}

} // namespace

std::string ProjectText(const Document& document) {
    Json json{{kVersionKey, kVersion}, {"title", document.title}};
    for (Json& tempos = json["tempos"] = Json::array(); const TempoChange& tempo : document.tempos)
        tempos.push_back(Pair(tempo.tick, tempo.microseconds));
    for (Json& meters = json["meters"] = Json::array(); const MeterChange& meter : document.meters)
        meters.push_back(Json::array({meter.tick, meter.numerator, meter.denominatorExponent}));
    for (Json& tracks = json["tracks"] = Json::array(); const Track& track : document.tracks)
        tracks.push_back(TrackJson(track));
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Document ReadProject(std::string_view text, const std::string& name) {
    Json json;
    try {
        json = Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw EditorError(name + ": is no project of this editor (at byte " + std::to_string(error.byte) +
                          "); MIDI, MusicXML and UST files are known by their endings");
    } catch (const Json::out_of_range&) {
        throw EditorError(name + ": is no project of this editor: it has a number beyond all bounds");
    }
    return ReadDocument(Place(json, "", name), name);
}

void SaveProject(const Document& document, const std::string& path) {
    const std::string text = ProjectText(document);
    torv::ReplacedFile file(path.c_str());
    if (!file.IsOpen() || !file.Write(text.data(), text.size()) || !file.Commit())
        throw EditorError(path + ": cannot be saved (" + file.Error().message() +
                          "); what was there is as it was: choose another folder, or make room");
}

Document LoadProject(const std::string& path) {
    std::vector<unsigned char> bytes;
    try {
        bytes = torv::songs::ReadInputFile(path, kMostBytes + 1);
    } catch (const torv::songs::SongError& error) {
        throw EditorError(error.what());
    }
    if (bytes.size() > kMostBytes)
        throw EditorError(path + ": is larger than any project of this editor");
    return ReadProject({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, path);
}

} // namespace editor
