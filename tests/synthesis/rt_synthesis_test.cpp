#include "synthesis/driver.h"
#include "torv/synthesis/trace_text.h"

#include <doctest/doctest.h>

#include <optional>
#include <vector>

TEST_CASE("driver: rates, frame sizes and conversions") {
    CHECK(CRtSynthesis::IsValidSampleRate(48000) == 1);
    CHECK(CRtSynthesis::IsValidSampleRate(22050) == 0);
    CHECK(CRtSynthesis::IsValidSampleRate(0xFFFFFFFF) == 0); // the list's own end
    CHECK(CRtSynthesis::IsValidSampleBit(16) == 1);
    CHECK(CRtSynthesis::IsValidSampleBit(24) == 0);
    const DWORD* rates = CRtSynthesis::GetSampleRateList();
    CHECK(std::vector<DWORD>(rates, rates + 4) == std::vector<DWORD>{44100, 48000, 96000, 0xFFFFFFFF});
    CHECK(std::string(CRtSynthesis::GetQSMVersionString()) == "No Version String");

    Driver driver;
    CHECK(driver.RTS_SampleToMs(22050) == 0); // no rate yet
    const DWORD sizes[][2] = {{44100, 256}, {48000, 441}, {96000, 558}, {22050, 256}};
    for (const auto& size : sizes) {
        driver.RTS_SetSynthesisParam(1, 1, 0, size[0], 0, 0);
        CHECK(driver.RTS_GetFrameSize() == size[1]);
        CHECK(driver.OutputRate() == size[0]); // the wave output follows
    }
    driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 0, 0);
    CHECK(driver.RTS_MsToSample(1000, 44100) == 44100);
    CHECK(driver.RTS_MsToSample(2050, 44100) == 90404); // 2050 x 0.001 falls just short of 2.05
    CHECK(driver.RTS_SampleToMs(22050) == 500);
    CHECK(driver.RTS_SampleToMs(90404) == 2049); // the way back loses a millisecond
    CHECK(driver.RTS_SampleToMs(88641) == 2009); // 2.01 s exactly; divided first it falls just short
    CHECK(driver.RTS_SampleToMs(-5) == 0);
}

TEST_CASE("driver: opening proves that an instance can be made, and keeps none") {
    const FakeEngine engine;
    Driver driver;
    CHECK(driver.CreateRVE() == -2); // not open yet
    CHECK(driver.OpenSynthesizer() == 1);
    CHECK(engine.Log().live == 0);
    CHECK(driver.GetSampleRate() == 44100);
    const int handle = driver.CreateRVE();
    CHECK(handle >= 0);
    CHECK(engine.Log().live == 1);
    driver.DeleteRVE(handle);
    driver.DeleteRVE(-2); // none
    CHECK(engine.Log().live == 0);
    CHECK(driver.CloseSynthesizer() == 0);
    driver.DeleteRVE(0); // no library any more

    Driver none;
    none.SetEngineLibrary("NO_SUCH_ENGINE.dll");
    CHECK(none.OpenSynthesizer() == 0);
    Driver incomplete;
    incomplete.SetEngineLibrary("FAKE_RVE_INCOMPLETE.dll");
    CHECK(incomplete.OpenSynthesizer() == 0);
    CHECK(incomplete.CreateRVE() == -2);
    CHECK(incomplete.CloseSynthesizer() == 0);
}

