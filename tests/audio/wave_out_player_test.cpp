// Playing through a device of the test's own, whose blocks come back when the test says so.
#include "allocation_counter.h"
#include "allocation_failure.h"
#include "audio/wave_out_fixture.h"
#include "values.h"
#include "wave_recorder.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

namespace {

#if !defined(_WIN32)
/// The list of devices is not asked of a sound server.
const int g_silentDriver = setenv("SDL_AUDIODRIVER", "dummy", 0);
#endif

/// Plays files at 100 Hz, 10 frames a block, on a recorder.
struct Playing {
    explicit Playing(CWaveFile* track = nullptr) {
        SetUp();
        if (track)
            output->RegisterTrack(track, 0);
    }
    void SetUp() {
        output->SetPlayEndNortify(kEndCode);
        output->SetPlayParameters(kDevice, &window, kHostMessage, kPositionCode, 100, 0);
    }
    bool IsStopped() const { return output->IsWaveOutStopped() != 0; }
    bool Begin() const {
        return output->Play() == 1 && Await([this] { return recorder->Queued() == 2; });
    }
    /// One block is done, and its answer is there.
    void Turn() const {
        recorder->Finish(1);
        Await([this] { return recorder->Queued() == 2 || IsStopped(); });
    }
    void TurnToEnd() const {
        for (int i = 0; i < 100 && !IsStopped(); ++i)
            Turn();
    }
    /// The left sides of all blocks but the primers.
    Shorts Left() const {
        const auto samples = ShortsIn(recorder->Played(), 8);
        Shorts left;
        for (size_t i = 0; i < samples.size(); i += 2)
            left.push_back(samples[i]);
        return left;
    }

    static constexpr const char* kDevice = "a RECORDER with a name of more ";

    WaveRecorderInList recorder;
    HostWindow window;
    std::unique_ptr<CWaveOut> output = std::make_unique<CWaveOut>();
};

} // namespace

TEST_CASE("wave output: primers, blocks while there are data, two silent ones, the end") {
    MonoWave wave(Ramp(25, 100));
    Playing play;
    play.output->RegisterTrack(&wave.file, 4);
    REQUIRE(play.Begin());
    {
        CWaveOut copy(*play.output); // a play belongs to its object,
        CHECK(copy.IsWaveOutStopped() == 1);
        *play.output = copy;
    }
    CHECK_FALSE(play.IsStopped());
    CHECK(Values(play.recorder->Format().nSamplesPerSec, play.recorder->Format().nChannels) == "100 2");
    play.recorder->Finish(2);
    CHECK(play.recorder->Played() == Bytes(8)); // of 4 bytes each
    play.TurnToEnd();
    CHECK(play.IsStopped());
    CHECK(play.Left() == Ramp(25, 100, 15)); // half a block and a whole one
    // What has been heard when a block comes back: nothing after the primers, then 10, 20 and 25 frames of 10 ms; after
    // the second silent block once more, and the end.
    CHECK(play.window.Take() ==
          HostWindow::Posted{{5, 0}, {5, 0}, {5, 100}, {5, 200}, {5, 250}, {5, 250}, {5, 250}, {6, 250}});
    CHECK(play.recorder->closed == 1);

    // Once more from a later place, as a loop, until that is switched off; now the position leaps back.
    play.output->SeekPlayPointer(15, 0);
    play.output->SetLoop(1);
    REQUIRE(play.Begin());
    for (int i = 0; i < 4; ++i)
        play.Turn(); // 15..25, 0..10, 10..20, 20..25 and 0..5
    play.output->SetLoop(0);
    play.TurnToEnd();
    std::vector<LPARAM> positions;
    for (const auto& message : play.window.Take())
        positions.push_back(message.second);
    CHECK(positions == std::vector<LPARAM>{150, 150, 250, 100, 200, 50, 150, 250, 250, 250, 250});
    REQUIRE(play.output->Play() == 1);
    play.output.reset(); // and ends with it, though nothing has come back; nobody is told of an end
    CHECK(play.recorder->opened == play.recorder->closed);
    CHECK(play.window.Take().empty());
}

