#pragma once

#include "torv/songs/databases.h"
#include "torv/songs/voice_line.h"

namespace torv::songs {

/// The voice that suits a part, as its icon's id: by what its name says, else by its clef, else by how high it lies;
/// recorded persons before synthetic voices. The first voice of the language where it has no such voice, 0 without any.
TORV_SONGS_API DWORD CastVoice(const Part& part, int language, Databases& databases);

/// Where one of several parts stands, -1 left to 1 right, as a choir does: the first one left, the last one right. One
/// alone stands in the centre.
TORV_SONGS_API double StagePan(size_t index, size_t count);

/// What a language is called of whose commonest words most are among these: "German"; empty for English, for Japanese
/// and where too few are known to tell. Words are whole, their letters' case is ignored.
TORV_SONGS_API std::string GuessOtherLanguage(const std::vector<std::string>& words);

/// The words of a line, their syllables joined.
TORV_SONGS_API std::vector<std::string> WholeWords(const VoiceLine& line);

} // namespace torv::songs
