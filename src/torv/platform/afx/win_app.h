#pragma once

#include "torv/platform/afx/object.h"
#include "torv/platform/export.h"
#include "torv/platform/system.h"

/// What messages a class handles, after those of its base. The library's own maps are empty.
/// One handler of a message map; the library has none.
struct AFX_MSGMAP_ENTRY;
/// A class's handlers, and where those of its base are.
struct AFX_MSGMAP {
    const AFX_MSGMAP* pBaseMap;        ///< of the class above
    const AFX_MSGMAP_ENTRY* lpEntries; ///< ends with an empty one
};

/// The application object. The first one to be made is the one that AfxGetApp answers, while it lives.
class TORV_API CWinApp : public CObject {
public:
    /// The name is kept, not copied; null leaves the application without one.
    explicit CWinApp(LPCSTR name = nullptr);
    CWinApp(const CWinApp&) = delete;
    CWinApp& operator=(const CWinApp&) = delete;
    ~CWinApp() override;

    /// TRUE: ready.
    virtual BOOL InitInstance();
    /// The exit code, 0.
    virtual int ExitInstance();
    /// Null: it handles none.
    virtual const AFX_MSGMAP* GetMessageMap() const;

    HINSTANCE m_hInstance; ///< the module that holds this library
    LPCSTR m_pszAppName;   ///< as given to the constructor
};

/// Null when there is none.
TORV_API CWinApp* AfxGetApp();
