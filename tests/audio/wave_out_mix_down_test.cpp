#include "audio/wave_out_fixture.h"

#include <limits>

TEST_CASE("mix down: parts of files with volume and pan, master gains, and blocks of 1024 frames") {
    constexpr float kHalf = -6.0206F; // dB
    MonoWave first({1000, 2000, 3000, 4000});
    MonoWave second({-101, 301});
    const Scratch path("old");
    tagMixDownTrack tracks[] = {{1, 3, 0, 0, &first.file}, {0, torv::kWholeFile, kHalf, -1, &second.file}};
    CWaveOut output;
    output.SetMasterVolume(0.5);
    CHECK(output.AudioMixDown(path.Text(), tracks, 2) == 1);
    CHECK(output.GetRegisteredTrackCount() == 0);
    CHECK(path.IsAlone());
    CHECK(path.Get().substr(12, 24) == Fmt(2, 16));
    // 2000 and 3000 in the middle; -101 and 301 on the left at half x 2; all at half, cut toward zero.
    Shorts mixed{949, 1000, 1650, 1500};
    mixed.resize(1024 * 2);
    CHECK(ShortsIn(path.Get(), 44) == mixed);
    CHECK(output.GetPeakLevel() == doctest::Approx(1650.5 / 32768));

    SUBCASE("1024 frames are one block, 1025 are two; the window is told where the first track is") {
        for (const int frames : {1024, 1025}) {
            MonoWave wave(Ramp(frames, 1));
            HostWindow window;
            output.SetPlayParameters("", &window, kHostMessage, kPositionCode, 44100, 0);
            tagMixDownTrack track{0, 0, 0, 0, &wave.file};
            CHECK(output.AudioMixDown(path.Text(), &track, 1) == 1);
            CHECK(path.Get().size() == 44u + 4 * 1024 * (frames > 1024 ? 2 : 1));
            HostWindow::Posted told{{5, 0}, {5, 0}}; // as two buffers would be heard; 1024 frames are 23 ms
            if (frames > 1024)
                told.emplace_back(5, 23);
            CHECK(window.Take() == told);
        }
    }
    SUBCASE("no track makes an empty wave, and what is no number is the default") {
        CHECK(output.AudioMixDown(path.Text(), nullptr, 0) == 1);
        CHECK(path.Get().size() == 44);
        output.SetMasterVolume(1.0);
        constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
        tagMixDownTrack track{0, 0, kNaN, kNaN, &second.file};
        CHECK(output.AudioMixDown(path.Text(), &track, 1) == 1);
        CHECK(ShortsIn(path.Get(), 44)[3] == 301);
    }
    SUBCASE("the other form has a rate, and the output's channels") {
        output.SetMasterOutputChannels(1);
        for (const int rate : {0, 48000}) {
            CHECK(output.AudioMixDown(path.Text(), tracks, 2, rate) == 1);
            CHECK(ShortsIn(path.Get(), 44)[0] == 974); // (2000 - 101 + 2000) / 2 x 0.5 = 974.75
            CHECK(path.Get().substr(12, 24) == Fmt(1, 16, rate ? 48000 : 44100));
        }
    }
    SUBCASE("past full scale it wraps, and says so") {
        tagMixDownTrack loud{0, torv::kWholeFile, 36.1236F, 0, &first.file}; // 64 times
        output.SetMasterVolume(1.0);
        CHECK(output.AudioMixDown(path.Text(), &loud, 1) == 1);
        CHECK(output.GetWrappedFrames() == 4);
        CHECK(ShortsIn(path.Get(), 44)[0] == -1536); // 64000 - 65536
    }
}

TEST_CASE("mix down: what is refused leaves no file, or the old one") {
    MonoWave wave({1000});
    const Scratch path;
    std::vector<tagMixDownTrack> tracks(17, {0, 0, 0, 0, &wave.file});
    CWaveOut output;
    CHECK(output.AudioMixDown(path.Text() + ".none/out.wav", tracks.data(), 1) == 0);
    CHECK(output.GetRegisteredTrackCount() == 0);
    path.Put("old");
    for (const int count : {17, -1})
        CHECK(output.AudioMixDown(path.Text(), tracks.data(), count) == 0);
    CHECK(output.AudioMixDown(path.Text(), nullptr, 1) == 0);
    CHECK(output.AudioMixDown(nullptr, tracks.data(), 1) == 0);
    tracks[1].file = nullptr;
    CHECK(output.AudioMixDown(path.Text(), tracks.data(), 2) == 0);
    output.RegisterTrack(&wave.file, 9);
    CHECK(output.AudioMixDown(path.Text(), tracks.data(), 1) == 0);
    output.UnregisterTrack(9);
    CHECK(path.Get() == "old");
    CHECK(path.IsAlone());
    output.RegisterTrack(&wave.file, 16); // counts for nothing
    CHECK(output.AudioMixDown(path.Text(), tracks.data(), 1) == 1);
    CHECK(output.GetTrack(16) == &wave.file); // and stays
}
