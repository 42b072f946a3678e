#include "torv/platform/worker_thread.h"

#include "torv/platform/platform.h"

#include <doctest/doctest.h>

#include <atomic>

TEST_CASE("worker thread: can be posted to at once, stopped, and waited for") {
    std::atomic<UINT> got = 0;
    std::atomic<int> turns = 0;
    std::shared_ptr<torv::WorkerThread> worker;
    worker = torv::WorkerThread::Begin([&] {
        MSG message;
        while (!PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            ++turns;
            Sleep(0);
        }
        got = message.message;
        worker->Wait(); // for itself: at once
        worker.reset();
    });
    REQUIRE(worker != nullptr);
    const std::shared_ptr<torv::WorkerThread> held = worker;
    CHECK_FALSE(held->IsCurrent());
    held->Suspend();
    const int before = turns;
    Sleep(20);
    CHECK(turns == before);
    held->Resume();
    CHECK_FALSE(held->Wait(1));
    CHECK(held->Post(WM_USER + 5));
    CHECK(held->Wait());
    CHECK(got == WM_USER + 5);
    CHECK_FALSE(held->Post(WM_USER + 5));
}
