#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/types.h"

/// Windows as message targets: a handle, the thread that made it, and a queue of posted messages. A handle is looked up
/// in one table, so a window that is gone is refused by every call and never touched.

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;

constexpr UINT WM_NULL = 0x0000;
constexpr UINT WM_USER = 0x0400;
constexpr UINT WM_APP = 0x8000;
constexpr UINT PM_NOREMOVE = 0;
constexpr UINT PM_REMOVE = 1;
#define HWND_MESSAGE (reinterpret_cast<HWND>(static_cast<LONG_PTR>(-3)))

/// Makes a message-only window: the class must be "STATIC" and the parent HWND_MESSAGE; anything else is refused with
/// null. Style, place and the rest have no meaning for such a window.
TORV_API HWND CreateWindowExA(DWORD exStyle, LPCSTR className, LPCSTR windowName, DWORD style, int x, int y, int width,
                              int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter);
/// Only the thread that made a window may destroy it; its queued messages go with it.
TORV_API BOOL DestroyWindow(HWND window);
TORV_API BOOL IsWindow(HWND window);
/// Queues a message, from any thread. Zero for a window that is gone, or whose queue of 10000 messages is full.
TORV_API BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// Takes (or with PM_NOREMOVE only shows) the oldest message of a window of the calling thread, or with a null window
/// of any of its windows; numbers from `first` to `last` only, unless both are 0. Zero at once when there is none.
TORV_API BOOL PeekMessageA(LPMSG message, HWND window, UINT first, UINT last, UINT remove);

inline BOOL PostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return PostMessageA(window, message, wParam, lParam);
}
inline BOOL PeekMessage(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
    return PeekMessageA(message, window, first, last, remove);
}
