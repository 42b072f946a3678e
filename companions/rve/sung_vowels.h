#pragma once

#include <array>
#include <string_view>

namespace rve {

/// How far the first two formants of a recorded person's English vowel move while it is sung, in octaves. `bank` is the
/// name of the person's bank; a phone that is no vowel does not move, nor does anyone whose vowels were not looked at.
std::array<float, 2> SungVowelMove(std::string_view bank, std::string_view phone);

} // namespace rve
