#include "panel/fake_panel/fake_panel.h"
#include "torv/panel/panel_wrap.h"

#include <doctest/doctest.h>

#include <string>

namespace {

constexpr const char* kNoLibrary = "torv_no_such_panel.dll";
constexpr const char* kNoTrack = "FAKE_PANEL_NO_TRACK.dll";
constexpr const char* kNoParent = "FAKE_PANEL_NO_PARENT.dll";

struct Panel : CPanelWrap {
    explicit Panel(const char* library = "paneldll.dll") { SetPanelLibrary(library); }
    bool KeepsLastTwo() const { return m_pfnSendAllFlash && m_pfnSendSelectTrack; }
};

/// A fake panel's log, its library held for good: a call through a stale pointer shows there instead of crashing.
FakePanelLog& LogOf(const char* library) {
    const auto log = torv::EntryPoint<GetFakePanelLogProc>(LoadLibraryA(library), "GetFakePanelLog");
    REQUIRE(bool(log));
    return *log() = {};
}

PANELRecord Record() {
    const HMODULE library = LoadLibraryA("paneldll.dll");
    const auto get = torv::EntryPoint<PANELGetRecordProc>(library, "PANEL_GetRecord");
    REQUIRE(bool(get));
    PANELRecord record{};
    CHECK(get(&record) == 0);
    CHECK(get(nullptr) == -1);
    FreeLibrary(library);
    return record;
}

WAV_DATAS g_device{3, 48000, 2, 16};
constexpr intptr_t kWindow = 0x5A5A0;

/// Every call but the first: what must arrive, and what comes back with the fake panel and with none.
struct Call {
    const char* entry;
    int (*make)(CPanelWrap&);
    intptr_t argument;
    int answer;
    int unbound;
};
const Call kCalls[] = {
    {"PANEL_SetParent", [](CPanelWrap& p) { return p.SetParent(reinterpret_cast<HWND>(kWindow)), 0; }, kWindow, 0, 0},
    {"PANEL_SetPlay", [](CPanelWrap& p) { return p.SetPlay(-960), 0; }, -960, 0, 0},
    {"PANEL_SetStop", [](CPanelWrap& p) { return p.SetStop(), 0; }, 0, 0, 0},
    {"PANEL_SendDeviceData", [](CPanelWrap& p) { return p.SendDeviceData(&g_device); },
     reinterpret_cast<intptr_t>(&g_device), 41, -1},
    {"PANEL_SendPPQPos", [](CPanelWrap& p) { return p.SendPPQPos(0x7FFFFFFF); }, 0x7FFFFFFF, 42, -1},
    {"PANEL_SendGetPPQPos", [](CPanelWrap& p) { return p.SendGetPPQPos(); }, 0, 43, -1},
    {"PANEL_SendGetTempo", [](CPanelWrap& p) { return p.SendGetTempo(); }, 0, -44, -1},
    {"PANEL_SetMakeData", [](CPanelWrap& p) { return p.SetMakeData(), 0; }, 0, 0, 0},
    {"PANEL_SendAllFlash", [](CPanelWrap& p) { return p.SendAllFlash(), 0; }, 0, 0, 0},
    {"PANEL_SendSelectTrack", [](CPanelWrap& p) { return p.SendSelectTrack(16), 0; }, 16, 0, 0},
};

void CheckUnbound(CPanelWrap& panel) {
    for (const Call& call : kCalls) {
        CAPTURE(call.entry);
        CHECK(call.make(panel) == call.unbound);
    }
}

CPanelWrap* g_panel = nullptr; ///< of the host that lets go of it while it is called

} // namespace

TEST_CASE("panel: there need not be one") {
    Panel panel(kNoLibrary);
    CheckUnbound(panel);
    CHECK(panel.LoadPanelWrap() == 0);
    CHECK(panel.GetStatus() == -1);
    CheckUnbound(panel);
    panel.UnloadPanelWrap();
    CHECK(panel.GetStatus() == 0);
    CHECK(panel.InitPanelWrap("host") == 0);
    CHECK(panel.GetStatus() == -1);
}

TEST_CASE("panel: a host may let go of it while it is called") {
    const HMODULE library = LoadLibraryA(kNoTrack);
    const auto getLog = torv::EntryPoint<GetFakePanelLogProc>(library, "GetFakePanelLog");
    Panel panel(kNoTrack);
    panel.LoadPanelWrap();
    *getLog() = {0, "", 0, [] { g_panel->UnloadPanelWrap(); }};
    g_panel = &panel;
    FreeLibrary(library); // nobody but the wrapper holds it: this comes before the cases that hold it for good
    CHECK(panel.InitPanelWrap("host") == 1);
    CHECK(panel.GetStatus() == 0);
    CHECK(panel.SendGetTempo() == -1);
}

