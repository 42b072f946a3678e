#pragma once

#include "synthesis/fake_engine/fake_engine.h"
#include "torv/platform/platform.h"

#include <doctest/doctest.h>

/// Holds the fake engine, with a cleared log.
class FakeEngine {
public:
    FakeEngine() : m_module(LoadLibraryA(kName)) {
        REQUIRE(m_module != nullptr);
        log = torv::EntryPoint<FakeEngineLogProc>(m_module, "FakeEngineLog")();
        CHECK(log->live == 0); // an instance that an earlier case left behind
        *log = {};
    }
    ~FakeEngine() {
        CHECK(log->live == 0);
        CHECK(log->starts == log->stops);
        FreeLibrary(m_module);
    }
    FakeEngine(const FakeEngine&) = delete;
    FakeEngine& operator=(const FakeEngine&) = delete;

    static constexpr const char* kName = "FAKE_RVE.dll";

private:
    HMODULE m_module;

public:
    FakeLog* log = nullptr;
};