TEST_CASE("driver: instances and rings of all tracks, or of none") {
    const FakeEngine engine;
    Driver driver;
    REQUIRE(driver.OpenSynthesizer() == 1);
    CHECK(driver.RTS_CreateRVE() == 0); // no tracks
    CQuillMidiBuffer streams[2];
    streams[0].SetLast(1, 700);
    streams[1].SetLast(1, 1500);
    driver.RTS_SetSynthesisParam(1, 3, 0, 48000, 0, 0);
    CHECK(driver.RTS_SetQuillMidiBuffer(0, &streams[0]) == 1);
    CHECK(driver.RTS_SetQuillMidiBuffer(1, &streams[1]) == 1);
    CHECK(driver.RTS_SetQuillMidiBuffer(3, &streams[1]) == 0);
    CHECK(driver.RTS_SetQuillMidiBuffer(-1, &streams[1]) == 0);
    driver.RTS_SetTrackVolume(0, 0.5); // nothing to set yet
    driver.RTS_SetTrackPanpot(0, 1.0);
    driver.RTS_SetTrackMute(0, 1);
    driver.RTS_DeleteRVE();
    CHECK(driver.RTS_GetQuillMidiBuffer(1) == &streams[1]); // and nothing to delete

    REQUIRE(driver.RTS_CreateRVE() == 1);
    CHECK(engine.Log().live == 3);
    CHECK(driver.End() == 1500);
    CHECK(driver.RingCapacity() == 441 * 3000);
    CHECK(driver.GainL(0) == 1.0);
    CHECK(driver.RTS_GetRveHandle(2) == 2);
    const tagRtsInfo* info = driver.RTS_GetOutBuffer(2);
    REQUIRE(info != nullptr);
    CHECK(info->blockCount == 3000);
    info->samples[441 * 3000 * 4 * 2 - 1] = 1; // twice the ring's blocks, 4 bytes a frame
    for (const int track : {-1, 3, 1000}) {
        CHECK(driver.RTS_GetQuillMidiBuffer(track) == nullptr);
        CHECK(driver.RTS_GetRveHandle(track) == -2);
        CHECK(driver.RTS_GetOutBuffer(track) == nullptr);
        driver.RTS_SetTrackVolume(track, 1.0);
    }

    SUBCASE("deleted together, streams forgotten") {
        driver.RTS_DeleteRVE();
        CHECK(engine.Log().live == 0);
        CHECK(driver.RTS_GetQuillMidiBuffer(0) == nullptr);
        CHECK(driver.RTS_GetEndPosition() == 0);
    }
    SUBCASE("made again, the old ones go first") {
        REQUIRE(driver.RTS_CreateRVE() == 1);
        CHECK(engine.Log().live == 3);
    }
    SUBCASE("one too many undoes all") {
        driver.RTS_SetSynthesisParam(1, 5, 0, 48000, 0, 0); // the engine makes four
        CHECK(driver.RTS_CreateRVE() == 0);
        CHECK(engine.Log().live == 0);
        CHECK(driver.RTS_GetRveHandle(0) == -2);
        CHECK(driver.RTS_GetQuillMidiBuffer(0) == nullptr);
    }
    SUBCASE("a refused setting as well") {
        driver.SetEngineOption("refuse");
        CHECK(driver.RTS_CreateRVE() == 0);
        CHECK(engine.Log().live == 0);
    }
    SUBCASE("one output channel halves the ring's frames") {
        driver.SetMasterOutputChannels(1);
        REQUIRE(driver.RTS_CreateRVE() == 1);
        CHECK(driver.Align() == 2);
        driver.RTS_GetOutBuffer(0)->samples[441 * 3000 * 2 * 2 - 1] = 1;
        driver.RTS_SetTrackPanpot(0, -1.0); // and has no sides
        CHECK(driver.GainL(0) == 1.0);
    }
    SUBCASE("closing the library leaves the instances to their end") {
        driver.CloseSynthesizer();
        CHECK(engine.Log().live == 3);
        driver.RTS_DeleteRVE();
        CHECK(engine.Log().live == 0);
    }
}

TEST_CASE("driver: copies share instances, which go with the last") {
    const FakeEngine engine;
    std::optional<Driver> first(std::in_place);
    REQUIRE(first->OpenSynthesizer() == 1);
    first->RTS_SetSynthesisParam(1, 2, 0, 44100, 0, 0);
    REQUIRE(first->RTS_CreateRVE() == 1);
    std::optional<Driver> second(*first);
    CHECK(second->RTS_GetOutBuffer(1) == first->RTS_GetOutBuffer(1));
    first.reset();
    CHECK(engine.Log().live == 2);
    second->RTS_SetTrackVolume(1, 0.5);
    CHECK(second->GainL(1) == 0.5);
    second.reset();
    CHECK(engine.Log().live == 0);
}

