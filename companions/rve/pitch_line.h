#pragma once

#include "timeline.h"

#include <array>
#include <cstdint>

namespace rve {

/// What the controls say of the pitch at a moment.
struct PitchControls {
    float bendSemitones = 0;
    float vibratoHz = 0;
    float vibratoCents = 0;
    float drift = 1; ///< share of a singer's
};

/// The pitch that is sung: notes and the ways between them, scoops, bends, vibrato, and a singer's small drift, which
/// is the same for the same notes.
class PitchLine {
public:
    void Reset();
    /// The next sound comes out of silence: nothing leads to its note.
    void BeginSound();
    /// The fundamental in Hz `milliseconds` after the last one. `segment` sounds now, or is null.
    float Advance(Time now, float milliseconds, const Timeline& timeline, const Segment* segment,
                  const PitchControls& controls);
    /// -1..1, the vibrato's swing, which a tremolo shares.
    float Swing() const;
    /// A slow change of loudness, as a factor near 1.
    float Unevenness() const;

private:
    void Follow(Time now, const Timeline& timeline);
    void GlideTo(const Segment& segment, Time now);
    float GlidedNote(Time now) const;
    float DriftCents() const;

    bool m_fromSilence = true;
    Time m_heading = -1; ///< the start of the segment whose note is sung or being reached
    Shape m_leaving;     ///< how that segment goes on into the next
    Time m_leavingEnd = 0;
    float m_fromNote = 60;
    float m_toNote = 60;
    Time m_glideStart = 0;
    Time m_glideLength = 1;
    bool m_vibratoOn = false;
    Time m_vibratoEnd = 0;
    float m_vibratoEnvelope = 0;
    double m_vibratoPhase = 0;
    float m_driftSeconds = 0;
};

} // namespace rve
