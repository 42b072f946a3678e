#pragma once

#include "torv/songs/read_song.h"

#include <map>
#include <string>
#include <vector>

namespace torv::songs {

/// A note that has ended.
struct MidiNote {
    uint32_t tick;   ///< where it begins
    uint32_t length; ///< ticks, 1 or more
    int key;         ///< 0..127
    int velocity;    ///< 1..127
};

/// A text event.
struct MidiText {
    uint32_t tick;     ///< where it stands
    bool lyric;        ///< a lyric event; else a text event, which karaoke files use for lyrics
    std::string bytes; ///< as they stand in the file
};

/// One track, or one channel of a track.
struct MidiTrack {
    std::string name;                    ///< bytes of the track-name event
    std::string instrument;              ///< bytes of the instrument-name event
    std::vector<MidiNote> notes;         ///< by tick, then key
    std::vector<MidiText> texts;         ///< by tick, in file order
    int channel = 0;                     ///< 0..15, of the notes
    int program = -1;                    ///< 0..127, the first; -1: none
    bool isOneOfSeveral = false;         ///< the file's track has other channels with notes: its texts may be anyone's
    std::vector<Controller> controllers; ///< volume (7), pan (10) and expression (11)
    std::vector<PitchBend> bends;        ///< in semitones, the bend range worked in
    std::map<int, size_t> engineBlocks;  ///< how many of each the engine's stream has, by number 0x50..0x67
};

/// What a standard MIDI file holds, with every time in ticks of 480 to a quarter note. A file whose
/// division is in SMPTE frames has a tempo of its own making: one tick a millisecond. Tempos, meters and keys are
/// sorted by tick, one a tick; notes by tick, then key; texts by tick, in file order.
struct MidiData {
    std::vector<MidiTrack> tracks; ///< a track with several channels gives one for each, the texts with the first
    /// Sorted by tick, one a tick.
    /// @{
    std::vector<Tempo> tempos;
    std::vector<Meter> meters;
    std::vector<KeySignature> keys;
    /// @}
    std::vector<std::string> remarks; ///< how the file is damaged; what is whole before that is here
    uint32_t end = 0;                 ///< tick of the last event
    int format = 0;                   ///< 0, 1, or 2: then each track begins where the one before ends
    int division = 0;                 ///< as the header has it; ticks to a quarter note, or above 0x8000 SMPTE frames

    /// Whether the file counts in frames.
    bool IsSmpte() const { return (division & 0x8000) != 0; }
};

/// Whether the bytes begin as a standard MIDI file does, by itself or in a RIFF file (.rmi).
TORV_SONGS_API bool IsMidi(Bytes bytes);

/// Reads a file's bytes, of a damaged one what is whole; throws SongError for what is not MIDI, has no header that
/// makes sense or holds more than any song.
TORV_SONGS_API MidiData ReadMidiData(Bytes bytes);

} // namespace torv::songs
