#include "diction.h"

#include "articulator.h"
#include "place.h"
#include "sung_vowels.h"
#include "torv/abi/rve.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace rve {

namespace {

constexpr double kFrame = bank::kFrameMs * 0.001 * kTimeBase;
// Frames either way over which sounds flow into each other. Stops and hisses that are as smooth as vowels lose their
// edges; vowels that are not stray from step to step.
constexpr int kSmoothing = 4;
constexpr int kEdgeSmoothing = 1;
constexpr float kSlowest = 2.5F; ///< how much slower than spoken a vowel comes and goes
// A long vowel covers what stands beside it for who listens: the sounds after it are sung longer than they are spoken.
constexpr double kCodaLength = 1.5;
constexpr double kLongestCoda = 0.22 * kTimeBase; // of those that are not spoken so long
constexpr double kMostCoda = 0.6;                 // of a note
constexpr float kClosed = 1.5F;     // natural logarithm: a stop is so much softer than its burst while it is closed
constexpr float kShut = 2;          // natural logarithm: means of many recordings leave a sound in a mouth that is shut
constexpr float kBreathGain = 0.7F; // natural logarithm: a singer's breath is louder than the h that it is made from
// How far another language's vowel moves the first two formants to its own places. The first one is how open a mouth
// this person sings with: moved all the way, it is less well understood.
constexpr float kMoved[] = {0.5F, 1.0F};

int PhoneOf(const VoiceBank& bank, const char* name) { return name ? bank.PhoneNamed(name) : VoiceBank::kSilence; }

/// How loud a frame is, as a natural logarithm.
float LevelOf(const VoiceBank& bank, const VoiceBank::Sequence& sequence, int frame) {
    return static_cast<float>(bank.FrameAt(sequence.frames[frame]).cepstrum[0]) * bank::kCepstrumUnit;
}

/// How many frames of a stop lie before its burst, which is never in its first state.
int ClosureOf(const VoiceBank& bank, const VoiceBank::Sequence& stop) {
    const int first = std::min(stop.stateFrames[0], stop.frameCount);
    int closure = first;
    for (int f = first; f < stop.frameCount; ++f)
        if (LevelOf(bank, stop, f) > LevelOf(bank, stop, closure))
            closure = f;
    const float closed = closure < stop.frameCount ? LevelOf(bank, stop, closure) - kClosed : 0;
    while (closure > first && LevelOf(bank, stop, closure - 1) > closed)
        --closure;
    return closure;
}

int ReleaseOf(const VoiceBank& bank, const VoiceBank::Sequence& stop) {
    return stop.frameCount - ClosureOf(bank, stop);
}

SpokenFrame FrameFrom(const bank::Frame& stored, bool isVowel) {
    SpokenFrame frame;
    for (size_t m = 0; m < frame.cepstrum.size(); ++m)
        frame.cepstrum[m] = static_cast<float>(stored.cepstrum[m]) * bank::kCepstrumUnit;
    // Held notes need more breath between their harmonics than speech, for the spectrum to be heard whole.
    for (size_t b = 0; b < frame.strength.size(); ++b) {
        const float spoken = static_cast<float>(stored.strength[b]) / 255;
        frame.strength[b] = spoken * spoken;
    }
    frame.voicing = isVowel || stored.voicing > 12 ? 1.0F : 0.0F;
    for (size_t k = 0; k < frame.formants.size(); ++k)
        frame.formants[k] = stored.formants[k];
    return frame;
}

} // namespace

void Diction::Reset() {
    m_bank = nullptr;
    m_start = m_nextStart = -1;
    m_end = 0;
    m_vowel = nullptr;
    m_before = {};
    m_soundCount = m_frameCount = m_firstOwn = m_ownCount = 0;
    m_nucleus = m_now = {};
}

