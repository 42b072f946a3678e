#include "singer.h"

#include "place.h"
#include "shapes.h"
#include "without_subnormals.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace rve {

namespace {

constexpr uint32_t kRates[] = {44100, 48000, 96000};
constexpr int kStep = 256;
constexpr uint32_t kSeed = 0x2545F491;

constexpr float kLevel = 0.063F;          // RMS of full scale at the default dynamics and velocity: -24 dB
constexpr float kSyntheticLevel = 0.055F; // the same of the tract, which is then as loud as persons are
constexpr float kDynamicsDb = 0.2F;       // a unit of dynamics
constexpr float kFadeBelow = 12;          // units, from which on dynamics fade to silence at 0
constexpr float kVelocityDb = 0.08F;      // a unit of velocity
constexpr int kDefaultDynamics = 72;
constexpr int kDefaultVelocity = 64;
constexpr float kNoseHz = 270;      // of a man
constexpr float kNotchAbove = 0.7F; // its notch when the nose is open, as a share of that
constexpr float kEffort = 0.6F;     // decibels above its corner, more, for each of loudness
constexpr float kEffortAtRest = -3; // decibels there, at the default loudness
constexpr float kEffortHz = 500;
constexpr float kShelfHz = 2500;
constexpr float kFirstLift = 0.7F; // of the pitch: singers lift the first formant towards it; beyond, vowels are lost
constexpr float kBreathHz = 220;   // above, breath grows with the pitch, as it alone sounds between harmonics far apart
constexpr float kMostBreath = 2;   // beside that at rest: more is a whisper, and louder
constexpr float kFlatHiss = 4000;  // from this width on a hiss has no edges: that of lips and teeth
constexpr float kMuffledHz = 250;  // the source's corner behind a closure
constexpr float kAspirationLevel = 0.4F;
constexpr float kFaded = 0.03F;                    // of a voice
constexpr float kLevelEvenness = 0.85F;            // 1: all vowels on all notes are equally strong
constexpr Time kSafetyTail = FromMilliseconds(60); // a segment that promised to go on and did not
constexpr float kAttackFloor = 0.15F;              // of a note's loudness, where it begins
constexpr float kAttackAfterConsonant = 0.5F;
constexpr float kQuiet = 1e-5F;
constexpr float kAlone = 0.999F;    // a person's share of the sound, where the other tract rests
constexpr float kAside = 0.001F;    // and where the person does
constexpr float kEffortTilt = 0.5F; // decibels at 3 kHz beside each of loudness
constexpr float kHarmonicsTilt = 6; // decibels at 3 kHz, of that control

/// Controls rest in the middle, nearly always.
float Exp2(float x) { return x == 0 ? 1.0F : std::exp2(x); }

float FromDb(float db) { return Exp2(db * 0.166096F); }

/// To the nearest whole number, of one far below 2^22: what lies behind the point falls off the sum's end. std::lrint
/// is a call.
float Rounded(float x) {
    constexpr float kNoFraction = 12582912; // 1.5 * 2^23
    return (x + kNoFraction) - kNoFraction;
}

/// A level that moves in a line; `At(0)` is that of the first sample.
struct Ramp {
    float from, step;
    float At(int i) const { return from + step * static_cast<float>(i + 1); }
};

constexpr float kKnee = 0.75F;

/// Full scale is approached, never reached: the upper quarter bends.
float Limit(float x) {
    const float size = std::abs(x);
    if (size <= kKnee)
        return x;
    const float over = size - kKnee;
    return std::copysign(kKnee + over / (1 + over / (0.99F - kKnee)), x);
}

void ToIntegers(float* sounds, uint32_t count, int16_t* samples) {
    bool isLoud = false;
    for (uint32_t i = 0; i < count; ++i)
        isLoud |= std::abs(sounds[i]) > kKnee;
    if (isLoud)
        std::transform(sounds, sounds + count, sounds, Limit);
    for (uint32_t i = 0; i < count; ++i)
        samples[i] = static_cast<int16_t>(Rounded(sounds[i] * 32767.0F));
}

} // namespace

Singer::Singer() { Reset(); }

