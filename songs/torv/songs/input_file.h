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

/// The same for what is read from its beginning to its end only: a pipe is read no further than that.
TORV_SONGS_API std::unique_ptr<std::istream> OpenInputStream(const std::string& path);

/// Reads on until there are `most` bytes, or as many as come.
TORV_SONGS_API void AppendBytes(std::istream& stream, size_t most, std::vector<unsigned char>& bytes);

/// The first bytes of a file, all when it has fewer; throws SongError when it cannot be read.
TORV_SONGS_API std::vector<unsigned char> ReadInputFile(const std::string& path, size_t most);

} // namespace torv::songs
