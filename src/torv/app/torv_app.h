#pragma once

#include "torv/platform/platform.h"

/// The library's one application object: made when the library is loaded, gone when it is unloaded. It answers for the
/// library's resources; everything else starts when a host opens the databases.
class TORV_API CTORVApp : public CWinApp {
public:
    CTORVApp();
    ~CTORVApp() override;

    /// The one object of this module.
    static CTORVApp* GetApp();

    BOOL InitInstance() override;
    int ExitInstance() override;
    /// Empty: the application object handles no messages.
    const AFX_MSGMAP* GetMessageMap() const override;

    /// String resource 10000. Throws std::bad_alloc.
    static CString GetVersionString();

    /// The phoneme converters, `torv::LoadConverters` and `torv::FreeConverters`.
    int LoadG2PALibrary();
    /// See LoadG2PALibrary.
    void FreeG2PALibrary();
};
