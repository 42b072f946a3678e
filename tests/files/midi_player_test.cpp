#include "files/midi_song.h"

#include "allocation_counter.h"
#include "midi_recorder.h"
#include "torv/files/midi_player.h"
#include "values.h"

#include <doctest/doctest.h>

namespace {

void Add(Bytes& track, BYTE delta, const Bytes& event) {
    track.push_back(delta);
    track.insert(track.end(), event.begin(), event.end());
}

const Bytes kEnd{0xFF, 0x2F, 0x00};

torv::MidiPlayer& ThePlayer() { return torv::MidiPlayer::TheOne(); }

/// Notes 0, 1, 2 ... 127, 0 ... one every `delta` ticks, the first at once.
Bytes Notes(int count, BYTE delta, BYTE status = 0x90) {
    Bytes track;
    for (int i = 0; i < count; ++i)
        Add(track, i ? delta : 0, {status, static_cast<BYTE>(i & 0x7F), 0x40});
    Add(track, delta, kEnd);
    return track;
}

} // namespace

TEST_CASE("midi player: a device that is not there") {
    MidiSong song({Notes(3, 24)});
    CxMidiSequence::ChangeMidiDeviseID(midiOutGetNumDevs());
    CHECK(song.StartPlay(nullptr) == 0);
    CHECK(ThePlayer().Result() != MMSYSERR_NOERROR);
    CHECK(song.IsPlaying() == 0);
    CHECK(Values{CxMidiSequence::OutMidiMessage(0x403C90, nullptr), CxMidiSequence::OutAllNoteOff()} == "0 0");
    song.StopPlay();
    CxMidiSequence::ChangeMidiDeviseID(static_cast<UINT>(-1));
    tagEvent event;
    CHECK(Values{song.GetEvent(&event), int{event.data1}} == "1 0"); // nothing was taken
}

#if !defined(_WIN32)
namespace {

/// Time in the test's hand: it goes by a timer's period at a time, on the test's own thread.
class HandClock : public torv::MidiClock {
public:
    HandClock() : m_before(ThePlayer().ChangeClock(this)) {}
    ~HandClock() override { ThePlayer().ChangeClock(m_before); }
    DWORD Now() override { return m_now; }
    UINT Start(UINT& period, LPTIMECALLBACK callback, DWORD_PTR user) override {
        if (refuses)
            return 0;
        m_callback = callback;
        m_period = period;
        m_user = user;
        return 7;
    }
    MMRESULT Stop(UINT timer) override {
        m_callback = nullptr;
        return timer == 7 ? TIMERR_NOERROR : TIMERR_NOCANDO;
    }
    void Advance(DWORD milliseconds) {
        for (; milliseconds >= m_period; milliseconds -= m_period) {
            m_now += m_period;
            if (m_callback)
                m_callback(7, 0, m_user, 0, 0);
        }
    }

    bool refuses = false;

private:
    torv::MidiClock* const m_before;
    LPTIMECALLBACK m_callback = nullptr;
    DWORD_PTR m_user = 0;
    DWORD m_period = 10;
    DWORD m_now = 0xFFFFFF80; // soon it wraps
};

/// {code, number} of each message that a window has been told.
using Told = std::vector<std::pair<WPARAM, DWORD>>;

class Window {
public:
    ~Window() { DestroyWindow(m_window); }
    operator HWND() const { return m_window; }
    Told Take() const {
        Told messages;
        MSG message{};
        while (PeekMessageA(&message, m_window, torv::kMidiPlayMessage, torv::kMidiPlayMessage, PM_REMOVE))
            messages.emplace_back(message.wParam, static_cast<DWORD>(message.lParam));
        return messages;
    }

private:
    const HWND m_window = CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
};

/// What is left of them without the sixteen all-notes-off messages at their end.
std::vector<MidiRecorder::Message> WithoutSilence(std::vector<MidiRecorder::Message> messages) {
    for (DWORD channel = 16; channel-- > 0; messages.pop_back()) {
        REQUIRE_FALSE(messages.empty());
        REQUIRE(messages.back().bytes == (0x007BB0 | channel));
    }
    return messages;
}

void AwaitDevice() {
    while (ThePlayer().IsSendingLongMessage())
        Sleep(0);
}

} // namespace

