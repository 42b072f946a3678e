#include "torv/songs/midi_reader.h"

#include "torv/songs/word_fit.h"

#include <algorithm>
#include <cctype>

namespace torv::songs {

namespace {

/// LilyPond writes "STAFF:VOICE", of which either may be missing.
std::string WithoutColon(std::string name) {
    const size_t colon = name.find(':');
    if (colon == std::string::npos)
        return name;
    const std::string before = name.substr(0, colon);
    const std::string behind = name.substr(colon + 1);
    return before.empty() || before == behind ? behind : behind.empty() ? before : name;
}

Part MakePart(const MidiTrack& track, int number, const std::optional<TextEncoding>& encoding) {
    Part part;
    part.name = WithoutColon(ToUtf8(track.name, encoding.value_or(DetectEncoding(track.name))));
    part.track = number;
    part.channel = track.channel;
    part.program = track.program;
    part.instrument = ToUtf8(track.instrument, encoding.value_or(DetectEncoding(track.instrument)));
    part.controllers = track.controllers;
    part.bends = track.bends;
    part.notes.reserve(track.notes.size());
    for (const MidiNote& midi : track.notes) {
        Note& note = part.notes.emplace_back();
        note.tick = midi.tick;
        note.length = midi.length;
        note.key = midi.key;
        note.velocity = midi.velocity;
    }
    return part;
}

/// Lyric events; in a file without any, karaoke's texts.
std::vector<WordLine> ReadLines(const MidiData& data, const std::optional<TextEncoding>& encoding) {
    const auto isLyric = [](const MidiText& text) { return text.lyric; };
    const bool hasLyrics = std::any_of(data.tracks.begin(), data.tracks.end(), [&](const MidiTrack& track) {
        return std::any_of(track.texts.begin(), track.texts.end(), isLyric);
    });
    std::vector<WordLine> lines;
    for (size_t i = 0; i < data.tracks.size(); ++i) {
        if (!hasLyrics && !HasKaraokeTexts(data.tracks[i]))
            continue;
        LyricLine line = ReadLyricLine(data.tracks[i].texts, !hasLyrics, encoding);
        if (!line.syllables.empty())
            lines.push_back({std::move(line.syllables), data.tracks[i].isOneOfSeveral ? 0 : static_cast<int>(i + 1),
                             line.isUndivided});
    }
    return lines;
}

/// Names of tracks that are no song's.
bool IsTitle(const std::string& name) {
    static constexpr const char* kOthers[] = {
        "",        "conductor", "control track", "tempo",    "tempo track", "meta", "master",       "untitled",
        "track 0", "track 1",   "timing",        "sequence", "global",      "midi", "master track", "conductor track"};
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::find(std::begin(kOthers), std::end(kOthers), lower) == std::end(kOthers);
}

/// The first of karaoke's title lines ("@T") and who wrote it the second; else the name of a first track without notes.
void ReadTitle(const MidiData& data, const std::optional<TextEncoding>& encoding, Song& song) {
    const auto utf8 = [&encoding](const std::string& bytes) {
        return ToUtf8(bytes, encoding.value_or(DetectEncoding(bytes)));
    };
    for (const MidiTrack& track : data.tracks)
        for (const MidiText& text : track.texts)
            if (!text.lyric && text.bytes.starts_with("@T") && song.composer.empty())
                (song.title.empty() ? song.title : song.composer) = utf8(text.bytes.substr(2));
    if (song.title.empty() && data.tracks.size() > 1 && data.tracks[0].notes.empty())
        if (const std::string name = utf8(data.tracks[0].name); IsTitle(name))
            song.title = name;
}

} // namespace

Song ReadMidiSong(Bytes bytes, const ReadOptions& options) { return MakeSong(ReadMidiData(bytes), options); }

Song MakeSong(const MidiData& data, const ReadOptions& options) {
    const std::optional<TextEncoding> encoding = EncodingAskedFor(options.encoding);
    Song song;
    song.format = "standard MIDI file";
    song.end = data.end;
    song.tempos = data.tempos;
    song.meters = data.meters;
    song.keys = data.keys;
    song.remarks = data.remarks;
    ReadTitle(data, encoding, song);
    for (size_t i = 0; i < data.tracks.size(); ++i)
        if (!data.tracks[i].notes.empty())
            song.parts.push_back(MakePart(data.tracks[i], static_cast<int>(i + 1), encoding));
    FitWords(song, ReadLines(data, encoding));
    ShareWords(song);
    return song;
}

} // namespace torv::songs
