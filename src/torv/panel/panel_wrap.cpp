#include "torv/panel/panel_wrap.h"

#include <new>
#include <utility>

namespace {

enum Status : int { kNotLoaded = 0, kInitialised = 1, kFailed = -1, kIncomplete = -2 };

constexpr int kNotBound = -1;

} // namespace

CPanelWrap::CPanelWrap() : m_strLibrary("paneldll.dll") {}
CPanelWrap::CPanelWrap(const CPanelWrap&) = default;
CPanelWrap& CPanelWrap::operator=(const CPanelWrap&) = default;
CPanelWrap::~CPanelWrap() = default;

int CPanelWrap::LoadPanelWrap(int) {
    std::shared_ptr<std::remove_pointer_t<HMODULE>> module;
    try {
        // The new one before the old one goes: the same library loaded again stays in memory, with all it knows.
        if (const HMODULE loaded = LoadLibraryA(m_strLibrary))
            module.reset(loaded, FreeLibrary);
        else if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY)
            return 0; // as it was
    } catch (const std::bad_alloc&) {
        return 0;
    }
    m_pModule = std::move(module);
    if (!m_pModule) {
        m_nStatus = kFailed;
        return 0;
    }
    if (!Bind()) {
        m_nStatus = kIncomplete;
        return 0;
    }
    return 1;
}

bool CPanelWrap::Bind() {
    bool isWhole = true;
    // Null behind the first one missing, so that nothing of an earlier library can be called through this one.
    const auto bind = [&]<class Proc>(Proc& entry, const char* name) {
        entry = isWhole ? torv::EntryPoint<Proc>(m_pModule.get(), name) : nullptr;
        isWhole = entry != nullptr;
    };
    bind(m_pfnInit, "PANEL_Init");
    bind(m_pfnSetParent, "PANEL_SetParent");
    bind(m_pfnSetPlay, "PANEL_SetPlay");
    bind(m_pfnSetStop, "PANEL_SetStop");
    bind(m_pfnSendDeviceData, "PANEL_SendDeviceData");
    bind(m_pfnSendPPQPos, "PANEL_SendPPQPos");
    bind(m_pfnSendGetPPQPos, "PANEL_SendGetPPQPos");
    bind(m_pfnSendGetTempo, "PANEL_SendGetTempo");
    bind(m_pfnSetMakeData, "PANEL_SetMakeData");
    bind(m_pfnSendAllFlash, "PANEL_SendAllFlash");
    bind(m_pfnSendSelectTrack, "PANEL_SendSelectTrack");
    return isWhole;
}

/// The library stays in memory until the call has returned, even when the host lets go of it meanwhile.
template <class Entry, class... Arguments>
auto CPanelWrap::Call(Entry entry, Arguments... arguments) const {
    const auto library = m_pModule;
    if constexpr (std::is_void_v<decltype(entry(arguments...))>) {
        if (library && entry)
            entry(arguments...);
    } else {
        return library && entry ? entry(arguments...) : kNotBound;
    }
}

int CPanelWrap::InitPanelWrap(const char* text) {
    const auto library = m_pModule;
    const bool hasStarted = Call(m_pfnInit, reinterpret_cast<INT_PTR>(text)) == 0;
    if (m_pModule == library) // else the host has let go of it while it started
        m_nStatus = hasStarted ? kInitialised : kFailed;
    return hasStarted ? 1 : 0;
}

void CPanelWrap::UnloadPanelWrap() {
    m_nStatus = kNotLoaded;
    m_pModule.reset();
    m_dwReserved = 0;
    m_pfnInit = nullptr;
    m_pfnSetParent = nullptr;
    m_pfnSetPlay = nullptr;
    m_pfnSetStop = nullptr;
    m_pfnSendDeviceData = nullptr;
    m_pfnSendPPQPos = nullptr;
    m_pfnSendGetPPQPos = nullptr;
    m_pfnSendGetTempo = nullptr;
    m_pfnSetMakeData = nullptr;
    // The last two entry points stay as they are, for derived classes that look at them; callers rely on both doing
    // nothing until a library is loaded again.
}

void CPanelWrap::SetParent(HWND window) { Call(m_pfnSetParent, window); }
void CPanelWrap::SetPlay(LONG position) { Call(m_pfnSetPlay, position); }
void CPanelWrap::SetStop() { Call(m_pfnSetStop); }
int CPanelWrap::SendDeviceData(WAV_DATAS* data) { return Call(m_pfnSendDeviceData, data); }
int CPanelWrap::SendPPQPos(LONG position) { return Call(m_pfnSendPPQPos, position); }
int CPanelWrap::SendGetPPQPos() { return Call(m_pfnSendGetPPQPos); }
int CPanelWrap::SendGetTempo() { return Call(m_pfnSendGetTempo); }
void CPanelWrap::SetMakeData() { Call(m_pfnSetMakeData); }
void CPanelWrap::SendAllFlash() { Call(m_pfnSendAllFlash); }
void CPanelWrap::SendSelectTrack(DWORD track) { Call(m_pfnSendSelectTrack, track); }
