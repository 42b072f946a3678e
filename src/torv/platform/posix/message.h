#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/types.h"

/// Messages to windows and to threads. A thread has one queue for both, in the order of posting, from the first time
/// that it asks for a message or makes a window. The queue's room of 10000 messages is had at once, so that posting
/// never allocates.

struct MSG {
    HWND hwnd; ///< null for a message to the thread
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;

constexpr UINT WM_NULL = 0x0000;
constexpr UINT WM_QUIT = 0x0012;
constexpr UINT WM_USER = 0x0400;
constexpr UINT WM_APP = 0x8000;
constexpr UINT PM_NOREMOVE = 0;
constexpr UINT PM_REMOVE = 1;

/// Queues a message, from any thread; a null window means the calling thread itself. Zero for a window that is gone,
/// or when its thread's queue is full.
TORV_API BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// Queues a message to a thread. Zero when there is none of this number, when it has no queue yet, or when that is
/// full.
TORV_API BOOL PostThreadMessageA(DWORD thread, UINT message, WPARAM wParam, LPARAM lParam);
/// Calls the window's procedure and returns its result: at once on the window's own thread, else when that thread next
/// looks for messages; the caller answers messages sent to it in the meantime. Zero when the window or its thread is
/// gone, or goes before it has answered.
TORV_API LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Answers the messages sent to the calling thread, then takes (or with PM_NOREMOVE only shows) its oldest posted one:
/// of this window of its own, with null of any and of the thread, with -1 of the thread alone; numbers from `first` to
/// `last` only, unless both are 0. Zero at once when there is none.
TORV_API BOOL PeekMessageA(LPMSG message, HWND window, UINT first, UINT last, UINT remove);
/// Takes as PeekMessageA does, and waits until there is one. Zero for WM_QUIT; -1 when the window is not the calling
/// thread's (any more).
TORV_API BOOL GetMessageA(LPMSG message, HWND window, UINT first, UINT last);
/// Calls the procedure of the window that the message is for; zero when it is for none of the calling thread's.
TORV_API LRESULT DispatchMessageA(const MSG* message);

inline BOOL PostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return PostMessageA(window, message, wParam, lParam);
}
inline BOOL PostThreadMessage(DWORD thread, UINT message, WPARAM wParam, LPARAM lParam) {
    return PostThreadMessageA(thread, message, wParam, lParam);
}
inline LRESULT SendMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendMessageA(window, message, wParam, lParam);
}
inline BOOL PeekMessage(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
    return PeekMessageA(message, window, first, last, remove);
}
inline BOOL GetMessage(LPMSG message, HWND window, UINT first, UINT last) {
    return GetMessageA(message, window, first, last);
}
inline LRESULT DispatchMessage(const MSG* message) { return DispatchMessageA(message); }
