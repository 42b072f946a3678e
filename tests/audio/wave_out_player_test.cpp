// Playing through devices: the test's own, whose blocks come back when it says so, and the system's.
#include "allocation_counter.h"
#include "audio/wave_out_fixture.h"
#include "platform/begun_thread.h"
#include "wave_recorder.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>

#if !defined(_WIN32)
namespace {

/// No test plays on a real device: the sound library has its silent one.
const int g_silentDriver = setenv("SDL_AUDIODRIVER", "dummy", 0);

} // namespace
#endif

TEST_CASE("wave output: plays on a device of the system to its end") {
    CStringList devices;
    if (CWaveOut::EnumWaveOutDevices(devices) == 0) {
        MESSAGE("SKIPPED: there is no wave output device");
        return;
    }
    CString name = devices.GetTail(); // the silent one, where there is one
    name.MakeUpper();
    MonoWave wave("torv_out_system.wav", Ramp(9000, 1));
    HostWindow window;
    CWaveOut output;
    output.RegisterTrack(&wave.file, -1);
    output.SetPlayEndNortify(kEndCode);
    output.SetPlayParameters(name, &window, kHostMessage, kPositionCode, 44100, 0);
    REQUIRE(output.Play() == 1);
    CHECK(Await([&output] { return output.IsWaveOutStopped() != 0; }));
    const auto posted = window.Take();
    REQUIRE(posted.size() == 8);                                      // three blocks with data: see below
    CHECK(posted.back() == std::pair<WPARAM, LPARAM>(kEndCode, 204)); // 9000 frames
}

namespace {

/// Plays files at 100 Hz, 10 frames a block, on a recorder.
struct Playing {
    Playing() {
        output.SetPlayEndNortify(kEndCode);
        output.SetPlayParameters(kDevice, &window, kHostMessage, kPositionCode, 100, 0);
    }
    bool IsStopped() const { return output.IsWaveOutStopped() != 0; }
    bool IsPrimed() const {
        return Await([this] { return recorder->Queued() == 2; });
    }
    /// One block is done, and its answer is there.
    bool Turn() {
        recorder->Finish(1);
        return Await([this] { return recorder->Queued() == 2 || IsStopped(); });
    }
    void TurnToEnd() {
        for (int i = 0; i < 100 && !IsStopped(); ++i)
            Turn();
    }
    /// The left sides of all blocks but the primers.
    std::vector<SHORT> Left() const {
        const auto samples = Samples(recorder->Played(), 8);
        std::vector<SHORT> left;
        for (size_t i = 0; i < samples.size(); i += 2)
            left.push_back(samples[i]);
        return left;
    }

    static constexpr const char* kDevice = "a RECORDER with a name of more ";

    WaveRecorderInList recorder;
    HostWindow window;
    CWaveOut output;
};

std::vector<SHORT> Joined(std::vector<SHORT> samples, size_t silence) {
    samples.insert(samples.end(), silence, 0);
    return samples;
}

} // namespace

TEST_CASE("wave output: primers, blocks while there are data, two silent ones, the end") {
    Playing play;
    MonoWave wave("torv_out_play.wav", Ramp(25, 100));
    play.output.RegisterTrack(&wave.file, 4);
    REQUIRE(play.output.Play() == 1);
    REQUIRE(play.IsPrimed());
    CHECK(!play.IsStopped());
    CHECK((play.recorder->Format().nSamplesPerSec == 100 && play.recorder->Format().nChannels == 2));
    play.recorder->Finish(2);
    CHECK(play.recorder->Played() == Bytes(8)); // of 4 bytes each
    play.TurnToEnd();
    CHECK(play.IsStopped());
    CHECK(play.Left() == Joined(Ramp(25, 100), 15)); // half a block and a whole one
    // What has been heard when a block comes back: nothing after the primers, then 10, 20 and 25 frames of 10 ms; after
    // the second silent block once more, and the end.
    CHECK(play.window.Take() ==
          HostWindow::Posted{{5, 0}, {5, 0}, {5, 100}, {5, 200}, {5, 250}, {5, 250}, {5, 250}, {6, 250}});
    CHECK((play.recorder->closed == 1 && play.recorder->resets >= 1));

    // Once more from a later place, as a loop, until that is switched off; now the position leaps back.
    play.output.SeekPlayPointer(15, 0);
    play.output.SetLoop(1);
    play.output.SetPlayParameters(Playing::kDevice, &play.window, kHostMessage, kPositionCode, 100, 1);
    REQUIRE(play.output.Play() == 1);
    REQUIRE(play.IsPrimed());
    for (int i = 0; i < 4; ++i)
        play.Turn(); // 15..25, 0..10, 10..20, 20..25 and 0..5
    play.output.SetLoop(0);
    play.TurnToEnd();
    CHECK(play.window.Take() == HostWindow::Posted{{5, 150},
                                                   {5, 150},
                                                   {5, 250},
                                                   {5, 100},
                                                   {5, 200},
                                                   {5, 50},
                                                   {5, 150},
                                                   {5, 250},
                                                   {5, 250},
                                                   {5, 250},
                                                   {6, 250}});
}