TEST_CASE("wave output: what is not played, and what a rate becomes") {
    MonoWave wave(Ramp(25, 100));
    Playing play;
    CStringList devices;
    const int count = CWaveOut::EnumWaveOutDevices(devices);
    CHECK(count == devices.GetCount());
    CHECK(devices.GetHead().CompareNoCase(Playing::kDevice) == 0);
    CHECK(play.output->Play() == 0); // no file
    play.output->RegisterTrack(&wave.file, 16);
    CHECK(play.output->Play() == 0);
    play.output->RegisterTrack(&wave.file, 0);
    CHECK(play.output->Play("no such device", nullptr, 0, 0, 10, 0) == 0);
    for (const DWORD frames : {0u, 10000001u, 0xFFFFFFFFu})
        CHECK(play.output->Play(Playing::kDevice, nullptr, 0, 0, frames, 0) == 0);
    CHECK(Values(play.IsStopped(), play.recorder->opened) == "1 0");

    play.output->SetPlayParameters(Playing::kDevice, nullptr, 0, 0, 11025, 0);
    for (const WORD channels : {1, 2}) { // the second play ends the first
        play.output->SetMasterOutputChannels(channels);
        REQUIRE(play.Begin());
        CHECK(Values(play.recorder->Format().nSamplesPerSec, play.recorder->Format().nBlockAlign) ==
              Values(11020, 2 * channels));
        CHECK(Values(play.recorder->opened, play.recorder->closed) == Values(channels, channels - 1));
    }
}

TEST_CASE("wave output: a device that refuses is told in a box, and does not hold up the host") {
    MonoWave wave(Ramp(25, 100));
    Playing play(&wave.file);
    play.recorder->refuse = true;
    char reason[MAXERRORLENGTH] = "";
    waveOutGetErrorTextA(MMSYSERR_ALLOCATED, reason, sizeof reason);
    const std::string expected = "Cannot output waves (" + std::string(reason) + ")";
    std::atomic<bool> isAnswered = false;
    std::atomic<int> shown = 0;
    auto previous = torv::SetMessageBoxHandler([&](HWND, const char* text, const char*, UINT type) {
        shown += text == expected && (type & MB_ICONSTOP) == MB_ICONSTOP;
        Await([&isAnswered] { return isAnswered.load(); });
        ++shown;
        return IDOK;
    });
    CHECK(play.output->Play() == 1);
    CHECK(Await([&shown] { return shown == 1; }));
    CHECK_FALSE(play.IsStopped());
    CHECK(play.output->SeekPlayPointer(5, 0) == 0); // the files are the host's again
    CHECK(wave.file.GetCurrentPlayPointer() == 5);
    play.output->Stop(); // though nobody has answered
    isAnswered = true;
    CHECK(Await([&shown] { return shown == 2; }));
    torv::SetMessageBoxHandler(std::move(previous));
    CHECK(play.window.Take().empty());
    play.recorder->refuse = false;
    CHECK(play.Begin());
}

TEST_CASE("wave output: whatever a host does at a notification, the next play is whole") {
    MonoWave wave(Ramp(25, 100));
    const std::function<void(Playing&)> deeds[] = {
        [](Playing& play) { play.output->SeekPlayPointer(5, 0); }, [](Playing& play) { play.output->Stop(); },
        [](Playing& play) { play.output->Play(); }, [](Playing& play) { play.output->UnregisterTrack(0); },
        [](Playing& play) { play.output = std::make_unique<CWaveOut>(*play.output); }};
    for (const auto& deed : deeds)
        for (size_t last = 1; last <= 8; ++last) { // the eighth is the end
            CAPTURE(&deed - deeds);
            CAPTURE(last);
            Playing play;
            const auto begin = [&] {
                play.SetUp();
                play.output->SeekPlayPointer(0, 0);
                play.output->RegisterTrack(&wave.file, 0);
                play.output->SeekPlayPointer(0, 0);
                return play.Begin();
            };
            REQUIRE(begin());
            for (size_t told = 0; told < last;) {
                REQUIRE(play.recorder->Finish(1) == 1);
                REQUIRE(Await([&] { return play.recorder->Queued() == 2 || told >= 7 || play.IsStopped(); }));
                REQUIRE(Await([&] { return (told += play.window.Take().size()) > 0; }));
            }
            deed(play);
            REQUIRE(begin());
            play.TurnToEnd();
            CHECK(play.window.Take().back() == std::pair<WPARAM, LPARAM>(kEndCode, 250));
            const auto left = play.Left();
            CHECK(Shorts(left.end() - 40, left.end()) == Ramp(25, 100, 15));
        }
}

TEST_CASE("wave output: a rewind between the end's notification and the thread's leaving is not lost") {
    MonoWave wave(Ramp(15, 100));
    Playing play(&wave.file);
    std::atomic<bool> isClosing = false;
    std::atomic<bool> mayClose = false;
    play.recorder->resetHook = [&] {
        isClosing = true;
        Await([&mayClose] { return mayClose.load(); });
    };
    REQUIRE(play.Begin());
    while (play.recorder->Finish(1) == 1) {
        Await([&] { return play.recorder->Queued() == 2 || isClosing; });
        if (play.Left().size() == 20) // silence is left: the end is told where this leads
            play.output->SeekPlayPointer(13, 0);
    }
    REQUIRE(isClosing);
    CHECK(play.window.Take().back() == std::pair<WPARAM, LPARAM>(kEndCode, 130));
    CHECK(play.output->SeekPlayPointer(5, 0) == 0);
    mayClose = true;
    REQUIRE(play.Begin());
    play.TurnToEnd();
    const auto left = play.Left();
    CHECK(std::count(left.begin(), left.end(), 1500) == 2);
    CHECK(std::count(left.begin(), left.end(), 500) == 1);
}

