#include "torv/files/midi_sequence.h"

#include "allocation_counter.h"
#include "midi_recorder.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

void AddVariableLength(Bytes& track, DWORD value) {
    for (int shift = 21; shift > 0; shift -= 7)
        if (value >> shift)
            track.push_back(static_cast<BYTE>(0x80 | (value >> shift)));
    track.push_back(value & 0x7F);
}

void Add(Bytes& track, DWORD delta, const Bytes& event) {
    AddVariableLength(track, delta);
    track.insert(track.end(), event.begin(), event.end());
}

const Bytes kEnd{0xFF, 0x2F, 0x00};

struct SongBytes {
    std::vector<Bytes> tracks;
};

/// A sequence with the bytes that it reads, which outlive it. At 480 ticks and the tempo as it is at first, 24 ticks
/// are 25 ms.
struct Player : SongBytes, CxMidiSequence {
    explicit Player(std::vector<Bytes> bytes = {}, DWORD division = 480) : SongBytes{std::move(bytes)} {
        Create(0, 0);
        PrepareTrackList(1, static_cast<DWORD>(tracks.size()), division);
        for (const auto& track : tracks)
            AddNewTrack(track.data(), static_cast<DWORD>(track.size()));
    }

    static MMRESULT Result() { return m_MMResult; }
    static HMIDIOUT Device() { return m_hMidiOut; }
    static UINT Timer() { return m_nTimerID; }
    static UINT ChangeInterval(UINT interval) { return std::exchange(m_nWndCallbackInterval, interval); }
};

/// Notes 0, 1, 2 ... 127, 0 ... one every `delta` ticks, the first at once.
Bytes Notes(int count, DWORD delta) {
    Bytes track;
    for (int i = 0; i < count; ++i)
        Add(track, i ? delta : 0, {0x90, static_cast<BYTE>(i & 0x7F), 0x40});
    Add(track, delta, kEnd);
    return track;
}

} // namespace

TEST_CASE("midi player: a device that is not there") {
    Player song({Notes(3, 24)});
    CxMidiSequence::ChangeMidiDeviseID(midiOutGetNumDevs());
    CHECK(song.StartPlay(nullptr) == 0);
    CHECK(Player::Result() != MMSYSERR_NOERROR);
    CHECK(song.IsPlaying() == 0);
    CHECK(CxMidiSequence::OutMidiMessage(0x403C90, nullptr) == 0);
    CHECK(CxMidiSequence::OutAllNoteOff() == 0);
    song.StopPlay();
    song.StopPlay();
    CxMidiSequence::ChangeMidiDeviseID(static_cast<UINT>(-1));
    if (midiOutGetNumDevs() == 0)
        CHECK(song.StartPlay(nullptr) == 0);
    tagEvent event;
    CHECK(song.GetEvent(&event) == 1); // nothing was taken
    CHECK(event.data1 == 0);
}

#if !defined(_WIN32)
namespace {

using Told = std::vector<std::pair<WPARAM, DWORD>>; // {code, number} of each message

class Window {
public:
    ~Window() { DestroyWindow(m_window); }
    operator HWND() const { return m_window; }

    /// Appends what has arrived.
    void Take(Told& messages) const {
        MSG message{};
        while (PeekMessageA(&message, m_window, torv::kMidiPlayMessage, torv::kMidiPlayMessage, PM_REMOVE))
            messages.emplace_back(message.wParam, static_cast<DWORD>(message.lParam));
    }
    /// All messages up to the end message, five seconds at most.
    Told UntilEnd() const {
        Told messages;
        for (int i = 0; i < 5000; ++i) {
            Take(messages);
            if (!messages.empty() && messages.back().first == torv::kMidiPlayEnd)
                break;
            Sleep(1);
        }
        return messages;
    }

private:
    const HWND m_window = CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
};

double Milliseconds(MidiRecorder::Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

/// Takes the sixteen all-notes-off messages, in order, from the end.
bool TakeSilence(std::vector<MidiRecorder::Message>& messages) {
    for (DWORD channel = 16; channel-- > 0; messages.pop_back())
        if (messages.empty() || messages.back().bytes != (0x007BB0 | channel))
            return false;
    return true;
}

size_t Threads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<size_t>(std::distance(begin(tasks), end(tasks)));
}

} // namespace

