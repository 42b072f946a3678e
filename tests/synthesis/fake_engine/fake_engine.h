#pragma once

#include "torv/abi/rve.h"

/// What the fake engine was asked, for tests to look at and to clear.
struct FakeLog {
    int live; ///< instances made and not deleted: at most four at a time
    int starts;
    int stops;
    int steps;
    int resets;
    void (*stepHook)();       ///< called in every step, on the thread that asks for it
    RVEStaticSetting setting; ///< the last one; its option text is `option`
    char option[64];
};

/// Entry point "FakeEngineLog".
using FakeEngineLogProc = FakeLog*(RVE_CALL*)();