TEST_CASE("wave output: what goes while it plays") {
    MonoWave wave(Ramp(40, 100));
    Playing play;
    {
        MonoWave gone(Ramp(40, 1000)); // the master track
        HostWindow brief;
        play.output->SetPlayParameters(Playing::kDevice, &brief, kHostMessage, kPositionCode, 100, 0);
        play.output->RegisterTrack(&gone.file, 0);
        play.output->RegisterTrack(&wave.file, 1);
        REQUIRE(play.Begin());
        play.Turn();
        play.output->UnregisterTrack(0);
    }
    CHECK(play.output->SeekPlayPointer(30, 0) == 0);
    CHECK(play.output->SeekPlayPointer(-1, 1) == 1);
    CHECK(play.output->AudioMixDown("torv_out_never.wav", nullptr, 0) == 0);
#if !defined(_WIN32)
    play.recorder->Claim(99); // a block that was never there
#endif
    play.TurnToEnd();
    auto left = play.Left();
    CHECK(Shorts(left.begin(), left.begin() + 10) == Ramp(10, 1100)); // both
    CHECK(Shorts(left.begin() + 10, left.begin() + 30) == [] {
        const Shorts all = Ramp(40, 100, 9); // from frame 29 on
        return Shorts(all.begin() + 29, all.end());
    }());
}

TEST_CASE("wave output: what is played is what is mixed down, block by block without allocating") {
    MonoWave first(Ramp(10000, 7));
    MonoWave second(Ramp(7000, -11));
    const Scratch path;
    tagMixDownTrack tracks[] = {{500, 9000, -9.5F, -0.4F, &first.file}, {0, 0, -13, 0.7F, &second.file}};
    Playing play;
    play.output->SetMasterVolume(0.8, 0.1);
    REQUIRE(play.output->AudioMixDown(path.Text(), tracks, 2) == 1);
    const double peak = play.output->GetPeakLevel();

    play.output->RegisterTrack(&first.file, 3);
    play.output->RegisterTrack(&second.file, 1);
    play.output->SeekPlayPointer(0, 0);
    REQUIRE(play.output->Play(Playing::kDevice, nullptr, 0, 0, 1500, 0) == 1);
    REQUIRE(Await([&] { return play.recorder->Queued() == 2; }));
    allocation_counter::Take();
    play.recorder->writeHook = [] { allocation_counter::WatchThisThread(); };
    play.recorder->resetHook = [] { allocation_counter::WatchThisThread(false); };
    play.TurnToEnd();
    CHECK(allocation_counter::Take() == 0);
    CHECK(play.output->GetPeakLevel() == peak);
    auto mixed = ShortsIn(path.Get(), 44);
    auto played = ShortsIn(play.recorder->Played(), 8);
    mixed.resize(8500 * 2);
    played.resize(8500 * 2);
    CHECK((mixed == played));
}

TEST_CASE("wave output: without memory a play does not begin, and a mix leaves what was there") {
    MonoWave wave(Ramp(25, 100));
    const CString device(Playing::kDevice);
    FailEachAllocation([&](AllocationFailure& failure) {
        const Scratch path("old");
        const CString name = path.Text();
        CWaveOut output;
        tagMixDownTrack track{0, 0, 0, 0, &wave.file};
        const int isMixed = failure.During([&] { return output.AudioMixDown(name, &track, 1); });
        CHECK((isMixed || failure.HasHappened())); // what failed once may have been had at the second try
        CHECK(path.Get().size() == (isMixed ? 44 + 4096 : 3));
        CHECK(path.IsAlone());
        CHECK(output.GetRegisteredTrackCount() == 0);
    });
    FailEachAllocation([&](AllocationFailure& failure) {
        Playing play(&wave.file);
        CWaveOut& output = *play.output;
        const int plays = failure.During([&] { return output.Play(device, nullptr, 0, 0, 20, 0); });
        CHECK(plays != failure.HasHappened());
        CHECK(output.IsWaveOutStopped() == !plays);
        output.Stop();
        CHECK(play.Begin());
        CHECK(play.recorder->Format().nSamplesPerSec == (plays ? 200 : 100)); // as it was set
    });
}
