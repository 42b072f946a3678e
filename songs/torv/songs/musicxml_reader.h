#pragma once

#include "torv/songs/read_song.h"

namespace torv::songs {

/// Whether the bytes begin as a score in MusicXML does, plain or compressed: any zip archive counts, as its beginning
/// does not tell what is in it.
TORV_SONGS_API bool IsMusicXml(Bytes bytes);

/// The song of a score in MusicXML 1.0 to 4.0, by parts or by measures, plain or compressed (.mxl). Throws SongError.
TORV_SONGS_API Song ReadMusicXmlSong(Bytes bytes, const ReadOptions& options);

} // namespace torv::songs