const SpokenFrame& Diction::At(Time time, const Timeline& timeline, const VoiceBank& bank,
                               const RecordedPerson& person) {
    int current = -1;
    while (current + 1 < timeline.SegmentCount() && timeline.SegmentAt(current + 1).Onset() <= time)
        ++current;
    if (current < 0)
        return m_now;
    const Segment& segment = timeline.SegmentAt(current);
    const Segment* next = current + 1 < timeline.SegmentCount() ? &timeline.SegmentAt(current + 1) : nullptr;
    if (next && next->Onset() > segment.end + kGap)
        next = nullptr;
    if (&bank != m_bank || segment.start != m_start || (next ? next->start : -1) != m_nextStart)
        Plan(segment, next, bank, person);
    if (m_frameCount == 0)
        return m_now;

    int index = m_firstOwn;
    while (index + 1 < m_firstOwn + m_ownCount && m_sounds[Place(index + 1)].begin <= time)
        ++index;
    const float place = std::clamp(FrameOf(m_sounds[Place(index)], time), 0.0F, static_cast<float>(m_frameCount - 1));
    const auto at = std::min(static_cast<int>(place), m_frameCount - 2);
    const float share = m_frameCount < 2 ? 0 : place - static_cast<float>(at);
    const SpokenFrame& a = m_frames[Place(std::max(at, 0))];
    const SpokenFrame& b = m_frames[Place(std::max(at, 0) + (m_frameCount < 2 ? 0 : 1))];
    const auto mix = [share](auto& to, const auto& from, const auto& other) {
        for (size_t i = 0; i < to.size(); ++i)
            to[i] = from[i] + (other[i] - from[i]) * share;
    };
    mix(m_now.cepstrum, a.cepstrum, b.cepstrum);
    mix(m_now.strength, a.strength, b.strength);
    mix(m_now.formants, a.formants, b.formants);
    mix(m_now.shift, a.shift, b.shift);
    m_now.voicing = a.voicing + (b.voicing - a.voicing) * share;
    return m_now;
}

/// Which frame of the plan a sound has at a time within it.
float Diction::FrameOf(const Sound& sound, Time time) const {
    const auto into =
        static_cast<float>(static_cast<double>(std::clamp(time, sound.begin, sound.end) - sound.begin) / kFrame);
    const float length = std::max(static_cast<float>(static_cast<double>(sound.end - sound.begin) / kFrame), 0.1F);
    const auto frames = static_cast<float>(sound.frames);
    const float first = static_cast<float>(sound.first) - 0.5F;
    if (sound.isNucleus) {
        // The way in and the way out at their own pace, or a little slower, the middle as slowly as the note asks.
        const float slow = sound.isDiphthong ? 1.0F : std::clamp(length / frames, 1.0F, kSlowest);
        float in = std::min(sound.isDiphthong ? 0.3F * frames : 0.45F * frames, 12.0F);
        float out = sound.isDiphthong ? 0.6F * frames : std::min(0.45F * frames, 14.0F);
        const float middle = sound.isDiphthong ? 0.35F * frames : 0.5F * frames;
        float from = in, to = frames - out;
        if (m_continues) {
            in = 0;
            from = middle;
        }
        if (m_goesOn) {
            out = 0;
            to = middle;
        }
        if (length < in + out) { // too short for both
            const float fit = length / (in + out);
            if (into < in * fit)
                return first + into / fit;
            return first + frames - (length - into) / fit;
        }
        // Into silence as spoken, and into a stop that ends a phrase: by the way there one hears which it is.
        const Sound* const last = m_sounds.data() + m_soundCount - 1;
        const float slowOut = &sound == last || (&sound + 1 == last && last->isStop) ? 1.0F : slow;
        in *= slow;
        out *= slowOut;
        if (into < in)
            return first + into / slow;
        if (into > length - out)
            return first + frames - (length - into) / slowOut;
        return first + from + (to - from) * (into - in) / std::max(length - in - out, 0.1F);
    }
    if (sound.isStop && frames > 1) { // the burst keeps its length, the closure gives way
        const auto closure = static_cast<float>(sound.closure);
        const float burst = std::min(frames - closure, 0.7F * length);
        const float closed = length - burst;
        if (into < closed)
            return first + closure * into / std::max(closed, 0.1F);
        return first + closure + (frames - closure) * (into - closed) / std::max(burst, 0.1F);
    }
    return first + frames * into / length;
}

