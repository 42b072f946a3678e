#pragma once

#include "torv/platform/platform.h"

namespace torv {

/// What a player counts time with and is called by: the system's, or one in a test's hand.
class MidiClock {
public:
    virtual ~MidiClock() = default;
    /// Milliseconds from any moment on; they wrap.
    virtual DWORD Now() = 0;
    /// Calls back every `period` milliseconds, which becomes one that the clock can keep. The timer's number, 0 when
    /// there is none to be had.
    virtual UINT Start(UINT& period, LPTIMECALLBACK callback, DWORD_PTR user) = 0;
    /// Also from the timer's own callback.
    virtual MMRESULT Stop(UINT timer) = 0;
};

/// The multimedia timer's.
MidiClock& SystemMidiClock();

} // namespace torv
