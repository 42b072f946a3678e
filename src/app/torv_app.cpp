#include "torv/app/torv_app.h"

#include "torv/lyrics/converter_modules.h"

namespace {

CTORVApp g_app;

constexpr UINT kVersionString = 10000;
constexpr int kJapanese = 0;
constexpr int kEnglish = 1;

bool LoadConverter(HMODULE& module, int language, const char* name) {
    if (!module)
        module = LoadLibraryA(name);
    if (!module) {
        CString text;
        text.Format("Could not load \"%s\" !", name);
        AfxMessageBox(text, MB_ICONEXCLAMATION | MB_OK);
        return false;
    }
    torv::SetConverterModule(language, module);
    return true;
}

void FreeConverter(HMODULE& module, int language) {
    torv::SetConverterModule(language, nullptr);
    if (module)
        FreeLibrary(module);
    module = nullptr;
}

} // namespace

CTORVApp::CTORVApp() : CWinApp("TORV") {
    torv::SetConverterLoader({[] { return g_app.LoadG2PALibrary(); }, [] { g_app.FreeG2PALibrary(); }});
}

CTORVApp::~CTORVApp() { torv::SetConverterLoader({}); }

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

int CTORVApp::LoadG2PALibrary() {
    return LoadConverter(m_hG2paJpn, kJapanese, "G2PA_JPN.DLL") && LoadConverter(m_hG2paEng, kEnglish, "G2PA_ENG.DLL");
}

void CTORVApp::FreeG2PALibrary() {
    FreeConverter(m_hG2paJpn, kJapanese);
    FreeConverter(m_hG2paEng, kEnglish);
}

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
