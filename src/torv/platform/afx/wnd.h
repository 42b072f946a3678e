#pragma once

#include "torv/platform/afx/object.h"
#include "torv/platform/export.h"
#include "torv/platform/message_box.h"
#include "torv/platform/system.h"

/// A name for a host's window; it owns nothing, and a window that is gone is only refused.
class TORV_API CWnd : public CObject {
public:
    /// For a window that need not exist; null is none.
    explicit CWnd(HWND window = nullptr) : m_hWnd(window) {}
    ~CWnd() override;

    /// The handle, null for none.
    HWND GetSafeHwnd() const { return m_hWnd; }
    /// FALSE when there is no such window.
    BOOL PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return m_hWnd && ::PostMessageA(m_hWnd, message, wParam, lParam);
    }
    /// A box owned by this window.
    int MessageBox(LPCSTR text, LPCSTR caption = nullptr, UINT type = MB_OK) {
        return torv::ShowMessageBox(m_hWnd, text, caption, type);
    }

    HWND m_hWnd; ///< the host's
};
