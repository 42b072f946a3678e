#pragma once

#include "torv/files/midi_sequence.h"

#include <utility>
#include <vector>

using Bytes = std::vector<BYTE>;

struct SongBytes {
    std::vector<Bytes> tracks;
};

/// A sequence with the bytes that it reads, which outlive it. At 480 ticks and the tempo as it is at first, 24 ticks
/// are 25 ms.
struct MidiSong : SongBytes, CxMidiSequence {
    explicit MidiSong(std::vector<Bytes> bytes = {}, DWORD division = 480) : SongBytes{std::move(bytes)} {
        Create(0, 0);
        PrepareTrackList(1, static_cast<DWORD>(tracks.size()), division);
        for (const auto& track : tracks)
            AddNewTrack(track.data(), static_cast<DWORD>(track.size()));
    }
};
