#pragma once

#include "torv/audio/gain.h"
#include "torv/platform/platform.h"

#include <array>

namespace torv {

/// How far a mix went. Samples have no headroom: what passes full scale wraps, and crackles.
struct MixPeak {
    double level = 0.0;      ///< the largest magnitude, full scale 1.0
    DWORD wrappedFrames = 0; ///< frames with a value that an output of whole numbers could not hold
};

/// The sums of some frames of all tracks, on their way into an output's bytes. With one output channel a frame is the
/// sum of the tracks' middles, else of each side. Neither allocates nor waits.
class MixBlock {
public:
    static constexpr DWORD kFrames = 1024;

    /// `frames` at most kFrames.
    MixBlock(DWORD frames, bool isMono);
    void Add(const float* left, const float* right);
    /// Scales by the gains, cuts to whole values toward zero (but not floats) and keeps the low bits. One output
    /// channel is written to every channel of the format, whose bits may be 8, 16, 24 or 32; other formats get silence.
    void Write(BYTE* out, const WAVEFORMATEX& format, const StereoGain& gain, MixPeak& peak) const;

    const double* Left() const { return m_left.data(); }
    const double* Right() const { return m_isMono ? m_left.data() : m_right.data(); }

private:
    const DWORD m_frames;
    const bool m_isMono;
    std::array<double, kFrames> m_left;
    std::array<double, kFrames> m_right;
};

} // namespace torv
