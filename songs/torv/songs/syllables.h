#pragma once

#include "torv/songs/export.h"

#include <string>
#include <vector>

namespace torv::songs {

/// The syllables of one text of a file, which share its time; at least one. Text and syllables are code page 932, and
/// no character is cut. Japanese is cut by the library's rules, half-width kana like the full-width ones; a Western
/// text behind the hyphens inside it, and where letters of one and of two bytes meet. Commas, brackets, notes and other
/// signs that the library would take for syllables are left out; a text of nothing else goes on with the vowel before.
TORV_SONGS_API std::vector<std::string> CutIntoSyllables(const std::string& text, int language);

} // namespace torv::songs
