#include "platform/begun_thread.h"

#include <doctest/doctest.h>

#include <atomic>
#include <thread>

namespace {

/// Counts until it is told to end, by way of the platform's own calls, each of them a safe point.
struct Counter {
    std::atomic<int> count = 0;
    std::atomic<bool> end = false;

    void Run(void (*pass)()) {
        while (!end) {
            ++count;
            pass();
        }
    }
    /// Whether it counts on.
    bool Goes() const {
        return Await([&, before = count.load()] { return count > before; });
    }
    /// Whether it stays where it is.
    bool Stands() const {
#if defined(_WIN32)
        Sleep(20); // the system may stop it a little later than it says
#endif
        const int before = count;
        Sleep(15);
        return count == before;
    }
};

void PassMessages() {
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);
}
void PassWait() { WaitForSingleObject(nullptr, 0); }
void PassShortSleep() { Sleep(1); }
void PassYield() { Sleep(0); }

} // namespace

TEST_CASE("thread: handles and numbers") {
    DWORD theirs = 0;
    BegunThread thread([&] { theirs = GetCurrentThreadId(); }, CREATE_SUSPENDED);
    CHECK_FALSE(thread.End(10));
    for (int i = 0; i < 200; ++i)
        SuspendThread(thread.handle);
    CHECK(ResumeThread(thread.handle) == MAXIMUM_SUSPEND_COUNT);
    while (ResumeThread(thread.handle) > 2) {
    }
    CHECK(ResumeThread(thread.handle) == 1);
    CHECK(thread.End());
    CHECK(theirs == thread.id);
    CHECK(theirs != GetCurrentThreadId());
    CHECK_FALSE(PostThreadMessageA(theirs, WM_USER, 0, 0));
    CHECK(SetThreadPriority(thread.handle, 3) == FALSE);
    CHECK(SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_NORMAL));
    CHECK(CloseHandle(thread.handle));
    CHECK_FALSE(CloseHandle(thread.handle));
    CHECK(WaitForSingleObject(thread.handle, 0) == WAIT_FAILED);
    CHECK(GetLastError() == ERROR_INVALID_HANDLE);
}

TEST_CASE("thread: a suspended one makes no progress until it was resumed as often") {
    for (const auto pass : {PassYield, PassShortSleep, PassMessages, PassWait, torv::SafePoint}) {
        Counter counter;
        BegunThread thread([&] { counter.Run(pass); });
        REQUIRE(counter.Goes());
        CHECK(SuspendThread(thread.handle) == 0);
        CHECK(SuspendThread(thread.handle) == 1);
        CHECK(counter.Stands());
        CHECK(ResumeThread(thread.handle) == 2);
        CHECK(counter.Stands());
        CHECK(ResumeThread(thread.handle) == 1);
        CHECK(counter.Goes());
        CHECK(ResumeThread(thread.handle) == 0); // never below none
        CHECK(counter.Goes());
        counter.end = true;
        CHECK(thread.End());
        CHECK(SuspendThread(thread.handle) == static_cast<DWORD>(-1));
    }
}

TEST_CASE("thread: suspended while it waits, it stays in the wait") {
    Counter counter;
    BegunThread thread([&] {
        MSG message;
        PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);
        ++counter.count;
        while (GetMessageA(&message, nullptr, 0, 0) > 0)
            ++counter.count;
    });
    REQUIRE(Await([&] { return counter.count == 1; }));
    CHECK(SuspendThread(thread.handle) == 0); // returns, although nothing is posted
    CHECK(PostThreadMessageA(thread.id, WM_USER, 0, 0));
    CHECK(counter.Stands());
    CHECK(counter.count == 1);
    CHECK(ResumeThread(thread.handle) == 1);
    CHECK(Await([&] { return counter.count == 2; }));
    CHECK(PostThreadMessageA(thread.id, WM_QUIT, 0, 0));
    CHECK(thread.End());
}

TEST_CASE("thread: one that suspends itself, and two that suspend each other, go on when resumed") {
    std::atomic<int> stage = 0;
    BegunThread self([&] {
        stage = 1;
        SuspendThread(GetCurrentThread());
        stage = 2;
    });
    REQUIRE(Await([&] { return stage == 1; }));
    REQUIRE(Await([&] { return ResumeThread(self.handle) == 1; }));
    CHECK(self.End());
    CHECK(stage == 2);

    std::atomic<HANDLE> handles[2] = {};
    const auto suspend = [&](int other) {
        while (!handles[other])
            Sleep(0);
        SuspendThread(handles[other]);
    };
    BegunThread a([&] { suspend(1); });
    BegunThread b([&] { suspend(0); });
    handles[0] = a.handle;
    handles[1] = b.handle;
    CHECK(Await([&] {
        ResumeThread(a.handle);
        ResumeThread(b.handle);
        return a.End(0) && b.End(0);
    }));
}

#if !defined(_WIN32)
TEST_CASE("thread: a wait outlives the handle it began with; a thread in a message box counts as at rest") {
    std::atomic<bool> isOver = false;
    BegunThread thread([&] {
        while (!isOver)
            Sleep(1);
    });
    DWORD result = WAIT_FAILED;
    std::atomic<bool> isWaiting = false;
    BegunThread waiter([&] {
        isWaiting = true;
        result = WaitForSingleObject(thread.handle, INFINITE);
    });
    REQUIRE(Await([&] { return isWaiting.load(); }));
    CHECK_FALSE(waiter.End(20));
    CHECK(CloseHandle(thread.handle));
    isOver = true;
    CHECK(waiter.End());
    CHECK(result == WAIT_OBJECT_0);

    std::atomic<bool> isShown = false, isAnswered = false;
    const auto before = torv::SetMessageBoxHandler([&](HWND, const char*, const char*, UINT) {
        isShown = true;
        while (!isAnswered)
            std::this_thread::yield();
        return IDOK;
    });
    BegunThread asks([&] { torv::ShowMessageBox(nullptr, "?", "?", MB_OK); });
    REQUIRE(Await([&] { return isShown.load(); }));
    CHECK(SuspendThread(asks.handle) == 0);
    isAnswered = true;
    CHECK_FALSE(asks.End(20));
    CHECK(ResumeThread(asks.handle) == 1);
    CHECK(asks.End());
    torv::SetMessageBoxHandler(before);
}
#endif
