#pragma once

#include "torv/abi/rve.h"
#include "torv/platform/platform.h"

#include <memory>

namespace torv {

/// The engine library, loaded and bound: all eight entry points or nothing. Whoever holds it keeps it loaded.
class EngineLibrary {
public:
    /// Null when there is no such library or one of its entry points is missing. Throws std::bad_alloc.
    static std::shared_ptr<EngineLibrary> Load(const char* name);
    ~EngineLibrary();
    EngineLibrary(const EngineLibrary&) = delete;
    EngineLibrary& operator=(const EngineLibrary&) = delete;

    RVECreateProc Create = nullptr;
    RVEDeleteProc Delete = nullptr;
    RVESetStaticSettingProc SetStaticSetting = nullptr;
    RVESetDynamicSettingProc SetDynamicSetting = nullptr;
    RVEDoStepSynthesisProc DoStepSynthesis = nullptr;
    RVEStartProc Start = nullptr;
    RVEStopProc Stop = nullptr;
    RVEResetProc Reset = nullptr;

private:
    EngineLibrary() = default;
    bool Bind();

    HMODULE m_module = nullptr;
};

constexpr int kNoEngine = -2;
/// What an engine's step is counted in, and what its static setting always says: 256 samples of 44.1 kHz.
constexpr DWORD kStepSamples = 256;
/// Room behind what an engine may write: one that writes past its capacity writes there.
constexpr DWORD kGuardSamples = 1024;
constexpr DWORD kEngineTimeBase = 44100;

/// A new, configured instance's handle, or kNoEngine.
int CreateEngine(const EngineLibrary& library, DWORD rate, const char* option);

/// One engine instance, deleted with its holder; a started one is stopped first.
class EngineInstance {
public:
    EngineInstance() = default;
    /// Holds no engine when one cannot be made.
    EngineInstance(std::shared_ptr<EngineLibrary> library, DWORD rate, const char* option);
    EngineInstance(EngineInstance&& other) noexcept;
    EngineInstance& operator=(EngineInstance&&) = delete;
    ~EngineInstance();

    explicit operator bool() const { return m_handle != kNoEngine; }
    int Handle() const { return m_handle; }

    void Start();
    /// Harmless when not started.
    void Stop();
    /// 0, or the engine's error code.
    int Step(int count, const RVEEvent* events, RVEStepOutput& output) const {
        return m_library->DoStepSynthesis(m_handle, count, events, &output);
    }
    int Reset() const { return m_library->Reset(m_handle); }

private:
    std::shared_ptr<EngineLibrary> m_library;
    int m_handle = kNoEngine;
    bool m_started = false;
};

} // namespace torv
