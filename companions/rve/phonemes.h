#pragma once

#include <string_view>

namespace rve {

/// How a sound is made.
enum class Manner { Vowel, Nasal, Glide, Tap, Fricative, Plosive, Affricate, Aspirate, Breath };

/// Voices that vowels are tabled for.
enum class Tract { Man, Woman, Child };
inline constexpr int kTracts = 3;
inline constexpr int kFormants = 4;

/// Centre frequencies of the first three formants in Hz, one row for each tract.
struct VowelFormants {
    float hz[kTracts][3];
};

/// One symbol of the engine's alphabet. Vowels have formants, diphthongs a second set that they end on; consonants have
/// the formants of their place (of a man's tract) and, when they hiss, a band of noise.
struct Phoneme {
    const char* symbol;
    Manner manner;
    bool voiced;
    const VowelFormants* from; ///< vowels
    const VowelFormants* to;   ///< where a diphthong ends, else null
    float locus[3];            ///< consonants: Hz
    float follow;              ///< how far the second formant goes along with the vowel beside it, 0..1
    float noiseHz;
    float noiseBandwidth;
    float noiseLevel;       ///< amplitude beside a vowel's
    bool isFronted = false; ///< said further forward after the tongue's tip
};

inline bool IsVowel(const Phoneme& phoneme) { return phoneme.manner == Manner::Vowel; }
/// Sounds that can carry a syllable when there is no vowel.
inline bool IsSonorant(const Phoneme& phoneme) {
    return phoneme.voiced && (phoneme.manner == Manner::Nasal || phoneme.manner == Manner::Glide);
}

/// Voiceless, with breath after the burst.
inline bool IsAspirated(const Phoneme& phoneme) {
    return phoneme.manner == Manner::Plosive && !phoneme.voiced && phoneme.symbol[1] == 'h';
}

/// How long a consonant is when nobody says so, in milliseconds; after the vowel they are longer.
float NaturalLength(const Phoneme& phoneme, bool afterVowel);

/// The symbol as the language has it, else as the other one does; null for an unknown symbol.
const Phoneme* FindPhoneme(std::string_view symbol, int language);
/// Whether it is a vowel of Japanese, not what English has for the same symbol.
bool IsJapaneseVowel(const Phoneme& phoneme);
/// The longest symbol that the text begins with; null when there is none.
const Phoneme* FindLongest(std::string_view text, int language, size_t& length);

} // namespace rve
