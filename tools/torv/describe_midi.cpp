#include "describe.h"

#include <torv/songs/lyric_line.h>
#include <torv/songs/midi_data.h>
#include <torv/songs/song_error.h>
#include <torv/songs/tempo_trail.h>
#include <torv/songs/text_encoding.h>

#include <algorithm>

using namespace torv::songs;

namespace {

constexpr double kTicksPerBeat = 480;
constexpr size_t kLongestLyrics = 60; // characters, roughly

struct BlockName {
    int number;
    const char* name;
};
constexpr BlockName kBlocks[] = {
    {0x50, "note"},          {0x53, "voice"},           {0x54, "pitch bend"},   {0x55, "voice control"},
    {0x60, "language"},      {0x63, "dynamics"},        {0x64, "vibrato rate"}, {0x65, "vibrato depth"},
    {0x66, "tremolo depth"}, {0x67, "bend sensitivity"}};

std::string NameOfBlock(int number) {
    const auto* const found = std::find_if(std::begin(kBlocks), std::end(kBlocks),
                                           [number](const BlockName& block) { return block.number == number; });
    return found != std::end(kBlocks) ? found->name : "block " + std::to_string(number);
}

MidiData Read(const std::string& path, Bytes bytes) {
    try {
        return ReadMidiData(bytes);
    } catch (const SongError& error) {
        throw SongError(path + ": " + error.what());
    }
}

/// The beginning of a track's lyrics as one line.
std::string LyricsOf(const LyricLine& line) {
    std::string text;
    for (const Syllable& syllable : line.syllables) {
        if (text.size() > kLongestLyrics)
            return text + "...";
        if (syllable.prolongs)
            continue;
        text += (text.empty() || syllable.word.hyphenBefore ? "" : " ") + syllable.word.text;
    }
    return text;
}

/// Ticks a quarter, or frames a second and their ticks.
Json DescribeDivision(const MidiData& song) {
    if (!song.IsSmpte())
        return song.division;
    const int frames = 0x100 - (song.division >> 8);
    return {{"framesPerSecond", frames == 29 ? Json(29.97) : Json(frames)}, {"ticksPerFrame", song.division & 0xFF}};
}

Json DescribeTrack(const MidiTrack& track) {
    Json about;
    about["name"] = ToUtf8(track.name, DetectEncoding(track.name));
    about["notes"] = track.notes.size();
    if (!track.notes.empty()) {
        const auto [low, high] = std::minmax_element(
            track.notes.begin(), track.notes.end(), [](const MidiNote& a, const MidiNote& b) { return a.key < b.key; });
        about["lowestKey"] = low->key;
        about["highestKey"] = high->key;
    }
    const bool hasEvents =
        std::any_of(track.texts.begin(), track.texts.end(), [](const MidiText& text) { return text.lyric; });
    if (hasEvents || HasKaraokeTexts(track)) {
        const LyricLine line = ReadLyricLine(track.texts, !hasEvents, std::nullopt);
        about["syllables"] = line.syllables.size();
        about["lyrics"] = LyricsOf(line);
    }
    for (const auto& [number, count] : track.engineBlocks)
        about["engineBlocks"][NameOfBlock(number)] = count;
    return about;
}

} // namespace

Json DescribeMidi(const std::string& path, const std::vector<unsigned char>& bytes) {
    const MidiData song = Read(path, bytes);
    const auto seconds = [&song](uint32_t tick) { return MillisecondsAt(song.tempos, tick) / 1000; };
    Json about;
    about["file"] = path;
    about["kind"] = "standard MIDI file";
    about["format"] = song.format;
    about["division"] = DescribeDivision(song);
    about["seconds"] = seconds(song.end);
    about["length"] = ClockText(seconds(song.end));
    const auto place = [&](uint32_t tick) {
        return song.IsSmpte() ? Json{{"seconds", seconds(tick)}}
                              : Json{{"beat", 1 + tick / kTicksPerBeat}, {"seconds", seconds(tick)}};
    };
    about["tempos"] = Json::array();
    if (!song.IsSmpte()) {
        about["beats"] = song.end / kTicksPerBeat;
        for (const Tempo& tempo : song.tempos) {
            about["tempos"].push_back(place(tempo.tick));
            about["tempos"].back()["beatsPerMinute"] = 60e6 / tempo.microsecondsPerQuarter;
        }
    }
    about["signatures"] = Json::array();
    for (const Meter& signature : song.meters) {
        about["signatures"].push_back(place(signature.tick));
        about["signatures"].back()["signature"] =
            std::to_string(signature.numerator) + "/" + std::to_string(1 << signature.denominatorExponent);
    }
    if (!song.remarks.empty())
        about["damaged"] = song.remarks;
    about["tracks"] = Json::array();
    for (const MidiTrack& track : song.tracks)
        about["tracks"].push_back(DescribeTrack(track));
    return about;
}
