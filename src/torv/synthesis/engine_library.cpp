#include "torv/synthesis/engine_library.h"

#include <utility>

namespace torv {

std::shared_ptr<EngineLibrary> EngineLibrary::Load(const char* name) {
    std::shared_ptr<EngineLibrary> library(new EngineLibrary);
    library->m_module = LoadLibraryA(name);
    return library->m_module && library->Bind() ? library : nullptr;
}

EngineLibrary::~EngineLibrary() {
    if (m_module)
        FreeLibrary(m_module);
}

bool EngineLibrary::Bind() {
    Create = EntryPoint<RVECreateProc>(m_module, "RVECreate");
    Delete = EntryPoint<RVEDeleteProc>(m_module, "RVEDelete");
    SetStaticSetting = EntryPoint<RVESetStaticSettingProc>(m_module, "RVESetStaticSetting");
    SetDynamicSetting = EntryPoint<RVESetDynamicSettingProc>(m_module, "RVESetDynamicSetting");
    DoStepSynthesis = EntryPoint<RVEDoStepSynthesisProc>(m_module, "RVEDoStepSynthesis");
    Start = EntryPoint<RVEStartProc>(m_module, "RVEStart");
    Stop = EntryPoint<RVEStopProc>(m_module, "RVEStop");
    Reset = EntryPoint<RVEResetProc>(m_module, "RVEReset");
    return Create && Delete && SetStaticSetting && SetDynamicSetting && DoStepSynthesis && Start && Stop && Reset;
}

int CreateEngine(const EngineLibrary& library, DWORD rate, const char* option) {
    const int handle = library.Create();
    if (handle < 0)
        return kNoEngine;
    RVEStaticSetting setting{};
    setting.sampleRate = rate;
    setting.frameSize = kStepSamples;
    setting.option = option;
    setting.one = 1;
    if (library.SetStaticSetting(handle, setting) != 0) {
        library.Delete(handle);
        return kNoEngine;
    }
    return handle;
}

EngineInstance::EngineInstance(std::shared_ptr<EngineLibrary> library, DWORD rate, const char* option)
    : m_library(std::move(library)), m_handle(m_library ? CreateEngine(*m_library, rate, option) : kNoEngine) {}

EngineInstance::EngineInstance(EngineInstance&& other) noexcept
    : m_library(std::move(other.m_library)), m_handle(std::exchange(other.m_handle, kNoEngine)),
      m_started(std::exchange(other.m_started, false)) {}

EngineInstance::~EngineInstance() {
    if (m_handle == kNoEngine)
        return;
    Stop();
    m_library->Delete(m_handle);
}

void EngineInstance::Start() {
    m_library->Start(m_handle);
    m_started = true;
}

void EngineInstance::Stop() {
    if (m_started)
        m_library->Stop(m_handle);
    m_started = false;
}

} // namespace torv