TEST_CASE("driver: a track's volume and pan") {
    const FakeEngine engine;
    Driver driver;
    REQUIRE(driver.OpenSynthesizer() == 1);
    driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 0, 0);
    REQUIRE(driver.RTS_CreateRVE() == 1);
    driver.RTS_SetTrackPanpot(0, 0.5); // q = 0.75
    driver.RTS_SetTrackVolume(0, 2.0);
    CHECK(driver.GainL(0) == 1.0); // 2 x 0.25 x 2
    CHECK(driver.GainR(0) == 3.0); // 2 x 0.75 x 2
    driver.RTS_SetTrackPanpot(0, 1.5);
    CHECK(driver.GainL(0) == 2.0);
    CHECK(driver.GainR(0) == 2.0);
    driver.SetMasterVolume(0.5, 1.0);
    CHECK(driver.MixMasterR() == 0.0); // not before it is asked for
    driver.RTS_SetMasterPlayParam();
    CHECK(driver.MixMasterR() == 1.0);
}

TEST_CASE("driver: where a change of region, loop or position leads") {
    Driver driver;
    struct Row {
        DWORD start;
        DWORD end;
        DWORD asked;
        DWORD changed; ///< by a new region, or a new loop flag
        DWORD sought;
    };
    const Row rows[] = {{1000, 2000, 1500, 1500, 1500}, {1000, 2000, 500, 500, 500}, // before the region is allowed
                        {1000, 2000, 2000, 1000, 1000}, {1000, 2000, 9000, 1000, 1000},
                        {1000, 1000, 5000, 1000, 1000}, {1000, 1000, 400, 1000, 400}}; // an empty region
    for (const auto& row : rows) {
        CAPTURE(row.start);
        CAPTURE(row.end);
        CAPTURE(row.asked);
        driver.RTS_ChangePlayRegion(row.start, row.end, row.asked);
        CHECK(driver.Current() == row.changed);
        CHECK(driver.Song() == row.changed);
        driver.RTS_SetPlayParam(row.start, row.end, 7, 0);
        driver.RTS_ChangeLoop(1, row.asked);
        CHECK(driver.Current() == row.changed);
        CHECK(driver.Song() == row.changed);
        driver.RTS_SetPlayParam(row.start, row.end, 7, 0);
        driver.RTS_ChangeSongPosition(row.asked);
        CHECK(driver.Current() == row.sought);
        CHECK(driver.Song() == row.sought);
    }
}

TEST_CASE("driver: the host's window is told where a seek was asked to, while it exists") {
    Driver driver;
    driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 0, 0);
    CHECK(driver.PostMessageToMsgDestination(1, 2, 3) == 0); // no window
    CWnd window(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
    REQUIRE(window.m_hWnd != nullptr);
    driver.SetPlayParameters("", &window, WM_USER + 3, 9, 44100, 0);
    driver.RTS_SetPlayParam(1000, 2000, 1000, 0);
    driver.RTS_ChangeSongPosition(3000); // told as asked, though the region's start is played
    CHECK(driver.Current() == 1000);
    CHECK(driver.PostMessageToMsgDestination(WM_USER + 99, 4, 44100) != 0); // under the configured message
    MSG message;
    REQUIRE(PeekMessageA(&message, window.m_hWnd, WM_USER + 3, WM_USER + 3, PM_REMOVE));
    CHECK(message.wParam == 9);
    CHECK(message.lParam == 3000);
    REQUIRE(PeekMessageA(&message, window.m_hWnd, WM_USER + 3, WM_USER + 3, PM_REMOVE));
    CHECK(message.wParam == 4);
    CHECK(message.lParam == 1000);
    DestroyWindow(window.m_hWnd);
    CHECK(driver.PostMessageToMsgDestination(1, 4, 44100) == 0);
}

TEST_CASE("driver: dumps") {
    std::vector<BYTE> bytes(17);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<BYTE>(i * 15);
    CHECK(torv::TraceText(bytes.data(), 17) ==
          "00 0F 1E 2D 3C 4B 5A 69 78 87 96 A5 B4 C3 D2 E1 \n                 :F0 ");
    CHECK(torv::TraceText(nullptr, 5) == "");
    CHECK(torv::TraceMessages(bytes.data(), 7) == "TraceEvent2 Size=7\n00 0F 1E\n2D 3C 4B\n");
    Driver driver;
    driver.TraceEvent(bytes.data(), 17);
    driver.TraceEvent2(bytes.data(), -1);
}
