#include "audio/wave_out_fixture.h"
#include "synthesis/driver.h"
#include "torv/synthesis/trace_text.h"
#include "values.h"

#include <optional>

TEST_CASE("driver: rates, frame sizes and conversions") {
    const DWORD* rates = CRtSynthesis::GetSampleRateList();
    CHECK(std::vector<DWORD>(rates, rates + 4) == std::vector<DWORD>{44100, 48000, 96000, 0xFFFFFFFF});
    CHECK(Values(CRtSynthesis::IsValidSampleBit(16), CRtSynthesis::IsValidSampleBit(24)) == "1 0");
    CHECK(Values(CRtSynthesis::GetDefaultSampleRate(), CRtSynthesis::GetDefaultSampleBit(),
                 CRtSynthesis::GetQSMVersionString()) == "44100 16 No Version String");
    Driver driver;
    CHECK(driver.RTS_SampleToMs(22050) == 0); // no rate yet
    const DWORD rows[][3] = {
        {48000, 441, 1}, {96000, 558, 1}, {22050, 256, 0}, {0xFFFFFFFF, 256, 0}, {44100, 256, 1}}; // the list's end
    for (const auto& [rate, frameSize, isValid] : rows) {
        driver.RTS_SetSynthesisParam(1, 1, 0, rate, 0, 0);
        CHECK(CRtSynthesis::IsValidSampleRate(rate) == static_cast<int>(isValid));
        CHECK(driver.RTS_GetFrameSize() == frameSize);
        CHECK(+driver.m_WaveFormat.nSamplesPerSec == rate); // the wave output follows
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
    CHECK(Values{driver.OpenSynthesizer(), engine.log->live, driver.GetSampleRate()} == "1 0 44100");
    const int handle = driver.CreateRVE();
    driver.DeleteRVE(-2); // none
    CHECK(engine.log->live == 1);
    driver.DeleteRVE(handle);
    CHECK(Values{driver.CloseSynthesizer(), engine.log->live} == "0 0");
    driver.DeleteRVE(0); // no library any more
    for (const char* library : {"NO_SUCH_ENGINE.dll", "FAKE_RVE_INCOMPLETE.dll"}) {
        Driver other;
        other.SetEngineLibrary(library);
        CHECK(Values{other.OpenSynthesizer(), other.CreateRVE()} == "0 -2");
    }
}

TEST_CASE("driver: instances and rings of all tracks, or of none") {
    const FakeEngine engine;
    Driver driver;
    REQUIRE(driver.OpenSynthesizer() == 1);
    CHECK(driver.RTS_CreateRVE() == 0); // no tracks
    CQuillMidiBuffer streams[2];
    driver.RTS_SetSynthesisParam(1, 3, 0, 48000, 0, 0);
    for (const int track : {0, 1}) {
        streams[track].SetLast(1, 1500 - track);
        CHECK(driver.RTS_SetQuillMidiBuffer(track, &streams[track]) == 1);
    }
    driver.RTS_SetTrackVolume(0, 0.5); // nothing to set yet
    driver.RTS_DeleteRVE();
    CHECK(driver.RTS_GetQuillMidiBuffer(1) == &streams[1]); // and nothing to delete
    REQUIRE(driver.RTS_CreateRVE() == 1);
    CHECK(Values(engine.log->live, driver.m_state.SongEnd(), driver.RTS_GetRveHandle(2)) == "3 1500 2");
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
        CHECK(engine.log->live == 3);
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
        CHECK(engine.log->live == 3);
    }
    CHECK(engine.log->live == 0);
    CHECK(driver.RTS_GetQuillMidiBuffer(0) == nullptr);
}

