#pragma once

#include "torv/audio/shared_value.h"
#include "torv/platform/platform.h"

#include <cstddef>

namespace torv {

/// Peak levels of two sides, posted to two windows every so many frames. Without windows it costs nothing. May be set
/// while another thread adds frames.
class LevelMeter {
public:
    /// Null windows are not posted to; a code or an interval (frames) of 0 keeps the one in force.
    void Set(CWnd* left, CWnd* right, UINT message, WORD code, DWORD interval);
    /// The interval (frames) while the host has chosen none.
    void SetDefaultInterval(DWORD frames);
    /// One frame, full scale 1.0. On the last frame of an interval posts (code, peak 0..32767 for full scale) and
    /// starts anew.
    void Add(double left, double right);
    /// As many calls of Add, with each side times its gain.
    template <class Sample>
    void AddFrames(const Sample* left, const Sample* right, size_t count, double gainLeft, double gainRight) {
        if (IsWatched())
            for (size_t i = 0; i < count; ++i)
                Add(left[i] * gainLeft, right[i] * gainRight);
    }

private:
    bool IsWatched() const { return m_left.Get() || m_right.Get(); }
    void Restart(DWORD interval);
    void Post(HWND window, Shared<LONG>& peak) const;

    Shared<HWND> m_left = nullptr;
    Shared<HWND> m_right = nullptr;
    Shared<UINT> m_message = 0;
    Shared<WORD> m_code = 0;
    Shared<DWORD> m_interval = 2205; ///< 50 ms at 44100 Hz
    Shared<DWORD> m_countdown = 2205;
    bool m_isChosen = false; ///< the interval is the host's
    Shared<LONG> m_peakLeft = 0;
    Shared<LONG> m_peakRight = 0;
};

} // namespace torv
