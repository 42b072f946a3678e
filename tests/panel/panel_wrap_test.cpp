#include "allocation_failure.h"
#include "panel/fake_panel/fake_panel.h"
#include "torv/panel/panel_wrap.h"
#include "values.h"

namespace {

constexpr const char* kNoLibrary = "torv_no_such_panel.dll";
constexpr const char* kNoTrack = "FAKE_PANEL_NO_TRACK.dll";
constexpr const char* kNoParent = "FAKE_PANEL_NO_PARENT.dll";

struct Panel : CPanelWrap {
    explicit Panel(const char* library) { SetPanelLibrary(library); }
    /// Which entry points it holds, in the interface's order.
    Values Holds() const {
        return Values(!!m_pfnInit, !!m_pfnSetParent, !!m_pfnSetPlay, !!m_pfnSetStop, !!m_pfnSendDeviceData,
                      !!m_pfnSendPPQPos, !!m_pfnSendGetPPQPos, !!m_pfnSendGetTempo, !!m_pfnSetMakeData,
                      !!m_pfnSendAllFlash, !!m_pfnSendSelectTrack);
    }
};

FakePanelLog& LogOf(HMODULE library) {
    const auto log = torv::EntryPoint<GetFakePanelLogProc>(library, "GetFakePanelLog");
    return *log() = {};
}

PANELRecord Record() {
    const HMODULE library = LoadLibraryA("paneldll.dll");
    PANELRecord record{};
    CHECK(torv::EntryPoint<PANELGetRecordProc>(library, "PANEL_GetRecord")(&record) == 0);
    FreeLibrary(library);
    return record;
}

CPanelWrap* g_panel = nullptr; ///< of the host that lets go of it while it is called

/// Every call but the first, in the interface's order: the answers that those with one give.
Values AllCalls(CPanelWrap& panel) {
    WAV_DATAS device{3, 48000, 2, 16};
    panel.SetParent(reinterpret_cast<HWND>(0x5A5A0));
    panel.SetPlay(-960);
    panel.SetStop();
    Values answers{panel.SendDeviceData(&device), panel.SendPPQPos(0x7FFFFFFF), panel.SendGetPPQPos(),
                   panel.SendGetTempo()};
    panel.SetMakeData();
    panel.SendAllFlash();
    panel.SendSelectTrack(16);
    return answers;
}

constexpr const char* kUnbound = "-1 -1 -1 -1";

} // namespace

TEST_CASE("panel: there need not be one") {
    Panel panel(kNoLibrary);
    CHECK(AllCalls(panel) == kUnbound);
    CHECK(Values{panel.LoadPanelWrap(), panel.GetStatus()} == "0 -1");
    panel.UnloadPanelWrap();
    CHECK(Values{panel.GetStatus(), panel.InitPanelWrap("host"), panel.GetStatus()} == "0 0 -1");
}

TEST_CASE("panel: every call arrives, and our panel remembers what it is told") {
    CPanelWrap panel;
    CHECK(Values{panel.LoadPanelWrap(7), panel.GetStatus(), Record().lastCall} == "1 0 -1"); // it waits for the start
    CHECK(Values{panel.InitPanelWrap(std::string(300, 'x').c_str()), panel.GetStatus()} == "1 1");
    CHECK(AllCalls(panel) == "0 0 2147483647 500000");
    PANELRecord record = Record();
    for (int call = 0; call < PANEL_CALLS; ++call)
        CHECK(record.calls[call] == 1);
    CHECK(Values(record.lastCall, record.playing, record.playPosition) == Values(PANEL_CALLS - 1, 0, -960));
    CHECK(Values(record.deviceData.bits, record.position, record.track) == "16 2147483647 16");
    CHECK(Values(record.text, reinterpret_cast<intptr_t>(record.parent)) == std::string(255, 'x') + " 370080");
    panel.SetPlay(1);
    CHECK(Record().playing == 1);
    CHECK(Values{panel.InitPanelWrap("host"), Record().text} == "1 host");
    CHECK(Values{panel.InitPanelWrap(nullptr), panel.SendDeviceData(nullptr)} == "0 -1");
}

TEST_CASE("panel: a host may let go of it while it is called") {
    const HMODULE library = LoadLibraryA(kNoTrack);
    Panel panel(kNoTrack);
    panel.LoadPanelWrap();
    LogOf(library).during = [] { g_panel->UnloadPanelWrap(); };
    g_panel = &panel;
    FreeLibrary(library); // nobody but the wrapper holds it now
    CHECK(Values{panel.InitPanelWrap("host"), panel.GetStatus()} == "1 0");
    CHECK(AllCalls(panel) == kUnbound);
}

TEST_CASE("panel: what an entry point is missing in does all the others, and nothing that an earlier library left") {
    // The test holds them too: a call through a stale pointer would show in their logs instead of crashing.
    const HMODULE libraries[] = {LoadLibraryA("paneldll.dll"), LoadLibraryA(kNoTrack), LoadLibraryA(kNoParent)};
    FakePanelLog& log = LogOf(libraries[1]);
    Panel panel(kNoTrack);
    CHECK(Values{panel.LoadPanelWrap(), panel.GetStatus()} == "0 -2");
    CHECK(Values{AllCalls(panel), log.calls} == "41 41 41 41 9");
    CHECK(Values{panel.InitPanelWrap("refuse"), panel.GetStatus()} == "0 -1");

    panel.SetPanelLibrary("paneldll.dll");
    CHECK(Values{panel.LoadPanelWrap(), panel.InitPanelWrap("host")} == "1 1");
    panel.UnloadPanelWrap();
    CHECK(panel.GetStatus() == 0);
    CHECK(panel.Holds() == "0 0 0 0 0 0 0 0 0 1 1"); // the last two outlive the library, and are not called
    CHECK(AllCalls(panel) == kUnbound);
    panel.SetPanelLibrary(kNoParent);
    CHECK(Values{panel.LoadPanelWrap(), panel.GetStatus()} == "0 -2");
    CHECK(AllCalls(panel) == kUnbound); // nor its own, behind the one that is missing
    CHECK(Values{LogOf(libraries[2]).calls, Record().lastCall} == Values(0, PANEL_CALL_INIT));
    panel.SetPanelLibrary(kNoLibrary); // a load that fails lets go of what was held, too
    CHECK(Values{panel.LoadPanelWrap(), panel.GetStatus(), panel.InitPanelWrap("host")} == "0 -1 0");
    for (const HMODULE library : libraries)
        FreeLibrary(library);
}

TEST_CASE("panel: the library goes with the last that holds it, once") {
    {
        CPanelWrap panel;
        REQUIRE(panel.LoadPanelWrap() == 1);
        panel.SendPPQPos(1920);
        FailEachAllocation([&](AllocationFailure& failure) { // again: still the same one, held once
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
