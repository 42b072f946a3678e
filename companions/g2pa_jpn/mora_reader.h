/// A folded lyric as the beats of the language.
#pragma once

#include <string_view>
#include <vector>

namespace g2pa_jpn {

struct Mora {
    enum class Kind { Sound, Nasal, Geminate, Long };
    Kind kind = Kind::Sound;
    std::string_view sound; ///< symbols with blanks between them, for a Sound
};

/// Reads kana and romaji (Hepburn and Kunrei spellings); what has no sound is passed over. A hyphen at either end of
/// the text divides words and is passed over too; inside it lengthens. At most 512 morae, more than one output holds.
std::vector<Mora> ReadMorae(std::u32string_view text);

} // namespace g2pa_jpn
