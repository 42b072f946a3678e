#include "torv/songs/musicxml_reader.h"

#include "torv/songs/musicxml_swing.h"
#include "torv/songs/musicxml_voices.h"
#include "torv/songs/number_text.h"
#include "torv/songs/part_names.h"
#include "torv/songs/song_error.h"
#include "torv/songs/text_encoding.h"
#include "torv/songs/zip_archive.h"

#include <algorithm>

namespace torv::songs {

namespace {

using namespace musicxml;

constexpr size_t kLargestScore = 128U << 20; // bytes of a text, unpacked
constexpr size_t kEnoughToTell = 4096;       // bytes; a comment that is longer may stand before a score
constexpr size_t kMostNotes = 1000000;       // that sound: repeats of repeats must not fill the memory

std::string TextOf(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

/// The score's text in a compressed file: the one that its list names first, else, or when that is not there, the first
/// that looks like one.
std::string Unpacked(Bytes bytes) {
    const ZipArchive archive(bytes);
    std::string name;
    if (const auto list = archive.Read("META-INF/container.xml", kLargestScore)) {
        const XmlDocument document(*list);
        name = document.Root().Child("rootfiles", "rootfile").Attribute("full-path");
    }
    const std::vector<std::string> names = archive.Names();
    if (std::find(names.begin(), names.end(), name) == names.end())
        name.clear();
    for (const std::string& each : names)
        if (name.empty() && (each.ends_with(".xml") || each.ends_with(".musicxml")) && !each.starts_with("META-INF"))
            name = each;
    if (auto score = archive.Read(name, kLargestScore))
        return *std::move(score);
    throw SongError("is an archive without a score in it");
}

struct ListedPart {
    std::string id;
    XmlElement description; ///< in the list of parts; may be none
    std::vector<XmlElement> measures;
};

/// The score's parts in their order, however the score is laid out.
std::vector<ListedPart> PartsOf(XmlElement score) {
    std::vector<ListedPart> parts;
    std::map<std::string, size_t, std::less<>> indexes;
    const auto partOf = [&](std::string_view id) -> ListedPart& {
        const auto [known, isNew] = indexes.try_emplace(std::string(id), parts.size());
        if (isNew)
            parts.push_back({std::string(id), XmlElement(), {}});
        return parts[known->second];
    };
    for (const XmlElement part : score.Child("part-list"))
        if (part.Name() == "score-part")
            partOf(part.Attribute("id")).description = part;
    size_t measures = 0;
    for (const XmlElement outer : score) {
        if (outer.Name() == "part") {
            for (const XmlElement measure : outer)
                if (measure.Name() == "measure")
                    partOf(outer.Attribute("id")).measures.push_back(measure);
        } else if (outer.Name() == "measure") {
            for (const XmlElement part : outer) {
                ListedPart& known = partOf(part.Attribute("id"));
                if (known.measures.size() == measures) // a part may be away from some
                    known.measures.push_back(part);
            }
            ++measures;
            for (ListedPart& part : parts)
                part.measures.resize(measures);
        }
    }
    return parts;
}

/// How the measures of all parts are played: a sign may stand in any of them.
std::vector<MeasureSigns> SignsOf(const std::vector<WrittenPart>& parts) {
    std::vector<MeasureSigns> all;
    for (const WrittenPart& part : parts) {
        all.resize(std::max(all.size(), part.measures.size()));
        for (size_t i = 0; i < part.measures.size(); ++i) {
            const MeasureSigns& signs = part.measures[i].signs;
            MeasureSigns& sum = all[i];
            sum.repeatForward |= signs.repeatForward;
            sum.repeatBackward = std::max(sum.repeatBackward, signs.repeatBackward);
            sum.endingStops |= signs.endingStops;
            sum.daCapo |= signs.daCapo;
            sum.fine |= signs.fine;
            if (sum.endings.empty())
                sum.endings = signs.endings;
            for (std::string MeasureSigns::*const label :
                 {&MeasureSigns::segno, &MeasureSigns::coda, &MeasureSigns::dalSegno, &MeasureSigns::toCoda})
                if ((sum.*label).empty())
                    sum.*label = signs.*label;
        }
    }
    return all;
}

/// What holds at the beginning of each written measure, and the measure's own length.
struct MeasureFrame {
    uint32_t length = 0;
    size_t notes = 0;
    Meter meter;
    KeySignature key;
    Tempo tempo;
    std::vector<TempoMark> marks; ///< of all parts
    std::vector<Tempo> tempos;    ///< from its beginning, what the marks come to
    std::vector<Hold> holds;      ///< from its beginning
    bool hasMeter = false;        ///< a signature stands there
    bool hasKey = false;
    int number = 1;
};

/// The tempo itself wins where it stands beside what it comes from, which other parts may repeat.
void ResolveTempos(MeasureFrame& frame) {
    std::stable_sort(frame.marks.begin(), frame.marks.end(), [](const TempoMark& a, const TempoMark& b) {
        return a.onset != b.onset ? a.onset < b.onset : a.quartersPerMinute < b.quartersPerMinute;
    });
    double quarter = frame.tempo.microsecondsPerQuarter;
    uint32_t changed = kLastTick;
    for (const TempoMark& mark : frame.marks) {
        if (mark.quartersPerMinute > 0)
            quarter = 6e7 / mark.quartersPerMinute;
        else if (mark.onset == changed)
            continue;
        else
            quarter /= mark.speed;
        changed = mark.onset;
        quarter = std::clamp(quarter, 1.0, 16777215.0);
        frame.tempos.push_back({mark.onset, static_cast<uint32_t>(std::lround(quarter))});
    }
}

std::vector<MeasureFrame> FramesOf(const std::vector<WrittenPart>& parts, size_t count) {
    std::vector<MeasureFrame> frames(count);
    for (const WrittenPart& part : parts) {
        for (size_t i = 0; i < part.measures.size(); ++i) {
            const WrittenMeasure& measure = part.measures[i];
            MeasureFrame& frame = frames[i];
            if (&part == &parts.front())
                frame.number = measure.number;
            frame.length = std::max(frame.length, measure.length);
            for (const auto& [id, notes] : measure.voices)
                frame.notes += notes.size();
            frame.notes += measure.holds.size();
            frame.holds.insert(frame.holds.end(), measure.holds.begin(), measure.holds.end());
            if (measure.meter && !frame.hasMeter)
                frame.meter = *measure.meter;
            if (measure.key && !frame.hasKey)
                frame.key = *measure.key;
            frame.hasMeter |= measure.meter.has_value();
            frame.hasKey |= measure.key.has_value();
            frame.marks.insert(frame.marks.end(), measure.tempos.begin(), measure.tempos.end());
        }
    }
    for (size_t i = 0; i < count; ++i) {
        MeasureFrame& frame = frames[i];
        if (i > 0) {
            const MeasureFrame& before = frames[i - 1];
            if (!frame.hasMeter)
                frame.meter = before.meter;
            if (!frame.hasKey)
                frame.key = before.key;
            frame.tempo = before.tempos.empty() ? before.tempo : before.tempos.back();
        }
        ResolveTempos(frame);
        if (frame.length == 0) // only in a score without a rest for it
            frame.length = TicksOfMeasure(frame.meter);
    }
    return frames;
}

std::vector<PlacedMeasure> Place(const MeasureOrder& order, const std::vector<MeasureFrame>& frames, Song& song) {
    std::vector<int> passes(frames.size());
    for (const PlayedMeasure& played : order.measures)
        ++passes[played.index];
    std::vector<PlacedMeasure> placed;
    uint32_t tick = 0;
    size_t notes = 0;
    for (const PlayedMeasure& played : order.measures) {
        const MeasureFrame& frame = frames[played.index];
        notes += frame.notes;
        if (frame.length > kLastTick - tick || notes > kMostNotes) {
            song.remarks.push_back("is longer than any song; the rest is left out");
            break;
        }
        const bool isAfterJump = !placed.empty() && played.index != placed.back().index + 1;
        const bool isEnding = played.ending > 0;
        placed.push_back({played.index, isEnding ? played.ending : played.pass,
                          isEnding ? played.endings : passes[played.index], tick, isAfterJump});
        song.measures.push_back({tick, frame.length, frame.number});
        if (frame.hasMeter || isAfterJump)
            song.meters.push_back({tick, frame.meter.numerator, frame.meter.denominatorExponent});
        if (frame.hasKey || isAfterJump)
            song.keys.push_back({tick, frame.key.fifths, frame.key.minor});
        if (isAfterJump && !song.tempos.empty() &&
            song.tempos.back().microsecondsPerQuarter != frame.tempo.microsecondsPerQuarter)
            song.tempos.push_back({tick, frame.tempo.microsecondsPerQuarter});
        for (const Tempo& tempo : frame.tempos)
            song.tempos.push_back({tick + tempo.tick, tempo.microsecondsPerQuarter});
        for (const Hold& hold : frame.holds)
            song.holds.push_back({tick + hold.tick, hold.length});
        tick += frame.length;
    }
    song.end = tick;
    return placed;
}

void ReadHeader(XmlElement score, Song& song) {
    song.format = "MusicXML";
    song.title = score.Child("work", "work-title").Text();
    if (song.title.empty())
        song.title = score.Child("movement-title").Text();
    for (const XmlElement creator : score.Child("identification"))
        if (creator.Name() == "creator" && (song.composer.empty() || creator.Attribute("type") == "composer"))
            song.composer = creator.Text();
    for (const XmlElement credit : score)
        if (credit.Name() == "credit" && song.title.empty() && credit.Child("credit-type").Text() == "title")
            song.title = credit.Child("credit-words").Text();
    song.language = score.Child("defaults", "lyric-language").Attribute("xml:lang");
}

/// Some programs leave the usual place empty, or their own name there, and say elsewhere what stands on the page.
std::string NameOf(XmlElement about) {
    const std::string_view name = about.Child("part-name").Text();
    const std::string_view shown = about.Child("part-name-display", "display-text").Text();
    return std::string((name.empty() || name == "MusicXML Part") && !shown.empty() ? shown : name);
}

void AddParts(const ListedPart& scorePart, const WrittenPart& written, Voices voices, int track, Song& song) {
    const XmlElement about = scorePart.description;
    const std::string name = NameOf(about);
    const std::vector<std::string> names = NamesOfVoices(name, voices.parts.size());
    for (size_t i = 0; i < voices.parts.size(); ++i) {
        Part& part = voices.parts[i];
        part.name = names[i];
        part.instrument = about.Child("score-instrument", "instrument-name").Text();
        part.track = track;
        part.channel = WholeNumberOf(about.Child("midi-instrument", "midi-channel").Text(), 0) - 1;
        part.program = WholeNumberOf(about.Child("midi-instrument", "midi-program").Text(), 0) - 1;
        if (part.channel > 15 || part.channel == kPercussionChannel)
            part.channel = -1;
        if (part.program > 127)
            part.program = -1;
        if (written.isPercussion)
            part.channel = kPercussionChannel;
        song.parts.push_back(std::move(part));
    }
}

std::string Counted(size_t count, const char* one, const char* many) {
    return count == 1 ? std::string("1 ") + one : std::to_string(count) + " " + many;
}

void Remark(const std::vector<WrittenPart>& parts, size_t lostGraces, Song& song) {
    size_t cues = 0;
    size_t ornaments = 0;
    size_t unpitched = 0;
    size_t laughs = 0;
    bool hasTempoWords = false;
    bool hasSwingWords = false;
    size_t oddTempos = 0;
    bool hasSpeech = false;
    for (const WrittenPart& part : parts) {
        cues += part.cues;
        ornaments += part.ornaments;
        unpitched += part.unpitched;
        laughs += part.laughs;
        hasTempoWords |= part.hasTempoWords;
        hasSwingWords |= part.hasSwingWords;
        oddTempos += part.oddTempos;
        hasSpeech |= part.isPercussion && part.hasWords;
        if (song.language.empty())
            song.language = part.language;
    }
    if (cues)
        song.remarks.push_back(Counted(cues, "cue note is", "cue notes are") + " left out");
    if (unpitched)
        song.remarks.push_back(Counted(unpitched, "note is", "notes are") + " without a pitch and left out");
    if (lostGraces)
        song.remarks.push_back(Counted(lostGraces, "grace note has", "grace notes have") +
                               " no note to stand before and is left out");
    if (ornaments)
        song.remarks.push_back(Counted(ornaments, "note is", "notes are") + " sung without the ornament");
    if (laughs)
        song.remarks.push_back(Counted(laughs, "laugh is", "laughs are") + " left out");
    if (hasSpeech)
        song.remarks.push_back("words on notes without a pitch are sung on one");
    if (hasSwingWords)
        song.remarks.push_back("\"swing\" has no numbers: of two eighths the first is sung twice as long");
    if (oddTempos)
        song.remarks.push_back(Counted(oddTempos, "tempo", "tempos") + " above 3000 quarters a minute " +
                               (oddTempos == 1 ? "is" : "are") + " left out");
    if (hasTempoWords)
        song.remarks.push_back("\"rit.\", \"accel.\" and the like have no number and are not followed");
}

} // namespace

bool IsMusicXml(Bytes bytes) {
    if (ZipArchive::IsArchive(bytes))
        return true;
    std::string text = TextOf(bytes.first(std::min(bytes.size(), kEnoughToTell)));
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
        text = Utf16ToUtf8(text);
    std::string_view plain = text;
    if (plain.starts_with("\xEF\xBB\xBF"))
        plain.remove_prefix(3);
    const auto root = XmlDocument::RootName(plain);
    return plain.find("score-partwise") != plain.npos || plain.find("score-timewise") != plain.npos ||
           (!root && plain.find('<') != plain.npos && bytes.size() >= kEnoughToTell);
}

Song ReadMusicXmlSong(Bytes bytes, const ReadOptions&) {
    if (bytes.size() > kLargestScore)
        throw SongError("is larger than 128 MB, which no score is");
    const XmlDocument document(ZipArchive::IsArchive(bytes) ? Unpacked(bytes) : TextOf(bytes));
    const XmlElement score = document.Root();
    if (score.Name() != "score-partwise" && score.Name() != "score-timewise")
        throw SongError("holds no score in MusicXML but \"" + std::string(score.Name().substr(0, 40)) +
                        "\": have the program that wrote it export MusicXML or MIDI");
    Song song;
    ReadHeader(score, song);
    const std::vector<ListedPart> scoreParts = PartsOf(score);
    std::vector<WrittenPart> written;
    written.reserve(scoreParts.size());
    for (const ListedPart& part : scoreParts)
        written.push_back(ReadPart(part.measures));
    PlaySwing(written);
    MeasureOrder order = UnfoldMeasures(SignsOf(written));
    song.remarks = std::move(order.remarks);
    size_t count = 0;
    for (const WrittenPart& part : written)
        count = std::max(count, part.measures.size());
    const std::vector<PlacedMeasure> placed = Place(order, FramesOf(written, count), song);
    size_t lostGraces = 0;
    for (size_t i = 0; i < written.size(); ++i) {
        Voices voices = SingPart(written[i], placed);
        lostGraces += voices.lostGraces;
        AddParts(scoreParts[i], written[i], std::move(voices), static_cast<int>(i) + 1, song);
    }
    Remark(written, lostGraces, song);
    return song;
}

} // namespace torv::songs
