#include "torv/files/midi_clock.h"

#include <algorithm>
#include <new>

namespace torv {

namespace {

class SystemClock : public MidiClock {
public:
    DWORD Now() override { return timeGetTime(); }
    UINT Start(UINT& period, LPTIMECALLBACK callback, DWORD_PTR user) override {
        TIMECAPS range{};
        if (timeGetDevCaps(&range, sizeof(range)) != TIMERR_NOERROR)
            return 0;
        period = std::min(std::max(period, range.wPeriodMin), range.wPeriodMax);
        // Raised and never lowered: the next start, often an instant away, finds the resolution as it was.
        timeBeginPeriod(period);
        try {
            return timeSetEvent(period, period, callback, user, TIME_PERIODIC | TIME_CALLBACK_FUNCTION);
        } catch (const std::bad_alloc&) {
            return 0;
        }
    }
    MMRESULT Stop(UINT timer) override { return timeKillEvent(timer); }
};

} // namespace

MidiClock& SystemMidiClock() {
    static SystemClock clock;
    return clock;
}

} // namespace torv
