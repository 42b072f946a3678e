#pragma once

#include "poles.h"

#include <array>

namespace rve {

/// Sixteen two-pole resonances with a gain of 1 at 0 Hz, one after the other. All are worked on at once: while the
/// first takes a sample, the second takes the one before it, which the first has left. So a sample does not wait for
/// all of them in turn, and comes out as if it had. A stage that is not set passes everything on. A stage keeps what it
/// made last and how far that was from the one before: a low resonance makes much of what is rounded off, and steps
/// are small there.
class Cascade {
public:
    static constexpr int kStages = 16;

    Cascade() { m_a.fill(1); }
    void Reset();
    void Set(int stage, const Poles& poles);
    /// The square of a stage's gain is the first number divided by what the second one gives.
    struct Gain {
        double above;
        PolynomialSquared below;
    };
    Gain GainOf(int stage) const;
    /// The samples go through all stages, in place.
    void Run(float* samples, int count);

private:
    static constexpr int kGroups = 4; ///< of as many stages
    class Turns;

    /// Group g holds the stages g, g + 4, g + 8 and g + 12: each of its lanes takes what that lane of the group before
    /// has.
    static constexpr size_t PlaceOf(int stage) {
        const int place = stage % kGroups * (kStages / kGroups) + stage / kGroups;
        return static_cast<size_t>(place);
    }
    void RunInTurn(float* samples, int count);

    std::array<float, kStages> m_a, m_squared{};   ///< step = squared radius * step before + a (x - y before)
    std::array<float, kStages> m_made{}, m_step{}; ///< what each stage has made last, and its step to there
};

} // namespace rve