TEST_CASE("panel: without its last entry point it does all the others") {
    FakePanelLog& log = LogOf(kNoTrack);
    Panel panel(kNoTrack);
    CHECK(panel.LoadPanelWrap() == 0);
    CHECK(panel.GetStatus() == -2);
    for (const Call& call : kCalls) {
        CAPTURE(call.entry);
        log = {0, "", 0, nullptr};
        CHECK(call.make(panel) == call.answer);
        const bool isThere = std::string(call.entry) != "PANEL_SendSelectTrack";
        CHECK(log.calls == (isThere ? 1 : 0));
        CHECK(std::string(log.entry) == (isThere ? call.entry : ""));
        CHECK(log.argument == (isThere ? call.argument : 0));
    }
    CHECK(panel.InitPanelWrap("refuse") == 0);
    CHECK(panel.GetStatus() == -1);
    const char* const text = "host";
    CHECK(panel.InitPanelWrap(text) == 1);
    CHECK(panel.GetStatus() == 1);
    CHECK(log.argument == reinterpret_cast<intptr_t>(text)); // the pointer whole, on 64 bits too
}

TEST_CASE("panel: nothing is called through what an earlier library has left") {
    const HMODULE held = LoadLibraryA("paneldll.dll");
    FakePanelLog& log = LogOf(kNoParent);
    Panel panel;
    CHECK(panel.LoadPanelWrap(7) == 1);
    CHECK(panel.GetStatus() == 0); // it waits for the start
    CHECK(panel.InitPanelWrap("host") == 1);
    panel.UnloadPanelWrap();
    CHECK(panel.GetStatus() == 0);
    CHECK(panel.KeepsLastTwo()); // two entry points outlive the library, and are not called
    CheckUnbound(panel);
    panel.SetPanelLibrary(kNoParent);
    CHECK(panel.LoadPanelWrap() == 0);
    CHECK(panel.GetStatus() == -2);
    CheckUnbound(panel); // nor its own, behind the one that is missing
    CHECK(log.calls == 0);
    CHECK(panel.InitPanelWrap("host") == 1);
    CHECK(log.calls == 1);
    CHECK(Record().lastCall == PANEL_CALL_INIT);
    panel.SetPanelLibrary(kNoLibrary); // a load that fails lets go of what was held, too
    CHECK(panel.LoadPanelWrap() == 0);
    CHECK(panel.GetStatus() == -1);
    CHECK(panel.InitPanelWrap("host") == 0);
    CHECK(log.calls == 1);
    FreeLibrary(held);
}

TEST_CASE("panel: the library goes with the last that holds it, once") {
    {
        CPanelWrap panel;
        REQUIRE(panel.LoadPanelWrap() == 1);
        panel.SendPPQPos(1920);
        CHECK(panel.LoadPanelWrap() == 1); // again: still the same one, held once
        CHECK(panel.SendGetPPQPos() == 1920);
        CPanelWrap copy = panel;
        panel.UnloadPanelWrap();
        CHECK(panel.SendGetPPQPos() == -1);
        panel = copy;
        copy.UnloadPanelWrap();
        CHECK(panel.SendGetPPQPos() == 1920);
    }
    CHECK(Record().lastCall == -1); // loaded anew
}

TEST_CASE("panel library: remembers what it is told") {
    CPanelWrap panel;
    REQUIRE(panel.LoadPanelWrap() == 1);
    CHECK(panel.InitPanelWrap(std::string(300, 'x').c_str()) == 1);
    CHECK(panel.InitPanelWrap(nullptr) == 0);
    CHECK(panel.SendDeviceData(nullptr) == -1);
    CHECK(panel.SendGetTempo() == 500000);
    for (const Call& call : kCalls)
        call.make(panel);
    PANELRecord record = Record();
    const uint32_t calls[PANEL_CALLS] = {2, 1, 1, 1, 2, 1, 1, 2, 1, 1, 1};
    for (int i = 0; i < PANEL_CALLS; ++i) {
        CAPTURE(i);
        CHECK(record.calls[i] == calls[i]);
    }
    CHECK(record.lastCall == PANEL_CALL_SEND_SELECT_TRACK);
    CHECK(std::string(record.text) == std::string(255, 'x'));
    CHECK(reinterpret_cast<intptr_t>(record.parent) == kWindow);
    CHECK(record.playing == 0);
    CHECK(record.playPosition == -960);
    CHECK(record.deviceData.bits == 16);
    CHECK(record.position == 0x7FFFFFFF);
    CHECK(record.track == 16);
    panel.SetPlay(5);
    panel.InitPanelWrap("host");
    record = Record();
    CHECK(record.playing == 1);
    CHECK(std::string(record.text) == "host");
}
