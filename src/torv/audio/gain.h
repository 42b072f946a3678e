#pragma once

#include <cmath>

/// Volume, pan and decibels: one law for tracks, files and the master output.
namespace torv {

/// What each side's samples are multiplied by.
struct StereoGain {
    double left = 1.0;  ///< linear
    double right = 1.0; ///< linear
};

/// -1.0 (left) to +1.0 (right). What lies outside, or is not a number, is put back to the centre, not to the nearer
/// end: a caller that computes a pan beyond its range hears the middle.
inline double ValidPan(double pan) { return pan >= -1.0 && pan <= 1.0 ? pan : 0.0; }

/// A linear volume; what is not finite counts as 1.
inline double ValidVolume(double volume) { return std::isfinite(volume) ? volume : 1.0; }

/// At the centre both gains equal the volumes; at either end that side is doubled and the other silent.
inline StereoGain GainsAt(double volumeLeft, double volumeRight, double pan) {
    const double q = (pan + 1.0) * 0.5;
    return {2.0 * (1.0 - q) * volumeLeft, 2.0 * q * volumeRight};
}

} // namespace torv