TEST_CASE("midi player: events at their times, and the window is told") {
    const RecorderInList recorder;
    const Window window;
    HandClock clock;
    const Bytes conductor{0x00, 0xFF, 0x58, 0x04, 0x06, 0x03, 0x24, 0x08,
                          0x83, 0x60, 0xFF, 0x51, 0x03, 0x03, 0xD0, 0x90, // 250000: twice as fast from 500 ms on
                          0x00, 0xFF, 0x2F, 0x00};
    MidiSong song({conductor, Notes(60, 24), Notes(60, 24)});
    clock.refuses = true;
    CHECK(Values{song.StartPlay(window), ThePlayer().Result()} == Values(0, TIMERR_NOCANDO));
    CHECK(recorder->opened == recorder->closed);
    clock.refuses = false;
    REQUIRE(song.StartPlay(window) == 1);
    CHECK(Values{song.StartPlay(window), MidiSong().StartPlay(nullptr)} == "0 0"); // nor any other
    DWORD time = 0;
    // One every 25 ms; then 250 x 24 = 6000 = 12 ms and 240 over, a thousand of which make one more: 12, 24, 36,
    // 48, 61.
    for (const auto& [until, notes] : std::vector<std::pair<DWORD, size_t>>{
             {10, 1}, {20, 1}, {30, 2}, {500, 21}, {510, 21}, {520, 22}, {560, 25}, {570, 26}, {970, 59}, {980, 60}}) {
        clock.Advance(until - time);
        time = until;
        CAPTURE(time);
        CHECK(recorder->Messages().size() == 2 * notes);
    }
    clock.Advance(100);
    Told told{{4, 0x08240306}};
    for (DWORD at = 100; at < 1000; at += 100) {
        if (at == 500)
            told.emplace_back(3, 250000);
        told.emplace_back(2, at);
    }
    told.emplace_back(1, 990); // at 989, and no position with it
    CHECK(window.Take() == told);
    CHECK(Values(song.IsPlaying(), song.GetSequenceTime(), ThePlayer().Timer()) == "1 990 0"); // until it is stopped
    CHECK(recorder->closed == recorder->opened - 1);
    song.StopPlay();
    CHECK(song.IsPlaying() == 0);
    const auto messages = WithoutSilence(recorder->Messages());
    for (size_t i = 0; i < messages.size(); ++i)
        CHECK(messages[i].bytes == (0x400090 | (i / 2) << 8));
    CHECK(Values{CxMidiSequence::OutMidiMessage(0x403C90, nullptr), CxMidiSequence::OutAllNoteOff()} == "1 1");
    CHECK(recorder->closed == recorder->opened);
}

TEST_CASE("midi player: a rewind and a mute hold while it plays, for which the timer's callback does not allocate") {
    const RecorderInList recorder;
    HandClock clock;
    MidiSong song({Notes(200, 24), Notes(200, 24, 0x95)});
    recorder->shortHook = [] { allocation_counter::WatchThisThread(); };
    REQUIRE(song.StartPlay(nullptr) == 1);
    const auto playedIn100 = [&] {
        recorder->Clear();
        allocation_counter::Take();
        clock.Advance(100);
        CHECK(allocation_counter::Take() == 0);
        return recorder->Messages().size();
    };
    CHECK(playedIn100() == 10); // 0, 25 .. 100 of each
    song.SetMute(0, 1);
    CHECK(playedIn100() == 5); // the other's, and the one's that was due next
    song.SeekToBegin();
    CHECK(Values{song.GetSequenceTime(), playedIn100(), recorder->Messages()[0].bytes} == Values(0, 5, 0x400095));
    song.StopPlay();
}

TEST_CASE("midi player: long messages go out in pieces, and nothing between them") {
    const RecorderInList recorder;
    HandClock clock;
    Bytes expected{0xF0};
    for (int i = 0; i < 150000; ++i)
        expected.push_back(static_cast<BYTE>(i % 127));
    Bytes track{0x00, 0xF0, 0x89, 0x93, 0x70}; // 9 x 2^14 + 19 x 2^7 + 112 = 150000
    track.insert(track.end(), expected.begin() + 1, expected.end());
    Add(track, 0, {0x90, 0x3C, 0x40});
    Add(track, 0, {0xF7, 0x00}); // nothing to send, nothing to wait for
    Add(track, 0, {0xF7, 0x03, 0xF2, 0x01, 0x02});
    Add(track, 0, {0xF0, 0x00});
    expected.insert(expected.end(), {0xF2, 0x01, 0x02, 0xF0});
    Add(track, 0, {0x80, 0x3C, 0x40});
    Add(track, 127, kEnd);
    MidiSong song({track});

    recorder->hold = true;
    REQUIRE(song.StartPlay(nullptr) == 1);
    clock.Advance(50);
    REQUIRE(recorder->Await(1));
    CHECK(Values(recorder->Messages().size(), song.GetSequenceTime()) == "1 10"); // the device has not done with it
    recorder->hold = false;
    AwaitDevice();
    clock.Advance(10);
    CHECK(song.GetSequenceTime() == 60); // the time that it waited is made up for
    for (int i = 0; i < 10; ++i) {
        AwaitDevice();
        clock.Advance(10);
    }
    song.StopPlay();
    const auto messages = WithoutSilence(recorder->Messages());
    const std::pair<bool, DWORD> order[] = {
        {true, 65536}, {true, 65536}, {true, 150001 - 2 * 65536}, {false, 3}, {true, 3}, {true, 1}, {false, 3}};
    REQUIRE(messages.size() == std::size(order));
    for (size_t i = 0; i < messages.size(); ++i) {
        CHECK(Values(messages[i].isLong, messages[i].length) == Values(order[i].first, order[i].second));
    }
    CHECK(recorder->LongBytes() == expected);

    // Stopped within, its rest is dropped.
    song.SeekToBegin();
    REQUIRE(song.StartPlay(nullptr) == 1);
    clock.Advance(10);
    AwaitDevice();
    song.StopPlay();
    recorder->Clear();
    REQUIRE(song.StartPlay(nullptr) == 1);
    clock.Advance(10);
    CHECK(recorder->Messages()[0].bytes == 0x403C90);
    song.StopPlay();
    CHECK(recorder->opened == recorder->closed);

    // Refused by a device that is gone, nothing is waited for.
    song.SeekToBegin();
    REQUIRE(song.StartPlay(nullptr) == 1);
    midiOutClose(ThePlayer().Device());
    clock.Advance(200);
    CHECK(Values(ThePlayer().IsSendingLongMessage(), song.GetSequenceTime(), ThePlayer().Timer()) == "0 140 0");
    song.StopPlay();
}

