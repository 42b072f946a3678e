#include "syllables.h"

#include "letter_rules.h"

#include <algorithm>
#include <span>

namespace g2pa_eng {
namespace {

using Cluster = std::span<const Phone>;

constexpr Sound none = Sound::aa; // in the table of beginnings: no third consonant
struct Beginning {
    Sound first, second, third;
};
constexpr Beginning beginnings[] = {
    {Sound::p, Sound::l, none},     {Sound::p, Sound::r, none},     {Sound::p, Sound::y, none},
    {Sound::b, Sound::l, none},     {Sound::b, Sound::r, none},     {Sound::b, Sound::y, none},
    {Sound::t, Sound::r, none},     {Sound::t, Sound::w, none},     {Sound::d, Sound::r, none},
    {Sound::d, Sound::w, none},     {Sound::k, Sound::l, none},     {Sound::k, Sound::r, none},
    {Sound::k, Sound::w, none},     {Sound::k, Sound::y, none},     {Sound::g, Sound::l, none},
    {Sound::g, Sound::r, none},     {Sound::g, Sound::w, none},     {Sound::g, Sound::y, none},
    {Sound::f, Sound::l, none},     {Sound::f, Sound::r, none},     {Sound::f, Sound::y, none},
    {Sound::v, Sound::y, none},     {Sound::m, Sound::y, none},     {Sound::hh, Sound::y, none},
    {Sound::n, Sound::y, none},     {Sound::l, Sound::y, none},     {Sound::th, Sound::r, none},
    {Sound::sh, Sound::r, none},    {Sound::s, Sound::p, none},     {Sound::s, Sound::t, none},
    {Sound::s, Sound::k, none},     {Sound::s, Sound::m, none},     {Sound::s, Sound::n, none},
    {Sound::s, Sound::l, none},     {Sound::s, Sound::w, none},     {Sound::s, Sound::f, none},
    {Sound::s, Sound::p, Sound::l}, {Sound::s, Sound::p, Sound::r}, {Sound::s, Sound::p, Sound::y},
    {Sound::s, Sound::t, Sound::r}, {Sound::s, Sound::k, Sound::r}, {Sound::s, Sound::k, Sound::w},
    {Sound::s, Sound::k, Sound::y},
};

bool MayBegin(Cluster consonants) {
    if (consonants.size() < 2)
        return consonants.empty() || consonants[0].sound != Sound::ng;
    if (consonants.size() > 3)
        return false;
    const Sound third = consonants.size() == 3 ? consonants[2].sound : none;
    return std::any_of(std::begin(beginnings), std::end(beginnings), [&](const Beginning& each) {
        return each.first == consonants[0].sound && each.second == consonants[1].sound && each.third == third;
    });
}

/// How many of the consonants between two vowels the later one can take.
size_t LongestBeginning(Cluster consonants) {
    size_t count = std::min<size_t>(consonants.size(), 3);
    while (!MayBegin(consonants.last(count)))
        --count;
    return count;
}

/// How many consonant sounds a run of consonant letters stands for.
size_t CountSounds(std::string_view letters) {
    constexpr std::string_view pairs[] = {"th", "sh", "ch", "ph", "wh", "gh", "ck", "ng", "dg"};
    size_t count = 0;
    for (size_t i = 0; i < letters.size(); ++i) {
        if (letters[i] == '\'')
            continue;
        ++count;
        const std::string_view pair = letters.substr(i, 2);
        const bool oneSound = std::find(std::begin(pairs), std::end(pairs), pair) != std::end(pairs);
        if (oneSound || (pair.size() == 2 && pair[0] == pair[1]))
            ++i;
        else if (letters[i] == 'x')
            ++count;
    }
    return count;
}

size_t SoundsAtStart(std::string_view part) {
    size_t letters = 0;
    while (letters < part.size() && (!IsVowelLetter(part[letters]) || (letters == 0 && part[0] == 'y')))
        ++letters;
    const size_t extra = letters > 0 && part[letters - 1] == 'q' ? 1 : 0; // "qu" is two sounds
    return CountSounds(part.substr(0, letters)) + extra;
}

/// As in "love-ly".
bool EndsInSilentE(std::string_view part) {
    return part.size() > 2 && part.back() == 'e' && !IsVowelLetter(part[part.size() - 2]);
}

size_t SoundsAtEnd(std::string_view part) {
    const auto endsInConsonant = [&] { return !part.empty() && !IsVowelLetter(part.back()) && part.back() != 'w'; };
    if (EndsInSilentE(part))
        part.remove_suffix(1);
    const size_t end = part.size();
    while (endsInConsonant())
        part.remove_suffix(1);
    return CountSounds(std::string_view(part.data() + part.size(), end - part.size()));
}

/// How many consonants go to the later vowel when the spelling divides between `left` and `right`.
size_t GuidedBeginning(Cluster consonants, std::string_view left, std::string_view right) {
    if (consonants.empty())
        return 0;
    const size_t total = consonants.size();
    const size_t spelledLeft = SoundsAtEnd(left);
    size_t least = total > spelledLeft ? total - spelledLeft : 0;
    size_t most = SoundsAtStart(right);
    const Sound last = consonants.back().sound;
    if (last == Sound::y || last == Sound::w || last == Sound::hh) // never at a syllable's end
        least = std::max<size_t>(least, 1);
    if (last == Sound::y)
        ++most; // often no letter of its own, as in "com-pu-ter"
    return std::min(LongestBeginning(consonants), std::max(least, most));
}

/// How many vowels a part's letters promise.
size_t CountVowelGroups(std::string_view part) {
    size_t groups = 0;
    for (size_t i = 0; i < part.size(); ++i)
        if (IsVowelLetter(part[i]) && (i == 0 || !IsVowelLetter(part[i - 1])))
            ++groups;
    const bool silentE = EndsInSilentE(part) && !part.ends_with("le");
    return groups > 1 && silentE ? groups - 1 : groups;
}

/// The part in which each vowel begins and the one in which it ends, both in order.
struct Place {
    size_t first, last;
};

std::vector<Place> PlaceVowels(size_t vowels, const std::vector<std::string_view>& parts) {
    std::vector<Place> places;
    if (vowels < parts.size()) {
        for (size_t part = 0; part < parts.size(); ++part) {
            const size_t vowel = part * vowels / parts.size();
            if (vowel == places.size())
                places.push_back({part, part});
            places[vowel].last = part;
        }
        return places;
    }
    std::vector<int> wanting; // vowel letters without a vowel yet, each part having one already
    wanting.reserve(parts.size());
    for (const std::string_view part : parts)
        wanting.push_back(static_cast<int>(CountVowelGroups(part)) - 1);
    std::vector<size_t> counts(parts.size(), 1);
    for (size_t extra = vowels - parts.size(); extra > 0; --extra) {
        const auto neediest = std::max_element(wanting.rbegin(), wanting.rend());
        --*neediest;
        ++counts[parts.size() - 1 - static_cast<size_t>(neediest - wanting.rbegin())];
    }
    for (size_t part = 0; part < parts.size(); ++part)
        places.insert(places.end(), counts[part], Place{part, part});
    return places;
}

} // namespace

SyllablesOfParts DivideWord(const Phones& phones, const std::vector<std::string_view>& parts) {
    SyllablesOfParts result(parts.size());
    std::vector<size_t> vowels;
    for (size_t i = 0; i < phones.size(); ++i)
        if (phones[i].IsVowel())
            vowels.push_back(i);
    if (vowels.empty()) { // hummed or hissed: every part goes on with the last sound
        result[0].push_back({phones, std::nullopt, {}});
        for (size_t part = 1; part < parts.size() && !phones.empty(); ++part)
            result[part].push_back({{phones.back()}, std::nullopt, {}});
        return result;
    }
    const std::vector<Place> places = PlaceVowels(vowels.size(), parts);
    Cluster before(phones.data(), vowels[0]);
    for (size_t v = 0; v < vowels.size(); ++v) {
        const bool isLast = v + 1 == vowels.size();
        const size_t end = isLast ? phones.size() : vowels[v + 1];
        const Cluster after(phones.data() + vowels[v] + 1, end - vowels[v] - 1);
        size_t toNext = 0;
        if (!isLast) {
            const Place& next = places[v + 1];
            toNext = next.first == places[v].last ? LongestBeginning(after)
                                                  : GuidedBeginning(after, parts[places[v].last], parts[next.first]);
        }
        for (size_t part = places[v].first; part <= places[v].last; ++part)
            result[part].push_back({{}, phones[vowels[v]], {}});
        result[places[v].first].back().onset.assign(before.begin(), before.end());
        const Cluster coda = after.first(after.size() - toNext);
        result[places[v].last].back().coda.assign(coda.begin(), coda.end());
        before = after.last(toNext);
    }
    return result;
}

} // namespace g2pa_eng
