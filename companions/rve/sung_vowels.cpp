#include "sung_vowels.h"

#include <iterator>

namespace rve {

namespace {

constexpr std::string_view kBanks[] = {"slt", "rms", "awb"};

struct Row {
    std::string_view phone;
    std::array<float, 2> moves[std::size(kBanks)];
};

// A vowel that is short in speech does not get where it aims at, and what is made of it when it is held is taken for
// another one. Each was sung at twenty places around its own, for 0.6 s between 24 pairs of consonants, and moves half
// the way to where a listener with fifteen vowels to choose from was surest of it (bench/voice/held_vowels.py). The
// whole way is better for single words and worse in lines.
constexpr Row kRows[] = {{"aa", {{0, 0}, {-0.075F, 0}, {0.15F, 0.15F}}},
                         {"ae", {{0, -0.15F}, {0.15F, -0.075F}, {0, 0}}},
                         {"ah", {{0, -0.15F}, {0, 0.075F}, {0.075F, 0.075F}}},
                         {"ao", {{-0.075F, -0.15F}, {0, 0}, {0, -0.15F}}},
                         {"aw", {{0, 0}, {0, 0}, {0.15F, -0.075F}}},
                         {"ax", {{0.15F, 0}, {0.15F, -0.075F}, {0.15F, -0.15F}}},
                         {"ay", {{-0.075F, -0.15F}, {0, 0}, {0, 0}}},
                         {"eh", {{-0.075F, -0.15F}, {0.075F, 0}, {0.075F, -0.15F}}},
                         {"er", {{-0.075F, -0.15F}, {0, 0}, {-0.075F, 0.15F}}},
                         {"ey", {{0.075F, 0.15F}, {-0.075F, 0.15F}, {0.15F, 0}}},
                         {"ih", {{0, 0}, {0.075F, 0.075F}, {0.075F, -0.075F}}},
                         {"iy", {{0, 0}, {-0.075F, 0}, {0, 0}}},
                         {"ow", {{0.075F, -0.15F}, {0, 0}, {0.15F, 0.15F}}},
                         {"oy", {{-0.075F, 0.075F}, {-0.075F, 0.15F}, {-0.075F, 0}}},
                         {"uh", {{0.075F, 0.075F}, {0, 0}, {0.15F, -0.15F}}},
                         {"uw", {{0, 0}, {0, -0.075F}, {-0.075F, -0.15F}}}};

} // namespace

std::array<float, 2> SungVowelMove(std::string_view bank, std::string_view phone) {
    for (const Row& row : kRows)
        for (size_t person = 0; row.phone == phone && person < std::size(kBanks); ++person)
            if (kBanks[person] == bank)
                return row.moves[person];
    return {};
}

} // namespace rve
