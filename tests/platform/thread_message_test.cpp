#include "allocation_counter.h"
#include "platform/begun_thread.h"

#include <doctest/doctest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

/// The numbers of the calling thread's messages, in order, until there are none; what is taken by number only is above
/// the system's own.
std::vector<UINT> TakeAll(HWND window = nullptr) {
    std::vector<UINT> numbers;
    MSG message;
    while (PeekMessageA(&message, window, WM_USER, 0xBFFF, PM_REMOVE))
        numbers.push_back(message.message);
    return numbers;
}

/// A window's procedure that answers with a sum, and keeps on which thread it was called.
struct Adder {
    DWORD thread = 0;
    int calls = 0;

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message < WM_USER)
            return DefWindowProcA(window, message, wParam, lParam);
        Adder& adder = UserOf<Adder>(window);
        adder.thread = GetCurrentThreadId();
        ++adder.calls;
        return static_cast<LRESULT>(wParam) + lParam;
    }
};

/// Pumps until there is a WM_QUIT.
void Pump() {
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0)
        DispatchMessageA(&message);
}

/// A thread with a window, which pumps, or does something else instead.
class Owner {
public:
    Owner(WNDPROC procedure, void* user, void (*instead)(HWND) = nullptr)
        : m_thread([=, this] {
              m_window = NewWindow(procedure, user);
              instead ? instead(m_window) : Pump();
          }) {
        REQUIRE(Await([&] { return m_window.load() != nullptr; }));
    }
    ~Owner() { PostThreadMessageA(Id(), WM_QUIT, 0, 0); }
    HWND Window() const { return m_window; }
    DWORD Id() const { return m_thread.id; }
    bool End() const {
        PostThreadMessageA(Id(), WM_QUIT, 0, 0);
        return m_thread.End();
    }

private:
    std::atomic<HWND> m_window = nullptr;
    BegunThread m_thread;
};

} // namespace

TEST_CASE("thread messages: none before there is a queue, then all of them in order") {
    std::atomic<int> stage = 0;
    std::vector<WPARAM> got;
    BegunThread thread([&] {
        stage = 1;
        while (stage < 2)
            Sleep(1);
        MSG message;
        CHECK_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE));
        stage = 3;
        while (GetMessageA(&message, nullptr, 0, 0) > 0)
            got.push_back(message.wParam);
    });
    REQUIRE(Await([&] { return stage == 1; }));
    CHECK_FALSE(PostThreadMessageA(thread.id, 1074, 0, 0));
    CHECK(GetLastError() == ERROR_INVALID_THREAD_ID);
    stage = 2;
    REQUIRE(Await([&] { return stage == 3; }));
    std::vector<WPARAM> posted;
    for (UINT i = 0; i < 3000; ++i) {
        CHECK(PostThreadMessageA(thread.id, 1074 + i % 9, i, 0));
        posted.push_back(i);
    }
    CHECK(PostThreadMessageA(thread.id, WM_QUIT, 0, 0));
    REQUIRE(thread.End());
    CHECK(got == posted);
    CHECK_FALSE(PostThreadMessageA(0xFFFFFFF0, WM_USER, 0, 0)); // no such thread
}

TEST_CASE("thread messages: to the thread and to its windows, one queue") {
    Adder adder;
    const HWND a = NewWindow(&Adder::Procedure, &adder);
    const HWND b = NewWindow();
    const auto post = [&] {
        PostMessageA(a, 1101, 3, 4);
        PostThreadMessageA(GetCurrentThreadId(), 1102, 0, 0);
        PostMessageA(b, 1103, 0, 0);
        PostMessageA(a, 1104, 0, 0);
        PostMessageA(nullptr, 1105, 0, 0); // to the calling thread
    };
    post();
    CHECK(TakeAll() == std::vector<UINT>{1101, 1102, 1103, 1104, 1105});
    post();
    CHECK(TakeAll(a) == std::vector<UINT>{1101, 1104});
    CHECK(TakeAll(reinterpret_cast<HWND>(LONG_PTR{-1})) == std::vector<UINT>{1102, 1105}); // the thread's alone
    CHECK(TakeAll() == std::vector<UINT>{1103});

    post();
    MSG message;
    REQUIRE(GetMessageA(&message, a, 1101, 1101) > 0);
    CHECK(DispatchMessageA(&message) == 7);
    CHECK(DestroyWindow(a));
    CHECK(TakeAll() == std::vector<UINT>{1102, 1103, 1105});
    CHECK(GetMessageA(&message, a, 0, 0) == -1);
    for (const HWND none : {HWND(), a}) {
        message.hwnd = none;
        CHECK(DispatchMessageA(&message) == 0);
    }
    CHECK(adder.calls == 1);
    CHECK(DestroyWindow(b));
}

