#include "audio/wave_out_fixture.h"
#include "values.h"

TEST_CASE("wave output: sixteen slots, and a place behind them that is not played") {
    MonoWave wave({1});
    CWaveOut output;
    CHECK(output.CheckRewireOut() == 0); // nothing to play
    const int rows[][3] = {{3, 3, 1}, {-1, 0, 2}, {16, 16, 2}, {17, -1, 2}, {-1, 1, 3}};
    for (const auto& [asked, slot, count] : rows) {
        CHECK(output.RegisterTrack(&wave.file, asked) == slot);
        CHECK(output.GetRegisteredTrackCount() == count);
    }
    CHECK(output.RegisterTrack(nullptr, 2) == -1);
    CHECK(output.GetTrack(16) == &wave.file);
    for (const int slot : {-1, 2, 17})
        CHECK(output.GetTrack(slot) == nullptr);
    while (output.RegisterTrack(&wave.file, -1) >= 0) {
    }
    CHECK(output.GetRegisteredTrackCount() == 16);
    for (const int slot : {-1, 5, 17})
        output.UnregisterTrack(slot);
    CHECK(output.RegisterTrack(&wave.file, -1) == 5);
    output.UnregisterTrackAll();
    CHECK(output.GetTrack(16) == nullptr);

    output.RegisterTrack(&wave.file, 2); // whether the device is needed
    CHECK(output.CheckRewireOut() == 1);
    output.SetRouting(2, torv::kReWireRoute);
    CHECK(output.CheckRewireOut() == 0);
    output.SetRouting(2, torv::kDeviceRoute);
    output.SetOutputDeviseType(torv::kSilentDevice);
    CHECK(output.CheckRewireOut() == 0);
}

TEST_CASE("wave output: a seek moves every file, and answers and-ed from the whence value") {
    MonoWave first(Ramp(9, 1));
    MonoWave second(Ramp(9, 1));
    CWaveOut output;
    CHECK(output.SeekPlayPointer(4, 3) == 3); // nobody to ask
    output.RegisterTrack(&first.file, 0);
    output.RegisterTrack(&second.file, 7);
    CHECK(output.SeekPlayPointer(4, 0) == 0);
    CHECK(output.SeekPlayPointer(2, 1) == 1);
    CHECK(output.SeekPlayPointer(2, 3) == 0); // refused by the files
    CHECK(Values(first.file.GetCurrentPlayPointer(), second.file.GetCurrentPlayPointer()) == "6 6");
}

TEST_CASE("wave output: positions go to the window in milliseconds, or wait; in ReWire mode they are the host's") {
    HostWindow window;
    CWaveOut output;
    output.PostMessageToScoreWnd(kHostMessage, 1, 2); // nobody there
    output.SetPlayParameters("", &window, kHostMessage, kPositionCode, 11025, 0);
    output.PostMessageToScoreWnd(kHostMessage, 9, 11031); // 1000.54 ms
    output.PostMessageToScoreWnd(kHostMessage, 9, -11025);
    output.REWIRE_WaveOut(7);
    output.REWIRE_WaveOutEnd();
    output.SetMessageWait(2);
    for (LONG second = 1; second <= 3; ++second)
        output.PostMessageToScoreWnd(kHostMessage, 9, second * 11025);
    CHECK(window.Take() == HostWindow::Posted{{9, 1001}, {9, -1000}, {9, 3000}});

    output.SetPlayRewireMode(1);
    output.PostMessageToScoreWnd(kHostMessage, 9, 0);
    output.REWIRE_WaveOutEnd(); // no end code, no end
    output.SetPlayEndNortify(kEndCode);
    output.REWIRE_WaveOut(11025);
    output.REWIRE_WaveOutEnd();
    output.Stop(); // forgets the window
    output.REWIRE_WaveOut(1);
    CHECK(window.Take() == HostWindow::Posted{{kPositionCode, 11025}, {kEndCode, -1}});
}
