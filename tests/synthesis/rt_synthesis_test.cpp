#include "synthesis/driver.h"
#include "torv/synthesis/trace_text.h"

#include <cmath>
#include <limits>
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
    CHECK(CRtSynthesis::GetDefaultSampleRate() == 44100);
    CHECK(CRtSynthesis::GetDefaultSampleBit() == 16);
    CHECK(std::string(CRtSynthesis::GetQSMVersionString()) == "No Version String");

    Driver driver;
    CHECK(driver.RTS_SampleToMs(22050) == 0); // no rate yet
    const DWORD sizes[][2] = {{48000, 441}, {96000, 558}, {22050, 256}, {44100, 256}};
    for (const auto& size : sizes) {
        driver.RTS_SetSynthesisParam(1, 1, 0, size[0], 0, 0);
        CHECK(driver.RTS_GetFrameSize() == size[1]);
        CHECK(+driver.m_WaveFormat.nSamplesPerSec == size[0]); // the wave output follows
    }
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
    driver.DeleteRVE(-2); // none
    CHECK(engine.Log().live == 1);
    driver.DeleteRVE(handle);
    CHECK(engine.Log().live == 0);
    CHECK(driver.CloseSynthesizer() == 0);
    driver.DeleteRVE(0); // no library any more
    for (const char* library : {"NO_SUCH_ENGINE.dll", "FAKE_RVE_INCOMPLETE.dll"}) {
        Driver other;
        other.SetEngineLibrary(library);
        CHECK(other.OpenSynthesizer() == 0);
        CHECK(other.CreateRVE() == -2);
    }
}

TEST_CASE("driver: instances and rings of all tracks, or of none") {
    const FakeEngine engine;
    Driver driver;
    REQUIRE(driver.OpenSynthesizer() == 1);
    CHECK(driver.RTS_CreateRVE() == 0); // no tracks
    CQuillMidiBuffer streams[2];
    streams[0].SetLast(1, 1500);
    streams[1].SetLast(1, 700);
    driver.RTS_SetSynthesisParam(1, 3, 0, 48000, 0, 0);
    CHECK(driver.RTS_SetQuillMidiBuffer(0, &streams[0]) == 1);
    CHECK(driver.RTS_SetQuillMidiBuffer(1, &streams[1]) == 1);
    driver.RTS_SetTrackVolume(0, 0.5); // nothing to set yet
    driver.RTS_DeleteRVE();
    CHECK(driver.RTS_GetQuillMidiBuffer(1) == &streams[1]); // and nothing to delete
    REQUIRE(driver.RTS_CreateRVE() == 1);
    CHECK(engine.Log().live == 3);
    CHECK(driver.m_state.SongEnd() == 1500);
    CHECK(driver.RTS_GetRveHandle(2) == 2);
    const tagRtsInfo* info = driver.RTS_GetOutBuffer(2);
    REQUIRE(info != nullptr);
    CHECK(info->blockCount == 3000);
    CHECK(info->samples[441 * 3000 * 4 * 2 - 1] == 0); // twice the ring's blocks, 4 bytes a frame
    for (const int track : {-1, 3, 1000}) {
        CHECK(driver.RTS_SetQuillMidiBuffer(track, &streams[1]) == 0);
        CHECK(driver.RTS_GetQuillMidiBuffer(track) == nullptr);
        CHECK(driver.RTS_GetRveHandle(track) == -2);
        CHECK(driver.RTS_GetOutBuffer(track) == nullptr);
        driver.RTS_SetTrackVolume(track, 1.0);
    }
    SUBCASE("deleted together, streams forgotten") {
        driver.CloseSynthesizer(); // leaves the instances to their end
        CHECK(engine.Log().live == 3);
        driver.RTS_DeleteRVE();
        CHECK(driver.RTS_GetEndPosition() == 0);
    }
    SUBCASE("a refused setting as well") {
        driver.SetEngineOption("refuse");
        CHECK(driver.RTS_DoSynthesis() == 0);
    }
    SUBCASE("copies share them, and they go with the last") {
        std::optional<Driver> copy(driver);
        CHECK(copy->RTS_GetOutBuffer(2) == info);
        REQUIRE(driver.RTS_CreateRVE() == 0); // one more is too many
        CHECK(engine.Log().live == 3);
        copy.reset();
    }
    CHECK(engine.Log().live == 0);
    CHECK(driver.RTS_GetQuillMidiBuffer(0) == nullptr);
}

TEST_CASE("driver: a track's gains, and the master's") {
    const FakeEngine engine;
    Driver driver;
    REQUIRE(driver.OpenSynthesizer() == 1);
    driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 0, 0);
    REQUIRE(driver.RTS_CreateRVE() == 1);
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    struct Row {
        double volume;
        double pan;
        double left;
        double right;
    };
    const Row rows[] = {{1.0, 0.0, 1.0, 1.0},
                        {2.0, 0.5, 1.0, 3.0}, // q = 0.75: 2 x 0.25 x 2 and 2 x 0.75 x 2
                        {2.0, 1.5, 2.0, 2.0},
                        {kNone, kNone, 1.0, 1.0},
                        {HUGE_VAL, -1.0, 2.0, 0.0}};
    for (const Row& row : rows) {
        driver.RTS_SetTrackVolume(0, row.volume);
        driver.RTS_SetTrackPanpot(0, row.pan);
        CHECK(driver.Ring()->Tracks()[0].gainL == row.left);
        CHECK(driver.Ring()->Tracks()[0].gainR == row.right);
    }
    driver.SetMasterOutputChannels(1); // one has no sides
    driver.RTS_SetTrackPanpot(0, -1.0);
    CHECK(driver.Ring()->Tracks()[0].gainR == 1.0);
    REQUIRE(driver.RTS_CreateRVE() == 1);
    CHECK(driver.Ring()->BlockBytes() == 256 * 2);
}

