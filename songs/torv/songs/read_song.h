#pragma once

#include "torv/songs/song.h"

#include <iosfwd>
#include <span>
#include <string>
#include <vector>

namespace torv::songs {

/// A file's bytes; the caller's.
using Bytes = std::span<const unsigned char>;

/// What a reader is told beside the bytes.
struct ReadOptions {
    std::string encoding; ///< how the words' bytes are read, see TextEncodingNamed; empty: they are looked at
};

/// What ReadSong can tell from a file's first bytes.
enum class SongFormat {
    Unknown,  ///< none of these
    Midi,     ///< a standard MIDI file, in a RIFF file too
    MusicXml, ///< a score, compressed or not
    Ust       ///< a UST
};

/// What kind of song file the bytes are, by their content.
TORV_SONGS_API SongFormat FormatOf(Bytes bytes);

/// Reads a song of any format. `source` is only named in messages. Throws SongError for bytes that are no song, and for
/// those that cannot be followed; time and memory are linear in them.
TORV_SONGS_API Song ReadSong(Bytes bytes, const std::string& source, const ReadOptions& options = {});

constexpr size_t kLargestSongFile = 128U << 20; ///< bytes: hundreds of times any song

/// The bytes of a song from a stream, which may be a pipe. What begins like no song is refused before the rest is read,
/// and so is what is larger than a song can be. Throws SongError, which names `source`.
TORV_SONGS_API std::vector<unsigned char> ReadSongBytes(std::istream& stream, const std::string& source);

/// ReadSong of ReadSongBytes.
TORV_SONGS_API Song ReadSong(std::istream& stream, const std::string& source, const ReadOptions& options = {});

/// The same for a file.
TORV_SONGS_API Song ReadSongFile(const std::string& path, const ReadOptions& options = {});

} // namespace torv::songs
