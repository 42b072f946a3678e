#include "audio/quill_audio_fixture.h"
#include "platform/begun_thread.h"
#include "torv/platform/wave_header.h"
#include "wave_recorder.h"

#include <functional>
#include <utility>

namespace {

/// The player from within, free and without errors at a test's beginning and end; declared behind the buffers that it
/// plays.
struct Player : CxQuillAudio {
    using CxQuillAudio::m_hWaveOut;
    using CxQuillAudio::m_nStatus;
    using CxQuillAudio::m_stWaveHdr;

    Player() { CHECK(AudioReset() == 1); }
    ~Player() override { CHECK(AudioReset() == 1); }
    static LPARAM Header(int i) { return reinterpret_cast<LPARAM>(&m_stWaveHdr[i]); }
};

/// A window that plays. It notes what it is told beside the state in which it is: "begun/1", "back0/1", "over/0",
/// "failed/-1", and hands blocks on.
struct Owner {
    Owner() : window(NewWindow(&Procedure, this)) { REQUIRE(window != nullptr); }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { DestroyWindow(window); }

    std::string TakeNotes() { return std::exchange(notes, ""); }
    /// Looks at this many posted messages, or at what there is.
    int Pump(int count = 1000) const {
        MSG message;
        int done = 0;
        for (; done < count && PeekMessageA(&message, window, 0, 0, PM_REMOVE); ++done)
            DispatchMessageA(&message);
        return done;
    }
    void Await(int count) const {
        REQUIRE(::Await([&] { return (count -= Pump(count)) == 0; }));
    }

    const HWND window;
    std::string notes;
    std::function<void()> whenOver;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM code, LPARAM value) {
        if (message != torv::kAudioMessage)
            return DefWindowProcA(window, message, code, value);
        Owner& owner = UserOf<Owner>(window);
        const bool isOver = code == 3 && value == 0;
        owner.notes += isOver                                          ? "over"
                       : code == 3 && value == 1                       ? "begun"
                       : code == 1                                     ? value == Player::Header(1) ? "back1" : "back0"
                       : static_cast<LPARAM>(code) == -1 && value == 0 ? "failed"
                                                                       : "?";
        owner.notes += "/" + std::to_string(Player::m_nStatus.Get()) + " ";
        if (code == 1)
            CxQuillAudio::OnAudioCallback(window, value);
        if (isOver && owner.whenOver)
            std::exchange(owner.whenOver, nullptr)();
        return 0;
    }
};

std::string Played(const WaveRecorderInList& recorder) {
    const auto bytes = recorder->Played();
    return {bytes.begin(), bytes.end()};
}

/// Blocks come back as long as there are any.
void PlayOut(const WaveRecorderInList& recorder, const Owner& owner, int together = 1) {
    for (int done = 0; (done = recorder->Finish(together)) > 0;)
        owner.Await(done);
}

} // namespace

// Four frames of a byte are a second.

