#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct MidiNote {
    uint32_t tick;
    uint32_t length; ///< ticks, 1 or more
    int key;         ///< 0..127
    int velocity;    ///< 1..127
};

struct MidiText {
    uint32_t tick;
    bool lyric; ///< a lyric event; else a text event, which karaoke files use for lyrics
    std::string bytes;
};

struct MidiTempo {
    uint32_t tick;
    uint32_t microsecondsPerQuarter;
};

struct MidiSignature {
    uint32_t tick;
    int numerator;
    int denominatorExponent;
};

struct MidiSongTrack {
    std::string name; ///< bytes of the track-name event
    std::vector<MidiNote> notes;
    std::vector<MidiText> texts;
    std::map<int, size_t> engineBlocks; ///< how many of each the engine's stream has, by number 0x50..0x67
};

/// A standard MIDI file, format 0 or 1, with every time in ticks of 480 to a quarter note. A file whose division is in
/// SMPTE frames has a tempo of its own making: one tick a millisecond. Tempos and signatures are sorted by tick, one a
/// tick; notes by tick, then key; texts by tick, in file order.
struct MidiSong {
    std::vector<MidiSongTrack> tracks; ///< format 0: one for each channel with notes, the texts with the first
    std::vector<MidiTempo> tempos;
    std::vector<MidiSignature> signatures;
    uint32_t end = 0; ///< tick of the last event
    int format = 0;
    int division = 0; ///< as the header has it; ticks to a quarter note, or above 0x8000 SMPTE frames

    bool IsSmpte() const { return (division & 0x8000) != 0; }
};

/// Reads a file's bytes; throws InputError for a file that is not MIDI, is cut short or holds what no reader could
/// follow. `path` is only named in errors.
MidiSong ReadMidiSong(const std::string& path, std::vector<unsigned char>& bytes);
