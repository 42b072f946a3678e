#pragma once

#include "torv/songs/midi_data.h"

namespace torv::songs {

/// The song of a file's bytes; throws SongError.
TORV_SONGS_API Song ReadMidiSong(Bytes bytes, const ReadOptions& options);

/// The song of what a file holds: its words stand under the notes that they fit.
TORV_SONGS_API Song MakeSong(const MidiData& data, const ReadOptions& options);

} // namespace torv::songs
