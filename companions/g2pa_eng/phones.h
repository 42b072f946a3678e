/// The sounds of English as pronunciation dictionaries write them, before any allophone is chosen.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace g2pa_eng {

/// In the order of the names in phones.cpp; the vowels come first.
// clang-format off
enum class Sound : uint8_t {
    aa, ae, ah, ao, aw, ax, ay, eh, er, ey, ih, iy, ow, oy, uh, uw,
    b, ch, d, dh, f, g, hh, jh, k, l, m, n, ng, p, r, s, sh, t, th, v, w, y, z, zh
};
// clang-format on

struct Phone {
    Sound sound;
    bool stressed = false; ///< meaningful on vowels

    bool IsVowel() const { return sound <= Sound::uw; }
};

using Phones = std::vector<Phone>;

/// Appends the phones of a text such as "hh ax l ow1": names with blanks between them, 1 after a stressed vowel. Other
/// digits say nothing; a name that is none is passed over.
void AppendPhones(Phones& phones, std::string_view text);

} // namespace g2pa_eng
