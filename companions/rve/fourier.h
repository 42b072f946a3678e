#pragma once

#include <array>
#include <complex>

namespace rve {

/// From a spectrum to the real signal that has it: sums of cosines, without any scaling.
class Fourier {
public:
    static constexpr int kMostPoints = 2048;
    Fourier();
    /// `points` real values of the sum over k of Re(spectrum[k] exp(2 pi i k n / points)), for k below half the points;
    /// a power of two up to kMostPoints. What the spectrum holds is lost.
    void ToSignal(std::complex<float>* spectrum, int points, float* signal) const;

private:
    std::array<std::complex<float>, kMostPoints / 2> m_turns; ///< exp(2 pi i k / kMostPoints)
};

/// The one that all share.
const Fourier& SharedFourier();

} // namespace rve
