#pragma once

#include <panel_abi.h>

/// The fake panel's last call, and what it does while it is in one.
struct FakePanelLog {
    int calls;
    const char* entry; ///< its name; null before the first
    intptr_t argument; ///< 0 for a call without one
    void (*during)();  ///< may be null
};

/// Entry point "GetFakePanelLog".
using GetFakePanelLogProc = FakePanelLog*(PANEL_CALL*)();
