#include "audio/wave_out_fixture.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

namespace {

struct Output : CWaveOut {
    double Left() const { return m_dMasterGainL; }
    double Right() const { return m_dMasterGainR; }
    double Pan() const { return m_dMasterPan; }
    WORD Channels() const { return m_wOutputChannels; }
};

} // namespace

TEST_CASE("wave output: decibels") {
    CHECK(CWaveOut::Db2Amplitude(-6.0206) == doctest::Approx(0.5).epsilon(1e-5));
    CHECK(CWaveOut::Db2Amplitude(20.0) == doctest::Approx(10.0));
    CHECK(CWaveOut::Amplitude2Db(1.0) == 0.0);
    CHECK(CWaveOut::Amplitude2Db(0.0) == -std::numeric_limits<double>::infinity());
}

TEST_CASE("wave output: master gains follow volume and pan") {
    Output output;
    output.SetMasterVolume(0.5, 0.5); // q = 0.75
    CHECK(output.Left() == 0.25);
    CHECK(output.Right() == 0.75);
    output.SetMasterVolume(1.0); // the pan stays
    CHECK(output.Left() == 0.5);
    CHECK(output.Right() == 1.5);
    for (const double pan : {-2.0, 1.5, std::nan("")}) { // back to the centre, not to the nearer end
        output.SetMasterPanpot(0.5);
        output.SetMasterPanpot(pan);
        CHECK(output.Pan() == 0.0);
        CHECK(output.Left() == 1.0);
    }
    output.SetMasterVolume(std::nan(""), -1.0);
    CHECK(output.Left() == 2.0);
    CHECK(output.Right() == 0.0);
}

TEST_CASE("wave output: one channel knows no pan, and other counts than 1 and 2 are passed over") {
    Output output;
    CHECK(output.SetMasterOutputChannels(1) == 1);
    output.SetMasterVolume(0.5, -1.0);
    CHECK(output.Left() == 0.5);
    CHECK(output.Right() == 0.5);
    CHECK(output.SetMasterOutputChannels(3) == 1);
    CHECK(output.Channels() == 1);

    output.SetMasterOutputChannels(2);
    Output copy = output;
    copy.SetMasterPanpot(1.0);
    CHECK(copy.Right() == 1.0);
    CHECK(output.Right() == 0.5);
}

TEST_CASE("wave output: sixteen slots, and a place behind them that is not played") {
    MonoWave wave("torv_out_slots.wav", {1});
    CWaveOut output;
    CHECK(output.RegisterTrack(&wave.file, 3) == 3);
    CHECK(output.RegisterTrack(&wave.file, -1) == 0);
    CHECK(output.RegisterTrack(&wave.file, 16) == 16);
    CHECK(output.RegisterTrack(&wave.file, 17) == -1);
    CHECK(output.RegisterTrack(nullptr, 2) == -1);
    CHECK(output.GetRegisteredTrackCount() == 2); // without the last place
    CHECK((output.GetTrack(16) == &wave.file && !output.GetTrack(1) && !output.GetTrack(17) && !output.GetTrack(-1)));
    for (int i = 2; i < 16; ++i)
        output.RegisterTrack(&wave.file, -1);
    CHECK(output.GetRegisteredTrackCount() == 16);
    CHECK(output.RegisterTrack(&wave.file, -1) == -1);
    output.UnregisterTrack(-1);
    output.UnregisterTrack(17);
    output.UnregisterTrack(5);
    CHECK(output.RegisterTrack(&wave.file, -1) == 5);
    output.UnregisterTrackAll();
    CHECK((output.GetRegisteredTrackCount() == 0 && !output.GetTrack(16)));
}

TEST_CASE("wave output: a seek moves every file, and answers and-ed from the whence value") {
    MonoWave first("torv_out_seek1.wav", Ramp(9, 1));
    MonoWave second("torv_out_seek2.wav", Ramp(9, 1));
    CWaveOut output;
    CHECK(output.SeekPlayPointer(4, 3) == 3); // nobody to ask
    output.RegisterTrack(&first.file, 0);
    output.RegisterTrack(&second.file, 7);
    CHECK(output.SeekPlayPointer(4, 0) == 0);
    CHECK(output.SeekPlayPointer(2, 1) == 1);
    CHECK(output.SeekPlayPointer(2, 3) == 0); // refused by the files
    CHECK((first.file.GetCurrentPlayPointer() == 6 && second.file.GetCurrentPlayPointer() == 6));
}

TEST_CASE("wave output: whether the device is needed") {
    MonoWave wave("torv_out_route.wav", {1});
    CWaveOut output;
    CHECK(output.CheckRewireOut() == 0); // nothing to play
    output.RegisterTrack(&wave.file, 2);
    CHECK(output.CheckRewireOut() == 1);
    output.SetRouting(2, torv::kReWireRoute);
    output.SetRouting(16, torv::kReWireRoute);
    CHECK(output.CheckRewireOut() == 0);
    output.SetRouting(2, torv::kDeviceRoute);
    output.SetOutputDeviseType(torv::kSilentDevice);
    CHECK(output.CheckRewireOut() == 0);
}

TEST_CASE("wave output: positions go to the window in milliseconds, or wait; in ReWire mode they are the host's") {
    CWaveOut output;
    output.PostMessageToScoreWnd(kHostMessage, 1, 2); // nobody there
    HostWindow window;
    output.SetPlayParameters("", &window, kHostMessage, kPositionCode, 11025, 0);
    output.PostMessageToScoreWnd(kHostMessage, 9, 11031); // 1000.54 ms
    output.PostMessageToScoreWnd(kHostMessage, 9, -11025);
    output.REWIRE_WaveOut(7);
    CHECK(window.Take() == HostWindow::Posted{{9, 1001}, {9, -1000}});

    output.SetMessageWait(2);
    for (LONG second = 1; second <= 3; ++second)
        output.PostMessageToScoreWnd(kHostMessage, 9, second * 11025);
    CHECK(window.Take() == HostWindow::Posted{{9, 3000}});

    output.SetPlayRewireMode(1);
    output.PostMessageToScoreWnd(kHostMessage, 9, 0);
    output.REWIRE_WaveOutEnd(); // no end code, no end
    output.SetPlayEndNortify(kEndCode);
    output.REWIRE_WaveOut(11025);
    output.REWIRE_WaveOutEnd();
    CHECK(window.Take() == HostWindow::Posted{{kPositionCode, 11025}, {kEndCode, -1}});
    output.Stop(); // forgets the window
    output.REWIRE_WaveOut(1);
    CHECK(window.Take().empty());
}