TEST_CASE("midi player: events in order and near their times, and the window is told") {
    const RecorderInList recorder;
    const Window window;
    Bytes conductor;
    Add(conductor, 0, {0xFF, 0x58, 0x04, 0x06, 0x03, 0x24, 0x08});
    Add(conductor, 480, {0xFF, 0x51, 0x03, 0x03, 0xD0, 0x90}); // 250000: twice as fast from 500 ms on
    Add(conductor, 0, kEnd);
    Player song({conductor, Notes(60, 24), Notes(60, 24)});
    // Two and a half ticks: positions come after two and after three of them.
    CHECK(Player::ChangeInterval(25) == 100);
    const auto start = MidiRecorder::Clock::now();
    REQUIRE(song.StartPlay(window) == 1);
    CHECK(song.StartPlay(window) == 0);
    CHECK(Player().StartPlay(nullptr) == 0); // nor any other
    CHECK(song.IsPlaying() == 1);
    const auto told = window.UntilEnd();

    Player::ChangeInterval(100);
    CHECK(song.IsPlaying() == 1); // until it is stopped
    CHECK(Player::Timer() == 0);
    CHECK(recorder->closed == 0);
    CHECK(song.GetTimePosition() == 989); // 500, and 40 steps as below
    CHECK(song.GetSequenceTime() >= 989);
    song.StopPlay();
    CHECK(song.IsPlaying() == 0);
    CHECK(recorder->closed == 1);
    auto messages = recorder->Messages();
    CHECK(TakeSilence(messages));
    REQUIRE(messages.size() == 120);
    std::vector<double> late;
    for (size_t i = 0; i < messages.size(); ++i) {
        const size_t step = i / 2;
        CHECK(messages[i].bytes == (0x400090 | step << 8));
        // 250 x 24 = 6000 = 12 ms and 240 over, a thousand of which make one more.
        const size_t due = step <= 20 ? 25 * step : 500 + 12 * (step - 20) + 240 * (step - 20) / 1000;
        late.push_back(Milliseconds(messages[i].time - start) - static_cast<double>(due));
    }
    std::sort(late.begin(), late.end());
    CHECK(late.front() > -2);          // the clock counts whole ones
    CHECK(late[late.size() / 2] < 40); // 15 on a machine with nothing else to do

    std::vector<DWORD> positions;
    Told others;
    for (const auto& [code, number] : told)
        if (code == 2)
            positions.push_back(number);
        else
            others.emplace_back(code, number);
    REQUIRE(others.size() == 3);
    CHECK(others[0] == std::pair<WPARAM, DWORD>(4, 0x08240306));
    CHECK(others[1] == std::pair<WPARAM, DWORD>(3, 250000));
    CHECK(others[2].first == 1);
    CHECK(others[2].second >= 989);
    CHECK(others[2].second < 3000);
    CHECK(told.back().first == 1);
    CHECK(positions.size() <= 39); // one for every 25 of 989 ms, none with the end
    CHECK(positions.size() >= 35); // what is late is made up for
    for (size_t i = 0; i < positions.size(); ++i)
        CHECK(positions[i] >= (i + 1) * 25);
}

TEST_CASE("midi player: filters and mutes hold while it plays") {
    const RecorderInList recorder;
    Bytes other;
    for (int i = 0; i < 200; ++i)
        Add(other, 5, {0x95, 0x11, 0x40});
    Add(other, 0, kEnd);
    Player song({Notes(200, 5), other, Notes(200, 5)}); // 5 ms a note
    REQUIRE(song.StartPlay(nullptr) == 1);
    REQUIRE(recorder->Await(10));
    song.SetMute(0, 1);
    song.SetMute(2, 1);
    for (int i = 0; i < 20; ++i) { // what the timer looks at meanwhile
        song.SetMessageFilter(0x80, i % 2);
        song.SetChannelFilter(static_cast<WORD>(0xFFFE | i % 2));
        Sleep(1);
    }
    recorder->Clear();
    CHECK(song.GetTimePosition() >= 10);
    CHECK(song.GetSequenceTempo() == 500000);
    REQUIRE(recorder->Await(10));
    const DWORD before = song.GetSequenceTime();
    song.SeekToBegin();
    CHECK(song.GetSequenceTime() < before); // it plays from the beginning
    song.StopPlay();
    auto messages = recorder->Messages();
    CHECK(TakeSilence(messages));
    CHECK(messages.size() >= 10);
    for (const auto& message : messages)
        CHECK(message.bytes == 0x401195);
}