TEST_CASE("thread messages: a window's owner alone takes and destroys; one that is gone is refused") {
    const HWND window = NewWindow();
    HWND theirs = nullptr;
    std::thread([&] {
        CWnd(window).PostMessage(WM_USER + 9, 1, 2);
        CHECK(TakeAll(window).empty());
        CHECK_FALSE(DestroyWindow(window));
        CHECK(GetLastError() == ERROR_ACCESS_DENIED);
        theirs = NewWindow();
        CHECK(IsWindow(theirs));
    }).join();
    CHECK_FALSE(IsWindow(theirs)); // a thread's windows end with it
    CHECK(TakeAll(window) == std::vector<UINT>{WM_USER + 9});
    PostMessageA(window, WM_USER, 0, 0);
    CHECK(DestroyWindow(window));
    CHECK_FALSE(DestroyWindow(window));
    CHECK(TakeAll().empty()); // its messages went with it
    for (const HWND none : {window, HWND(), reinterpret_cast<HWND>(INT_PTR(0x1234))}) {
        CHECK_FALSE(IsWindow(none));
        CHECK_FALSE(CWnd(none).PostMessage(WM_USER));
        CHECK(SendMessageA(none, WM_USER, 1, 1) == 0);
        CHECK(GetLastError() == ERROR_INVALID_WINDOW_HANDLE);
    }
    CHECK(CreateWindowExA(0, "NoSuchClass", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr) == nullptr);
}

TEST_CASE("thread messages: sent ones are answered by the window's own thread") {
    Adder here, there;
    const HWND window = NewWindow(&Adder::Procedure, &here);
    CHECK(SendMessageA(window, WM_USER, 20, 22) == 42); // at once
    CHECK(here.thread == GetCurrentThreadId());
    const Owner owner(&Adder::Procedure, &there);
    for (int i = 0; i < 100; ++i)
        CHECK(SendMessageA(owner.Window(), WM_USER, 30, i) == 30 + i);
    CHECK(there.thread == owner.Id());
    CHECK(TakeAll(owner.Window()).empty()); // they are not ours
    CHECK(owner.End());
    CHECK(SendMessageA(owner.Window(), WM_USER, 1, 1) == 0); // gone with its thread
    CHECK(DestroyWindow(window));
    CHECK(GetWindowLongPtrA(window, GWLP_USERDATA) == 0);
    const HWND plain = NewWindow();
    CHECK(SendMessageA(plain, WM_USER, 1, 1) == 0); // no procedure of its own
    CHECK(DestroyWindow(plain));
}

TEST_CASE("thread messages: who waits for an answer answers others meanwhile") {
    // The owner's procedure asks the sender's own window before it answers.
    struct Asker {
        HWND other;
        static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            if (message < WM_USER)
                return DefWindowProcA(window, message, wParam, lParam);
            return 2 * SendMessageA(UserOf<Asker>(window).other, message, wParam, lParam);
        }
    };
    Adder adder;
    Asker asker{NewWindow(&Adder::Procedure, &adder)};
    const Owner owner(&Asker::Procedure, &asker);
    CHECK(SendMessageA(owner.Window(), WM_USER, 3, 4) == 14);
    CHECK(DestroyWindow(asker.other));
    CHECK(owner.End());
}

TEST_CASE("thread messages: an owner that dies leaves no sender behind") {
    Adder adder;
    {
        const Owner dies(&Adder::Procedure, &adder, [](HWND) { Sleep(50); }); // never looks for messages
        CHECK(SendMessageA(dies.Window(), WM_USER, 1, 2) == 0);
    }
    CHECK(adder.calls == 0);
}

#if !defined(_WIN32)
TEST_CASE("thread messages: a queue has room for 10000, and posting allocates nothing") {
    const HWND window = NewWindow();
    const DWORD id = GetCurrentThreadId();
    for (int round = 0; round < 2; ++round) {
        BegunThread fills([&] {
            allocation_counter::WatchThisThread();
            for (int i = 0; i < 5000; ++i) {
                PostMessageA(window, WM_USER + 1, 0, 0);
                PostThreadMessageA(id, WM_USER + 2, 0, 0);
            }
        });
        CHECK(fills.End());
        CHECK_FALSE(PostMessageA(window, WM_USER, 0, 0));
        CHECK_FALSE(PostThreadMessageA(id, WM_USER, 0, 0));
        CHECK(GetLastError() == ERROR_NOT_ENOUGH_QUOTA);
        CHECK(TakeAll(window).size() == 5000); // from the middle, then the rest
        CHECK(TakeAll() == std::vector<UINT>(5000, WM_USER + 2));
    }
    CHECK(allocation_counter::Take() == 0);
    CHECK(DestroyWindow(window));
}
#endif
