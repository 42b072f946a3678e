#pragma once

#include "torv/songs/read_song.h"

#include <map>
#include <string>
#include <vector>

namespace torv::songs {

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

struct MidiTrack {
    std::string name; ///< bytes of the track-name event
    std::vector<MidiNote> notes;
    std::vector<MidiText> texts;
    int channel = 0;                    ///< 0..15, of the notes
    std::map<int, size_t> engineBlocks; ///< how many of each the engine's stream has, by number 0x50..0x67
};

/// What a standard MIDI file of format 0 or 1 holds, with every time in ticks of 480 to a quarter note. A file whose
/// division is in SMPTE frames has a tempo of its own making: one tick a millisecond. Tempos and meters are sorted by
/// tick, one a tick; notes by tick, then key; texts by tick, in file order.
struct MidiData {
    std::vector<MidiTrack> tracks; ///< a track with several channels gives one for each, the texts with the first
    std::vector<Tempo> tempos;
    std::vector<Meter> meters;
    uint32_t end = 0; ///< tick of the last event
    int format = 0;
    int division = 0; ///< as the header has it; ticks to a quarter note, or above 0x8000 SMPTE frames

    bool IsSmpte() const { return (division & 0x8000) != 0; }
};

/// Reads a file's bytes; throws SongError for what is not MIDI, is cut short or holds what no reader could follow.
TORV_SONGS_API MidiData ReadMidiData(Bytes bytes);

} // namespace torv::songs
