#include "torv/audio/double_buffered_output.h"

#include "audio/wave_test_files.h"
#include "wave_recorder.h"

#include <doctest/doctest.h>

#include <utility>

TEST_CASE("double-buffered output: a header belongs to the device from its queueing until it is done") {
    const WaveRecorderInList recorder;
    torv::DoubleBufferedOutput output;
    CHECK(output.Close()); // nothing is open
    REQUIRE(output.Open(0, Format(1, 16), 0, CALLBACK_NULL) == MMSYSERR_NOERROR);
    Bytes bytes(8);
    for (int i = 0; i < 2; ++i) {
        CHECK(output.IsBack(i)); // never queued
        output.headers[i].lpData = reinterpret_cast<char*>(&bytes[4 * static_cast<size_t>(i)]);
        output.headers[i].dwBufferLength = 4;
        CHECK(output.Queue(i) == MMSYSERR_NOERROR);
        CHECK_FALSE(output.TakeBack(i));
    }
    const WAVEHDR foreign = output.headers[0];
    CHECK(output.IndexOf(&foreign) == -1);
    CHECK(output.IndexOf(&output.headers[1]) == 1);
    CHECK(recorder->Finish(1) == 1);
    CHECK(output.IsBack(0));
    CHECK_FALSE(output.AreBothBack());
    CHECK_FALSE(output.AwaitBoth(0));
    CHECK(output.TakeBack(0));
    CHECK(output.Queue(0) == MMSYSERR_NOERROR); // anew, though its flags have been done before
    CHECK_FALSE(output.IsBack(0));
#if !defined(_WIN32) // whose recorder takes any handle
    const HWAVEOUT device = std::exchange(output.device, reinterpret_cast<HWAVEOUT>(1)); // it is unplugged
    CHECK_FALSE(output.Close());
    CHECK(output.IsOpen());
    CHECK(output.headers[0].lpData != nullptr); // the device may read it
    output.device = device;
#endif
    CHECK(output.Close());
    CHECK_FALSE(output.IsOpen());
    CHECK(output.AreBothBack());
    CHECK(output.headers[1].lpData == nullptr);
    CHECK(recorder->closed == 1);

    recorder->refuse = true;
    CHECK(output.Open(0, Format(1, 16), 0, CALLBACK_NULL) != MMSYSERR_NOERROR);
    CHECK_FALSE(output.IsOpen());
}