bool Singer::Configure(uint32_t rate, bool isStill) {
    if (std::find(std::begin(kRates), std::end(kRates), rate) == std::end(kRates))
        return false;
    LoadBanks();
    m_rate = rate;
    m_isStill = isStill;
    m_whiteLevel = static_cast<float>(std::sqrt(m_rate / kTimeBase));
    for (size_t i = 0; i < m_paces.size(); ++i)
        m_paces[i] = PaceOf(static_cast<float>(i));
    m_effortShare = 1 - std::exp(-6.2831853F * kEffortHz / static_cast<float>(m_rate));
    m_shelf = 1 - std::exp(-6.2831853F * kShelfHz / static_cast<float>(m_rate));
    m_recorded.Configure(rate, isStill);
    Reset();
    return true;
}

void Singer::Reset() {
    m_stepStart = 0;
    m_steps = 0;
    m_sampleInStep = 0;
    m_untilTick = 0;
    m_decoder.Reset();
    m_timeline.Clear();
    m_controls.fill(64);
    m_controls[static_cast<size_t>(Control::Program)] = 0;
    m_controls[static_cast<size_t>(Control::Language)] = 0;
    m_controls[static_cast<size_t>(Control::PitchBend)] = 8192;
    m_controls[static_cast<size_t>(Control::BendSensitivity)] = 2;
    m_controls[static_cast<size_t>(Control::Dynamics)] = kDefaultDynamics;
    m_controls[static_cast<size_t>(Control::VibratoDepth)] = 48;
    m_controls[static_cast<size_t>(Control::TremoloDepth)] = 0;
    m_program = 0;
    m_currentStart = -1;
    m_vowel = nullptr;
    m_isJapanese = false;
    m_pitch.Reset();
    m_gain = m_voicing = m_aspiration = m_noise = m_breath = {};
    m_voicingNow = m_aspirationNow = m_noiseNow = 0;
    m_voicingStep = m_aspirationStep = m_noiseStep = 0;
    m_aim = {};
    m_aim.hz = {500, 1500, 2500, 3500};
    m_aim.bandwidth = {70, 90, 130, 200};
    m_hz = {{{500}, {1500}, {2500}, {3500}}};
    m_bandwidth = {{{70}, {90}, {130}, {200}}};
    m_noiseHz = {4000};
    m_noiseBandwidth = {2000};
    m_upperHz = {4500};
    m_upperApart = {1000};
    m_nasality = m_muffling = {0};
    m_boost = {{{1}, {1}, {1}, {1}}};
    m_tilt = 1;
    m_tiltState = m_effortState = m_shelfState = 0;
    m_effort = {FromDb(kEffortAtRest)};
    m_tiltHz = {5000};
    m_shelfGain = {0};
    m_shelfNow = m_shelfStep = 0;
    m_glottis.Reset();
    m_random.Reset(kSeed);
    m_person = nullptr;
    m_isPerson = false;
    m_recorded.Begin();
    m_colour = {};
    m_recordedNow = m_recordedStep = 0;
    m_personShare = {};
    m_shareNow = m_shareStep = 0;
    m_tract.Reset();
    for (Band& band : m_hiss)
        band.Reset();
}

float Singer::VoiceControl(int index) const {
    const int value = m_controls[static_cast<size_t>(Control::FirstVoiceControl) + static_cast<size_t>(index)];
    return std::clamp(static_cast<float>(value - 64) / 63.0F, -1.0F, 1.0F);
}

float Singer::NoiseFactor() const {
    const float wish = VoiceControl(13);
    return wish < 0 ? 1 + wish : 1 + 7 * wish;
}

float Singer::Pace(float milliseconds) const {
    const auto whole = static_cast<size_t>(milliseconds);
    return whole < m_paces.size() && static_cast<float>(whole) == milliseconds ? m_paces[whole] : PaceOf(milliseconds);
}

float Singer::PaceOf(float milliseconds) const {
    return std::min(1.0F, 1 - std::exp(-static_cast<float>(kTickSamples * 1000 / m_rate) / milliseconds));
}