TEST_CASE("wave output: what is not played, and what a rate becomes") {
    Playing play;
    MonoWave wave("torv_out_play.wav", Ramp(25, 100));
    CHECK(play.output.Play() == 0); // no file
    play.output.RegisterTrack(&wave.file, 16);
    CHECK(play.output.Play() == 0);
    play.output.RegisterTrack(&wave.file, 0);
    CHECK(play.output.Play("no such device", nullptr, 0, 0, 10, 0) == 0);
    CHECK(play.output.Play(Playing::kDevice, nullptr, 0, 0, 0, 0) == 0);
    CHECK(play.output.Play(Playing::kDevice, nullptr, 0, 0, 0xFFFFFFFF, 0) == 0);
    CHECK((play.IsStopped() && play.recorder->opened == 0));

    play.output.SetPlayParameters(Playing::kDevice, nullptr, 0, 0, 11025, 0);
    play.output.SetMasterOutputChannels(1);
    CHECK(play.output.Play() == 1);
    REQUIRE(play.IsPrimed());
    CHECK((play.recorder->Format().nSamplesPerSec == 11020 && play.recorder->Format().nBlockAlign == 2));
    play.output.SetMasterOutputChannels(2); // for the next play
    CHECK(play.output.Play(Playing::kDevice, nullptr, 0, 0, 1, 0) == 1);
    CHECK(play.IsPrimed());
    CHECK(play.recorder->Format().nChannels == 2);
    CHECK((play.recorder->opened == 2 && play.recorder->closed == 1)); // the first one was ended
}

TEST_CASE("wave output: a device that refuses is told in a box, and does not hold up the host") {
    Playing play;
    MonoWave wave("torv_out_play.wav", Ramp(25, 100));
    play.output.RegisterTrack(&wave.file, 0);
    play.recorder->refuse = true;
    std::mutex mutex;
    std::vector<std::pair<std::string, UINT>> boxes;
    std::atomic<bool> isAnswered = false;
    std::atomic<int> shown = 0;
    auto previous = torv::SetMessageBoxHandler([&](HWND, const char* text, const char*, UINT type) {
        {
            const std::lock_guard lock(mutex);
            boxes.emplace_back(text, type);
        }
        ++shown;
        Await([&isAnswered] { return isAnswered.load(); });
        ++shown;
        return IDOK;
    });
    CHECK(play.output.Play() == 1);
    CHECK(Await([&shown] { return shown == 1; }));
    CHECK(!play.IsStopped());
    play.output.Stop(); // though nobody has answered
    isAnswered = true;
    CHECK(Await([&shown] { return shown == 2; }));
    CHECK(play.output.Play() == 1);
    CHECK(Await([&play] { return play.IsStopped(); }));
    {
        const std::lock_guard lock(mutex);
        REQUIRE(boxes.size() == 2);
        char reason[MAXERRORLENGTH] = "";
        waveOutGetErrorTextA(MMSYSERR_ALLOCATED, reason, sizeof reason);
        CHECK(boxes[1].first == "Cannot output waves (" + std::string(reason) + ")");
        CHECK((boxes[1].second & MB_ICONSTOP) == MB_ICONSTOP);
    }
    CHECK(play.window.Take().empty());
    torv::SetMessageBoxHandler(std::move(previous));
    play.recorder->refuse = false;
    CHECK(play.output.Play() == 1);
    CHECK(play.IsPrimed());
}