TEST_CASE("driver: rings as a host sees them") {
    const FakeEngine engine;
    Driver driver;
    DWORD bytes = 1;
    BYTE* buffer = nullptr;
    DWORD blocks = 1;
    int endFlag = 1;
    const auto get = [&](DWORD most) { return driver.RTS_GetWaveOutData_2(bytes, buffer, most, 1, blocks, endFlag); };
    CHECK(get(4) == 0); // no instances
    CHECK(driver.RTS_IsBlkOk(1) == 0);
    REQUIRE(driver.OpenSynthesizer() == 1);
    driver.RTS_SetSynthesisParam(1, 2, 0, 44100, 0, 0);
    REQUIRE(driver.RTS_CreateRVE() == 1);
    driver.m_state.BeginSynthesis(); // as while it plays
    CHECK(get(4) == 2);
    const std::vector<short> samples(256 * 3, 0x0102);
    for (int track = 0; track < 2; ++track) {
        CHECK(driver.RTS_IsBlkOk(1) == 0); // one track alone does not count
        CHECK(driver.RTS_AppendSample(track, samples.data(), 256 * 3, 0) == 1);
        CHECK(driver.RTS_AppendSample(track, nullptr, 1, 1) == 1); // a block of silence
        CHECK(driver.RTS_AppendSample(track, nullptr, 2, 1) == 1); // nothing
        driver.RTS_UpdaatWriteIndex(track);                        // another
    }
    CHECK(driver.RTS_IsBlkOk(5) == 1);
    CHECK(driver.RTS_IsBlkOk(6) == 0);
    CHECK(driver.RTS_AppendSample(0, samples.data(), 0, 0) == 0);
    CHECK(driver.RTS_AppendSample(0, nullptr, 1, 0) == 0);
    CHECK(driver.RTS_AppendSample(2, samples.data(), 1, 0) == 0);
    REQUIRE(get(2) == 1);
    CHECK(blocks == 2);
    CHECK(bytes == 2 * 256 * 4);
    CHECK(endFlag == 0);
    CHECK(std::vector<BYTE>(buffer, buffer + 4) == std::vector<BYTE>{4, 2, 4, 2});
    for (int track = 0; track < 2; ++track)
        driver.RTS_MarkWriteIndex(track);
    REQUIRE(get(0x400001) == 1); // as many blocks as 32 bits cannot count the bytes of
    CHECK(blocks == 3);
    CHECK(endFlag == 1);
    CHECK(std::vector<BYTE>(buffer + 1022, buffer + 1026) == std::vector<BYTE>{4, 2, 0, 0}); // the third, and silence
    CHECK(driver.RTS_GetWaveOutSilentData(bytes, buffer, 0x400001, 2, blocks) == 1);
    CHECK(blocks == 3000);
    CHECK(std::vector<BYTE>(buffer, buffer + bytes) == std::vector<BYTE>(3000 * 256 * 4, 0));
    driver.RTS_SetTrackMute(0, 1);
    std::vector<BYTE> out(4);
    for (const int track : {0, 1})
        driver.RTS_WaveDataTrackMix(track, out.data(), 4, 0);
    CHECK(out == std::vector<BYTE>{2, 1, 2, 1}); // of the one that is not muted
    driver.RTS_StopSynthesis();
}

TEST_CASE("driver: the host's window is told under its message, while it exists") {
    Driver driver;
    CHECK(driver.PostMessageToMsgDestination(1, 2, 3) == 0); // no window
    CWnd window(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
    driver.SetPlayParameters("", &window, WM_USER + 3, 9, 44100, 0);
    driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 0, 0);
    driver.RTS_SetPlayParam(1000, 2000, 1000, 0);
    driver.RTS_ChangeSongPosition(3000); // told as asked, though the region's start is played
    CHECK(driver.PostMessageToMsgDestination(WM_USER + 99, 4, 44100) != 0);
    MSG message;
    for (const auto& [code, time] : {std::pair<WPARAM, LPARAM>{9, 3000}, {4, 1000}}) {
        REQUIRE(PeekMessageA(&message, window.m_hWnd, WM_USER + 3, WM_USER + 3, PM_REMOVE));
        CHECK(message.wParam == code);
        CHECK(message.lParam == time);
    }
    DestroyWindow(window.m_hWnd);
    CHECK(driver.PostMessageToMsgDestination(1, 4, 44100) == 0);
}

TEST_CASE("driver: dumps") {
    const std::vector<BYTE> bytes(17, 0xE1);
    CHECK(torv::TraceText(bytes.data(), 17) ==
          "E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 \n                 :E1 ");
    CHECK(torv::TraceText(nullptr, 5) == "");
    CHECK(torv::TraceMessages(bytes.data(), 7) == "TraceEvent2 Size=7\nE1 E1 E1\nE1 E1 E1\n");
    CHECK(torv::TraceMessages(nullptr, -1) == "TraceEvent2 Size=-1\n");
}
