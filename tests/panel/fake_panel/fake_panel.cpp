#include "fake_panel.h"

#include "torv/abi/panel.h"

#include <cstring>

/// A panel that answers 41; the text "refuse" keeps it from starting.

#if defined(_WIN32)
#define ENTRY(result) extern "C" __declspec(dllexport) result PANEL_CALL
#else
#define ENTRY(result) extern "C" __attribute__((visibility("default"))) result PANEL_CALL
#endif

namespace {

FakePanelLog g_log;

int32_t Called() {
    ++g_log.calls;
    if (g_log.during)
        g_log.during();
    return 41;
}

} // namespace

ENTRY(FakePanelLog*) GetFakePanelLog() { return &g_log; }

ENTRY(int32_t) PANEL_Init(intptr_t text) {
    Called();
    return std::strcmp(reinterpret_cast<const char*>(text), "refuse") == 0 ? 3 : 0;
}
#if !defined(FAKE_WITHOUT_SET_PARENT)
ENTRY(void) PANEL_SetParent(void*) { Called(); }
#endif
ENTRY(void) PANEL_SetPlay(int32_t) { Called(); }
ENTRY(void) PANEL_SetStop() { Called(); }
ENTRY(int32_t) PANEL_SendDeviceData(WAV_DATAS*) { return Called(); }
ENTRY(int32_t) PANEL_SendPPQPos(int32_t) { return Called(); }
ENTRY(int32_t) PANEL_SendGetPPQPos() { return Called(); }
ENTRY(int32_t) PANEL_SendGetTempo() { return Called(); }
ENTRY(void) PANEL_SetMakeData() { Called(); }
ENTRY(void) PANEL_SendAllFlash() { Called(); }
#if !defined(FAKE_WITHOUT_SELECT_TRACK)
ENTRY(void) PANEL_SendSelectTrack(uint32_t) { Called(); }
#endif
