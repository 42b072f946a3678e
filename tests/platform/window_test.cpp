#include "torv/platform/platform.h"

#include <doctest/doctest.h>

#include <thread>

namespace {

HWND NewWindow(HWND parent = HWND_MESSAGE, const char* className = "STATIC") {
    return CreateWindowExA(0, className, "", 0, 0, 0, 0, 0, parent, nullptr, nullptr, nullptr);
}

/// The number of the next message of this window, or of any; 0 when there is none.
UINT Next(HWND window, UINT first = WM_USER, UINT last = 0xBFFF) {
    MSG message{};
    return PeekMessageA(&message, window, first, last, PM_REMOVE) ? message.message : 0;
}

} // namespace

TEST_CASE("window: messages arrive in order, each at its own window") {
    const HWND a = NewWindow();
    const HWND b = NewWindow();
    REQUIRE(a != nullptr);
    REQUIRE(b != nullptr);
    CHECK(a != b);
    CHECK(IsWindow(a));
    CHECK(PostMessageA(a, WM_USER + 1, 11, 12));
    CHECK(PostMessageA(b, WM_USER + 2, 21, -22));
    CHECK(PostMessageA(a, WM_USER + 3, 31, 32));

    MSG message{};
    REQUIRE(PeekMessageA(&message, b, WM_USER, 0xBFFF, PM_NOREMOVE)); // a look takes nothing away
    REQUIRE(PeekMessageA(&message, b, WM_USER, 0xBFFF, PM_REMOVE));
    CHECK(message.hwnd == b);
    CHECK(message.message == WM_USER + 2);
    CHECK(message.wParam == 21);
    CHECK(message.lParam == -22);
    CHECK(Next(b) == 0);
    CHECK(Next(a, WM_USER + 3, WM_USER + 3) == WM_USER + 3); // by number, past an older one
    CHECK(Next(a) == WM_USER + 1);
    CHECK(Next(a) == 0);

    PostMessageA(b, WM_USER + 4, 0, 0);
    PostMessageA(a, WM_USER + 5, 0, 0);
    CHECK(Next(nullptr) == WM_USER + 4); // of all windows the oldest
    CHECK(Next(nullptr) == WM_USER + 5);
    CHECK(DestroyWindow(a));
    CHECK(DestroyWindow(b));
}

TEST_CASE("window: one that is gone is refused") {
    const HWND window = NewWindow();
    PostMessageA(window, WM_USER, 0, 0);
    CHECK(DestroyWindow(window));
    CHECK_FALSE(IsWindow(window));
    CHECK_FALSE(PostMessageA(window, WM_USER, 0, 0));
    CHECK(GetLastError() == ERROR_INVALID_WINDOW_HANDLE);
    CHECK_FALSE(DestroyWindow(window));
    CHECK(Next(nullptr) == 0); // its messages went with it
    CHECK_FALSE(IsWindow(nullptr));
    CHECK_FALSE(IsWindow(reinterpret_cast<HWND>(INT_PTR(0x1234))));
    CHECK(NewWindow(HWND_MESSAGE, "NoSuchClass") == nullptr);

    CWnd gone(window);
    CHECK_FALSE(gone.PostMessage(WM_USER));
    CHECK_FALSE(CWnd().PostMessage(WM_USER));
}

TEST_CASE("window: any thread posts, the owner alone takes and destroys") {
    const HWND window = NewWindow();
    HWND theirs = nullptr;
    std::thread([&] {
        CWnd(window).PostMessage(WM_USER + 9, 1, 2);
        CHECK(Next(window) == 0);
        CHECK_FALSE(DestroyWindow(window));
        CHECK(GetLastError() == ERROR_ACCESS_DENIED);
        theirs = NewWindow();
        CHECK(IsWindow(theirs));
    }).join();
    CHECK(Next(window) == WM_USER + 9);
    CHECK_FALSE(IsWindow(theirs)); // a thread's windows end with it
    CHECK(DestroyWindow(window));
}
