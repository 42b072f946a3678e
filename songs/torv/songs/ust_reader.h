#pragma once

#include "torv/songs/read_song.h"

namespace torv::songs {

/// Whether the bytes begin as the sectioned text that many singing editors exchange does.
TORV_SONGS_API bool IsUst(Bytes bytes);

/// Its one part: notes and rests one behind the other, each a section with its length, key, syllable and tempo. Curves
/// of pitch and of loudness within a note are left out. Shift-JIS, or UTF-8 where the file says so or its bytes do.
TORV_SONGS_API Song ReadUstSong(Bytes bytes, const ReadOptions& options);

} // namespace torv::songs
