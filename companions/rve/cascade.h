#pragma once

#include "poles.h"

#include <array>

namespace rve {

/// Two-pole resonances with a gain of 1 at 0 Hz, one after the other. Four stages are worked on at once: while the
/// first takes a sample, the second takes the one before it, which the first has left. So a sample does not wait for
/// all of them in turn, and comes out as if it had.
///
/// There are four times `kGroups` stages; those that are not set pass everything on.
template <int kGroups>
class Cascade {
public:
    static constexpr int kStages = 4 * kGroups;

    Cascade() { m_a.fill(1); }
    void Reset();
    void Set(int stage, const Poles& poles);
    /// The square of one stage's gain is `above` divided by `below`, where the cosine of the frequency (in radians a
    /// sample) is `cosine`: both are multiplied by the stage's.
    void MultiplyGainSquared(int stage, double cosine, double& above, double& below) const;
    /// The samples go through all stages, in place.
    void Run(float* samples, int count);

private:
    std::array<float, kStages> m_a, m_b{}, m_c{}; ///< y = a x + b y1 + c y2
    std::array<float, kStages> m_y1{}, m_y2{};    ///< what each stage has made last, and before it
};

extern template class Cascade<1>;
extern template class Cascade<3>;

} // namespace rve
