#pragma once

#include "torv/platform/platform.h"

/// The library's one application object: made when the library is loaded, gone when it is unloaded. It holds the two
/// phoneme converter libraries and answers for the library's resources; everything else starts when a host opens the
/// databases.
class TORV_API CTORVApp : public CWinApp {
public:
    CTORVApp();
    ~CTORVApp() override;

    /// The one object of this module.
    static CTORVApp* GetApp();

    BOOL InitInstance() override;
    int ExitInstance() override;
    const AFX_MSGMAP* GetMessageMap() const override;

    /// String resource 10000.
    static CString GetVersionString();

    /// Loads the Japanese converter, then the English one, each unless it is loaded already, and makes them known to
    /// the lyrics. 1 when both are there. The first that cannot be loaded is reported in a message box and ends it
    /// with 0.
    int LoadG2PALibrary();
    void FreeG2PALibrary();

private:
    HMODULE m_hG2paJpn = nullptr;
    HMODULE m_hG2paEng = nullptr;
};