uint32_t Singer::Step(int32_t eventCount, const RVEEvent* events, int16_t* samples, uint32_t capacity) {
    const WithoutSubnormals without;
    for (int32_t i = 0; i < eventCount; ++i) {
        const RVEEvent& event = events[i];
        const Time now = m_stepStart + std::min<uint32_t>(event.delta, kStep - 1);
        m_decoder.Message(
            event.status, event.data1, event.data2, now, [this](const Segment& segment) { m_timeline.Add(segment); },
            [this](const ControlChange& change) {
                if (const ControlChange* const dropped = m_timeline.Add(change))
                    Apply(*dropped);
            });
    }
    // The step's share of samples at the output rate, so that no fraction is ever lost.
    const auto samplesUntil = [this](uint64_t steps) {
        return steps * kStep * static_cast<uint64_t>(m_rate) / static_cast<uint64_t>(kTimeBase);
    };
    const auto count = static_cast<uint32_t>(samplesUntil(m_steps + 1) - samplesUntil(m_steps));
    int made = 0;
    for (m_sampleInStep = 0; m_sampleInStep < count; m_sampleInStep += static_cast<uint32_t>(made)) {
        if (m_untilTick == 0) {
            Tick();
            m_untilTick = kTickSamples;
        }
        made = static_cast<int>(std::min(static_cast<uint32_t>(m_untilTick), count - m_sampleInStep));
        m_untilTick -= made;
        std::array<float, kTickSamples> sounds;
        MakeSamples(sounds.data(), made);
        const uint32_t room = capacity - std::min(capacity, m_sampleInStep);
        ToIntegers(sounds.data(), std::min(static_cast<uint32_t>(made), room), samples + m_sampleInStep);
    }
    ++m_steps;
    m_stepStart += kStep;
    return std::min(count, capacity);
}

const Segment* Singer::FindCurrent(Time now) {
    int current = -1;
    while (current + 1 < m_timeline.SegmentCount() && m_timeline.SegmentAt(current + 1).Onset() <= now)
        ++current;
    if (current < 0)
        return nullptr;
    m_timeline.DropSegments(current);
    const Segment& segment = m_timeline.SegmentAt(0);
    if (segment.start != m_currentStart)
        BeginSegment(segment);
    if (now < segment.end + (segment.ends ? 0 : kSafetyTail))
        return &segment;
    // Over, and nothing follows yet: it stays as the place to start from until its release has rung out.
    return nullptr;
}

const Segment* Singer::FindNext(const Segment& segment) const {
    constexpr Time kTogether = FromMilliseconds(5);
    if (m_timeline.SegmentCount() < 2)
        return nullptr;
    const Segment& next = m_timeline.SegmentAt(1);
    return next.Onset() <= segment.end + kTogether ? &next : nullptr;
}

void Singer::BeginSegment(const Segment& segment) {
    m_currentStart = segment.start;
    if (const Phoneme* const nucleus = NucleusOf(segment)) {
        m_vowel = nucleus;
        if (IsVowel(*nucleus))
            m_isJapanese = IsJapaneseVowel(*nucleus);
    }
}

/// Out of silence every sound begins alike, wherever the song was begun: nothing of the one before is left to be heard.
void Singer::BeginSound() {
    m_pitch.BeginSound();
    m_tiltState = m_effortState = m_shelfState = 0;
    m_glottis.Reset();
    m_random.Reset(kSeed);
    m_recorded.Begin();
    m_tract.Reset();
    for (Band& band : m_hiss)
        band.Reset();
}

/// The note's own loudness, 0..1 and a little more at a strong attack.
float Singer::Envelope(const Segment* segment, Time now) {
    if (!segment)
        return 0;
    float level = 1;
    if (segment->begins && (segment->attack.present || !m_isPerson)) { // a person's own onsets are in the recording
        // Out of nothing or a closure; a sonorant before the vowel is the beginning of its tone.
        Time from = segment->start;
        int vowel = 0;
        while (vowel < segment->unitCount && segment->units[static_cast<size_t>(vowel)].begin < segment->start)
            ++vowel;
        for (; vowel > 0 && IsSonorant(*segment->units[static_cast<size_t>(vowel - 1)].phoneme); --vowel)
            from = segment->units[static_cast<size_t>(vowel - 1)].begin;
        const float floor = vowel > 0 ? kAttackAfterConsonant : kAttackFloor;
        const float attack = segment->attack.present
                                 ? (4 + 0.8F * segment->attack.duration) * StyleTime(segment->attack, 2.5F, 0.3F)
                                 : 8.0F;
        const auto into = static_cast<float>(static_cast<double>(now - from) / kTimeBase * 1000);
        level = into < 0 ? 1.0F : floor + (1 - floor) * Smoothstep(into / attack);
        if (segment->attack.present && segment->attack.style == 2 && into >= 0)
            level *= FromDb(6.0F * segment->attack.depth / 127.0F * std::exp(-into / 90.0F));
    }
    return level;
}

