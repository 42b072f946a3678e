#include "torv/platform/posix/window.h"

#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/resolve_path.h"
#include "torv/platform/posix/window_table.h"

namespace {

template <class Result>
Result Refuse(DWORD error, Result result) {
    SetLastError(error);
    return result;
}

LONG_PTR torv::Window::*Member(int index) {
    switch (index) {
    case GWLP_WNDPROC:
        return &torv::Window::procedure;
    case GWLP_USERDATA:
        return &torv::Window::user;
    default:
        return nullptr;
    }
}

} // namespace

HWND CreateWindowExA(DWORD, LPCSTR className, LPCSTR, DWORD, int, int, int, int, HWND parent, HMENU, HINSTANCE,
                     LPVOID) {
    if (!className || !torv::SameName(className, "STATIC") || parent != HWND_MESSAGE)
        return Refuse<HWND>(ERROR_CANNOT_FIND_WND_CLASS, nullptr);
    torv::ThreadState& self = torv::ThreadState::Current();
    if (self.IsOver())
        return Refuse<HWND>(ERROR_INVALID_THREAD_ID, nullptr);
    self.MakeQueue();
    return torv::AddWindow(self);
}

BOOL DestroyWindow(HWND window) {
    const auto found = torv::FindWindow(window);
    if (!found)
        return Refuse(ERROR_INVALID_WINDOW_HANDLE, FALSE);
    if (found->owner.get() != &torv::ThreadState::Current())
        return Refuse(ERROR_ACCESS_DENIED, FALSE);
    torv::RemoveWindow(window);
    return TRUE;
}

BOOL IsWindow(HWND window) { return torv::FindWindow(window).has_value(); }

LONG_PTR SetWindowLongPtrA(HWND window, int index, LONG_PTR value) {
    const auto member = Member(index);
    if (!member)
        return Refuse<LONG_PTR>(ERROR_INVALID_INDEX, 0);
    const auto before = torv::ExchangeValue(window, member, value);
    return before ? *before : Refuse<LONG_PTR>(ERROR_INVALID_WINDOW_HANDLE, 0);
}

LONG_PTR GetWindowLongPtrA(HWND window, int index) {
    const auto member = Member(index);
    if (!member)
        return Refuse<LONG_PTR>(ERROR_INVALID_INDEX, 0);
    const auto found = torv::FindWindow(window);
    return found ? (*found).*member : Refuse<LONG_PTR>(ERROR_INVALID_WINDOW_HANDLE, 0);
}

LRESULT DefWindowProcA(HWND, UINT, WPARAM, LPARAM) { return 0; }
