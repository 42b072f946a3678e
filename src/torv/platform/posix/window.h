#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/types.h"

/// Windows as message targets: a handle, the thread that made it, and a procedure. A handle is looked up in one table,
/// so a window that is gone is refused by every call and never touched.

using WNDPROC = LRESULT(CALLBACK*)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

#define HWND_MESSAGE (reinterpret_cast<HWND>(static_cast<LONG_PTR>(-3)))
constexpr int GWLP_WNDPROC = -4;
constexpr int GWLP_USERDATA = -21;

/// Makes a message-only window: the class must be "STATIC" and the parent HWND_MESSAGE; anything else is refused with
/// null. Style, place and the rest have no meaning for such a window. Windows of a thread end with it.
TORV_API HWND CreateWindowExA(DWORD exStyle, LPCSTR className, LPCSTR windowName, DWORD style, int x, int y, int width,
                              int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter);
/// Only the thread that made a window may destroy it; its queued messages go with it.
TORV_API BOOL DestroyWindow(HWND window);
TORV_API BOOL IsWindow(HWND window);

/// Gives the window a procedure (GWLP_WNDPROC) or a value of the caller's own (GWLP_USERDATA) and returns the one
/// before; zero, with the last error, for a window that is gone and for another index. The procedure gets only what is
/// sent or dispatched: none of the system's own messages.
TORV_API LONG_PTR SetWindowLongPtrA(HWND window, int index, LONG_PTR value);
TORV_API LONG_PTR GetWindowLongPtrA(HWND window, int index);
/// What a window does with a message of itself: nothing, and zero.
TORV_API LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
