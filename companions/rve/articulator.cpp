#include "articulator.h"

#include "shapes.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

namespace rve {

namespace {

constexpr Voice kVoices[] = {
    {Tract::Woman, 0.95F, 0.30F, 3400}, // soprano
    {Tract::Man, 1.00F, 0.30F, 3100},   // tenor
    {Tract::Child, 0.95F, 0.30F, 3200}, // child
    {Tract::Man, 0.96F, 0.30F, 2500},   // bass
};

/// The rest of a vowel's formants by tract, and the distance of the resonances above: a tube's of 17.5, 15 and 13 cm.
constexpr float kFourth[kTracts] = {3500, 4150, 4700};
constexpr float kApart[kTracts] = {1000, 1170, 1350};
/// What a man's consonant places are multiplied by.
constexpr float kPlaceScale[kTracts] = {1.0F, 1.17F, 1.35F};
constexpr float kBandwidths[kFormants] = {85, 110, 155, 230};

constexpr Time kBurst = FromMilliseconds(22);
constexpr Time kBreathAfterBurst = FromMilliseconds(55);
constexpr Time kDiphthongTurn = FromMilliseconds(180); // at its end, however long it is
constexpr float kMostTurn = 0.65F;                     // of a short one
constexpr Time kMoveToConsonant = FromMilliseconds(50);
constexpr float kConsonantShare = 0.7F; // how far a vowel goes towards the consonant that ends it
constexpr float kAspirationAfterBurst = 0.8F;
constexpr float kOpeningMilliseconds = 20;
constexpr Time kNasalEdge = FromMilliseconds(60);
constexpr float kEdgeNasality = 0.6F;
constexpr float kFrontedBySide = 1.22F; // the second formant of u: after the tongue's tip

/// A sound of a segment, and what stands beside it.
struct Moment {
    const Phoneme* before = nullptr;
    const Phoneme* phoneme = nullptr;
    const Phoneme* after = nullptr;
    Time begin = 0, end = 0;
};

bool IsAtRidge(const Phoneme& phoneme) {
    return !IsVowel(phoneme) && phoneme.locus[1] > 1600 && phoneme.locus[2] < 2850;
}

void AimFormants(Target& target, const float (&hz)[3], const Voice& voice, float scale) {
    const auto tract = static_cast<size_t>(voice.tract);
    for (size_t i = 0; i < 3; ++i)
        target.hz[i] = hz[i] * scale * voice.formantScale;
    target.hz[3] = kFourth[tract] * voice.formantScale;
    target.upperApart = kApart[tract] * voice.formantScale;
    target.upperHz = target.hz[3] + target.upperApart;
    std::copy(std::begin(kBandwidths), std::end(kBandwidths), target.bandwidth.begin());
}

/// A vowel `share` of the way to where it ends.
void VowelPlaces(const Phoneme& vowel, float share, const Voice& voice, float (&hz)[3]) {
    const auto tract = static_cast<size_t>(voice.tract);
    for (size_t i = 0; i < 3; ++i) {
        hz[i] = vowel.from->hz[tract][i];
        if (vowel.to)
            hz[i] += (vowel.to->hz[tract][i] - hz[i]) * share;
    }
}

/// A consonant's places beside a vowel, whose second formant it takes over in part.
void ConsonantPlaces(const Phoneme& consonant, const Phoneme* vowel, bool vowelEnds, const Voice& voice,
                     float (&hz)[3]) {
    const float scale = kPlaceScale[static_cast<int>(voice.tract)];
    for (size_t i = 0; i < 3; ++i)
        hz[i] = consonant.locus[i] * scale;
    if (!vowel || !IsVowel(*vowel))
        return;
    float places[3];
    VowelPlaces(*vowel, vowelEnds ? 1.0F : 0.0F, voice, places);
    hz[1] += (places[1] - hz[1]) * consonant.follow;
}

float TurnOf(const Moment& moment, Time now) {
    const Time length = moment.end - moment.begin;
    const Time turn =
        std::max<Time>(std::min(kDiphthongTurn, static_cast<Time>(kMostTurn * static_cast<float>(length))), 1);
    return Smoothstep(1 - static_cast<float>(moment.end - now) / static_cast<float>(turn));
}

float NearEnd(Time left, Time span) { return Smoothstep(1 - static_cast<float>(left) / static_cast<float>(span)); }

void AimVowel(Target& target, const Moment& moment, Time now, const Voice& voice) {
    const Phoneme& vowel = *moment.phoneme;
    float hz[3];
    VowelPlaces(vowel, TurnOf(moment, now), voice, hz);
    if (vowel.isFronted && moment.before && IsAtRidge(*moment.before))
        hz[1] *= kFrontedBySide;
    if (moment.before && moment.before->manner == Manner::Nasal)
        target.nasality = kEdgeNasality * NearEnd(now - moment.begin, kNasalEdge);
    if (moment.after && !IsVowel(*moment.after) && moment.after->manner != Manner::Aspirate) {
        float end[3];
        ConsonantPlaces(*moment.after, &vowel, true, voice, end);
        const float share = kConsonantShare * NearEnd(moment.end - now, kMoveToConsonant);
        for (size_t i = 0; i < 3; ++i)
            hz[i] += (end[i] - hz[i]) * share;
        if (moment.after->manner == Manner::Nasal)
            target.nasality = std::max(target.nasality, kEdgeNasality * NearEnd(moment.end - now, kNasalEdge));
    }
    AimFormants(target, hz, voice, 1.0F);
    target.voicing = 1;
}

Time BreathAfterBurst(const Moment& moment) {
    return IsAspirated(*moment.phoneme) ? std::min(kBreathAfterBurst, (moment.end - moment.begin) * 2 / 5) : 0;
}

/// A closure for the first part, then hiss: plosives and affricates. After an aspirated one breath, until the vowel.
void AimClosure(Target& target, const Moment& moment, Time now) {
    const Phoneme& phoneme = *moment.phoneme;
    const Time length = moment.end - moment.begin;
    const Time breath = BreathAfterBurst(moment);
    const Time hiss =
        phoneme.manner == Manner::Affricate ? length * 3 / 5 : std::min(kBurst, (length - breath) * 2 / 5);
    const Time into = now - moment.begin;
    const bool closed = into < length - breath - hiss;
    if (phoneme.voiced) {
        target.voicing = closed ? 0.3F : 0.4F;
        target.muffling = 1;
    }
    if (closed)
        return;
    if (into < length - breath)
        target.noise = phoneme.noiseLevel;
    else
        target.aspiration = kAspirationAfterBurst;
}

/// What sounds at a time, and between what.
Moment FindMoment(const Segment& segment, Time now, const Segment* next) {
    Moment moment{nullptr, nullptr, nullptr, segment.start, segment.end};
    for (int i = 0; i < segment.unitCount; ++i) {
        const Unit& unit = segment.units[static_cast<size_t>(i)];
        if (i > 0 && unit.begin > now) {
            moment.after = unit.phoneme;
            return moment;
        }
        moment = {moment.phoneme, unit.phoneme, nullptr, unit.begin, unit.end};
    }
    if (next && next->unitCount > 0) {
        moment.after = next->units[0].phoneme;
        moment.end = std::min(moment.end, next->Onset());
    }
    return moment;
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

Target AimAt(const Segment& segment, Time now, const Voice& voice, const Phoneme* vowel, const Segment* next) {
    Target target;
    Moment moment = FindMoment(segment, now, next);
    if (!moment.phoneme)
        moment.phoneme = vowel;
    if (!moment.phoneme) { // nothing was ever given: the neutral vowel
        static const Phoneme* const neutral = FindPhoneme("@", 1);
        moment.phoneme = neutral;
    }
    if (IsVowel(*moment.phoneme)) {
        AimVowel(target, moment, now, voice);
        return target;
    }
    const Phoneme& phoneme = *moment.phoneme;
    const Phoneme* const beside = NucleusOf(segment) ? NucleusOf(segment) : vowel;
    const bool after = now >= segment.start;
    float hz[3];
    ConsonantPlaces(phoneme, beside, after, voice, hz);
    // In the breath after a burst the mouth opens for what follows.
    const bool opens = moment.after && moment.end - now <= BreathAfterBurst(moment);
    if (opens && IsVowel(*moment.after))
        VowelPlaces(*moment.after, 0, voice, hz);
    else if (opens)
        ConsonantPlaces(*moment.after, beside, after, voice, hz);
    AimFormants(target, hz, voice, 1.0F);
    if (opens)
        target.formantMilliseconds = kOpeningMilliseconds;
    const float scale = kPlaceScale[static_cast<int>(voice.tract)];
    target.noiseHz = phoneme.noiseHz * std::sqrt(scale);
    target.noiseBandwidth = phoneme.noiseBandwidth;
    if (phoneme.follow >= 0.8F) // the burst of the velum is where the second formant begins
        target.noiseHz = target.hz[1];
    const Time length = std::max<Time>(moment.end - moment.begin, 1);
    const float progress = static_cast<float>(now - moment.begin) / static_cast<float>(length);
    switch (phoneme.manner) {
    case Manner::Nasal:
        target.voicing = 0.55F;
        target.nasality = 1;
        target.bandwidth = {60, 200, 250, 300};
        break;
    case Manner::Glide:
        target.voicing = 0.7F;
        target.formantMilliseconds = 20;
        break;
    case Manner::Tap:
        target.voicing = progress > 0.35F && progress < 0.75F ? 0.12F : 0.7F;
        break;
    case Manner::Fricative:
        target.voicing = phoneme.voiced ? 0.35F : 0;
        target.muffling = 0.7F;
        target.noise = phoneme.noiseLevel;
        break;
    case Manner::Plosive:
    case Manner::Affricate:
        AimClosure(target, moment, now);
        break;
    case Manner::Aspirate:
        if (beside && IsVowel(*beside)) {
            VowelPlaces(*beside, 0, voice, hz);
            AimFormants(target, hz, voice, 1.0F);
        }
        target.voicing = phoneme.voiced ? 0.3F : 0;
        target.aspiration = phoneme.noiseLevel;
        break;
    case Manner::Breath:
        target.aspiration = phoneme.noiseLevel;
        break;
    case Manner::Vowel:
        break;
    }
    return target;
}

} // namespace rve