TEST_CASE("midi player: long messages go out in pieces, and nothing between them") {
    const RecorderInList recorder;
    const Window window;
    Bytes track;
    Bytes expected{0xF0};
    AddVariableLength(track, 0);
    track.push_back(0xF0);
    AddVariableLength(track, 150000);
    for (int i = 0; i < 150000; ++i)
        expected.push_back(static_cast<BYTE>(i % 127));
    track.insert(track.end(), expected.begin() + 1, expected.end());
    Add(track, 0, {0x90, 0x3C, 0x40});
    Add(track, 0, {0xF7, 0x00}); // nothing to send, nothing to wait for
    Add(track, 0, {0xF7, 0x03, 0xF2, 0x01, 0x02});
    expected.insert(expected.end(), {0xF2, 0x01, 0x02});
    Add(track, 0, {0xF0, 0x00});
    expected.push_back(0xF0);
    Add(track, 0, {0x80, 0x3C, 0x40});
    Add(track, 0, kEnd);
    Player song({track});

    recorder->hold = true;
    REQUIRE(song.StartPlay(window) == 1);
    REQUIRE(recorder->Await(1));
    Sleep(50);
    CHECK(recorder->Messages().size() == 1); // the device has not done with it
    const DWORD waiting = song.GetSequenceTime();
    recorder->hold = false;
    const auto told = window.UntilEnd();
    REQUIRE(!told.empty());
    CHECK(told.back().second >= waiting + 30); // the time that it waited was made up for
    song.StopPlay();

    auto messages = recorder->Messages();
    CHECK(TakeSilence(messages));
    const std::pair<bool, DWORD> order[] = {
        {true, 65536}, {true, 65536}, {true, 150001 - 2 * 65536}, {false, 3}, {true, 3}, {true, 1}, {false, 3}};
    REQUIRE(messages.size() == std::size(order));
    for (size_t i = 0; i < messages.size(); ++i) {
        CHECK(messages[i].isLong == order[i].first);
        CHECK(messages[i].length == order[i].second);
    }
    CHECK(recorder->LongBytes() == expected);

    SUBCASE("stopped within, its rest is dropped") {
        recorder->Clear();
        recorder->hold = true;
        song.SeekToBegin();
        REQUIRE(song.StartPlay(window) == 1);
        REQUIRE(recorder->Await(1));
        std::thread release([&] {
            while (Player::Timer())
                Sleep(1);
            Sleep(20); // by now the stop waits for the device
            recorder->hold = false;
        });
        song.StopPlay();
        release.join();
        CHECK(recorder->Messages()[0].isLong);
        recorder->Clear();
        REQUIRE(song.StartPlay(window) == 1);
        REQUIRE(recorder->Await(1));
        CHECK(recorder->Messages()[0].bytes == 0x403C90);
        song.StopPlay();
        CHECK(recorder->opened == recorder->closed);
    }
}

