#pragma once

#include "synthesis/fake_engine_library.h"
#include "torv/synthesis/rt_synthesis.h"

/// Lets a test look at what the worker threads go by.
struct Driver : CRtSynthesis {
    Driver() { SetEngineLibrary(FakeEngine::kName); }
    using CRtSynthesis::m_nDevicePatience;
    using CRtSynthesis::m_state;
    using CRtSynthesis::m_WaveFormat;
    using CRtSynthesis::Ring;
    bool HasWindow() const { return m_hScoreWnd.Get() != nullptr; }
};
