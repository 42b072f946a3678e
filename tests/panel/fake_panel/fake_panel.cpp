#include "fake_panel.h"

#include <cstring>

/// A panel whose every answer is a number of its own; the text "refuse" keeps it from starting.

#if defined(_WIN32)
#define ENTRY(result) extern "C" __declspec(dllexport) result PANEL_CALL
#else
#define ENTRY(result) extern "C" __attribute__((visibility("default"))) result PANEL_CALL
#endif

namespace {

FakePanelLog g_log;

void Log(const char* entry, intptr_t argument = 0) {
    g_log = {g_log.calls + 1, entry, argument, g_log.during};
    if (g_log.during)
        g_log.during();
}

int32_t Answer(int32_t answer, const char* entry, intptr_t argument = 0) {
    Log(entry, argument);
    return answer;
}

} // namespace

ENTRY(FakePanelLog*) GetFakePanelLog() { return &g_log; }

ENTRY(int32_t) PANEL_Init(intptr_t text) {
    return Answer(std::strcmp(reinterpret_cast<const char*>(text), "refuse") == 0 ? 3 : 0, "PANEL_Init", text);
}
#if !defined(FAKE_WITHOUT_SET_PARENT)
ENTRY(void) PANEL_SetParent(void* window) { Log("PANEL_SetParent", reinterpret_cast<intptr_t>(window)); }
#endif
ENTRY(void) PANEL_SetPlay(int32_t position) { Log("PANEL_SetPlay", position); }
ENTRY(void) PANEL_SetStop() { Log("PANEL_SetStop"); }
ENTRY(int32_t) PANEL_SendDeviceData(WAV_DATAS* data) {
    return Answer(41, "PANEL_SendDeviceData", reinterpret_cast<intptr_t>(data));
}
ENTRY(int32_t) PANEL_SendPPQPos(int32_t position) { return Answer(42, "PANEL_SendPPQPos", position); }
ENTRY(int32_t) PANEL_SendGetPPQPos() { return Answer(43, "PANEL_SendGetPPQPos"); }
ENTRY(int32_t) PANEL_SendGetTempo() { return Answer(-44, "PANEL_SendGetTempo"); }
ENTRY(void) PANEL_SetMakeData() { Log("PANEL_SetMakeData"); }
ENTRY(void) PANEL_SendAllFlash() { Log("PANEL_SendAllFlash"); }
#if !defined(FAKE_WITHOUT_SELECT_TRACK)
ENTRY(void) PANEL_SendSelectTrack(uint32_t track) { Log("PANEL_SendSelectTrack", track); }
#endif
