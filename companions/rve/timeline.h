#pragma once

#include "phonemes.h"

#include <array>
#include <cstdint>

namespace rve {

/// Time in samples of the 44.1 kHz time base.
using Time = int64_t;
inline constexpr double kTimeBase = 44100.0;
constexpr Time FromMilliseconds(double milliseconds) { return static_cast<Time>(milliseconds * 0.001 * kTimeBase); }
inline constexpr Time kGap = FromMilliseconds(40); ///< a pause that is shorter is none

/// Icon shapes of a segment. Codes go by their low byte: 0 normal, 1 gentle, 2 strong; see docs/engine.md.
struct Shape {
    bool present = false;
    uint8_t style = 0;
    uint8_t depth = 64;
    uint8_t duration = 64;
};

/// One phoneme of a segment with its place in time, from `begin` to the next one's begin.
struct Unit {
    const Phoneme* phoneme;
    Time begin;
    Time end;
};

/// A note segment, or the part of a note that one syllable has.
struct Segment {
    static constexpr int kMaxUnits = 16;
    Time start = 0; ///< where its vowel begins
    Time end = 0;
    int note = 60;
    int velocity = 64;
    bool begins = true; ///< the sound begins here
    bool ends = true;   ///< the sound ends here
    Shape attack;
    Shape release;
    Shape transition;
    bool vibrato = false;
    Time vibratoBegin = 0;
    Time vibratoEnd = 0; ///< kForever: it goes on
    int unitCount = 0;
    std::array<Unit, kMaxUnits> units;

    static constexpr Time kForever = INT64_MAX / 2;
    /// Where its first consonant begins.
    Time Onset() const { return unitCount > 0 ? units[0].begin : start; }
};

/// The continuous parameters.
enum class Control : uint8_t {
    Program,
    Language,
    PitchBend,
    BendSensitivity,
    Dynamics,
    VibratoRate,
    VibratoDepth,
    TremoloDepth,
    FirstVoiceControl,
};
inline constexpr int kVoiceControls = 17;
inline constexpr int kControls = static_cast<int>(Control::FirstVoiceControl) + kVoiceControls;

struct ControlChange {
    Time time;
    uint8_t control;
    int16_t value;
};

/// What is still to come, in time order and in fixed room: when it is full the earliest segment is dropped, and the
/// earliest control change applies at once, since what comes later matters more.
class Timeline {
public:
    void Clear();
    void Add(const Segment& segment);
    /// Returns a change that had to go to make room, or null.
    const ControlChange* Add(const ControlChange& change);
    /// The next change that is due at `now`, taken out; null when there is none.
    const ControlChange* TakeDue(Time now);

    int SegmentCount() const { return m_segmentCount; }
    const Segment& SegmentAt(int index) const { return m_segments[static_cast<size_t>(index)]; }
    /// Forgets the first segments.
    void DropSegments(int count);

private:
    static constexpr int kMaxSegments = 128;
    static constexpr int kMaxChanges = 4096;

    std::array<Segment, kMaxSegments> m_segments;
    int m_segmentCount = 0;
    std::array<ControlChange, kMaxChanges> m_changes; // a ring
    int m_firstChange = 0;
    int m_changeCount = 0;
    ControlChange m_taken{};
};

} // namespace rve
