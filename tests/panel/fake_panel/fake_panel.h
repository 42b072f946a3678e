#pragma once

/// What the fake panel has seen, and what it does while it is called.
struct FakePanelLog {
    int calls;
    void (*during)(); ///< may be null
};

/// Entry point "GetFakePanelLog".
using GetFakePanelLogProc = FakePanelLog* (*)();