TEST_CASE("wave output: stops in every state, also when nothing comes back, and notifies no end") {
    MonoWave wave("torv_out_play.wav", Ramp(15, 100));
    Playing play;
    play.output.RegisterTrack(&wave.file, 0);
    play.output.Stop();
    for (int turns = -1; turns < 6; ++turns) { // from the opening through mixing and draining to the end
        CAPTURE(turns);
        wave.file.SeekPlayPointer(0, 0);
        play.output.SetPlayParameters(Playing::kDevice, &play.window, kHostMessage, kPositionCode, 100, 0);
        REQUIRE(play.output.Play() == 1);
        if (turns >= 0)
            CHECK(play.IsPrimed());
        for (int i = 0; i < turns; ++i)
            play.Turn();
        const DWORD begin = timeGetTime();
        play.output.Stop();
        CHECK(timeGetTime() - begin < 2000);
        CHECK(play.IsStopped());
        CHECK(play.recorder->opened == play.recorder->closed);
        const auto posted = play.window.Take();
        const bool isEndPosted =
            std::any_of(posted.begin(), posted.end(), [](const auto& message) { return message.first == kEndCode; });
        CHECK(isEndPosted == (turns == 5));
    }
}

TEST_CASE("wave output: a rewind at the end's notification is heard in the next play") {
    Playing play;
    MonoWave wave("torv_out_play.wav", Ramp(15, 100));
    play.output.RegisterTrack(&wave.file, 0);
    std::atomic<bool> isClosing = false;
    std::atomic<bool> mayClose = false;
    play.recorder->resetHook = [&] { // between the end's notification and the thread's leaving
        isClosing = true;
        Await([&mayClose] { return mayClose.load(); });
    };
    REQUIRE(play.output.Play() == 1);
    REQUIRE(play.IsPrimed());
    while (play.recorder->Finish(1) == 1)
        Await([&] { return play.recorder->Queued() == 2 || isClosing; });
    REQUIRE(isClosing);
    CHECK(play.window.Take().back() == std::pair<WPARAM, LPARAM>(kEndCode, 150));
    CHECK(play.output.SeekPlayPointer(5, 0) == 0);
    mayClose = true;
    REQUIRE(play.output.Play() == 1);
    REQUIRE(play.IsPrimed());
    play.TurnToEnd();
    const auto left = play.Left();
    CHECK(std::count(left.begin(), left.end(), SHORT{1500}) == 2);
    CHECK(std::count(left.begin(), left.end(), SHORT{500}) == 1);
}

TEST_CASE("wave output: a play belongs to its object and ends with it") {
    MonoWave wave("torv_out_play.wav", Ramp(15, 100));
    WaveRecorderInList recorder;
    {
        CWaveOut original;
        original.RegisterTrack(&wave.file, 0);
        CHECK(original.Play(Playing::kDevice, nullptr, 0, 0, 10, 1) == 1);
        CHECK(Await([&recorder] { return recorder->Queued() == 2; }));
        {
            CWaveOut copy(original);
            CHECK((copy.IsWaveOutStopped() && copy.GetTrack(0) == &wave.file));
            original = copy;
            copy.Stop();
        }
        CHECK(!original.IsWaveOutStopped());
        CHECK(recorder->closed == 0);
    }
    CHECK((recorder->opened == 1 && recorder->closed == 1));
}

