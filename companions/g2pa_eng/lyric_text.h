/// One lyric element's bytes as words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace g2pa_eng {

struct LyricText {
    std::vector<std::string> words; ///< letters a to z and apostrophes, at least one letter each
    bool singsOn = false;           ///< nothing but marks that prolong the vowel before
    bool joinsPrevious = false;     ///< begins with a hyphen: its first word goes on from the element before
    bool joinsNext = false;         ///< ends with a hyphen: its last word goes on in the next element
};

/// Takes any bytes. Capitals and wide letters fold to plain ones, and so do the Latin-1 letters among the bytes that
/// are no part of a double-byte character; a number becomes words (up to 99; longer ones digit by digit), & is "and", a
/// hyphen inside a word is passed over, all else divides words.
/// At most 256 words: each has a sound, and an output holds no more.
LyricText ReadLyric(std::string_view bytes);

} // namespace g2pa_eng