void Diction::AddSound(const Sound& sound) {
    if (m_soundCount < kMostSounds && sound.phone != VoiceBank::kSilence)
        m_sounds[Place(m_soundCount++)] = sound;
}

/// The phones of one symbol, in the time that it has: of two the second one takes what it would take when spoken.
void Diction::AddUnit(const Unit& unit, const Phoneme* following, Time begin, Time end, bool isNucleus,
                      const VoiceBank& bank, const RecordedPerson& person) {
    const Spoken* const spoken = SpokenAs(*unit.phoneme);
    if (!spoken)
        return;
    Sound sound;
    sound.begin = begin;
    sound.end = end;
    sound.phone = PhoneOf(bank, spoken->phones[0]);
    sound.isNucleus = isNucleus;
    sound.isVowel = IsVowelPhone(spoken->phones[0]);
    sound.isStop = IsStopPhone(spoken->phones[0]);
    sound.isVoicelessStop = IsVoicelessStopPhone(spoken->phones[0]);
    sound.isDiphthong = IsDiphthongPhone(spoken->phones[0]);
    sound.isBreath = unit.phoneme->manner == Manner::Breath;
    if (IsJapaneseVowel(*unit.phoneme))
        sound.target = unit.phoneme->from;
    else
        sound.move = SungVowelMove(person.bank, spoken->phones[0]);
    const char* second = spoken->phones[1];
    if (spoken->palatal && following && std::string_view(following->symbol) != "i")
        second = "y";
    if (!second) {
        AddSound(sound);
        return;
    }
    const Time share = (end - begin) * 45 / 100;
    const Time tail = isNucleus ? std::min(FromMilliseconds(90), share) : share;
    sound.end = end - tail;
    AddSound(sound);
    Sound other;
    other.begin = end - tail;
    other.end = end;
    other.phone = PhoneOf(bank, second);
    other.isStop = IsStopPhone(second);
    other.isVoicelessStop = IsVoicelessStopPhone(second);
    AddSound(other);
}

void Diction::Plan(const Segment& segment, const Segment* next, const VoiceBank& bank, const RecordedPerson& person) {
    if (segment.start != m_start) {
        const bool follows = m_start >= 0 && segment.Onset() <= m_end + kGap && m_ownCount > 0;
        const auto phoneAt = [this](int index) {
            return index >= 0 ? m_sounds[Place(index)].phone : int{VoiceBank::kSilence};
        };
        m_before = {VoiceBank::kSilence, VoiceBank::kSilence};
        if (follows)
            m_before = {phoneAt(m_firstOwn + m_ownCount - 2), phoneAt(m_firstOwn + m_ownCount - 1)};
        m_continues = follows && segment.unitCount == 0;
    }
    if (&bank != m_bank) { // what has no vowel is as loud as beside a neutral one
        const int neutral = bank.PhoneNamed("ax");
        const VoiceBank::Sequence vowel = bank.SequenceOf(VoiceBank::kSilence, neutral, VoiceBank::kSilence);
        if (vowel.frameCount > 0)
            m_nucleus = FrameFrom(bank.FrameAt(vowel.frames[vowel.frameCount / 2]), true);
    }
    m_bank = &bank;
    m_start = segment.start;
    m_end = segment.end;
    m_nextStart = next ? next->start : -1;
    m_goesOn = next && next->unitCount == 0;

    m_soundCount = 0;
    Sound context;
    for (const int phone : m_before) {
        context.phone = phone;
        if (!m_continues)
            AddSound(context);
    }
    m_firstOwn = m_soundCount;
    const Time end = next ? std::min(segment.end, next->Onset()) : segment.end;
    if (segment.unitCount == 0) {
        static const Phoneme* const neutral = FindPhoneme("@", RVE_ENGLISH);
        AddUnit({m_vowel ? m_vowel : neutral, segment.start, end}, nullptr, segment.start, end, true, bank, person);
    }
    const Phoneme* const nucleus = NucleusOf(segment);
    for (int i = 0; i < segment.unitCount; ++i) {
        const Unit& unit = segment.units[Place(i)];
        const Phoneme* const following = i + 1 < segment.unitCount ? segment.units[Place(i + 1)].phoneme : nullptr;
        const bool isNucleus = IsVowel(*unit.phoneme) || unit.phoneme == nucleus;
        AddUnit(unit, following, unit.begin, unit.end, isNucleus, bank, person);
    }
    if (nucleus && IsVowel(*nucleus))
        m_vowel = nucleus;
    m_ownCount = m_soundCount - m_firstOwn;
    if (next && !m_goesOn) {
        const int own = m_soundCount;
        for (int i = 0; i < std::min(next->unitCount, 2); ++i)
            AddUnit(next->units[Place(i)], nullptr, end, end, false, bank, person);
        m_soundCount = std::min(m_soundCount, own + 2);
    }
    Speak(bank, person);
    LayOut(segment.start, end);
    Smooth();
    for (int i = m_firstOwn; i < m_firstOwn + m_ownCount; ++i) {
        const Sound& sound = m_sounds[Place(i)];
        if (sound.isNucleus && sound.frames > 0)
            m_nucleus = m_frames[Place(sound.first + sound.frames * (sound.isDiphthong ? 3 : 5) / 10)];
    }
}

