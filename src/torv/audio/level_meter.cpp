#include "torv/audio/level_meter.h"

#include <algorithm>
#include <cmath>

namespace torv {

void LevelMeter::Set(CWnd* left, CWnd* right, UINT message, WORD code, DWORD interval) {
    m_left = left ? left->m_hWnd : nullptr;
    m_right = right ? right->m_hWnd : nullptr;
    m_message = message;
    if (code != 0)
        m_code = code;
    m_isChosen = m_isChosen || interval != 0;
    if (interval != 0)
        Restart(interval);
}

void LevelMeter::SetDefaultInterval(DWORD frames) {
    if (!m_isChosen)
        Restart(frames);
}

void LevelMeter::Restart(DWORD interval) {
    m_interval = interval;
    m_countdown = interval;
}

void LevelMeter::Add(double left, double right) {
    if (!IsWatched())
        return;
    m_peakLeft = std::max(m_peakLeft.Get(), TruncateToLong(std::fabs(left) * 32767.0));
    m_peakRight = std::max(m_peakRight.Get(), TruncateToLong(std::fabs(right) * 32767.0));
    if (const DWORD countdown = m_countdown; countdown > 1) {
        m_countdown = countdown - 1;
        return;
    }
    Post(m_left, m_peakLeft);
    Post(m_right, m_peakRight);
    m_countdown = m_interval;
}

void LevelMeter::Post(HWND window, Shared<LONG>& peak) const {
    if (window && IsWindow(window))
        PostMessageA(window, m_message, m_code, peak);
    peak = 0;
}

} // namespace torv