PitchControls Singer::PitchControlsNow() const {
    const float bend = static_cast<float>(ControlValue(Control::PitchBend) - 8192) / 8192.0F;
    return {bend * static_cast<float>(ControlValue(Control::BendSensitivity)),
            3.0F + 0.04F * static_cast<float>(ControlValue(Control::VibratoRate)),
            static_cast<float>(ControlValue(Control::VibratoDepth)), m_isStill ? 0.0F : 1.0F};
}

void Singer::MoveTract(const Target& target, float f0) {
    // What fades is not heard to move, and the next sound's breath would be heard on the way.
    const bool isFaded = std::max({m_voicing.value, m_aspiration.value, m_noise.value}) < kFaded;
    const float pace = m_isFirstTick || isFaded ? 1.0F : Pace(target.formantMilliseconds);
    const float gender = Exp2(0.25F * VoiceControl(16));
    const float sharpness = Exp2(-0.5F * VoiceControl(15));
    for (int i = 0; i < kFormants; ++i) {
        const auto f = static_cast<size_t>(i);
        float hz = target.hz[f] * gender * Exp2(0.25F * VoiceControl(i * 3));
        float bandwidth = target.bandwidth[f] * sharpness * Exp2(VoiceControl(i * 3 + 1));
        if (i == 0 && hz < f0 * kFirstLift) {
            hz = f0 * kFirstLift;
            bandwidth = std::max(bandwidth, f0 * 0.3F);
        }
        if (i == 1)
            hz = std::max(hz, m_hz[0].value * 1.1F);
        m_hz[f].Approach(hz, pace);
        m_bandwidth[f].Approach(bandwidth, pace);
        m_boost[f].Approach(FromDb(12 * VoiceControl(i * 3 + 2)), pace);
        m_tract.Set(i, m_hz[f].value, m_bandwidth[f].value, static_cast<float>(m_rate));
        m_tract.SetBoost(i, m_boost[f].value, kTickSamples);
    }
    // What lies high up is heard at once when it is moved, so that it is moved slowly.
    const bool isHeard = !m_isFirstTick && m_shareNow < kAlone;
    const float upperPace = isHeard ? Pace(500) : 1.0F;
    m_upperHz.Approach(target.upperHz * gender, upperPace);
    m_upperApart.Approach(target.upperApart * gender, upperPace);
    m_tract.SetUpper(m_upperHz.value, m_upperApart.value, static_cast<float>(m_rate));
    m_nasality.Approach(target.nasality, m_isFirstTick ? 1.0F : Pace(8));
    const float nose = kNoseHz * m_upperApart.value / 1000; // as long as the tract
    m_tract.SetNose(nose, nose * (1 + kNotchAbove * m_nasality.value), static_cast<float>(m_rate));
    if (target.noise > 0) {
        const float noisePace = m_noise.value < 0.01F ? 1.0F : Pace(6);
        m_noiseHz.Approach(target.noiseHz, noisePace);
        m_noiseBandwidth.Approach(target.noiseBandwidth, noisePace);
    }
    if (target.noise > 0 || m_isFirstTick) {
        const Poles hiss = PolesAt(m_noiseHz.value, m_noiseBandwidth.value, static_cast<float>(m_rate));
        for (Band& band : m_hiss)
            band.Set(hiss);
        m_isHissSteep = m_noiseBandwidth.value < kFlatHiss;
        // A quarter turn times its width is what passes both bands, twice that one; the noise's variance is a third.
        const float passes = (m_isHissSteep ? 0.785398F : 1.570796F) * m_noiseBandwidth.value;
        m_hissGain = std::sqrt(3 * static_cast<float>(m_rate) / 2 / passes);
    }
}

float Singer::CornerHz() const {
    return m_muffling.value == 0 ? m_tiltHz.value
                                 : m_tiltHz.value * std::pow(kMuffledHz / m_tiltHz.value, m_muffling.value);
}

