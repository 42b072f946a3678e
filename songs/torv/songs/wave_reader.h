#pragma once

#include "torv/songs/sound_reader.h"

#include <iosfwd>
#include <memory>
#include <string>

namespace torv::songs {

/// Reads a RIFF wave of whole numbers of up to 32 bits, or of floats. `path` is named in messages; `file` is read as
/// long as the reader lives. Null for a wave of another kind: then `reason` says which. Throws SongError for one that
/// is damaged.
TORV_SONGS_API std::unique_ptr<SoundReader> OpenWave(const std::string& path, std::istream& file, std::string& reason);

} // namespace torv::songs