/// Sounds ahead of the vowel share their time as they would when spoken; those after it lie ahead of the segment's end
/// or of the next one's first sound.
void Diction::LayOut(Time start, Time end) {
    const auto own = m_sounds.begin() + m_firstOwn;
    const auto ownEnd = own + m_ownCount;
    const auto nucleus = std::find_if(own, ownEnd, [](const Sound& sound) { return sound.isNucleus; });
    if (nucleus == ownEnd)
        return;
    auto coda = ownEnd;
    while (!(coda - 1)->isNucleus)
        --coda;
    const auto framesOf = [](auto from, auto to) {
        int sum = 0;
        for (; from != to; ++from)
            sum += from->frames;
        return std::max(sum, 1);
    };
    const auto lay = [&framesOf](auto from, auto to, Time begin, Time stop) {
        const int all = framesOf(from, to);
        int before = 0;
        for (; from != to; ++from) {
            from->begin = begin + (stop - begin) * before / all;
            before += from->frames;
            from->end = begin + (stop - begin) * before / all;
        }
    };
    if (own != nucleus)
        lay(own, nucleus, own->begin, start);
    Time codaBegin = end;
    if (coda != ownEnd) {
        const double spoken = framesOf(coda, ownEnd) * kFrame;
        const double sung = std::max(spoken, std::min(spoken * kCodaLength, kLongestCoda));
        codaBegin = end - static_cast<Time>(std::min(sung, kMostCoda * static_cast<double>(end - start)));
        lay(coda, ownEnd, codaBegin, end);
    }
    const Time old = (coda - 1)->end - start; // of the vowels, which keep their shares
    for (auto vowel = nucleus; vowel != coda; ++vowel) {
        vowel->begin = start + (codaBegin - start) * (vowel->begin - start) / std::max<Time>(old, 1);
        vowel->end = start + (codaBegin - start) * (vowel->end - start) / std::max<Time>(old, 1);
    }
}

/// How a sound is spoken between its neighbours. Singers let go at a phrase's end what is swallowed there in speech:
/// such a stop is the one before a vowel, if that one's release is longer.
VoiceBank::Sequence Diction::SequenceOf(int index, const VoiceBank& bank) const {
    const Sound& sound = m_sounds[Place(index)];
    const int before = index > 0 ? m_sounds[Place(index - 1)].phone : int{VoiceBank::kSilence};
    const bool isLast = index + 1 == m_soundCount;
    const int after = isLast ? int{VoiceBank::kSilence} : m_sounds[Place(index + 1)].phone;
    VoiceBank::Sequence sequence = bank.SequenceOf(before, sound.phone, after);
    if (sequence.frameCount == 0) // a consonant on its own: as ahead of a vowel
        sequence = bank.SequenceOf(before, sound.phone, bank.PhoneNamed("ax"));
    if (sound.isVoicelessStop && isLast) {
        const VoiceBank::Sequence released = bank.SequenceOf(before, sound.phone, bank.PhoneNamed("ah"));
        if (ReleaseOf(bank, released) > ReleaseOf(bank, sequence))
            sequence = released;
    }
    return sequence;
}