/// What brings the voice to an even level: the tract lifts some harmonics of some notes by twenty decibels and more.
float Singer::LevelFor(float f0) const {
    const float step = 6.2831853F * f0 / static_cast<float>(m_rate);
    const float cut = 6.2831853F * m_tiltHz.value / static_cast<float>(m_rate);
    const double first = std::cos(static_cast<double>(step));
    VocalTract::Gains cosines; // of each harmonic, by those of the two below it
    double before = 1, cosine = first;
    for (double& each : cosines)
        each = std::exchange(cosine, 2 * first * cosine - std::exchange(before, cosine));
    const VocalTract::Gains gains = m_tract.GainsSquared(cosines);
    std::array<float, VocalTract::kGains> powers;
    for (size_t i = 0; i < powers.size(); ++i) {
        const auto k = static_cast<float>(static_cast<int>(i) + 1);
        const float w = step * k;
        const float u = f0 * k / kEffortHz;
        powers[i] = static_cast<float>(gains[i]) / (k * k * (1 + w * w / (cut * cut))) *
                    (1 + m_effort.value * m_effort.value * u * u) / (1 + u * u);
    }
    float power = 0;
    for (size_t i = 0; i < powers.size() && step * static_cast<float>(i + 1) < 3.0F; ++i)
        power += powers[i];
    const float rms = 0.5F * std::sqrt(power / 2);
    return kSyntheticLevel * std::pow(std::max(rms, 0.01F), -kLevelEvenness);
}

void Singer::Tick() {
    const Time now = m_stepStart + static_cast<Time>(m_sampleInStep * kTimeBase / m_rate);
    while (const ControlChange* const change = m_timeline.TakeDue(now))
        Apply(*change);
    const Voice& voice = VoiceOf(ControlValue(Control::Program));
    const RecordedPerson* const person = PersonOf(ControlValue(Control::Program), m_bank);
    m_isPerson = person != nullptr;
    if (m_isPerson && !m_person)
        m_recorded.Begin();
    if (m_isPerson || m_shareNow == 0) // who gives way to the tract sings on meanwhile
        m_person = person;
    const Segment* const segment = FindCurrent(now);
    m_isFirstTick = segment && m_gain.value == 0;
    if (m_isFirstTick)
        BeginSound();

    Target target = m_aim; // what fades stays as it was
    target.voicing = target.aspiration = target.noise = 0;
    float release = 25;
    if (segment) {
        target = m_aim = AimAt(*segment, now, voice, m_vowel, FindNext(*segment));
    } else {
        if (m_timeline.SegmentCount() > 0 && m_timeline.SegmentAt(0).release.present) {
            const Shape& shape = m_timeline.SegmentAt(0).release;
            release = (15 + 0.9F * shape.duration) * StyleTime(shape, 2.0F, 0.25F);
        }
    }
    const float f0 =
        m_pitch.Advance(now, static_cast<float>(kTickSamples * 1000 / m_rate), m_timeline, segment, PitchControlsNow());
    m_glottis.SetFrequency(std::min(f0, static_cast<float>(m_rate) * 0.45F) / static_cast<float>(m_rate));
    m_personShare.Approach(m_isPerson ? 1.0F : 0.0F, m_isFirstTick ? 1.0F : Pace(20));
    if (!m_isPerson && m_personShare.value < kAside)
        m_personShare.value = 0;
    if (m_isFirstTick)
        m_shareNow = m_personShare.value;
    m_shareStep = (m_personShare.value - m_shareNow) / kTickSamples; // in a line, as the levels move
    const bool isSynthetic = m_shareNow < kAlone || m_personShare.value < kAlone;
    if (isSynthetic)
        MoveTract(target, f0);

    const int velocity = segment ? segment->velocity : kDefaultVelocity;
    const int dynamics = ControlValue(Control::Dynamics);
    const float effortDb = kDynamicsDb * static_cast<float>(dynamics - kDefaultDynamics) +
                           (segment ? kVelocityDb * static_cast<float>(velocity - kDefaultVelocity) : 0);
    const float gain = FromDb(effortDb) * std::min(static_cast<float>(dynamics) / kFadeBelow, 1.0F);
    const float tremolo = 0.6F * static_cast<float>(ControlValue(Control::TremoloDepth)) / 127.0F;
    const float wave = (1 + tremolo * m_pitch.Swing()) * m_pitch.Unevenness();
    if (segment)
        m_gain.Approach(gain * wave, m_isFirstTick ? 1.0F : Pace(10));
    else
        m_gain.Approach(m_gain.value, 1);

    MovePerson(segment, now, f0, effortDb);
    const float envelope = Envelope(segment, now);
    if (m_isPerson && segment)
        target.voicing = 1; // its consonants have levels of their own
    const bool rising = target.voicing * envelope > m_voicing.value;
    m_voicing.Approach(target.voicing * envelope, Pace(segment ? (rising ? 3.0F : 6.0F) : release / 3));
    m_aspiration.Approach(target.aspiration, Pace(6));
    m_noise.Approach(target.noise, Pace(target.noise > m_noise.value ? 3.0F : 5.0F));
    for (Smoothed* level : {&m_voicing, &m_aspiration, &m_noise})
        if (!segment && level->value < kQuiet * 10)
            level->value = 0;
    if (!segment && m_voicing.value == 0 && m_aspiration.value == 0 && m_noise.value == 0) {
        m_gain.value = 0;
        m_timeline.DropSegments(m_timeline.SegmentCount() > 0 && m_timeline.SegmentAt(0).Onset() <= now ? 1 : 0);
    }

    // Levels move in a line through the tick, so that no controller makes a step.
    const float clearness = FromDb(6 * VoiceControl(15));
    const float perSample = 1.0F / kTickSamples;
    const float recorded = m_voicing.value * m_gain.value * kLevel / m_recorded.NucleusLevel();
    if (m_shareNow == 0) // what the level was meant for before is nothing that is sung now
        m_recordedNow = recorded;
    m_recordedStep = (recorded - m_recordedNow) * perSample;
    m_voicingStep = (m_voicing.value * m_gain.value * (isSynthetic ? LevelFor(f0) : 0) - m_voicingNow) * perSample;
    m_aspirationStep =
        (m_aspiration.value * m_gain.value * kSyntheticLevel * kAspirationLevel - m_aspirationNow) * perSample;
    m_noiseStep = (m_noise.value * m_gain.value * kSyntheticLevel * clearness - m_noiseNow) * perSample;
    m_breath.Approach(voice.breath * NoiseFactor() * std::clamp(f0 / kBreathHz, 1.0F, kMostBreath),
                      m_isFirstTick ? 1.0F : Pace(15));

    const float brightnessPace = m_isFirstTick ? 1.0F : Pace(15);
    m_muffling.Approach(target.muffling, m_isFirstTick ? 1.0F : Pace(4));
    m_tiltHz.Approach(voice.tiltHz * Exp2(1.2F * VoiceControl(12)), brightnessPace);
    // Louder singing is brighter singing.
    m_effort.Approach(FromDb(kEffortAtRest + kEffort * effortDb), segment ? brightnessPace : 0);

    m_tilt = 1 - std::exp(-6.2831853F * std::min(CornerHz(), 15000.0F) / static_cast<float>(m_rate));
    m_shelfGain.Approach(FromDb(9 * VoiceControl(14)) - 1, brightnessPace);
    if (m_isFirstTick)
        m_shelfNow = m_shelfGain.value;
    m_shelfStep = (m_shelfGain.value - m_shelfNow) * perSample;
}