TEST_CASE("midi player: stopping leaves no note sounding, and playing on loses none") {
    const RecorderInList recorder;
    HandClock clock;
    MidiSong song({Notes(300, 3)}); // 3.1 ms a note
    std::vector<DWORD> keys;
    for (DWORD run = 0; keys.size() < 300 && run < 1000; ++run) {
        recorder->Clear();
        REQUIRE(song.StartPlay(nullptr) == 1);
        clock.Advance(run % 4 * 10);
        song.StopPlay();
        clock.Advance(20);
        for (const auto& message : WithoutSilence(recorder->Messages()))
            keys.push_back(message.bytes >> 8 & 0x7F);
    }
    REQUIRE(keys.size() == 300);
    for (size_t i = 0; i < keys.size(); ++i)
        REQUIRE(keys[i] == (i & 0x7F));
    recorder->Clear();
    song.StopPlay(); // once more: it just silences the device
    CHECK(recorder->Messages().size() == 16);
    CHECK(recorder->opened == recorder->closed);
}

TEST_CASE("midi player: what drops the tracks of a playing sequence stops it first") {
    const RecorderInList recorder;
    HandClock clock;
    void (*const drops[])(std::unique_ptr<MidiSong>&) = {
        [](auto& song) { song.reset(); },
        [](auto& song) { song->CleanUp(); },
        [](auto& song) { song->PrepareTrackList(1, 1, 480); },
    };
    for (const auto drop : drops) {
        auto song = std::make_unique<MidiSong>(std::vector<Bytes>{Notes(500, 1)});
        recorder->Clear();
        REQUIRE(song->StartPlay(nullptr) == 1);
        clock.Advance(10);
        MidiSong().CleanUp(); // another one's end is nothing to it
        CHECK(song->IsPlaying() == 1);
        drop(song);
        clock.Advance(10);
        CHECK(MidiSong().IsPlaying() == 0);
        WithoutSilence(recorder->Messages());
        CHECK(recorder->opened == recorder->closed);
    }
}

TEST_CASE("midi player: nothing to play, a malformed track and a time that stands still end at once") {
    const RecorderInList recorder;
    const Window window;
    HandClock clock;
    MidiSong songs[] = {MidiSong(), MidiSong({{0x00, 0x90, 0x3C, 0x40, 0x00, 0xF4, 0x00, 0x00}}),
                        MidiSong({Notes(300, 100)}, 0)};
    const size_t sent[] = {0, 1, 300};
    for (size_t i = 0; i < 3; ++i) {
        recorder->Clear();
        REQUIRE(songs[i].StartPlay(window) == 1);
        clock.Advance(10);
        CHECK(window.Take() == Told{{1, 10}});
        songs[i].StopPlay();
        CHECK(WithoutSilence(recorder->Messages()).size() == sent[i]);
    }
}

TEST_CASE("midi player: on the system's own timer, while the host does what it may") {
    const RecorderInList recorder;
    MidiSong song({Notes(2000, 1), Notes(2000, 1)}, 5000); // 0.1 ms a note
    for (int i = 0; i < 20; ++i) {
        recorder->Clear();
        REQUIRE(song.StartPlay(nullptr) == 1);
        song.SetMute(1, i % 2);
        song.SetMessageFilter(0x80, i % 3);
        song.SetChannelFilter(static_cast<WORD>(0xFFFE | i % 2));
        if (i % 5 == 0)
            song.SeekToBegin();
        song.StopPlay();
        WithoutSilence(recorder->Messages());
        CHECK(song.IsPlaying() == 0);
    }
    song.SetChannelFilter(0xFFFF);
    REQUIRE(song.StartPlay(nullptr) == 1);
    CHECK(recorder->Await(1));
    song.StopPlay();
    CHECK(recorder->opened == recorder->closed);
    CHECK(Values(ThePlayer().Device(), ThePlayer().Timer()) == "0 0");
}
#endif
