#pragma once

#include "audio/wave_test_files.h"
#include "platform/begun_thread.h"
#include "synthesis/driver.h"
#include "values.h"
#include "wave_recorder.h"

#include <algorithm>
#include <array>
#include <functional>

/// From sample `from` on.
inline Shorts From(const Shorts& samples, size_t from) {
    return {samples.begin() + static_cast<std::ptrdiff_t>(std::min(from, samples.size())), samples.end()};
}

/// A play with a device, a host's window and message boxes in the test's hand. The test's thread is the host's.
struct Play {
    static constexpr UINT kMessage = WM_USER + 7;
    static constexpr int kBegins = 4;
    static constexpr int kPosition = 3;
    static constexpr int kEnd = 9;
    struct Told {
        int code;
        int milliseconds;
        bool operator==(const Told&) const = default;
    };

    explicit Play(int tracks = 1, DWORD rate = 44100) : trackCount(tracks), sampleRate(rate), window(NewWindow()) {
        previousBox = torv::SetMessageBoxHandler([this](HWND owner, const char* text, const char*, UINT type) {
            const std::string shown = owner == nullptr && type == (MB_OK | MB_ICONSTOP) ? text : "wrong kind of box";
            box += shown + ";";
            boxes = boxes + 1;
            if (atBox)
                atBox();
            return IDOK;
        });
        REQUIRE(driver.OpenSynthesizer() == 1);
        for (int i = 0; i < tracks; ++i)
            REQUIRE(streams[static_cast<size_t>(i)].Create(1, 0, 0) == 1);
        SetUp();
    }
    /// Whatever a play met, it leaves neither an instance nor an open device.
    ~Play() {
        driver.RTS_StopSynthesis();
        torv::SetMessageBoxHandler(previousBox);
        DestroyWindow(window.m_hWnd);
        driver.RTS_DeleteRVE(); // of a play that was never heard
        CHECK(device->opened == device->closed);
    }
    Play(const Play&) = delete;
    Play& operator=(const Play&) = delete;

    CString DeviceName() const { return CString(device->Name(), MAXPNAMELEN - 1); }
    /// What a host sets before each play.
    void SetUp(DWORD preroll = 0, int chase = 0, DWORD startDelay = 0) {
        driver.SetPlayParameters(DeviceName(), &window, kMessage, kPosition, sampleRate, 0);
        driver.SetPlayEndNortify(kEnd);
        driver.RTS_SetSynthesisParam(1, trackCount, startDelay, sampleRate, preroll, chase);
        for (int i = 0; i < trackCount; ++i)
            REQUIRE(driver.RTS_SetQuillMidiBuffer(i, &streams[static_cast<size_t>(i)]) == 1);
    }
    /// A note of the fake engine, which sounds at 100 x its velocity.
    void AddNote(int track, LONG begin, LONG end, int velocity) {
        CQuillMidiBuffer& stream = streams[static_cast<size_t>(track)];
        const BYTE on[]{0x90, 60, static_cast<BYTE>(velocity)};
        const BYTE off[]{0x80, 60, 0};
        REQUIRE(stream.AddEvent(1, on, 3, begin) == 1);
        REQUIRE(stream.AddEvent(1, off, 3, end) == 1);
        stream.SetLast(1, static_cast<DWORD>(end));
    }
    void Begin(DWORD start = 0, DWORD end = 0x7FFFFFFF, DWORD position = 0, int loop = 0) {
        driver.RTS_SetPlayParam(start, end, position, loop);
        REQUIRE(driver.RTS_DoSynthesis() == 1);
        REQUIRE(driver.RTS_Play() == 1);
    }

    /// Hears what the window was told; what the host does when it hears something is done at once.
    void Pump() {
        MSG message;
        while (PeekMessageA(&message, window.m_hWnd, kMessage, kMessage, PM_REMOVE)) {
            told.push_back({static_cast<int>(message.wParam), static_cast<int>(message.lParam)});
            if (atNotification)
                atNotification(told.back());
        }
    }
    /// Until it is so; meanwhile the device plays as fast as it is given something, if asked to.
    bool Await(const std::function<bool()>& isSo, bool devicePlays = true) {
        for (const DWORD begin = timeGetTime(); timeGetTime() - begin < 60000;) {
            Pump();
            if (isSo())
                return true;
            if (!devicePlays || device->Finish(1) == 0)
                Sleep(1);
        }
        return false;
    }
    bool IsOver() const { return !told.empty() && told.back().code == kEnd; }
    bool AwaitEnd() {
        return Await([this] { return IsOver(); });
    }
    /// Until both of the device's buffers are there.
    bool AwaitOutput() {
        return Await([this] { return device->Queued() == 2; }, false);
    }
    auto HowOften(int code) const {
        return std::count_if(told.begin(), told.end(), [code](const Told& one) { return one.code == code; });
    }
    /// One side of what was played.
    Shorts Heard(size_t side = 0) const {
        const Shorts both = ShortsIn(device->Played());
        Shorts samples;
        for (size_t at = side; at < both.size(); at += 2)
            samples.push_back(both[at]);
        return samples;
    }
    /// What the track gives offline.
    Shorts Offline(int track = 0) {
        const Scratch path(MonoFile(""));
        CWaveFile file(path.Text());
        Driver offline;
        offline.SetMasterOutputChannels(1);
        REQUIRE(offline.OpenSynthesizer() == 1);
        REQUIRE(offline.DoSynthesis(&streams[static_cast<size_t>(track)], &file, sampleRate) == 1);
        return ShortsIn(path.Get(), 44);
    }

    const int trackCount;
    const DWORD sampleRate;
    FakeEngine engine;
    WaveRecorderInList device;
    CWnd window;
    std::array<CQuillMidiBuffer, 2> streams;
    std::vector<Told> told;
    std::function<void(const Told&)> atNotification;
    std::function<void()> atBox; ///< on the thread that shows it
    std::string box;             ///< to be read when `boxes` has counted
    torv::Shared<int> boxes = 0;
    torv::MessageBoxHandler previousBox;
    Driver driver; // the first to go: its threads use the rest
};

/// The longer one's part beyond the shorter must be silence.
inline bool AreSameSound(Shorts a, Shorts b) {
    const size_t size = std::max(a.size(), b.size());
    a.resize(size);
    b.resize(size);
    return a == b;
}