/// What a recorded person takes of the controls.
void Singer::MovePerson(const Segment* segment, Time now, float f0, float effortDb) {
    if (!m_person || (!segment && m_gain.value == 0))
        return;
    Colour colour;
    const float sharpness = Exp2(-0.5F * VoiceControl(15));
    for (int i = 0; i < kFormants; ++i) {
        const auto f = static_cast<size_t>(i);
        colour.frequency[f] = Exp2(0.25F * VoiceControl(i * 3));
        colour.width[f] = sharpness * Exp2(VoiceControl(i * 3 + 1));
        colour.decibels[f] = 12 * VoiceControl(i * 3 + 2);
    }
    // Another language's vowels are aimed at where they lie, so that the tract stays as it was recorded.
    colour.size = (m_isJapanese ? 1 : m_person->size) * Exp2(0.25F * VoiceControl(16));
    colour.tilt = kEffortTilt * effortDb + kHarmonicsTilt * VoiceControl(12);
    colour.breath = NoiseFactor();
    colour.hiss = FromDb(6 * VoiceControl(15));
    colour.lowest = f0 * kFirstLift;
    m_colour.Approach(colour, m_isFirstTick ? 1.0F : Pace(15));
    m_recorded.Move(now, kTickSamples, f0, m_colour, m_timeline, *m_bank, *m_person);
}

