// The entry points over the one panel of the process.
#include "panel.h"

#if defined(_WIN32)
#define PANEL_EXPORT extern "C" __declspec(dllexport)
#else
#define PANEL_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

constexpr int32_t kNone = 0;
constexpr int32_t kBadArgument = -1;

panel::Panel g_panel;

} // namespace

PANEL_EXPORT int32_t PANEL_CALL PANEL_Init(intptr_t text) {
    return g_panel.Init(reinterpret_cast<const char*>(text)) ? kNone : kBadArgument;
}

PANEL_EXPORT void PANEL_CALL PANEL_SetParent(void* window) { g_panel.SetParent(window); }
PANEL_EXPORT void PANEL_CALL PANEL_SetPlay(int32_t position) { g_panel.SetPlay(position); }
PANEL_EXPORT void PANEL_CALL PANEL_SetStop(void) { g_panel.SetStop(); }

PANEL_EXPORT int32_t PANEL_CALL PANEL_SendDeviceData(WAV_DATAS* data) {
    return g_panel.SetDeviceData(data) ? kNone : kBadArgument;
}

PANEL_EXPORT int32_t PANEL_CALL PANEL_SendPPQPos(int32_t position) {
    g_panel.SetPosition(position);
    return kNone;
}

PANEL_EXPORT int32_t PANEL_CALL PANEL_SendGetPPQPos(void) { return g_panel.Position(); }
PANEL_EXPORT int32_t PANEL_CALL PANEL_SendGetTempo(void) { return g_panel.Tempo(); }
PANEL_EXPORT void PANEL_CALL PANEL_SetMakeData(void) { g_panel.Note(PANEL_CALL_SET_MAKE_DATA); }
PANEL_EXPORT void PANEL_CALL PANEL_SendAllFlash(void) { g_panel.Note(PANEL_CALL_SEND_ALL_FLASH); }
PANEL_EXPORT void PANEL_CALL PANEL_SendSelectTrack(uint32_t track) { g_panel.SelectTrack(track); }

PANEL_EXPORT int32_t PANEL_CALL PANEL_GetRecord(PANELRecord* record) {
    if (!record)
        return kBadArgument;
    *record = g_panel.Record();
    return kNone;
}
