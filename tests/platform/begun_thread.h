#pragma once

#include "torv/platform/platform.h"

#include <functional>

/// A thread of the platform that runs a function, and its handle.
class BegunThread {
public:
    explicit BegunThread(std::function<void()> work, DWORD flags = 0) : m_work(std::move(work)) {
        handle = CreateThread(nullptr, 0, &Run, this, flags, &id);
    }
    BegunThread(const BegunThread&) = delete;
    BegunThread& operator=(const BegunThread&) = delete;
    ~BegunThread() {
        End();
        CloseHandle(handle);
    }
    /// Until it is over; ten seconds at most.
    bool End(DWORD milliseconds = 10000) const { return WaitForSingleObject(handle, milliseconds) == WAIT_OBJECT_0; }

    HANDLE handle = nullptr;
    DWORD id = 0;

private:
    static DWORD WINAPI Run(LPVOID self) {
        static_cast<BegunThread*>(self)->m_work();
        return 0;
    }
    std::function<void()> m_work;
};

/// Until it is true, ten seconds at most.
template <class Condition>
bool Await(Condition condition) {
    for (int i = 0; i < 10000; ++i) {
        if (condition())
            return true;
        Sleep(1);
    }
    return false;
}

inline HWND NewWindow(WNDPROC procedure = nullptr, void* user = nullptr) {
    const HWND window = CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    if (user)
        SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(user));
    if (procedure)
        SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    return window;
}

template <class User>
User& UserOf(HWND window) {
    return *reinterpret_cast<User*>(GetWindowLongPtrA(window, GWLP_USERDATA));
}
