#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/multimedia.h"

/// Millisecond timers. Each runs on a thread of its own against absolute deadlines, so that a late call makes none of
/// the later ones late; deadlines that went by while a call was running are passed over.

struct TIMECAPS {
    UINT wPeriodMin;
    UINT wPeriodMax;
};
using LPTIMECAPS = TIMECAPS*;
using LPTIMECALLBACK = void(CALLBACK*)(UINT timer, UINT message, DWORD_PTR user, DWORD_PTR, DWORD_PTR);

constexpr MMRESULT TIMERR_NOERROR = 0;
constexpr MMRESULT TIMERR_NOCANDO = 97;
constexpr UINT TIME_ONESHOT = 0x0000;
constexpr UINT TIME_PERIODIC = 0x0001;
constexpr UINT TIME_CALLBACK_FUNCTION = 0x0000;
constexpr UINT TIME_KILL_SYNCHRONOUS = 0x0100;

/// Periods in ms. `size` must be the record's.
TORV_API MMRESULT timeGetDevCaps(LPTIMECAPS capabilities, UINT size);
/// The clock is always at its finest; only the period's range is checked.
TORV_API MMRESULT timeBeginPeriod(UINT period);
TORV_API MMRESULT timeEndPeriod(UINT period);
/// Calls back after `delay` ms, and with TIME_PERIODIC every `delay` ms. The resolution has no meaning. Returns the
/// timer's number; 0 for a delay outside the range, no callback, an unknown flag, or when no thread can be had.
TORV_API UINT timeSetEvent(UINT delay, UINT resolution, LPTIMECALLBACK callback, DWORD_PTR user, UINT flags);
/// Stops a timer and waits until its running callback has returned, unless that is what calls. TIMERR_NOCANDO for a
/// timer that is over.
TORV_API MMRESULT timeKillEvent(UINT timer);
