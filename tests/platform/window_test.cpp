#include "platform/begun_thread.h"

#include <doctest/doctest.h>

#include <thread>

namespace {

/// The number of the next message of this window, or of any; 0 when there is none.
UINT Next(HWND window, UINT first = WM_USER, UINT last = 0xBFFF) {
    MSG message{};
    return PeekMessageA(&message, window, first, last, PM_REMOVE) ? message.message : 0;
}

} // namespace

TEST_CASE("window: one that is gone is refused") {
    const HWND window = NewWindow();
    PostMessageA(window, WM_USER, 0, 0);
    CHECK(DestroyWindow(window));
    CHECK_FALSE(PostMessageA(window, WM_USER, 0, 0));
    CHECK(GetLastError() == ERROR_INVALID_WINDOW_HANDLE);
    CHECK_FALSE(DestroyWindow(window));
    CHECK(Next(nullptr) == 0); // its messages went with it
    for (const HWND none : {window, HWND(), reinterpret_cast<HWND>(INT_PTR(0x1234))}) {
        CHECK_FALSE(IsWindow(none));
        CHECK_FALSE(CWnd(none).PostMessage(WM_USER));
    }
    CHECK(CreateWindowExA(0, "NoSuchClass", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr) == nullptr);
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