void Diction::Speak(const VoiceBank& bank, const RecordedPerson& person) {
    m_frameCount = 0;
    for (int i = 0; i < m_soundCount; ++i) {
        Sound& sound = m_sounds[Place(i)];
        const VoiceBank::Sequence sequence = SequenceOf(i, bank);
        sound.first = m_frameCount;
        sound.frames = std::min(sequence.frameCount, kMostFrames - m_frameCount);
        sound.closure = sound.isStop ? std::min(ClosureOf(bank, sequence), sound.frames) : 0;
        for (int f = 0; f < sound.frames; ++f) {
            SpokenFrame& frame = m_raw[Place(m_frameCount++)];
            frame = FrameFrom(bank.FrameAt(sequence.frames[f]), sound.isVowel);
            if (sound.isVowel && !sound.target)
                for (size_t m = 2; m < frame.cepstrum.size(); ++m) // level and tilt stay
                    frame.cepstrum[m] *= person.sharpness;
            if (sound.isBreath)
                frame.cepstrum[0] += kBreathGain;
            if (sound.isVoicelessStop && f < sound.closure)
                frame.cepstrum[0] -= kShut;
            // Let go as before a vowel, but not into one: with a voice after it, t is heard as d.
            if (sound.isVoicelessStop && i + 1 == m_soundCount)
                frame.voicing = 0;
        }
        // Another language's vowel: from where the middle of the spoken one lies.
        if (sound.target && sound.frames > 0) {
            const int middle = sound.first + sound.frames * (sound.isDiphthong ? 3 : 5) / 10;
            const SpokenFrame& steady = m_raw[Place(middle)];
            for (size_t k = 0; k < sound.move.size(); ++k) {
                const float target = sound.target->hz[static_cast<size_t>(person.tract)][k];
                sound.move[k] = kMoved[k] * std::clamp(std::log2(target / steady.formants[k]), -0.6F, 0.6F);
            }
        }
        for (int f = sound.first; f < sound.first + sound.frames; ++f)
            m_raw[Place(f)].shift = sound.move;
    }
}

/// The models' frames are steps, which flow into each other within 40 ms, or within 10 where a sound has an edge.
void Diction::Smooth() {
    using Window = std::array<float, kSmoothing + 1>; // one half of it
    const auto windowOf = [](int reach) {
        Window window{};
        for (int k = 0; k <= reach; ++k)
            window[Place(k)] =
                0.5F + 0.5F * std::cos(3.14159265F * static_cast<float>(k) / static_cast<float>(reach + 1));
        return window;
    };
    const Window wide = windowOf(kSmoothing), narrow = windowOf(kEdgeSmoothing);
    int sound = 0;
    for (int i = 0; i < m_frameCount; ++i) {
        while (sound + 1 < m_soundCount && m_sounds[Place(sound + 1)].first <= i)
            ++sound;
        const bool isEdge = m_sounds[Place(sound)].isStop || m_raw[Place(i)].voicing < 0.5F;
        const Window& window = isEdge ? narrow : wide;
        const int reach = isEdge ? kEdgeSmoothing : kSmoothing;
        SpokenFrame& to = m_frames[Place(i)];
        to = {};
        float sum = 0;
        for (int k = std::max(-reach, -i); k <= std::min(reach, m_frameCount - 1 - i); ++k) {
            const float weight = window[Place(std::abs(k))];
            const SpokenFrame& from = m_raw[Place(i + k)];
            const auto add = [weight](auto& sums, const auto& values) {
                for (size_t n = 0; n < sums.size(); ++n)
                    sums[n] += values[n] * weight;
            };
            add(to.cepstrum, from.cepstrum);
            add(to.strength, from.strength);
            add(to.formants, from.formants);
            add(to.shift, from.shift);
            to.voicing += from.voicing * weight;
            sum += weight;
        }
        const auto scale = [sum](auto& values) {
            for (float& value : values)
                value /= sum;
        };
        scale(to.cepstrum);
        scale(to.strength);
        scale(to.formants);
        scale(to.shift);
        to.voicing /= sum;
    }
}

} // namespace rve