/// At most a tick's.
void Singer::MakeSamples(float* samples, int count) {
    if (m_shareNow == 0 && m_shareStep == 0)
        MakeSyntheticAlone(samples, count);
    else
        MakeMixed(samples, count);
    if (m_shelfGain.value == 0 && m_shelfNow == 0)
        return; // nearly always; where it rises again, it rises from nothing
    float shelf = m_shelfState, gain = m_shelfNow;
    for (int i = 0; i < count; ++i) {
        shelf += (samples[i] - shelf) * m_shelf;
        gain += m_shelfStep;
        samples[i] += (samples[i] - shelf) * gain;
    }
    m_shelfState = shelf;
    m_shelfNow = gain;
}

void Singer::MakeSyntheticAlone(float* samples, int count) {
    const int silent = MakeSynthetic(samples, count);
    m_recordedNow = silent < count ? m_recordedStep : m_recordedNow + static_cast<float>(count) * m_recordedStep;
}

void Singer::MakeMixed(float* samples, int count) {
    std::array<float, kTickSamples> shares, synthetic;
    int wanted = 0; // of the synthetic sounds
    for (int i = 0; i < count; ++i) {
        shares[Place(i)] = m_shareNow += m_shareStep;
        wanted += shares[Place(i)] < kAlone;
    }
    const int silent = MakeSynthetic(synthetic.data(), wanted);
    int made = 0;
    for (int i = 0; i < count; ++i) {
        const float share = shares[Place(i)];
        float sound = 0;
        if (share < kAlone) {
            if (made >= silent)
                m_recordedNow = 0;
            sound = synthetic[Place(made++)] * (1 - share);
        }
        m_recordedNow += m_recordedStep;
        if (share > kAside)
            sound += m_recorded.Next() * m_recordedNow * share;
        samples[i] = sound;
    }
}

/// Returns the first of them from which on all is silent, as there is nothing to sing; `count` when there is none.
int Singer::MakeSynthetic(float* sounds, int count) {
    const Ramp voicing{m_voicingNow, m_voicingStep}, aspiration{m_aspirationNow, m_aspirationStep},
        noise{m_noiseNow, m_noiseStep};
    int silent = count;
    if (m_gain.value == 0) {
        const auto isQuiet = [](const Ramp& ramp, int i) { return ramp.At(i) < kQuiet * 0.01F; };
        silent = 0;
        while (silent < count && !(isQuiet(voicing, silent) && isQuiet(aspiration, silent) && isQuiet(noise, silent)))
            ++silent;
    }
    m_voicingNow = silent < count ? 0 : voicing.At(count - 1);
    m_aspirationNow = silent < count ? 0 : aspiration.At(count - 1);
    m_noiseNow = silent < count ? 0 : noise.At(count - 1);

    std::array<float, kTickSamples> units;
    for (int i = 0; i < count; ++i)
        units[Place(i)] = m_random.Next();
    // Each sample follows from the one before it, in several filters at once, whose states stay in registers.
    Glottis glottis = m_glottis;
    float tilt = m_tiltState, effort = m_effortState;
    for (int i = 0; i < count; ++i) {
        const float pulse = glottis.Next() + units[Place(i)] * m_whiteLevel * m_breath.value * glottis.Openness();
        tilt += (pulse - tilt) * m_tilt;
        effort += (tilt - effort) * m_effortShare;
        sounds[i] = effort + (tilt - effort) * m_effort.value;
    }
    m_glottis = glottis;
    m_tiltState = tilt;
    m_effortState = effort;
    for (int i = 0; i < count; ++i)
        sounds[i] = sounds[i] * voicing.At(i) + units[Place(i)] * m_whiteLevel * aspiration.At(i);
    std::fill(sounds + silent, sounds + count, 0.0F);
    m_tract.Run(sounds, count);
    if (std::max(noise.At(0), noise.At(count - 1)) > kQuiet * 0.001F) {
        std::array<Band, 2> hiss = m_hiss;
        for (int i = 0; i < silent; ++i) {
            const float once = hiss[0].Next(units[Place(i)]), twice = hiss[1].Next(once);
            sounds[i] += (m_isHissSteep ? twice : once) * m_hissGain * noise.At(i);
        }
        m_hiss = hiss;
    }
    return silent;
}

} // namespace rve
