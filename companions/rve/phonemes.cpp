#include "phonemes.h"

#include "torv/abi/rve.h"

#include <iterator>

namespace rve {

namespace {

// English vowels: averages of men, women and children by Peterson and Barney, "Control methods used in a study of the
// vowels", JASA 24 (1952), table II. The neutral vowel is that of a uniform tube, in the same proportions.
constexpr VowelFormants kHeed{{{270, 2290, 3010}, {310, 2790, 3310}, {370, 3200, 3730}}};
constexpr VowelFormants kHid{{{390, 1990, 2550}, {430, 2480, 3070}, {530, 2730, 3600}}};
constexpr VowelFormants kHead{{{530, 1840, 2480}, {610, 2330, 2990}, {690, 2610, 3570}}};
constexpr VowelFormants kHad{{{660, 1720, 2410}, {860, 2050, 2850}, {1010, 2320, 3320}}};
constexpr VowelFormants kHod{{{730, 1090, 2440}, {850, 1220, 2810}, {1030, 1370, 3170}}};
constexpr VowelFormants kHawed{{{570, 840, 2410}, {590, 920, 2710}, {680, 1060, 3180}}};
constexpr VowelFormants kHood{{{440, 1020, 2240}, {470, 1160, 2680}, {560, 1410, 3310}}};
constexpr VowelFormants kWhod{{{320, 1100, 2240}, {390, 1250, 2670}, {450, 1450, 3260}}};
constexpr VowelFormants kHud{{{600, 1310, 2450}, {740, 1560, 2900}, {830, 1760, 3400}}};
constexpr VowelFormants kHeard{{{490, 1350, 1690}, {500, 1640, 1960}, {560, 1820, 2160}}};
// Where diphthongs begin and end that are neither of these vowels: an open one further forward, a close one closer.
constexpr VowelFormants kOpen{{{740, 1270, 2440}, {880, 1500, 2820}, {1030, 1680, 3200}}};
constexpr VowelFormants kHigh{{{350, 2120, 2700}, {390, 2600, 3180}, {470, 2900, 3650}}};
constexpr VowelFormants kForward{{{760, 1450, 2480}, {900, 1800, 2900}, {1050, 1980, 3280}}};
constexpr VowelFormants kRounded{{{500, 1200, 2350}, {560, 1400, 2780}, {650, 1580, 3250}}};
constexpr VowelFormants kClosed{{{370, 900, 2240}, {420, 1010, 2670}, {490, 1220, 3280}}};
constexpr VowelFormants kNeutral{{{500, 1500, 2500}, {585, 1755, 2925}, {675, 2025, 3375}}};

// Japanese vowels: men's averages of long vowels in citation form after Nishi, Strange, Akahane-Yamada, Kubo and
// Trent-Brown, "Acoustic and perceptual similarity of Japanese and American English vowels", JASA 124 (2008); women and
// children in the proportions of the English table, third formants of the nearest English vowel.
constexpr VowelFormants kJapaneseA{{{615, 1182, 2440}, {720, 1383, 2810}, {830, 1596, 3170}}};
constexpr VowelFormants kJapaneseI{{{317, 2077, 3010}, {371, 2430, 3310}, {428, 2804, 3730}}};
constexpr VowelFormants kJapaneseU{{{349, 1171, 2240}, {408, 1370, 2670}, {471, 1581, 3260}}};
constexpr VowelFormants kJapaneseE{{{437, 1785, 2480}, {511, 2088, 2990}, {590, 2410, 3570}}};
constexpr VowelFormants kJapaneseO{{{424, 751, 2410}, {496, 879, 2710}, {572, 1014, 3180}}};

constexpr Phoneme Vowel(const char* symbol, const VowelFormants& formants) {
    return {symbol, Manner::Vowel, true, &formants, nullptr, {0, 0, 0}, 0, 0, 0, 0};
}
constexpr Phoneme Fronted(const char* symbol, const VowelFormants& formants) {
    Phoneme phoneme = Vowel(symbol, formants);
    phoneme.isFronted = true;
    return phoneme;
}
constexpr Phoneme Diphthong(const char* symbol, const VowelFormants& from, const VowelFormants& to) {
    return {symbol, Manner::Vowel, true, &from, &to, {0, 0, 0}, 0, 0, 0, 0};
}

// Places: the formants that a closure there pulls a vowel towards, in a man's tract, and how much of the vowel's own
// second formant stays: the locus equations of Sussman, McCaffrey and Matthews, JASA 90 (1991), whose slopes are about
// 0.87, 0.43 and, for the velum, near 1.
struct Place {
    float f1, f2, f3;
    float follow = 0;
};
constexpr Place kLips{250, 850, 2200, 0.75F};
constexpr Place kTeeth{300, 1350, 2550, 0.5F};
constexpr Place kRidge{280, 1800, 2650, 0.43F};
constexpr Place kPalate{270, 2100, 2900, 0.25F};
constexpr Place kVelum{280, 1950, 2350, 0.8F};
constexpr Place kThroat{450, 1400, 2500};

constexpr Phoneme Consonant(const char* symbol, Manner manner, bool voiced, Place place, float hz, float bandwidth,
                            float level) {
    return {symbol,       manner, voiced,    nullptr, nullptr, {place.f1, place.f2, place.f3},
            place.follow, hz,     bandwidth, level};
}

constexpr Phoneme kJapanese[] = {Vowel("a", kJapaneseA),
                                 Vowel("i", kJapaneseI),
                                 Vowel("M", kJapaneseU),
                                 Vowel("e", kJapaneseE),
                                 Vowel("o", kJapaneseO),
                                 Consonant("n", Manner::Nasal, true, kRidge, 0, 0, 0),
                                 Consonant("J", Manner::Nasal, true, kPalate, 0, 0, 0),
                                 Consonant("m", Manner::Nasal, true, kLips, 0, 0, 0),
                                 Consonant("N", Manner::Nasal, true, kVelum, 0, 0, 0),
                                 Consonant("m'", Manner::Nasal, true, {250, 1500, 2400}, 0, 0, 0),
                                 Consonant("N'", Manner::Nasal, true, {270, 1900, 2600}, 0, 0, 0),
                                 Consonant("N\\", Manner::Nasal, true, {320, 1150, 2300}, 0, 0, 0),
                                 Consonant("g", Manner::Plosive, true, kVelum, 1900, 700, 0.32F),
                                 Consonant("g'", Manner::Plosive, true, kPalate, 2800, 800, 0.32F),
                                 Consonant("d", Manner::Plosive, true, kRidge, 4200, 1800, 0.32F),
                                 Consonant("d'", Manner::Plosive, true, kPalate, 3600, 1600, 0.32F),
                                 Consonant("b", Manner::Plosive, true, kLips, 900, 900, 0.19F),
                                 Consonant("b'", Manner::Plosive, true, {250, 1600, 2400}, 1300, 900, 0.19F),
                                 Consonant("z", Manner::Fricative, true, kRidge, 5300, 2200, 0.16F),
                                 Consonant("Z", Manner::Fricative, true, kPalate, 3000, 1400, 0.18F),
                                 Consonant("h\\", Manner::Aspirate, true, kThroat, 0, 0, 0.4F),
                                 Consonant("dz", Manner::Affricate, true, kRidge, 5300, 2200, 0.18F),
                                 Consonant("dZ", Manner::Affricate, true, kPalate, 3000, 1400, 0.2F),
                                 Consonant("4", Manner::Tap, true, kRidge, 0, 0, 0),
                                 Consonant("4'", Manner::Tap, true, kPalate, 0, 0, 0),
                                 Consonant("j", Manner::Glide, true, {270, 2200, 2950}, 0, 0, 0),
                                 Consonant("w", Manner::Glide, true, {290, 700, 2200}, 0, 0, 0),
                                 Consonant("k", Manner::Plosive, false, kVelum, 1900, 700, 0.48F),
                                 Consonant("k'", Manner::Plosive, false, kPalate, 2900, 800, 0.48F),
                                 Consonant("t", Manner::Plosive, false, kRidge, 4500, 2000, 0.56F),
                                 Consonant("t'", Manner::Plosive, false, kPalate, 3700, 1600, 0.56F),
                                 Consonant("p", Manner::Plosive, false, kLips, 900, 900, 0.32F),
                                 Consonant("p'", Manner::Plosive, false, {250, 1600, 2400}, 1300, 900, 0.32F),
                                 Consonant("s", Manner::Fricative, false, kRidge, 5500, 2200, 0.32F),
                                 Consonant("S", Manner::Fricative, false, kPalate, 3200, 1400, 0.35F),
                                 Consonant("h", Manner::Aspirate, false, kThroat, 0, 0, 0.7F),
                                 Consonant("C", Manner::Fricative, false, kPalate, 3900, 1200, 0.2F),
                                 Consonant("p\\", Manner::Fricative, false, kLips, 1700, 2400, 0.13F),
                                 Consonant("p\\'", Manner::Fricative, false, {250, 1600, 2400}, 2400, 2400, 0.13F),
                                 Consonant("ts", Manner::Affricate, false, kRidge, 5500, 2200, 0.32F),
                                 Consonant("tS", Manner::Affricate, false, kPalate, 3200, 1400, 0.35F),
                                 {"*in", Manner::Breath, false, nullptr, nullptr, {600, 1500, 2500}, 0, 0, 0, 2.0F}};

constexpr Phoneme kEnglish[] = {Vowel("@", kNeutral),
                                Vowel("V", kHud),
                                Vowel("e", kHead),
                                Vowel("I", kHid),
                                Vowel("i:", kHeed),
                                Vowel("{", kHad),
                                Vowel("O:", kHawed),
                                Vowel("Q", kHod),
                                Vowel("U", kHood),
                                Fronted("u:", kWhod),
                                Vowel("@r", kHeard),
                                Diphthong("eI", kHead, kHigh),
                                Diphthong("aI", kOpen, kHigh),
                                Diphthong("OI", kHawed, kHigh),
                                Diphthong("@U", kRounded, kClosed),
                                Diphthong("aU", kForward, kClosed),
                                Diphthong("I@", kHid, kHeard),
                                Diphthong("e@", kHead, kHeard),
                                Diphthong("U@", kHood, kHeard),
                                Diphthong("O@", kHawed, kHeard),
                                Diphthong("Q@", kHod, kHeard),
                                Consonant("p", Manner::Plosive, false, kLips, 900, 900, 0.32F),
                                Consonant("t", Manner::Plosive, false, kRidge, 4500, 2000, 0.56F),
                                Consonant("k", Manner::Plosive, false, kVelum, 1900, 700, 0.48F),
                                Consonant("tS", Manner::Affricate, false, kPalate, 3000, 1300, 0.35F),
                                Consonant("f", Manner::Fricative, false, kLips, 5500, 6000, 0.1F),
                                Consonant("T", Manner::Fricative, false, kTeeth, 5500, 5000, 0.09F),
                                Consonant("s", Manner::Fricative, false, kRidge, 5500, 2200, 0.32F),
                                Consonant("S", Manner::Fricative, false, kPalate, 3000, 1300, 0.35F),
                                Consonant("h", Manner::Aspirate, false, kThroat, 0, 0, 0.7F),
                                Consonant("ph", Manner::Plosive, false, kLips, 900, 900, 0.32F),
                                Consonant("th", Manner::Plosive, false, kRidge, 4500, 2000, 0.56F),
                                Consonant("kh", Manner::Plosive, false, kVelum, 1900, 700, 0.48F),
                                Consonant("w", Manner::Glide, true, {290, 610, 2150}, 0, 0, 0),
                                Consonant("j", Manner::Glide, true, {260, 2200, 3000}, 0, 0, 0),
                                Consonant("b", Manner::Plosive, true, kLips, 900, 900, 0.19F),
                                Consonant("d", Manner::Plosive, true, kRidge, 4200, 1800, 0.32F),
                                Consonant("dZ", Manner::Affricate, true, kPalate, 2900, 1300, 0.2F),
                                Consonant("v", Manner::Fricative, true, kLips, 5500, 6000, 0.05F),
                                Consonant("D", Manner::Fricative, true, kTeeth, 5500, 5000, 0.05F),
                                Consonant("z", Manner::Fricative, true, kRidge, 5300, 2200, 0.16F),
                                Consonant("Z", Manner::Fricative, true, kPalate, 2900, 1300, 0.18F),
                                Consonant("m", Manner::Nasal, true, kLips, 0, 0, 0),
                                Consonant("n", Manner::Nasal, true, kRidge, 0, 0, 0),
                                Consonant("N", Manner::Nasal, true, kVelum, 0, 0, 0),
                                Consonant("r", Manner::Glide, true, {320, 1150, 1500}, 0, 0, 0),
                                Consonant("l", Manner::Glide, true, {350, 1150, 2700}, 0, 0, 0),
                                Consonant("g", Manner::Plosive, true, kVelum, 1900, 700, 0.32F),
                                Consonant("bh", Manner::Plosive, true, kLips, 900, 900, 0.19F),
                                Consonant("dh", Manner::Plosive, true, kRidge, 4200, 1800, 0.32F),
                                Consonant("gh", Manner::Plosive, true, kVelum, 1900, 700, 0.32F),
                                Consonant("l0", Manner::Glide, true, {420, 820, 2600}, 0, 0, 0),
                                Consonant("hv", Manner::Aspirate, true, kThroat, 0, 0, 0.4F),
                                {"Asp", Manner::Breath, false, nullptr, nullptr, {550, 1450, 2500}, 0, 0, 0, 2.0F}};

template <size_t N>
const Phoneme* FindIn(const Phoneme (&table)[N], std::string_view symbol) {
    for (const Phoneme& phoneme : table)
        if (symbol == phoneme.symbol)
            return &phoneme;
    return nullptr;
}

constexpr size_t kLongestSymbol = 4;
constexpr float kSoftHiss = 0.15F; // teeth and lips hiss softly, and briefly

} // namespace

float NaturalLength(const Phoneme& phoneme, bool afterVowel) {
    struct Lengths {
        float before, after;
    };
    const auto lengths = [&]() -> Lengths {
        const bool soft = phoneme.noiseLevel < kSoftHiss;
        switch (phoneme.manner) {
        case Manner::Plosive:
            return phoneme.voiced ? Lengths{75, 135} : IsAspirated(phoneme) ? Lengths{130, 195} : Lengths{85, 165};
        case Manner::Affricate:
            return phoneme.voiced ? Lengths{100, 195} : Lengths{130, 250};
        case Manner::Fricative:
            return phoneme.voiced ? (soft ? Lengths{70, 150} : Lengths{95, 195})
                                  : (soft ? Lengths{105, 210} : Lengths{125, 255});
        case Manner::Aspirate:
            return {75, 110};
        case Manner::Tap:
            return {40, 60};
        case Manner::Breath:
            return {250, 250};
        default:
            return {85, 170};
        }
    }();
    return afterVowel ? lengths.after : lengths.before;
}

const Phoneme* FindPhoneme(std::string_view symbol, int language) {
    const Phoneme* const first = language == RVE_ENGLISH ? FindIn(kEnglish, symbol) : FindIn(kJapanese, symbol);
    if (first)
        return first;
    return language == RVE_ENGLISH ? FindIn(kJapanese, symbol) : FindIn(kEnglish, symbol);
}

bool IsJapaneseVowel(const Phoneme& phoneme) {
    return IsVowel(phoneme) && FindIn(kJapanese, phoneme.symbol) == &phoneme;
}

const Phoneme* FindLongest(std::string_view text, int language, size_t& length) {
    for (length = text.size() < kLongestSymbol ? text.size() : kLongestSymbol; length > 0; --length)
        if (const Phoneme* const phoneme = FindPhoneme(text.substr(0, length), language))
            return phoneme;
    return nullptr;
}

} // namespace rve
