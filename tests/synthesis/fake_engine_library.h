#pragma once

#include "synthesis/fake_engine/fake_engine.h"
#include "torv/platform/platform.h"

#include <doctest/doctest.h>

/// Holds the fake engine, with a cleared log.
class FakeEngine {
public:
    FakeEngine() : m_module(LoadLibraryA(kName)) {
        REQUIRE(m_module != nullptr);
        m_log = torv::EntryPoint<FakeEngineLogProc>(m_module, "FakeEngineLog")();
        const int live = m_log->live;
        *m_log = {};
        REQUIRE(live == 0); // an instance that an earlier case left behind
    }
    ~FakeEngine() { FreeLibrary(m_module); }
    FakeEngine(const FakeEngine&) = delete;
    FakeEngine& operator=(const FakeEngine&) = delete;

    const FakeLog& Log() const { return *m_log; }
    /// Called in every step, on the thread that asks for it.
    void SetStepHook(void (*hook)()) { m_log->stepHook = hook; }

    static constexpr const char* kName = "FAKE_RVE.dll";

private:
    HMODULE m_module;
    FakeLog* m_log = nullptr;
};
