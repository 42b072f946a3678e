#pragma once

#include "articulator.h"
#include "block_decoder.h"
#include "glottis.h"
#include "person.h"
#include "pitch_line.h"
#include "recorded_persons.h"
#include "timeline.h"
#include "torv/abi/rve.h"
#include "tract.h"

#include <array>
#include <cstdint>

namespace rve {

/// One instance of the engine. Everything it needs is inside it: stepping neither allocates nor locks.
class Singer {
public:
    Singer();
    /// False for a rate that is none of the engine's three. In a still one nothing drifts, and a person's periods are
    /// all alike.
    bool Configure(uint32_t rate, bool isStill = false);
    bool IsConfigured() const { return m_rate > 0; }
    /// Back to time 0, with the default parameters and nothing to sing.
    void Reset();
    /// One step of 256 samples of the 44.1 kHz time base; returns the samples written, at most `capacity`.
    uint32_t Step(int32_t eventCount, const RVEEvent* events, int16_t* samples, uint32_t capacity);

private:
    static constexpr int kTickSamples = 32; ///< how often the parameters move, in output samples

    struct Smoothed {
        float value = 0;
        /// Towards the target by the share `pace`.
        void Approach(float target, float pace) { value += (target - value) * pace; }
    };

    int ControlValue(Control control) const { return m_controls[static_cast<size_t>(control)]; }
    /// A voice control as -1..1 around its middle.
    float VoiceControl(int index) const;
    /// How many times the breath that the voice has at rest.
    float NoiseFactor() const;
    void Apply(const ControlChange& change) { m_controls[change.control] = change.value; }
    void Tick();
    /// The segment that sounds now, or null; what is over is dropped.
    const Segment* FindCurrent(Time now);
    /// The segment that follows without a gap, or null.
    const Segment* FindNext(const Segment& segment) const;
    void BeginSegment(const Segment& segment);
    void BeginSound();
    float Envelope(const Segment* segment, Time now);
    PitchControls PitchControlsNow() const;
    void MoveTract(const Target& target, float f0);
    float CornerHz() const;
    float LevelFor(float f0) const;
    void MovePerson(const Segment* segment, Time now, float f0, float effortDb);
    void MakeSamples(float* samples, int count);
    void MakeSyntheticAlone(float* samples, int count);
    void MakeMixed(float* samples, int count);
    int MakeSynthetic(float* sounds, int count);
    float Pace(float milliseconds) const;
    float PaceOf(float milliseconds) const;

    double m_rate = 0;
    bool m_isStill = false;
    std::array<float, 24> m_paces{}; ///< of whole milliseconds
    Time m_stepStart = 0;
    uint64_t m_steps = 0;
    uint32_t m_sampleInStep = 0;
    int m_untilTick = 0;

    BlockDecoder m_decoder;
    Timeline m_timeline;
    std::array<int16_t, kControls> m_controls{};
    int m_program = 0;

    bool m_isFirstTick = false; ///< of a sound out of silence
    bool m_isJapanese = false;  ///< by the last vowel
    Time m_currentStart = -1;   ///< identifies the segment that was begun
    const Phoneme* m_vowel = nullptr;
    PitchLine m_pitch;

    Target m_aim; ///< the last one of a sound
    Smoothed m_gain, m_voicing, m_aspiration, m_noise, m_breath;
    float m_voicingNow = 0, m_aspirationNow = 0, m_noiseNow = 0; ///< ramped within a tick
    float m_voicingStep = 0, m_aspirationStep = 0, m_noiseStep = 0;
    std::array<Smoothed, kFormants> m_hz, m_bandwidth;
    Smoothed m_noiseHz, m_noiseBandwidth, m_upperHz, m_upperApart, m_nasality, m_muffling;
    std::array<Smoothed, kFormants> m_boost;
    float m_whiteLevel = 1; ///< keeps noise as strong in a band whatever the rate
    float m_tilt = 1, m_tiltState = 0;
    float m_shelf = 0, m_shelfState = 0, m_shelfNow = 0, m_shelfStep = 0;
    float m_effortShare = 0, m_effortState = 0;
    Smoothed m_tiltHz, m_effort, m_shelfGain;

    Glottis m_glottis;
    Noise m_random;
    bool m_isPerson = false;                  ///< else the tract below sings
    const RecordedPerson* m_person = nullptr; ///< who sings, or still gives way
    const VoiceBank* m_bank = nullptr;
    Person m_recorded;
    Colour m_colour;
    float m_recordedNow = 0, m_recordedStep = 0;
    Smoothed m_personShare; ///< 1: the person alone, 0: the tract alone
    float m_shareNow = 0, m_shareStep = 0;
    VocalTract m_tract;
    std::array<Band, 2> m_hiss; ///< one after the other, where its edges are steep
    bool m_isHissSteep = true;
    float m_hissGain = 0; ///< brings their noise to an RMS of 1
};

} // namespace rve