TEST_CASE("quill audio play: what does not begin") {
    Owner owner;
    Held buffer(1, 8, "abcdefghij", 4);
    const Player player;
    CHECK(CxQuillAudio::IsAudioPlaying(nullptr) == 0);
    CHECK(CxQuillAudio::AudioStop(owner.window) == 0);
    CHECK(CxQuillAudio::AudioStop(nullptr) == 0);
    CHECK(CxQuillAudio::OnAudioCallback(owner.window, Player::Header(0)) == 0);
    CHECK(CxQuillAudio::AudioAbort(owner.window) == 1);
    CHECK(CxQuillAudio::OpenAudio() == 1);
    CHECK(CxQuillAudio::CloseAudio() == 1);
    CHECK(CxQuillAudio::AudioPlay(nullptr, &buffer, 0, 9, 0, 0) == 0);
    CHECK(owner.notes == "");

    CHECK(CxQuillAudio::AudioPlay(owner.window, &buffer, 3, 3, 0, 0) == 0);
    CHECK(CxQuillAudio::AudioPlay(owner.window, &buffer, 10, 99, 1, 0) == 0);
    CHECK(CxQuillAudio::AudioPlay(owner.window, nullptr, 0, 9, 0, 0) == 0);
    CHECK(owner.TakeNotes() == "over/0 over/0 over/0 ");
    CHECK(CxQuillAudio::GetAudioErrorMessage() == std::string("No Error Information."));

    // Neither the file that is gone nor the one that is shorter than it was said to be gives a sound.
    const Scratch file("abcd");
    for (const CString& path : {CString("torv_no_such_file.wav"), file.Text()}) {
        CWaveBuffer place;
        place.SetRiffInfo(path, 44, 100);
        place.SetWaveInfo(1, 8, 4);
        CHECK(CxQuillAudio::AudioPlay(owner.window, &place, 0, 99, 0, 0) == 0);
        CHECK(owner.TakeNotes() == "over/-1 ");
        CHECK(CxQuillAudio::GetAudioErrorMessage() == std::string("Internal Error !\nPlease Report."));
    }
    Held odd(1, 12, "abcd", 4); // no device plays 12 bits, where there is one
    CHECK(CxQuillAudio::AudioPlay(owner.window, &odd, 0, 99, 0, 0) == 0);
    CHECK(owner.TakeNotes() == "over/-1 ");
    CHECK(*CxQuillAudio::GetAudioErrorMessage() != 0);
    CxQuillAudio::SetMMeError(60000); // has no text; nobody to tell
    CHECK(CxQuillAudio::GetAudioErrorMessage() == std::string("No Error Information."));
    for (const int error : {-1, 2}) {
        CxQuillAudio::SetAoudioError(error);
        CHECK(CxQuillAudio::GetAudioErrorMessage() == std::string("Internal Error !\nPlease Report."));
    }
    CxQuillAudio::ClearAudioError();
    CHECK(CxQuillAudio::GetAudioErrorMessage() == std::string("No Error Information."));
    CHECK(Player::m_nStatus == -1); // not free before a reset
    CHECK(CxQuillAudio::OpenAudio() == 1);
    CHECK(Player::m_nStatus == 0);
}

TEST_CASE("quill audio play: all of the region, from memory and from a file") {
    const struct {
        DWORD start, end;
        const char* played;
        const char* notes;
    } rows[] = {
        {0, 99, "abcdefghij", "begun/1 back0/1 back1/1 back0/2 over/0 "}, // abcd efgh, ij, nothing
        {0, 3, "abc", "begun/2 back0/2 over/0 "},
        {6, 10, "ghij", "begun/2 back0/2 over/0 "},
        {0, 5, "abcde", "begun/1 back0/1 back1/2 over/0 "},
        {2, 10, "cdefghij", "begun/1 back0/1 back1/2 over/0 "},
    };
    const Scratch file;
    Held inMemory(1, 8, "abcdefghij", 4);
    CWaveBuffer inFile;
    CxQuillAudio audio;
    REQUIRE(audio.SaveNew(file.Text(), &inMemory) == 1);
    REQUIRE(audio.ReadProperty(&inFile) == 1);
    Owner owner;
    const Player player;
    for (const auto& row : rows)
        for (CWaveBuffer* const buffer : {static_cast<CWaveBuffer*>(&inMemory), &inFile})
            for (const int together : {1, 2}) {
                CAPTURE(row.played);
                const WaveRecorderInList recorder;
                CHECK(CxQuillAudio::AudioPlay(owner.window, buffer, row.start, row.end, 0, 0) == 1);
                CHECK(recorder->Format().nSamplesPerSec == 4);
                CHECK_FALSE(recorder->paused);
                CHECK(CxQuillAudio::IsAudioPlaying(owner.window) == 1);
                PlayOut(recorder, owner, together);
                CHECK(owner.TakeNotes() == row.notes);
                CHECK(Played(recorder) == row.played);
                CHECK(recorder->closed == 1);
                CHECK(CxQuillAudio::IsAudioPlaying(nullptr) == 0);
            }
}