TEST_CASE("wave output: settings take effect with the next block, and meters move under the master mute") {
    Playing play;
    MonoWave half("torv_out_half.wav", std::vector<SHORT>(200, 16384));
    MonoWave quarter("torv_out_quarter.wav", std::vector<SHORT>(200, 8192));
    HostWindow left;
    play.output.SetLevelNotify(&left, nullptr, kHostMessage, 9, 10); // a peak each block
    play.output.RegisterTrack(&half.file, 0);
    play.output.RegisterTrack(&quarter.file, 1);
    REQUIRE(play.output.Play() == 1);
    REQUIRE(play.IsPrimed());
    const std::pair<std::function<void()>, SHORT> steps[] = {
        {[] {}, SHORT{24576}},
        {[&] { play.output.SetMute(1); }, SHORT{0}},
        {[&] { play.output.SetMute(0), play.output.SetMasterVolume(0.5); }, SHORT{12288}},
        {[&] { play.output.SetMasterPanpot(1.0); }, SHORT{0}},
        {[&] { play.output.SetMasterVolume(1.0, 0.0), play.output.SetRouting(0, torv::kReWireRoute); }, SHORT{8192}},
        {[&] { quarter.file.SetVolume(3.0); }, SHORT{24576}},
        {[&] { play.output.SetOutputDeviseType(torv::kSilentDevice); }, SHORT{0}},
        {[&] { play.output.SetOutputDeviseType(0), play.output.UnregisterTrack(1); }, SHORT{0}},
        {[&] { play.output.SetRouting(0, torv::kDeviceRoute); }, SHORT{16384}}};
    std::vector<SHORT> expected;
    for (const auto& [change, value] : steps) {
        change();
        play.Turn();
        expected.insert(expected.end(), 10, value);
    }
    play.recorder->Finish(2);
    CHECK(play.Left() == expected);
    play.output.Stop();
    const LPARAM full = 32767;
    const HostWindow::Posted peaks{{9, full * 3 / 4},
                                   {9, full * 3 / 4},
                                   {9, full * 3 / 8},
                                   {9, 0},
                                   {9, full / 4},
                                   {9, full * 3 / 4},
                                   {9, 0},
                                   {9, 0},
                                   {9, full / 2}};
    auto posted = left.Take();
    posted.resize(peaks.size()); // another block may have been mixed
    CHECK(posted == peaks);
}

TEST_CASE("wave output: what goes while it plays") {
    Playing play;
    MonoWave wave("torv_out_play.wav", Ramp(40, 100));
    {
        MonoWave gone("torv_out_gone.wav", Ramp(40, 1000)); // the master track
        HostWindow brief;
        play.output.SetPlayParameters(Playing::kDevice, &brief, kHostMessage, kPositionCode, 100, 0);
        play.output.RegisterTrack(&gone.file, 0);
        play.output.RegisterTrack(&wave.file, 1);
        REQUIRE(play.output.Play() == 1);
        REQUIRE(play.IsPrimed());
        play.Turn();
        play.output.UnregisterTrack(0);
    }
    CHECK(play.output.SeekPlayPointer(30, 0) == 0);
    CHECK(play.output.SeekPlayPointer(-1, 1) == 1);
    CHECK(play.output.AudioMixDown("torv_out_never.wav", nullptr, 0) == 0);
#if !defined(_WIN32)
    play.recorder->Claim(99); // a block that was never there
#endif
    play.TurnToEnd();
    CHECK(play.IsStopped());
    const auto left = play.Left();
    REQUIRE(left.size() >= 30);
    CHECK(left[0] == 1100);
    CHECK(left[10] == 3000); // frame 29
    CHECK(left[20] == 4000);
    CHECK(left[21] == 0);
}

#if !defined(_WIN32)

namespace {

/// A device that gives blocks back at once, so that a play runs as fast as it is mixed. Watches that thread's
/// allocations from the third block on.
class Racer : public torv::WaveOutDevice {
public:
    const char* Name() const override { return "Racer"; }
    bool Plays(const WAVEFORMATEX&) const override { return true; }
    std::unique_ptr<torv::WaveOutStream> Open(const WAVEFORMATEX&, torv::WaveOutListener& listener) override {
        count = 0;
        blocks = 0;
        return std::make_unique<Stream>(*this, listener);
    }

