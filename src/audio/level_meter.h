#pragma once

#include "torv/platform/platform.h"

namespace torv {

/// Peak levels of two sides, posted to two windows every so many frames. Without windows it costs nothing.
class LevelMeter {
public:
    /// Null windows are not posted to; a code or an interval (frames) of 0 keeps the one in force.
    void Set(CWnd* left, CWnd* right, UINT message, WORD code, DWORD interval);
    void SetInterval(DWORD frames);
    /// One frame, full scale 1.0. On the last frame of an interval posts (code, peak 0..32767 for full scale) and
    /// starts anew.
    void Add(double left, double right);

private:
    void Post(HWND window, LONG& peak) const;

    HWND m_left = nullptr;
    HWND m_right = nullptr;
    UINT m_message = 0;
    WORD m_code = 0;
    DWORD m_interval = 2205; ///< 50 ms at 44100 Hz
    DWORD m_countdown = 2205;
    LONG m_peakLeft = 0;
    LONG m_peakRight = 0;
};

} // namespace torv
