#pragma once

#include "torv/songs/song.h"

#include <iosfwd>
#include <span>
#include <string>

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

/// The same for a stream, of which no more is read than a song can have.
TORV_SONGS_API Song ReadSong(std::istream& stream, const std::string& source, const ReadOptions& options = {});

/// The same for a file.
TORV_SONGS_API Song ReadSongFile(const std::string& path, const ReadOptions& options = {});

} // namespace torv::songs