    std::vector<BYTE> played = std::vector<BYTE>(4000000);
    size_t count = 0;
    std::atomic<int> blocks = 0;

private:
    struct Stream : torv::WaveOutStream {
        Stream(Racer& owner, torv::WaveOutListener& heard) : racer(owner), listener(heard) {}
        void Write(const torv::WaveBlock& block) override {
            const size_t bytes = std::min<size_t>(block.count, racer.played.size() - racer.count);
            std::copy_n(block.bytes, bytes, racer.played.begin() + static_cast<std::ptrdiff_t>(racer.count));
            racer.count += bytes;
            if (++racer.blocks == 3)
                allocation_counter::WatchThisThread();
            listener.BlockDone(block.number);
        }
        void Pause() override {}
        void Restart() override {}
        void Reset() override { allocation_counter::WatchThisThread(false); }

        Racer& racer;
        torv::WaveOutListener& listener;
    };
};

struct RacerInList {
    RacerInList() { torv::AddWaveOutDevice(racer); }
    RacerInList(const RacerInList&) = delete;
    RacerInList& operator=(const RacerInList&) = delete;
    ~RacerInList() { torv::RemoveWaveOutDevice(racer.get()); }
    const std::shared_ptr<Racer> racer = std::make_shared<Racer>();
};

} // namespace

TEST_CASE("wave output: what is played is what is mixed down, block by block without allocating") {
    const RacerInList list;
    MonoWave first("torv_out_1.wav", Ramp(100000, 7));
    MonoWave second("torv_out_2.wav", Ramp(70000, -11));
    const ScratchPath path("torv_out_mix.wav");
    tagMixDownTrack tracks[] = {{500, 90000, -9.5F, -0.4F, &first.file}, {0, 0, -13, 0.7F, &second.file}};
    CWaveOut output;
    output.SetMasterVolume(0.8, 0.1);
    REQUIRE(output.AudioMixDown(path.Text(), tracks, 2) == 1);
    const double peak = output.GetPeakLevel();

    output.RegisterTrack(&first.file, 3);
    output.RegisterTrack(&second.file, 1);
    output.SeekPlayPointer(0, 0);
    allocation_counter::Take();
    REQUIRE(output.Play("racer", nullptr, 0, 0, 4410, 0) == 1);
    REQUIRE(Await([&output] { return output.IsWaveOutStopped() != 0; }));
    CHECK(allocation_counter::Take() == 0);
    CHECK(output.GetPeakLevel() == peak);
    const Bytes mixed = path.Content();
    REQUIRE(mixed.size() >= 44 + 89500 * 4);
    CHECK(list.racer->count >= 8 + 89500 * 4);
    CHECK(std::equal(mixed.begin() + 44, mixed.begin() + 44 + 89500 * 4, list.racer->played.begin() + 8));
}

TEST_CASE("wave output: the host turns every knob while it plays") {
    const RacerInList list;
    MonoWave steady("torv_out_1.wav", Ramp(30000, 7));
    MonoWave guest("torv_out_2.wav", Ramp(30000, -11));
    HostWindow window;
    CWaveOut output;
    output.RegisterTrack(&steady.file, 0);
    REQUIRE(output.Play("RACER", &window, kHostMessage, kPositionCode, 441, 1) == 1);
    for (int i = 0; i < 300; ++i) {
        output.SetMasterVolume(0.01 * i, i % 3 - 1);
        output.SetMute(i % 2);
        output.SetRouting(0, i % 2);
        output.SetOutputDeviseType(i % 5);
        output.SetLevelNotify(&window, i % 2 ? &window : nullptr, kHostMessage, 3, 1000);
        output.SetPlayEndNortify(static_cast<WORD>(i));
        output.SetMessageWait(i % 7);
        output.SetPlayRewireMode(i % 2);
        output.SeekPlayPointer(i * 10, i % 2);
        steady.file.SetAmplitudes(0.01 * i, 0.02 * i, 0);
        steady.file.SetMute(i % 2);
        const CWaveOut copy(output);
        guest.file.SeekPlayPointer(i, 0); // ours again
        output.RegisterTrack(&guest.file, 1);
        const int blocks = list.racer->blocks;
        Await([&] { return list.racer->blocks > blocks + 1; });
        output.UnregisterTrack(1);
        window.Take();
    }
    CHECK(!output.IsWaveOutStopped());
    output.Stop();
    CHECK(output.IsWaveOutStopped());
}

#endif
