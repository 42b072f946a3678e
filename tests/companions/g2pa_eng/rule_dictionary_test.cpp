#include "../../../companions/g2pa_eng/dictionary.h"
#include "../../../companions/g2pa_eng/syllables.h"

#include <doctest/doctest.h>

#include <string>

using namespace g2pa_eng;

namespace {

std::string Written(const Phones& phones) {
    std::string text;
    for (const Phone& phone : phones) {
        text.append(text.empty() ? "" : " ").append(NameOf(phone.sound));
        if (phone.stressed)
            text.push_back('1');
    }
    return text;
}

/// Onset, vowel and coda of each syllable, the parts divided by '|'.
std::string Divided(std::string_view text, const std::vector<std::string_view>& parts) {
    Phones phones;
    AppendPhones(phones, text);
    std::string result;
    for (const auto& syllables : DivideWord(phones, parts)) {
        for (const Syllable& each : syllables) {
            Phones all = each.onset;
            if (each.nucleus)
                all.push_back(*each.nucleus);
            all.insert(all.end(), each.coda.begin(), each.coda.end());
            result += (result.empty() || result.back() == '|' ? "" : ".") + Written(all);
        }
        result += '|';
    }
    result.pop_back();
    return result;
}

} // namespace

TEST_CASE("rules: letters to sounds, inflections by their stem") {
    const struct {
        const char* word;
        const char* phones;
    } words[] = {
        {"cat", "k ae t"},
        {"bake", "b ey k"},   // the silent e lengthens
        {"knight", "n ay t"}, // silent letters
        {"phrase", "f r ey s"},
        {"gently", "jh eh1 n t l iy"}, // soft g
        {"mission", "m ih1 sh ax n"},
        {"station", "s t ey1 sh ax n"},
        {"temptation", "t eh m p t ey1 sh ax n"}, // stressed before -tion
        {"became", "b ih k ey1 m"},               // and after a weak beginning
        {"making", "m ey1 k ih ng"},              // make, and its e comes back
        {"running", "r ah1 n ih ng"},             // run, doubled
        {"happily", "hh ae1 p iy l iy"},
        {"hated", "hh ey1 t ax d"},
        {"walked", "w ao k t"},
        {"dreamed", "d r iy m d"},
        {"bells", "b eh l z"},
        {"boats", "b ow t s"},
        {"wishes", "w ih1 sh ax z"},
        {"cries", "k r ay z"},
        {"bring", "b r ih ng"}, // no stem before the ending
        {"red", "r eh d"},
        {"glass", "g l ae s"},
    };
    for (const auto& each : words)
        CHECK_MESSAGE(Written(RuleDictionary().Pronounce(each.word)) == each.phones, each.word);
    CHECK(Written(RuleDictionary().Pronounce("q")) == "k");
}

TEST_CASE("syllables: consonants divide by the spelling and by what English lets begin") {
    CHECK(Divided("m ih1 s t er", {"mis", "ter"}) == "m ih1 s|t er");
    CHECK(Divided("m ih1 s t er", {"mi", "ster"}) == "m ih1|s t er");
    CHECK(Divided("m ih1 s t er", {"mister"}) == "m ih1.s t er");
    CHECK(Divided("s ih1 ng ih ng", {"sing", "ing"}) == "s ih1 ng|ih ng");
    CHECK(Divided("ih g z ae1 k t", {"ex", "act"}) == "ih g z|ae1 k t");
    CHECK(Divided("k ax m p y uw1 t er", {"com", "pu", "ter"}) == "k ax m|p y uw1|t er");
    CHECK(Divided("ax k y uw1 z", {"ac", "cuse"}) == "ax|k y uw1 z");   // y goes with the u
    CHECK(Divided("k ow hh ih1 r", {"coh", "ere"}) == "k ow|hh ih1 r"); // no syllable ends in h
    CHECK(Divided("l ae1 ng g w ih jh", {"lan", "guage"}) == "l ae1 ng|g w ih jh");
    CHECK(Divided("k w ay1 ax t", {"qui", "et"}) == "k w ay1|ax t");
}

TEST_CASE("syllables: no part goes without a vowel while the word has one") {
    CHECK(Divided("w ao k t", {"walk", "ed"}) == "w ao|ao k t");
    CHECK(Divided("b ih1 z n ax s", {"bus", "i", "ness"}) == "b ih1|ih1 z|n ax s");
    CHECK(Divided("eh1 v er iy", {"ev", "ery"}) == "eh1 v|er.iy"); // the part with two vowel letters has two vowels
    CHECK(Divided("f l aw er", {"flower"}) == "f l aw.er");
    CHECK(Divided("hh m", {"h", "m"}) == "hh m|m");
    CHECK(Divided("", {"a", "b"}) == "|");
}
