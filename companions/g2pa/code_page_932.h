/// Lyric bytes as characters, for both languages.
#pragma once

#include <string_view>

namespace g2pa {

/// Cuts the first character off a text that is not empty. A single byte is its own number; a double-byte character is
/// one number, its lead byte high. Wide letters, digits and marks count as the plain ones. A lead byte that no trail
/// byte follows is taken alone.
unsigned TakeCharacter(std::string_view& bytes);

} // namespace g2pa
