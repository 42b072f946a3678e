#include "pitch_line.h"

#include "shapes.h"

#include <algorithm>
#include <cmath>

namespace rve {

namespace {

constexpr float kTurn = 6.2831853F;
constexpr float kJoinedGlide = 70; // milliseconds
constexpr float kPlainGlide = 30;
constexpr float kShortestGlide = 5;
constexpr float kVibratoRise = 90; // milliseconds, to 1 - 1/e
/// Notes this close together are sung in one breath of sound.
constexpr Time kTogether = FromMilliseconds(5);

/// Wavering of the pitch: rates that have no common period. The slow ones are small, so that a steady note's mean over
/// a third of a second stays within three cents.
struct Waver {
    float hz, cents;
};
constexpr Waver kWavers[] = {{0.83F, 0.7F}, {2.17F, 1.5F}, {3.41F, 2.6F}, {5.29F, 2.4F}, {7.13F, 2.0F}, {11.7F, 1.6F}};
constexpr float kUnevennessHz[] = {1.9F, 3.1F, 4.7F};
constexpr float kUnevenness = 0.013F; // each: a third of a decibel at the most together

float Wave(float hz, float seconds) { return std::sin(kTurn * hz * seconds); }

} // namespace

void PitchLine::Reset() { *this = {}; }

void PitchLine::BeginSound() {
    m_fromSilence = true;
    m_vibratoOn = false;
    m_vibratoEnvelope = 0;
    m_vibratoPhase = 0;
}

float PitchLine::GlidedNote(Time now) const {
    return m_fromNote + (m_toNote - m_fromNote) *
                            Smoothstep(static_cast<float>(now - m_glideStart) / static_cast<float>(m_glideLength));
}

/// A note is reached by the way out of the one before, half of the way before its time and half after.
void PitchLine::GlideTo(const Segment& segment, Time now) {
    const auto note = static_cast<float>(segment.note);
    m_fromNote = m_fromSilence ? note : GlidedNote(now);
    m_toNote = note;
    if (m_fromSilence) // no two notes drift alike, and the same one always does
        m_driftSeconds = 0.37F * note + 0.011F * static_cast<float>((segment.end - segment.start) % 997);
    m_fromSilence = false;
    m_heading = segment.start;
    m_leaving = segment.transition;
    m_leavingEnd = segment.end;
}

void PitchLine::Follow(Time now, const Timeline& timeline) {
    for (int i = 0; i < timeline.SegmentCount(); ++i) {
        const Segment& segment = timeline.SegmentAt(i);
        if (segment.start <= m_heading)
            continue;
        const bool together = !m_fromSilence && segment.Onset() <= m_leavingEnd + kTogether;
        const float milliseconds = m_leaving.present
                                       ? (10 + 1.5F * m_leaving.duration) * StyleTime(m_leaving, 2.0F, 0.4F)
                                       : (segment.begins ? kPlainGlide : kJoinedGlide);
        const Time half = FromMilliseconds(milliseconds / 2);
        // Within one breath the way may begin before the next sound does; else with it.
        Time begin = segment.start - half;
        if (!together)
            begin = m_fromSilence ? segment.Onset() : std::max(segment.Onset(), begin);
        if (now < begin)
            return;
        GlideTo(segment, now);
        m_glideStart = now;
        m_glideLength = std::max(segment.start + half - now, FromMilliseconds(kShortestGlide));
        m_vibratoOn = m_vibratoOn && !segment.begins;
    }
}

float PitchLine::DriftCents() const {
    float cents = 0;
    for (const Waver& waver : kWavers)
        cents += waver.cents * Wave(waver.hz, m_driftSeconds);
    return cents;
}

float PitchLine::Swing() const { return static_cast<float>(std::sin(6.283185307 * m_vibratoPhase)); }

float PitchLine::Unevenness() const {
    float level = 1;
    for (const float hz : kUnevennessHz)
        level += kUnevenness * Wave(hz, m_driftSeconds);
    return level;
}

float PitchLine::Advance(Time now, float milliseconds, const Timeline& timeline, const Segment* segment,
                         const PitchControls& controls) {
    Follow(now, timeline);
    m_driftSeconds += milliseconds * 0.001F;
    float note = GlidedNote(now);
    if (segment && segment->begins && segment->attack.present) { // a scoop from below
        const float length = 20 + 0.8F * segment->attack.duration;
        const auto into = static_cast<float>(static_cast<double>(now - segment->start) / kTimeBase * 1000);
        note -= 0.8F * segment->attack.depth / 127.0F * (1 - Smoothstep(into / length));
    }
    note += controls.bendSemitones + controls.drift * DriftCents() / 100;

    if (segment && segment->vibrato && now >= segment->vibratoBegin) {
        m_vibratoOn = true;
        m_vibratoEnd = segment->vibratoEnd;
    }
    if (m_vibratoOn && now >= m_vibratoEnd)
        m_vibratoOn = false;
    m_vibratoEnvelope +=
        ((m_vibratoOn ? 1.0F : 0.0F) - m_vibratoEnvelope) * (1 - std::exp(-milliseconds / kVibratoRise));
    m_vibratoPhase += controls.vibratoHz * milliseconds * 0.001F;
    m_vibratoPhase -= std::floor(m_vibratoPhase);
    note += m_vibratoEnvelope * controls.vibratoCents / 100 * Swing();
    return 440.0F * std::exp2((note - 69) / 12);
}

} // namespace rve
