#pragma once

#include <string>
#include <string_view>

namespace torv::songs {

/// Whether a UTF-8 text is a heading over words and none of them: "(Verse 1)", "[Chorus]", "Refrain:"; without brackets
/// or colon too ("Verse 1"), as a line by itself may say it.
bool IsHeading(std::string_view text);

/// A UTF-8 text without the headings in brackets or with a colon before its words.
std::string WithoutHeading(std::string_view text);

/// Without a verse's number in front, "1. ", which some programs put into the first syllable.
std::string WithoutNumber(std::string_view text);

/// Makes the hyphens that a UTF-8 syllable begins or ends with plain ones: U+2010, U+2011, soft ones, en dashes, minus
/// signs and wide ones.
std::string WithPlainHyphens(std::string_view text);

} // namespace torv::songs
