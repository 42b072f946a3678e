#pragma once

#include "recorded_persons.h"
#include "spoken.h"
#include "timeline.h"
#include "voice_bank.h"

#include <array>

namespace rve {

/// What a recorded person's tract is like at one moment.
struct SpokenFrame {
    std::array<float, bank::kCoefficients> cepstrum{};
    std::array<float, bank::kBands> strength{}; ///< 0: noise, 1: voice
    float voicing = 0;                          ///< 0..1
    std::array<float, bank::kFormants> formants{};
    std::array<float, 2> shift{}; ///< how far the first two formants are to move, in octaves
};

/// Says the segments of a timeline with the sounds of a bank: which frames a moment has. Consonants keep their own
/// course, of a vowel only the middle is stretched.
class Diction {
public:
    /// Nothing has been said yet.
    void Reset();
    /// The frame at a time, which never goes back; the last one again where nothing is said. Segments that have begun
    /// may still be before the one that sounds.
    const SpokenFrame& At(Time time, const Timeline& timeline, const VoiceBank& bank, const RecordedPerson& person);
    /// The steady middle of the vowel that is being sung.
    const SpokenFrame& Nucleus() const { return m_nucleus; }

private:
    static constexpr int kMostSounds = 2 * Segment::kMaxUnits + 4;
    static constexpr int kMostFrames = 640;

    struct Sound {
        int phone = VoiceBank::kSilence;
        Time begin = 0, end = 0;
        bool isNucleus = false;
        bool isStop = false;
        bool isVoicelessStop = false;
        bool isDiphthong = false;
        bool isVowel = false;
        bool isBreath = false;
        const VowelFormants* target = nullptr; ///< another language's vowel, which the spoken one is moved to
        std::array<float, 2> move{};           ///< of its first two formants, in octaves
        int first = 0;                         ///< of its frames
        int frames = 0;
        int closure = 0; ///< frames before a stop's burst
    };

    void Plan(const Segment& segment, const Segment* next, const VoiceBank& bank, const RecordedPerson& person);
    void AddUnit(const Unit& unit, const Phoneme* following, Time begin, Time end, bool isNucleus,
                 const VoiceBank& bank, const RecordedPerson& person);
    void AddSound(const Sound& sound);
    void Speak(const VoiceBank& bank, const RecordedPerson& person);
    VoiceBank::Sequence SequenceOf(int index, const VoiceBank& bank) const;
    void LayOut(Time start, Time end);
    void Smooth();
    float FrameOf(const Sound& sound, Time time) const;

    const VoiceBank* m_bank = nullptr; ///< of the plan
    Time m_start = -1;                 ///< of the segment that is planned
    Time m_end = 0;
    Time m_nextStart = -1;
    const Phoneme* m_vowel = nullptr;
    std::array<int, 2> m_before{}; ///< phones ahead of the segment, the nearest last
    bool m_continues = false;      ///< goes on with the vowel before
    bool m_goesOn = false;         ///< the next one goes on with its vowel
    std::array<Sound, kMostSounds> m_sounds;
    int m_soundCount = 0;
    int m_firstOwn = 0, m_ownCount = 0;
    std::array<SpokenFrame, kMostFrames> m_raw;
    std::array<SpokenFrame, kMostFrames> m_frames;
    int m_frameCount = 0;
    SpokenFrame m_nucleus, m_now;
};

} // namespace rve
