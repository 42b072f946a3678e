/// Lyric bytes of code page 932 as one plain row of characters.
#pragma once

#include <string>
#include <string_view>

namespace g2pa_jpn {

/// Folds a lyric to katakana (as Unicode numbers them), the long mark U'ー', small letters a to z, the apostrophe, and
/// U'-' for the marks that also stand for "sing on" (- _ ~ + and their wide forms). Hiragana, half-width katakana with
/// their voicing marks, wide and capital letters become these; all else becomes a blank. Takes any bytes.
std::u32string FoldLyric(std::string_view cp932);

/// Replaces the iteration marks U'ヽ' and U'ヾ' by the kana before them, plain or voiced. `last` is the last kana of
/// the elements before (0: none) and is moved on.
void ExpandIterationMarks(std::u32string& text, char32_t& last);

} // namespace g2pa_jpn
