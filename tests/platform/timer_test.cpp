#include "platform/begun_thread.h"

#include <doctest/doctest.h>

#include <atomic>
#include <chrono>

#include "values.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Calls {
    std::atomic<int> begun = 0;
    std::atomic<int> ended = 0;
    std::atomic<UINT> number = 0;
    std::atomic<MMRESULT> killed = 12345; // by the callback itself
    std::atomic<bool> killsItself = false;
    DWORD takes = 0; // ms
    Clock::time_point last;
};

void CALLBACK Count(UINT timer, UINT, DWORD_PTR user, DWORD_PTR, DWORD_PTR) {
    Calls& calls = *reinterpret_cast<Calls*>(user);
    calls.number = timer;
    ++calls.begun;
    if (calls.killsItself)
        calls.killed = timeKillEvent(timer);
    if (calls.takes)
        Sleep(calls.takes);
    calls.last = Clock::now();
    ++calls.ended;
}

UINT Start(Calls& calls, UINT delay, UINT flags) {
    return timeSetEvent(delay, 1, &Count, reinterpret_cast<DWORD_PTR>(&calls), flags | TIME_KILL_SYNCHRONOUS);
}

} // namespace

TEST_CASE("timer: a periodic one keeps its pace over many periods") {
    CHECK(timeBeginPeriod(1) == TIMERR_NOERROR);
    // If each wait began where the call before ended, a period would take 16 ms.
    bool isInTime = false;
    for (int attempt = 0; attempt < 20 && !isInTime; ++attempt) {
        Calls calls;
        calls.takes = 6;
        const auto start = Clock::now();
        const UINT timer = Start(calls, 10, TIME_PERIODIC);
        REQUIRE(Await([&] { return calls.ended >= 30; }));
        CHECK(timeKillEvent(timer) == TIMERR_NOERROR);
        CHECK(calls.number == timer);
        const int count = calls.ended;
        const double elapsed = std::chrono::duration<double, std::milli>(calls.last - start).count();
        CHECK(elapsed >= 10 * count - 6);
        isInTime = elapsed <= 10 * count + 150;
        Sleep(20);
        CHECK(calls.begun == count); // none after the kill
        CHECK(timeKillEvent(timer) != TIMERR_NOERROR);
    }
    CHECK(isInTime);
}

TEST_CASE("timer: killing waits for the callback that runs") {
    for (const UINT flags : {TIME_PERIODIC, TIME_ONESHOT}) {
        Calls calls;
        calls.takes = 40;
        const UINT timer = Start(calls, 1, flags);
        REQUIRE(Await([&] { return calls.begun > 0; }));
        timeKillEvent(timer);
        CHECK(calls.begun == calls.ended);
    }
}

TEST_CASE("timer: killed by its own callback, and once only") {
    Calls periodic;
    periodic.killsItself = true;
    Start(periodic, 1, TIME_PERIODIC);
    Calls once;
    const UINT timer = Start(once, 3, TIME_ONESHOT);
    REQUIRE(Await([&] { return periodic.ended > 0 && once.ended > 0; }));
    Sleep(30);
    CHECK(periodic.killed == TIMERR_NOERROR);
    CHECK(Values(periodic.ended, once.ended) == "1 1");
    CHECK(timeKillEvent(timer) != TIMERR_NOERROR);
}

TEST_CASE("timer: what is refused") {
    Calls calls;
#if !defined(_WIN32)
    CHECK(timeSetEvent(10, 1, nullptr, 0, TIME_PERIODIC) == 0);
    CHECK(Start(calls, 0, TIME_PERIODIC) == 0);
    CHECK(Start(calls, 10, 0x0010) == 0); // an event object
#endif
    CHECK(Start(calls, 10000000, TIME_PERIODIC) == 0);
    CHECK(timeBeginPeriod(0) == TIMERR_NOCANDO);
    TIMECAPS range{};
    CHECK(timeGetDevCaps(nullptr, sizeof(TIMECAPS)) != TIMERR_NOERROR);
    CHECK(timeGetDevCaps(&range, sizeof(range)) == TIMERR_NOERROR);
    CHECK(range.wPeriodMin <= 1);
    CHECK(range.wPeriodMax >= 1000);
}
