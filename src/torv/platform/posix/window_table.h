#pragma once

#include "torv/platform/posix/thread_state.h"
#include "torv/platform/posix/window.h"

#include <optional>

/// The windows there are, for the calls on windows and messages.
namespace torv {

struct Window {
    std::shared_ptr<ThreadState> owner;
    LONG_PTR procedure = 0; // a WNDPROC; 0: the default one
    LONG_PTR user = 0;
};

HWND AddWindow(ThreadState& owner);
/// Nothing for a window that is gone.
std::optional<Window> FindWindow(HWND window);
/// Gives one of its values a new value and returns the old one; nothing for a window that is gone.
std::optional<LONG_PTR> ExchangeValue(HWND window, LONG_PTR Window::*member, LONG_PTR value);
/// Calls its procedure, if the window belongs to the calling thread.
LRESULT CallProcedure(const MSG& message);
/// While these put a message into the owner's queues, the window cannot go. Results are error numbers.
DWORD PostToWindow(const MSG& message);
DWORD SendToWindow(SentMessage& sent);
void RemoveWindow(HWND window);
void CloseWindows(const ThreadState& owner);

} // namespace torv
