#pragma once

#include "torv/platform/platform.h"

#include <atomic>

namespace torv {

/// Lets one callback of one timer in at a time, and none of a timer that was stopped: the system may still deliver a
/// call after a timer was killed. A call that finds the gate taken is turned away, never kept waiting.
class TimerGate {
public:
    /// The number that callbacks of the next timer show; never 0.
    DWORD Open() {
        m_last = m_last == 0xFFFFFFFF ? 1 : m_last + 1;
        m_turn = m_last;
        return m_last;
    }
    /// Turns later calls away; the one inside goes on until it asks.
    void Close() { m_turn = 0; }
    bool IsOpen(DWORD turn) const { return m_turn == turn; }

    bool Enter(DWORD turn) {
        if (m_taken.exchange(true))
            return false;
        if (IsOpen(turn))
            return true;
        Release();
        return false;
    }
    /// For the host's threads: waits until the callback inside has returned. Not from the callback itself.
    void Hold() {
        while (m_taken.exchange(true))
            Sleep(1);
    }
    void Release() { m_taken = false; }

private:
    DWORD m_last = 0;
    std::atomic<DWORD> m_turn = 0;
    std::atomic<bool> m_taken = false;
};

} // namespace torv
