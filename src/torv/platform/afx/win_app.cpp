#include "torv/platform/afx/win_app.h"

#include "torv/platform/library_module.h"

#include <atomic>

namespace {

std::atomic<CWinApp*> g_app{nullptr};

} // namespace

CWinApp::CWinApp(LPCSTR name) : m_hInstance(torv::LibraryModule()), m_pszAppName(name) {
    CWinApp* none = nullptr;
    g_app.compare_exchange_strong(none, this);
}

CWinApp::~CWinApp() {
    CWinApp* self = this;
    g_app.compare_exchange_strong(self, nullptr);
}

BOOL CWinApp::InitInstance() { return TRUE; }
int CWinApp::ExitInstance() { return 0; }

const AFX_MSGMAP* CWinApp::GetMessageMap() const {
    static constexpr AFX_MSGMAP empty{nullptr, nullptr};
    return &empty;
}

CWinApp* AfxGetApp() { return g_app; }
