#include "torv/platform/posix/timer.h"

#include "torv/platform/immortal.h"
#include "torv/platform/or_fail.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace {

using Clock = std::chrono::steady_clock;

constexpr UINT kShortestPeriod = 1;
constexpr UINT kLongestPeriod = 1000000;

bool InRange(UINT period) { return period >= kShortestPeriod && period <= kLongestPeriod; }

struct Timer {
    UINT number;
    std::chrono::milliseconds delay;
    bool periodic;
    LPTIMECALLBACK callback;
    DWORD_PTR user;
    std::thread thread; // guarded by the table; taken by the thread that waits for its end

    std::mutex mutex;
    std::condition_variable wake;
    bool stopped = false; // guarded by the mutex
};

struct TimerTable {
    std::mutex mutex;
    std::unordered_map<UINT, std::shared_ptr<Timer>> timers;
    UINT lastNumber = 0;
};

TimerTable& TheTimers() { return torv::Immortal<TimerTable>(); }

/// False when the timer was stopped before.
bool WaitUntil(Timer& timer, Clock::time_point deadline) {
    std::unique_lock lock(timer.mutex);
    return !timer.wake.wait_until(lock, deadline, [&] { return timer.stopped; });
}

void RunTimer(const std::shared_ptr<Timer>& timer, Clock::time_point start) {
    Clock::time_point deadline = start + timer->delay;
    while (WaitUntil(*timer, deadline)) {
        timer->callback(timer->number, 0, timer->user, 0, 0);
        if (!timer->periodic)
            break;
        deadline += timer->delay;
        const auto late = Clock::now() - deadline;
        if (late > late.zero())
            deadline += timer->delay * (late / timer->delay);
    }
    TimerTable& table = TheTimers();
    const std::lock_guard lock(table.mutex);
    table.timers.erase(timer->number);
    if (timer->thread.joinable())
        timer->thread.detach(); // nobody waits for it
}

void Stop(Timer& timer) {
    {
        const std::lock_guard lock(timer.mutex);
        timer.stopped = true;
    }
    timer.wake.notify_all();
}

} // namespace

MMRESULT timeGetDevCaps(LPTIMECAPS capabilities, UINT size) {
    if (!capabilities || size < sizeof(TIMECAPS))
        return TIMERR_NOCANDO;
    *capabilities = {kShortestPeriod, kLongestPeriod};
    return TIMERR_NOERROR;
}

MMRESULT timeBeginPeriod(UINT period) { return InRange(period) ? TIMERR_NOERROR : TIMERR_NOCANDO; }
MMRESULT timeEndPeriod(UINT period) { return timeBeginPeriod(period); }

UINT timeSetEvent(UINT delay, UINT, LPTIMECALLBACK callback, DWORD_PTR user, UINT flags) {
    if (!callback || !InRange(delay) || (flags & ~(TIME_PERIODIC | TIME_KILL_SYNCHRONOUS)) != 0)
        return 0;
    const auto start = Clock::now();
    TimerTable& table = TheTimers();
    const std::lock_guard lock(table.mutex); // until the timer has its thread, which may be over at once
    do
        ++table.lastNumber;
    while (table.lastNumber == 0 || table.timers.contains(table.lastNumber));
    const UINT number = table.lastNumber;
    const bool isSet = torv::OrFail(false, [&] {
        const auto timer = std::make_shared<Timer>();
        timer->number = number;
        timer->delay = std::chrono::milliseconds(delay);
        timer->periodic = (flags & TIME_PERIODIC) != 0;
        timer->callback = callback;
        timer->user = user;
        table.timers.emplace(number, timer);
        timer->thread = std::thread(RunTimer, timer, start); // last: it cannot be called back
        return true;
    });
    if (!isSet)
        table.timers.erase(number);
    return isSet ? number : 0;
}

MMRESULT timeKillEvent(UINT number) {
    std::shared_ptr<Timer> timer;
    std::thread waitedFor;
    {
        TimerTable& table = TheTimers();
        const std::lock_guard lock(table.mutex);
        const auto found = table.timers.find(number);
        if (found == table.timers.end())
            return TIMERR_NOCANDO;
        timer = found->second;
        table.timers.erase(found);
        if (timer->thread.get_id() != std::this_thread::get_id())
            waitedFor.swap(timer->thread);
    }
    Stop(*timer);
    if (waitedFor.joinable())
        waitedFor.join();
    return TIMERR_NOERROR;
}
