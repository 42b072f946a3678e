#include "torv/app/torv_app.h"

#include "torv/lyrics/converter_modules.h"

namespace {

CTORVApp g_app;

constexpr UINT kVersionString = 10000;

} // namespace

CTORVApp::CTORVApp() : CWinApp("TORV") {}

CTORVApp::~CTORVApp() = default;

CTORVApp* CTORVApp::GetApp() { return &g_app; }

BOOL CTORVApp::InitInstance() { return CWinApp::InitInstance(); }

int CTORVApp::ExitInstance() { return CWinApp::ExitInstance(); }

const AFX_MSGMAP* CTORVApp::GetMessageMap() const {
    static const AFX_MSGMAP empty = {CWinApp::GetMessageMap(), nullptr};
    return &empty;
}

CString CTORVApp::GetVersionString() {
    CString version;
    version.LoadString(kVersionString);
    return version;
}

int CTORVApp::LoadG2PALibrary() { return torv::LoadConverters(); }

void CTORVApp::FreeG2PALibrary() { torv::FreeConverters(); }

#if defined(_WIN32)
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH || g_app.InitInstance())
        return TRUE;
    g_app.ExitInstance();
    return FALSE;
}
#else
[[maybe_unused]] static const BOOL g_ready = g_app.InitInstance(); // a load cannot be refused here
#endif
