#include "torv/audio/wave_out.h"

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
