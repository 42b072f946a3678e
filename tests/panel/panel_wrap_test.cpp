#include "allocation_failure.h"
#include "panel/fake_panel/fake_panel.h"
#include "torv/panel/panel_wrap.h"

#include <doctest/doctest.h>

#include <string>

namespace {

constexpr const char* kNoLibrary = "torv_no_such_panel.dll";
constexpr const char* kNoTrack = "FAKE_PANEL_NO_TRACK.dll";
constexpr const char* kNoParent = "FAKE_PANEL_NO_PARENT.dll";

struct Panel : CPanelWrap {
    explicit Panel(const char* library) { SetPanelLibrary(library); }
    bool KeepsLastTwo() const { return m_pfnSendAllFlash && m_pfnSendSelectTrack; }
};

FakePanelLog& LogOf(HMODULE library) {
    const auto log = torv::EntryPoint<GetFakePanelLogProc>(library, "GetFakePanelLog");
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
CPanelWrap* g_panel = nullptr; ///< of the host that lets go of it while it is called

/// Every call but the first, in the interface's order: what comes back from our panel, from the fake one, from none.
struct Call {
    int (*make)(CPanelWrap&);
    int answer, fake, unbound;
};
const Call kCalls[] = {
    {[](CPanelWrap& p) { return p.SetParent(reinterpret_cast<HWND>(0x5A5A0)), 0; }, 0, 0, 0},
    {[](CPanelWrap& p) { return p.SetPlay(-960), 0; }, 0, 0, 0},
    {[](CPanelWrap& p) { return p.SetStop(), 0; }, 0, 0, 0},
    {[](CPanelWrap& p) { return p.SendDeviceData(&g_device); }, 0, 41, -1},
    {[](CPanelWrap& p) { return p.SendPPQPos(0x7FFFFFFF); }, 0, 41, -1},
    {[](CPanelWrap& p) { return p.SendGetPPQPos(); }, 0x7FFFFFFF, 41, -1},
    {[](CPanelWrap& p) { return p.SendGetTempo(); }, 500000, 41, -1},
    {[](CPanelWrap& p) { return p.SetMakeData(), 0; }, 0, 0, 0},
    {[](CPanelWrap& p) { return p.SendAllFlash(), 0; }, 0, 0, 0},
    {[](CPanelWrap& p) { return p.SendSelectTrack(16), 0; }, 0, 0, 0},
};

void CheckUnbound(CPanelWrap& panel) {
    for (const Call& call : kCalls)
        CHECK(call.make(panel) == call.unbound);
}

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

TEST_CASE("panel: every call arrives, and our panel remembers what it is told") {
    CPanelWrap panel;
    REQUIRE(panel.LoadPanelWrap(7) == 1);
    CHECK(panel.GetStatus() == 0); // it waits for the start
    CHECK(Record().lastCall == -1);
    CHECK(panel.InitPanelWrap(std::string(300, 'x').c_str()) == 1);
    CHECK(panel.GetStatus() == 1);
    for (int i = 0; i < PANEL_CALLS - 1; ++i) {
        CAPTURE(i);
        CHECK(kCalls[i].make(panel) == kCalls[i].answer);
        CHECK(Record().lastCall == i + 1);
        CHECK(Record().calls[i + 1] == 1);
        CHECK(Record().playing == (i == 1)); // from the start to the stop
    }
    CHECK(panel.InitPanelWrap(nullptr) == 0);
    CHECK(panel.SendDeviceData(nullptr) == -1);
    const PANELRecord record = Record();
    CHECK(record.calls[PANEL_CALL_INIT] == 2);
    CHECK(record.calls[PANEL_CALL_SEND_DEVICE_DATA] == 2);
    CHECK(std::string(record.text) == std::string(255, 'x'));
    CHECK(reinterpret_cast<intptr_t>(record.parent) == 0x5A5A0);
    CHECK(record.playPosition == -960);
    CHECK(record.deviceData.bits == 16);
    CHECK(record.position == 0x7FFFFFFF);
    CHECK(record.track == 16);
    panel.InitPanelWrap("host");
    CHECK(std::string(Record().text) == "host");
}

TEST_CASE("panel: a host may let go of it while it is called") {
    const HMODULE library = LoadLibraryA(kNoTrack);
    Panel panel(kNoTrack);
    panel.LoadPanelWrap();
    LogOf(library).during = [] { g_panel->UnloadPanelWrap(); };
    g_panel = &panel;
    FreeLibrary(library); // nobody but the wrapper holds it now
    CHECK(panel.InitPanelWrap("host") == 1);
    CHECK(panel.GetStatus() == 0);
    CheckUnbound(panel);
}

TEST_CASE("panel: what an entry point is missing in does all the others, and nothing that an earlier library left") {
    // The test holds them too: a call through a stale pointer would show in their logs instead of crashing.
    const HMODULE ours = LoadLibraryA("paneldll.dll");
    const HMODULE noTrack = LoadLibraryA(kNoTrack);
    const HMODULE noParent = LoadLibraryA(kNoParent);
    FakePanelLog& log = LogOf(noTrack);
    Panel panel(kNoTrack);
    CHECK(panel.LoadPanelWrap() == 0);
    CHECK(panel.GetStatus() == -2);
    for (const Call& call : kCalls)
        CHECK(call.make(panel) == call.fake);
    CHECK(log.calls == 9);
    CHECK(panel.InitPanelWrap("refuse") == 0);
    CHECK(panel.GetStatus() == -1);

    panel.SetPanelLibrary("paneldll.dll");
    CHECK(panel.LoadPanelWrap() == 1);
    CHECK(panel.InitPanelWrap("host") == 1);
    panel.UnloadPanelWrap();
    CHECK(panel.GetStatus() == 0);
    CHECK(panel.KeepsLastTwo()); // two entry points outlive the library, and are not called
    CheckUnbound(panel);
    panel.SetPanelLibrary(kNoParent);
    CHECK(panel.LoadPanelWrap() == 0);
    CHECK(panel.GetStatus() == -2);
    CheckUnbound(panel); // nor its own, behind the one that is missing
    CHECK(LogOf(noParent).calls == 0);
    CHECK(Record().lastCall == PANEL_CALL_INIT);
    panel.SetPanelLibrary(kNoLibrary); // a load that fails lets go of what was held, too
    CHECK(panel.LoadPanelWrap() == 0);
    CHECK(panel.GetStatus() == -1);
    CHECK(panel.InitPanelWrap("host") == 0);
    for (const HMODULE library : {ours, noTrack, noParent})
        FreeLibrary(library);
}

TEST_CASE("panel: the library goes with the last that holds it, once") {
    {
        CPanelWrap panel;
        REQUIRE(panel.LoadPanelWrap() == 1);
        panel.SendPPQPos(1920);
        CHECK(panel.LoadPanelWrap() == 1); // again: still the same one, held once
        CHECK(panel.SendGetPPQPos() == 1920);
        FailEachAllocation([&](AllocationFailure& failure) {
            const int isLoaded = failure.During([&] { return panel.LoadPanelWrap(); });
            CHECK(isLoaded == !failure.HasHappened());
            CHECK(panel.SendGetPPQPos() == 1920); // as it was
        });
        CPanelWrap copy = panel;
        panel.UnloadPanelWrap();
        CHECK(panel.SendGetPPQPos() == -1);
        panel = copy;
        copy.UnloadPanelWrap();
        CHECK(panel.SendGetPPQPos() == 1920);
    }
    CHECK(Record().lastCall == -1); // loaded anew
}
