#include "platform/begun_thread.h"

#include <doctest/doctest.h>

#include <atomic>

namespace {

std::atomic<int> g_objects = 0; // threads' objects that live
std::atomic<int> g_unwound = 0;

class CountedThread : public CWinThread {
public:
    CountedThread(AFX_THREADPROC proc, LPVOID parameter) : CWinThread(proc, parameter) { ++g_objects; }
    ~CountedThread() override { --g_objects; }
};

struct Unwound {
    ~Unwound() { ++g_unwound; }
};

UINT Return(LPVOID parameter) { return static_cast<UINT>(reinterpret_cast<UINT_PTR>(parameter)); }

UINT End(LPVOID parameter) {
    const Unwound object;
    AfxEndThread(41, parameter == nullptr);
    return 40;
}

UINT Relay(LPVOID parameter) {
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);
    *static_cast<std::atomic<bool>*>(parameter) = true;
    return GetMessageA(&message, nullptr, 0, 0) > 0 ? static_cast<UINT>(message.wParam) : 0;
}

/// What the thread answered, seen by a handle of our own, the object's being gone with it.
DWORD Outcome(CWinThread& thread) {
    HANDLE own = nullptr;
    REQUIRE(DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), &own, 0, FALSE, DUPLICATE_SAME_ACCESS));
    CHECK(thread.ResumeThread() == 1);
    CHECK(WaitForSingleObject(own, 10000) == WAIT_OBJECT_0);
    DWORD code = 0;
    CHECK(GetExitCodeThread(own, &code));
    CHECK(CloseHandle(own));
    return code;
}

} // namespace

TEST_CASE("win thread: the object goes with its thread, or stays for who waits") {
    auto* gone = new CountedThread(&Return, reinterpret_cast<LPVOID>(UINT_PTR{12}));
    REQUIRE(gone->CreateThread(CREATE_SUSPENDED));
    CHECK_FALSE(gone->CreateThread());
    CHECK(Outcome(*gone) == 12);
    CHECK(g_objects == 0);

    CountedThread stays(&Return, reinterpret_cast<LPVOID>(UINT_PTR{13}));
    stays.m_bAutoDelete = FALSE;
    REQUIRE(stays.CreateThread(CREATE_SUSPENDED));
    CHECK(Outcome(stays) == 13);
    CHECK(g_objects == 1);
    CHECK(WaitForSingleObject(stays.m_hThread, INFINITE) == WAIT_OBJECT_0);
    CHECK_FALSE(CountedThread(nullptr, nullptr).CreateThread());
}

TEST_CASE("win thread: ended from within, its stack is unwound") {
    const int before = g_objects;
    auto* gone = new CountedThread(&End, nullptr);
    REQUIRE(gone->CreateThread(CREATE_SUSPENDED));
    CHECK(Outcome(*gone) == 41);
    CHECK(g_unwound == 1);
    CHECK(g_objects == before);

    auto* kept = new CountedThread(&End, gone); // asks for the object to be kept
    REQUIRE(kept->CreateThread(CREATE_SUSPENDED));
    CHECK(Outcome(*kept) == 41);
    CHECK(g_unwound == 2);
    CHECK(g_objects == before + 1);
    delete kept;
    AfxEndThread(1); // of no such thread
}

TEST_CASE("win thread: begun at once or suspended, and sent messages") {
    std::atomic<bool> isReady = false;
    CWinThread* thread = AfxBeginThread(&Relay, &isReady, THREAD_PRIORITY_TIME_CRITICAL, 0, CREATE_SUSPENDED);
    REQUIRE(thread != nullptr);
    thread->m_bAutoDelete = FALSE;
    CHECK_FALSE(thread->PostThreadMessage(1034, 5, 0)); // it has not looked for any yet
    CHECK(thread->ResumeThread() == 1);
    REQUIRE(Await([&] { return isReady.load(); }));
    CHECK(thread->PostThreadMessage(1034, 5, 0));
    CHECK(WaitForSingleObject(*thread, 10000) == WAIT_OBJECT_0);
    DWORD code = 0;
    CHECK(GetExitCodeThread(*thread, &code));
    CHECK(code == 5);
    delete thread;

    CHECK(AfxBeginThread(nullptr, nullptr) == nullptr);
    REQUIRE(AfxBeginThread(&End, nullptr) != nullptr); // nobody waits: it cleans up behind itself
    CHECK(Await([before = g_unwound.load()] { return g_unwound > before; }));
}