TEST_CASE("driver: rings as a host sees them") {
    const FakeEngine engine;
    Driver driver;
    DWORD bytes = 1;
    BYTE* buffer = nullptr;
    DWORD blocks = 1;
    int endFlag = 1;
    const auto get = [&](DWORD most) {
        const int result = driver.RTS_GetWaveOutData_2(bytes, buffer, most, 1, blocks, endFlag);
        return Values(result, bytes, blocks, endFlag);
    };
    CHECK(get(4) == "0 0 0 0"); // no instances
    CHECK(driver.RTS_IsBlkOk(1) == 0);
    REQUIRE(driver.OpenSynthesizer() == 1);
    driver.RTS_SetSynthesisParam(1, 2, 0, 44100, 0, 0);
    REQUIRE(driver.RTS_CreateRVE() == 1);
    driver.m_state.BeginSynthesis(); // as while it plays
    CHECK(get(4) == "2 0 0 0");
    const Shorts samples(256 * 3, 0x0102);
    for (int track = 0; track < 2; ++track) {
        CHECK(driver.RTS_IsBlkOk(1) == 0); // one track alone does not count
        CHECK(driver.RTS_AppendSample(track, samples.data(), 256 * 3, 0) == 1);
        CHECK(driver.RTS_AppendSample(track, nullptr, 1, 1) == 1); // a block of silence
        CHECK(driver.RTS_AppendSample(track, nullptr, 2, 1) == 1); // nothing
        driver.RTS_UpdaatWriteIndex(track);                        // another
    }
    CHECK(Values(driver.RTS_IsBlkOk(5), driver.RTS_IsBlkOk(6)) == "1 0");
    CHECK(driver.RTS_AppendSample(0, samples.data(), 0, 0) == 0);
    CHECK(driver.RTS_AppendSample(0, nullptr, 1, 0) == 0);
    CHECK(driver.RTS_AppendSample(2, samples.data(), 1, 0) == 0);
    CHECK(driver.RTS_GetTrackPeak(1) == 0); // nothing was mixed yet
    CHECK(get(2) == "1 2048 2 0");
    CHECK(driver.RTS_GetTrackPeak(1) == 0x0102 / 32768.0);
    CHECK(Bytes(buffer, buffer + 4) == Bytes{4, 2, 4, 2});
    for (int track = 0; track < 2; ++track)
        driver.RTS_MarkWriteIndex(track);
    CHECK(get(0x400001) == "1 3072 3 1"); // as many blocks as 32 bits cannot count the bytes of
    CHECK(Bytes(buffer + 1022, buffer + 1026) == Bytes{4, 2, 0, 0}); // the third, and silence
    CHECK(driver.RTS_GetWaveOutSilentData(bytes, buffer, 0x400001, 2, blocks) == 1);
    CHECK(blocks == 3000);
    CHECK(Bytes(buffer, buffer + bytes) == Bytes(3000 * 256 * 4));
    driver.RTS_SetTrackMute(0, 1);
    Bytes out(4);
    for (const int track : {0, 1})
        driver.RTS_WaveDataTrackMix(track, out.data(), 4, 0);
    CHECK(out == Bytes{2, 1, 2, 1}); // of the one that is not muted
    driver.RTS_SetTrackVolume(1, 2.0);
    driver.RTS_SetTrackPanpot(1, 1.5); // no such pan: the centre
    driver.RTS_WaveDataTrackMix(1, out.data(), 4, 0);
    CHECK(out == Bytes{6, 3, 6, 3}); // and twice as much
    driver.SetMasterOutputChannels(1);
    driver.RTS_SetTrackPanpot(1, -1.0); // one channel has no sides
    CHECK(driver.Ring()->Tracks()[1].gainR == 2.0);
    driver.RTS_StopSynthesis();
}

TEST_CASE("driver: the host's window is told under its message, while it exists") {
    Driver driver;
    CHECK(driver.PostMessageToMsgDestination(1, 2, 3) == 0); // no window
    HostWindow window;
    driver.SetPlayParameters("", &window, kHostMessage, 9, 44100, 0);
    driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 0, 0);
    driver.RTS_SetPlayParam(1000, 2000, 1000, 0);
    driver.RTS_ChangeSongPosition(3000); // told as asked, though the region's start is played
    CHECK(driver.PostMessageToMsgDestination(WM_USER + 99, 4, 44100) != 0);
    CHECK(window.Take() == HostWindow::Posted{{9, 3000}, {4, 1000}});
    DestroyWindow(window.m_hWnd);
    CHECK(driver.PostMessageToMsgDestination(1, 4, 44100) == 0);
}

TEST_CASE("driver: dumps") {
    const Bytes bytes(17, 0xE1);
    const CString line = "E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 E1 ";
    CHECK(torv::TraceText(bytes.data(), 17) == line + "\n                 :E1 ");
    CHECK(torv::TraceText(nullptr, 5) == "");
    CHECK(torv::TraceMessages(bytes.data(), 7) == "TraceEvent2 Size=7\nE1 E1 E1\nE1 E1 E1\n");
    CHECK(torv::TraceMessages(nullptr, -1) == "TraceEvent2 Size=-1\n");
}
