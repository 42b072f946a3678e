#include "audio/wave_out_fixture.h"
#include "values.h"

#include <functional>
#include <limits>

TEST_CASE("mix down: parts of files with volume and pan, every setting, and meters that move under the mute") {
    constexpr float kHalf = -6.0206F; // dB
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    MonoWave first({1000, 2000, 3000, 4000});
    MonoWave second({-101, 301});
    HostWindow meter;
    const Scratch path("old");
    const tagMixDownTrack parts[] = {{1, 3, 0, 0, &first.file}, {0, torv::kWholeFile, kHalf, -1, &second.file}};
    const tagMixDownTrack loud[] = {{0, torv::kWholeFile, 36.1236F, kNaN, &first.file},
                                    {0, 0, kNaN, 0, &second.file}}; // 64 times
    CWaveOut output;
    output.SetLevelNotify(&meter, nullptr, kHostMessage, 9, 1024); // a peak each block
    const struct {
        std::function<void()> change;
        const tagMixDownTrack* tracks;
        int rate; // -1: the form without one
        std::string format;
        Shorts samples; // the first
        double peak;    // of the left side, in sixteen bits
        int wrapped;
    } steps[] = {
        // 2000 and 3000 in the middle; -101 and 301 on the left at half x 2; all at half, cut toward zero.
        {[&] { output.SetMasterVolume(0.5); }, parts, -1, Fmt(2, 16), {949, 1000, 1650, 1500}, 1650.5, 0},
        {[&] { output.SetMute(1); }, parts, -1, Fmt(2, 16), {0, 0, 0, 0}, 1650.5, 0},
        {[&] { output.SetMute(0), output.SetMasterPanpot(1.0); }, parts, -1, Fmt(2, 16), {0, 2000, 0, 3000}, 0, 0},
        {[&] { output.SetMasterVolume(kNaN, -2.0); }, loud, -1, Fmt(2, 16), {-1637, -1637, -2771}, 256000, 4},
        {[&] { output.SetRouting(0, torv::kReWireRoute); }, loud, -1, Fmt(2, 16), {-101, -101, 301, 301}, 301, 0},
        {[&] { output.SetOutputDeviseType(torv::kSilentDevice); }, loud, -1, Fmt(2, 16), {0, 0}, 0, 0},
        {[&] { output.SetOutputDeviseType(0), output.SetRouting(0, torv::kDeviceRoute); },
         parts,
         48000,
         Fmt(2, 16, 48000),
         {1899, 2000},
         3301,
         0},
        {[&] { output.SetMasterOutputChannels(1), output.SetMasterOutputChannels(3); },
         parts,
         0,
         Fmt(1, 16),
         {1949, 3150},
         3150.5,
         0}};
    for (const auto& step : steps) {
        CAPTURE(&step - steps);
        step.change();
        std::vector<tagMixDownTrack> tracks(step.tracks, step.tracks + 2);
        CHECK((step.rate < 0 ? output.AudioMixDown(path.Text(), tracks.data(), 2)
                             : output.AudioMixDown(path.Text(), tracks.data(), 2, step.rate)) == 1);
        CHECK(path.Get().substr(12, 24) == step.format);
        Shorts mixed = ShortsIn(path.Get(), 44);
        CHECK(mixed.size() == 1024u * (step.format == Fmt(1, 16) ? 1 : 2));
        mixed.resize(step.samples.size());
        CHECK(mixed == step.samples);
        CHECK(meter.Take() == HostWindow::Posted{{9, static_cast<LPARAM>(step.peak * 32767 / 32768)}, {9, 0}});
        CHECK(output.GetWrappedFrames() == static_cast<DWORD>(step.wrapped));
    }
    CHECK(CWaveOut::Amplitude2Db(10.0) == doctest::Approx(20.0));
    CHECK(output.GetPeakLevel() == doctest::Approx(3150.5 / 32768));
    CHECK(Values(output.GetRegisteredTrackCount(), path.IsAlone()) == "0 1");
    CHECK(output.AudioMixDown(path.Text(), nullptr, 0) == 1);
    CHECK(path.Get().size() == 44); // no track makes an empty wave

    for (const int frames : {1024, 1025}) { // one block, and two; the window is told where the first track is
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