TEST_CASE("quill audio play: a loop goes on until it is stopped, and again at once") {
    const WaveRecorderInList recorder;
    Owner owner;
    const Player player;
    std::string expected;
    {
        Held buffer(1, 8, "abcde", 4);
        CHECK(CxQuillAudio::AudioPlay(owner.window, &buffer, 1, 4, 1, 0) == 1);
        for (int i = 0; i < 200; ++i) {
            REQUIRE(recorder->Finish(1) == 1);
            owner.Await(1);
        }
        while (expected.size() < Played(recorder).size())
            expected += "bcd";
        expected.resize(Played(recorder).size());
        CHECK(expected.size() == 800);
        CHECK(Played(recorder) == expected);
        owner.TakeNotes();
        owner.whenOver = [&] { CHECK(CxQuillAudio::AudioPlay(owner.window, &buffer, 0, 5, 0, 0) == 1); };
        CHECK(CxQuillAudio::AudioStop(owner.window) == 1); // by a device that holds two blocks
        CHECK(owner.TakeNotes() == "over/0 begun/1 ");
        CHECK(recorder->closed == 1);
        owner.Pump(); // what is left of the first play names headers that are at the device
        CHECK(recorder->Queued() == 2);
        owner.TakeNotes();
        PlayOut(recorder, owner);
        CHECK(owner.TakeNotes() == "back0/1 back1/2 over/0 ");
    }
    CHECK(Played(recorder) == expected + "abcde");
}

TEST_CASE("quill audio play: a block told twice does not cut the last one off") {
    const WaveRecorderInList recorder;
    Owner owner;
    Held buffer(1, 8, "abcde", 4);
    const Player player;
    REQUIRE(CxQuillAudio::AudioPlay(owner.window, &buffer, 0, 5, 0, 0) == 1);
    recorder->Finish(1);
    owner.Await(1);
    const BegunThread plays([&] { recorder->Finish(1); }); // before it is waited for, or meanwhile
    CHECK(CxQuillAudio::OnAudioCallback(owner.window, Player::Header(0)) == 1);
    CHECK(owner.TakeNotes() == "begun/1 back0/1 over/0 ");
    CHECK(Played(recorder) == "abcde");
}

TEST_CASE("quill audio play: who may do what to whose sound, and messages that are not the device's") {
    const WaveRecorderInList recorder;
    Held buffer(1, 8, "abcdefghij", 4);
    Held other(1, 8, "xyz", 4);
    Owner first, second;
    const Player player;
    REQUIRE(CxQuillAudio::AudioPlay(first.window, &buffer, 0, 99, 0, 0) == 1);
    CHECK(CxQuillAudio::OpenAudio() == 0);
    CHECK(CxQuillAudio::IsAudioPlaying(nullptr) == 1);
    CHECK(CxQuillAudio::IsAudioPlaying(second.window) == 0);
    CHECK(CxQuillAudio::AudioPlay(second.window, &other, 0, 3, 0, 0) == 0);
    CHECK(CxQuillAudio::AudioStop(second.window) == 0);
    CHECK(CxQuillAudio::AudioStop(nullptr) == 0);
    WAVEHDR foreign{};
    for (const LPARAM header : {Player::Header(0), Player::Header(1), Player::Header(0) + 1, LPARAM{0}, LPARAM{-1},
                                reinterpret_cast<LPARAM>(&foreign)})
        CHECK(CxQuillAudio::OnAudioCallback(first.window, header) == 0); // both blocks are at the device
    CHECK(CxQuillAudio::WaitReleaseCue(0) == 0);
    recorder->Finish(1);
    REQUIRE(Await([] { return (torv::HeaderFlags(Player::m_stWaveHdr[0]) & WHDR_DONE) != 0; }));
    CHECK(CxQuillAudio::OnAudioCallback(second.window, Player::Header(0)) == 0);
    CHECK(recorder->Queued() == 1);
    CHECK(CxQuillAudio::WatchWaveOut(first.window, &Player::m_stWaveHdr[0]) == 1);
    CHECK(recorder->Queued() == 2);
    CHECK(first.Pump() == 1);
    CxQuillAudio::waveOutProc(nullptr, WOM_OPEN, 0, 0, 0);
    CHECK(first.Pump() == 0);

    WAVEHDR played = Player::m_stWaveHdr[0];
    CHECK(CxQuillAudio::AudioAbort(second.window) == 1);
    CHECK(first.TakeNotes() == "begun/1 back0/1 over/0 ");
    CHECK(buffer.SetPlayParam(0, 99, 0, 0) == 1);
    CHECK(buffer.LoadDataBlock(&played) == 0); // its blocks are freed
    CHECK(CxQuillAudio::AudioPlay(second.window, &other, 0, 3, 0, 0) == 1);
    CHECK(CxQuillAudio::AudioAbort(second.window) == 1); // who aborts knows that it is over
    CHECK(second.TakeNotes() == "begun/2 ");
    {
        const Owner gone;
        REQUIRE(CxQuillAudio::AudioPlay(gone.window, &other, 0, 3, 0, 0) == 1);
    }
    recorder->Finish(1);
    CHECK(CxQuillAudio::IsAudioPlaying(nullptr) == 1);
    CHECK(CxQuillAudio::AudioPlay(second.window, &other, 0, 3, 0, 0) == 0);
    CHECK(CxQuillAudio::AudioAbort(second.window) == 1);
    CHECK(CxQuillAudio::AudioPlay(second.window, &other, 0, 3, 0, 0) == 1);
    CHECK(second.TakeNotes() == "begun/2 ");
}

