#include "articulator.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

namespace rve {

namespace {

constexpr Voice kVoices[] = {
    {Tract::Woman, 1.00F, 0.020F, 5200}, // soprano
    {Tract::Man, 1.00F, 0.012F, 4800},   // tenor
    {Tract::Child, 0.98F, 0.030F, 4600}, // child
    {Tract::Man, 0.92F, 0.010F, 3600},   // bass
};

/// The rest of a vowel's formants by tract.
constexpr float kFourth[kTracts] = {3500, 4150, 4700};
/// What a man's consonant places are multiplied by.
constexpr float kPlaceScale[kTracts] = {1.0F, 1.17F, 1.35F};
constexpr float kBandwidths[kFormants] = {70, 90, 130, 200};

constexpr Time kBurst = FromMilliseconds(22);
constexpr float kDiphthongGlide = 0.55F; // the share of a diphthong after which it turns

float Smooth(float x) {
    x = std::clamp(x, 0.0F, 1.0F);
    return x * x * (3 - 2 * x);
}

void AimFormants(Target& target, const float (&hz)[3], const Voice& voice, float scale) {
    for (size_t i = 0; i < 3; ++i)
        target.hz[i] = hz[i] * scale * voice.formantScale;
    target.hz[3] = kFourth[static_cast<int>(voice.tract)] * voice.formantScale;
    std::copy(std::begin(kBandwidths), std::end(kBandwidths), target.bandwidth.begin());
}

void AimVowel(Target& target, const Phoneme& vowel, float progress, const Voice& voice) {
    const auto tract = static_cast<size_t>(voice.tract);
    float hz[3];
    for (size_t i = 0; i < 3; ++i) {
        hz[i] = vowel.from->hz[tract][i];
        if (vowel.to)
            hz[i] += (vowel.to->hz[tract][i] - hz[i]) * Smooth((progress - kDiphthongGlide) / (0.9F - kDiphthongGlide));
    }
    AimFormants(target, hz, voice, 1.0F);
}

/// A closure for the first part, then hiss: plosives and affricates.
void AimClosure(Target& target, const Phoneme& phoneme, Time into, Time length, Time closure) {
    const bool closed = into < closure;
    target.voicing = phoneme.voiced ? (closed ? 0.10F : 0.35F) : 0;
    if (closed)
        return;
    target.noise = phoneme.noiseLevel;
    const std::string_view symbol(phoneme.symbol);
    if (phoneme.manner == Manner::Plosive && symbol.size() > 1 && symbol.back() == 'h')
        target.aspiration =
            0.6F * static_cast<float>(into - closure) / static_cast<float>(std::max<Time>(length - closure, 1));
}

} // namespace

const Voice& VoiceOf(int program) { return kVoices[static_cast<size_t>(program) % std::size(kVoices)]; }

const Phoneme* NucleusOf(const Segment& segment) {
    const Phoneme* sonorant = nullptr;
    for (int i = 0; i < segment.unitCount; ++i) {
        const Phoneme* const phoneme = segment.units[static_cast<size_t>(i)].phoneme;
        if (IsVowel(*phoneme))
            return phoneme;
        if (IsSonorant(*phoneme))
            sonorant = phoneme;
    }
    return sonorant;
}

Target AimAt(const Segment& segment, Time now, const Voice& voice, const Phoneme* vowel) {
    Target target;
    const Phoneme* phoneme = vowel;
    Time begin = segment.start;
    Time end = segment.end;
    for (int i = 0; i < segment.unitCount; ++i) {
        const Unit& unit = segment.units[static_cast<size_t>(i)];
        if (i > 0 && unit.begin > now)
            break;
        phoneme = unit.phoneme;
        begin = unit.begin;
        end = unit.end;
    }
    const float scale = kPlaceScale[static_cast<int>(voice.tract)];
    if (!phoneme) { // nothing was ever given: the neutral vowel
        static const Phoneme* const neutral = FindPhoneme("@", 1);
        AimVowel(target, *neutral, 0, voice);
        target.voicing = 1;
        return target;
    }
    const Time length = std::max<Time>(end - begin, 1);
    const Time into = now - begin;
    const float progress = static_cast<float>(into) / static_cast<float>(length);
    if (IsVowel(*phoneme)) {
        AimVowel(target, *phoneme, progress, voice);
        target.voicing = 1;
        return target;
    }
    AimFormants(target, phoneme->locus, voice, scale);
    target.noiseHz = phoneme->noiseHz;
    target.noiseBandwidth = phoneme->noiseBandwidth;
    switch (phoneme->manner) {
    case Manner::Nasal:
        target.voicing = 0.55F;
        target.bandwidth = {100, 260, 300, 400};
        target.hz[0] = std::min(target.hz[0], 280.0F * scale);
        break;
    case Manner::Glide:
        target.voicing = 0.7F;
        break;
    case Manner::Tap:
        target.voicing = progress > 0.35F && progress < 0.75F ? 0.12F : 0.7F;
        break;
    case Manner::Fricative:
        target.voicing = phoneme->voiced ? 0.35F : 0;
        target.noise = phoneme->noiseLevel;
        break;
    case Manner::Plosive:
        AimClosure(target, *phoneme, into, length, length - std::min(kBurst, length * 2 / 5));
        break;
    case Manner::Affricate:
        AimClosure(target, *phoneme, into, length, length * 2 / 5);
        break;
    case Manner::Aspirate: {
        const Phoneme* const next = NucleusOf(segment) ? NucleusOf(segment) : vowel;
        if (next && IsVowel(*next))
            AimVowel(target, *next, 0, voice);
        target.voicing = phoneme->voiced ? 0.3F : 0;
        target.aspiration = phoneme->noiseLevel;
        break;
    }
    case Manner::Breath:
        target.aspiration = phoneme->noiseLevel;
        break;
    case Manner::Vowel:
        break;
    }
    return target;
}

} // namespace rve