TEST_CASE("midi player: stopping leaves no note sounding, and playing on loses none") {
    const RecorderInList recorder;
    Player song({Notes(2000, 1)}, 5000); // 0.1 ms a note
    std::vector<DWORD> keys;
    for (DWORD run = 0; run < 200 && keys.size() < 2000; ++run) {
        recorder->Clear();
        REQUIRE(song.StartPlay(nullptr) == 1);
        Sleep(run % 30);
        song.StopPlay();
        auto messages = recorder->Messages();
        Sleep(run % 5 * 5);
        CHECK(recorder->Messages().size() == messages.size()); // it has ended for good
        CHECK(TakeSilence(messages));
        for (const auto& message : messages)
            keys.push_back(message.bytes >> 8 & 0x7F);
    }
    REQUIRE(keys.size() == 2000);
    for (size_t i = 0; i < keys.size(); ++i)
        REQUIRE(keys[i] == (i & 0x7F));
    recorder->Clear();
    song.StopPlay(); // once more: it just silences the device
    auto messages = recorder->Messages();
    CHECK(TakeSilence(messages));
    CHECK(messages.empty());
    CHECK(recorder->opened == recorder->closed);
}

TEST_CASE("midi player: a thousand starts leave nothing behind") {
    const RecorderInList recorder;
    Player first({Notes(50, 1)});
    Player second({Notes(50, 1), Notes(3, 7)});
    const size_t threads = Threads();
    for (int i = 0; i < 1000; ++i) {
        Player& song = i % 2 ? first : second;
        song.SeekToBegin();
        REQUIRE(song.StartPlay(nullptr) == 1);
        if (i % 100 == 0)
            Sleep(15);
        if (i % 7 == 0)
            song.SeekToBegin(); // while it plays
        (i % 3 ? song : first).StopPlay();
        REQUIRE(song.IsPlaying() == 0);
    }
    CHECK(recorder->opened == 1000);
    CHECK(recorder->closed == 1000);
    CHECK(Player::Device() == nullptr);
    CHECK(Player::Timer() == 0);
    for (int i = 0; i < 1000 && Threads() > threads; ++i)
        Sleep(1); // the system's own ending of a thread
    CHECK(Threads() == threads);
}

TEST_CASE("midi player: what drops the tracks of a playing sequence stops it first") {
    const RecorderInList recorder;
    const std::function<void(Player&)> drops[] = {
        [](Player&) {}, // its end
        [](Player& song) { song.CleanUp(); },
        [](Player& song) { song.Create(1, 2); },
        [](Player& song) { song.PrepareTrackList(1, 1, 480); },
    };
    for (const auto& drop : drops) {
        auto song = std::make_unique<Player>(std::vector<Bytes>{Notes(500, 1)});
        recorder->Clear();
        REQUIRE(song->StartPlay(nullptr) == 1);
        REQUIRE(recorder->Await(5));
        Player().CleanUp(); // another one's end is nothing to it
        CHECK(song->IsPlaying() == 1);
        drop(*song);
        song.reset();
        CHECK(Player().IsPlaying() == 0);
        auto messages = recorder->Messages();
        CHECK(TakeSilence(messages));
        CHECK(recorder->opened == recorder->closed);
    }
}

TEST_CASE("midi player: nothing to play, a malformed track and a time that stands still") {
    const RecorderInList recorder;
    const Window window;
    Player empty;
    Player broken({{0x00, 0x90, 0x3C, 0x40, 0x00, 0xF4, 0x00, 0x00}});
    Player still({Notes(300, 100)}, 0);
    const std::pair<Player*, size_t> table[] = {{&empty, 0}, {&broken, 1}, {&still, 300}};
    for (const auto& [song, notes] : table) {
        recorder->Clear();
        REQUIRE(song->StartPlay(window) == 1);
        const auto told = window.UntilEnd();
        REQUIRE(told.size() == 1);
        CHECK(told[0].first == 1);
        song->StopPlay();
        CHECK(recorder->Messages().size() == notes + 16);
    }
}

TEST_CASE("midi player: the timer's callback does not allocate") {
    const RecorderInList recorder;
    Player song({Notes(400, 1), Notes(400, 1)});
    recorder->shortHook = [] { allocation_counter::WatchThisThread(); };
    REQUIRE(song.StartPlay(nullptr) == 1);
    REQUIRE(recorder->Await(100));
    song.SetMute(1, 1); // and when the order is made anew
    REQUIRE(recorder->Await(300));
    song.StopPlay();
    CHECK(allocation_counter::Take() == 0);
}
#endif
