#include "torv/platform/posix/clock.h"

#include "torv/platform/safe_point.h"

#include <chrono>
#include <thread>

DWORD timeGetTime() {
    using namespace std::chrono;
    return static_cast<DWORD>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        torv::SafePoint();
        std::this_thread::yield();
        return;
    }
    const torv::AtRest rest;
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
