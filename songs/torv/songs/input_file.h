#pragma once

#include "torv/songs/export.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace torv::songs {

/// A file to read and to seek in; what cannot be sought in, as a pipe, is read whole first. Throws SongError when it
/// cannot be opened.
TORV_SONGS_API std::unique_ptr<std::istream> OpenInputFile(const std::string& path);

/// The first bytes of a file, all when it has fewer; throws SongError when it cannot be read.
TORV_SONGS_API std::vector<unsigned char> ReadInputFile(const std::string& path, size_t most);

} // namespace torv::songs
