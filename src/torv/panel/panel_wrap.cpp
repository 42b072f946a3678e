#include "torv/panel/panel_wrap.h"

namespace {

enum Status : int { kNotLoaded = 0, kInitialised = 1, kFailed = -1, kIncomplete = -2 };

constexpr int kNotBound = -1;

} // namespace

CPanelWrap::CPanelWrap() : m_strLibrary("paneldll.dll") {}
CPanelWrap::CPanelWrap(const CPanelWrap&) = default;
CPanelWrap& CPanelWrap::operator=(const CPanelWrap&) = default;
CPanelWrap::~CPanelWrap() = default;

int CPanelWrap::LoadPanelWrap(int) {
    // The new one before the old one goes: the same library loaded again stays in memory, with all it knows.
    const HMODULE module = LoadLibraryA(m_strLibrary);
    m_pModule.reset();
    if (!module) {
        m_nStatus = kFailed;
        return 0;
    }
    m_pModule.reset(module, FreeLibrary);
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

int CPanelWrap::InitPanelWrap(const char* text) {
    const auto call = Callable(m_pfnInit);
    const bool hasStarted = call && call(reinterpret_cast<INT_PTR>(text)) == 0;
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

void CPanelWrap::SetParent(HWND window) {
    if (const auto call = Callable(m_pfnSetParent))
        call(window);
}

void CPanelWrap::SetPlay(LONG position) {
    if (const auto call = Callable(m_pfnSetPlay))
        call(position);
}

void CPanelWrap::SetStop() {
    if (const auto call = Callable(m_pfnSetStop))
        call();
}

int CPanelWrap::SendDeviceData(WAV_DATAS* data) {
    const auto call = Callable(m_pfnSendDeviceData);
    return call ? call(data) : kNotBound;
}

int CPanelWrap::SendPPQPos(LONG position) {
    const auto call = Callable(m_pfnSendPPQPos);
    return call ? call(position) : kNotBound;
}

int CPanelWrap::SendGetPPQPos() {
    const auto call = Callable(m_pfnSendGetPPQPos);
    return call ? call() : kNotBound;
}

int CPanelWrap::SendGetTempo() {
    const auto call = Callable(m_pfnSendGetTempo);
    return call ? call() : kNotBound;
}

void CPanelWrap::SetMakeData() {
    if (const auto call = Callable(m_pfnSetMakeData))
        call();
}

void CPanelWrap::SendAllFlash() {
    if (const auto call = Callable(m_pfnSendAllFlash))
        call();
}

void CPanelWrap::SendSelectTrack(DWORD track) {
    if (const auto call = Callable(m_pfnSendSelectTrack))
        call(track);
}