#if !defined(_WIN32) // whose recorder takes any handle and any header
TEST_CASE("quill audio play: devices that fail") {
    const auto systemText = [](MMRESULT error) {
        char text[128] = "";
        waveOutGetErrorTextA(error, text, sizeof text);
        return std::string(text);
    };
    const WaveRecorderInList recorder;
    Held buffer(1, 8, "abcdefghij", 4);
    Owner owner, other;
    const Player player;
    recorder->refuse = true;
    CHECK(CxQuillAudio::AudioPlay(owner.window, &buffer, 0, 99, 0, 0) == 0);
    CHECK(CxQuillAudio::GetAudioErrorMessage() == systemText(MMSYSERR_ALLOCATED));
    recorder->refuse = false;
    CHECK(owner.TakeNotes() == "over/-1 ");
    Player::m_stWaveHdr[1].dwFlags = WHDR_INQUEUE; // the second block cannot be written
    CHECK(CxQuillAudio::AudioPlay(owner.window, &buffer, 0, 99, 0, 0) == 0);
    CHECK(CxQuillAudio::GetAudioErrorMessage() == systemText(WAVERR_STILLPLAYING));
    CHECK(owner.TakeNotes() == "over/-1 ");
    CHECK(recorder->closed == 1);
    CHECK(Played(recorder) == "");

    REQUIRE(CxQuillAudio::AudioPlay(owner.window, &buffer, 0, 99, 0, 0) == 1);
    CHECK(CxQuillAudio::GetAudioErrorMessage() == std::string("No Error Information."));
    const HWAVEOUT device = std::exchange(Player::m_hWaveOut, reinterpret_cast<HWAVEOUT>(1)); // it is unplugged
    recorder->Finish(1);
    owner.Await(1);
    CHECK(owner.TakeNotes() == "begun/1 back0/1 failed/-1 ");
    CHECK(CxQuillAudio::GetAudioErrorMessage() == systemText(MMSYSERR_INVALHANDLE));
    CHECK(CxQuillAudio::OnAudioCallback(owner.window, Player::Header(0)) == 0);
    CHECK(CxQuillAudio::IsAudioPlaying(nullptr) == 0);
    CHECK(CxQuillAudio::AudioStop(owner.window) == 0);
    CHECK(CxQuillAudio::AudioPlay(other.window, &buffer, 0, 99, 0, 0) == 0);

    // The other block does not come back: what the device may read stays, and nothing else is played.
    CHECK(CxQuillAudio::AudioReset() == 0);
    CHECK(CxQuillAudio::GetAudioErrorMessage() == std::string("Internal Error !\nPlease Report."));
    CHECK(CxQuillAudio::AudioPlay(other.window, &buffer, 0, 99, 0, 0) == 0);
    recorder->Finish(1);
    CHECK(CxQuillAudio::WaitReleaseCue() == 1);
    CHECK(Played(recorder) == "abcdefgh");
    CHECK(CxQuillAudio::AudioReset() == 1); // all are back: one that does not close is let go
    CHECK(waveOutClose(device) == MMSYSERR_NOERROR);
    CHECK(CxQuillAudio::AudioPlay(other.window, &buffer, 0, 3, 0, 0) == 1);
    PlayOut(recorder, other);
    CHECK(other.TakeNotes() == "begun/2 back0/2 over/0 ");
    CHECK(owner.TakeNotes() == "");
}
#endif
