#include "audio/wave_test_files.h"
#include "platform/begun_thread.h"
#include "torv/audio/quill_audio.h"
#include "torv/platform/wave_header.h"
#include "values.h"
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
    static std::string Error() { return GetAudioErrorMessage(); }
};

/// A window that plays. It notes what it is told beside the state in which it is, "3,1/1" for a begin, and hands
/// blocks, called "back0" and "back1", on.
struct Owner {
    Owner() : window(NewWindow(&Procedure, this)) { REQUIRE(window != nullptr); }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { DestroyWindow(window); }

    int Play(CWaveBuffer* buffer, DWORD start = 0, DWORD end = 99, int loop = 0) const {
        return CxQuillAudio::AudioPlay(window, buffer, start, end, loop, 0);
    }
    std::string TakeNotes() { return std::exchange(notes, ""); }
    /// Looks at this many posted messages, or at what there is.
    int Pump(int count = 1000) const {
        MSG message;
        int done = 0;
        for (; done < count && PeekMessageA(&message, window, 0, 0, PM_REMOVE); ++done)
            DispatchMessageA(&message);
        return done;
    }
    /// So many blocks come back at a time, as long as there are any.
    void PlayOut(const WaveRecorderInList& recorder, int together = 1, int most = 1000) const {
        for (int left = 0; most-- > 0 && (left = recorder->Finish(together)) > 0;)
            REQUIRE(::Await([&] { return (left -= Pump(left)) == 0; }));
    }

    const HWND window;
    std::string notes;
    std::function<void()> whenOver;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM code, LPARAM value) {
        if (message != torv::kAudioMessage)
            return DefWindowProcA(window, message, code, value);
        Owner& owner = UserOf<Owner>(window);
        const std::string number = std::to_string(static_cast<int>(code)) + "," + std::to_string(value);
        owner.notes += code == 1 ? value == Player::Header(1) ? "back1" : "back0" : number;
        owner.notes += "/" + std::to_string(Player::m_nStatus.Get()) + " ";
        if (code == 1)
            CxQuillAudio::OnAudioCallback(window, value);
        if (number == "3,0" && owner.whenOver)
            std::exchange(owner.whenOver, nullptr)();
        return 0;
    }
};

std::string Played(const WaveRecorderInList& recorder) {
    const auto bytes = recorder->Played();
    return {bytes.begin(), bytes.end()};
}

const std::string kNoError = "No Error Information.";
const std::string kInternal = "Internal Error !\nPlease Report.";

} // namespace

// Four frames of a byte are a second.

TEST_CASE("quill audio play: what does not begin") {
    Owner owner;
    Held buffer(1, 8, "abcdefghij", 4);
    Held odd(1, 12, "abcdefghijkl", 4); // no device plays 12 bits, where there is one
    const Scratch file("abcd");         // shorter than it is said to be
    CWaveBuffer gone, cut;
    gone.SetRiffInfo("torv_no_such_file.wav", 44, 100);
    cut.SetRiffInfo(file.Text(), 44, 100);
    for (CWaveBuffer* const place : {&gone, &cut})
        place->SetWaveInfo(1, 8, 4);
    const Player player;
    CHECK(CxQuillAudio::AudioStop(nullptr) == 0);
    CHECK(CxQuillAudio::OnAudioCallback(owner.window, Player::Header(0)) == 0);
    CHECK(CxQuillAudio::AudioPlay(nullptr, &buffer, 0, 9, 0, 0) == 0);
    const struct {
        CWaveBuffer* buffer;
        DWORD end;
        std::string notes, error;
    } rows[] = {{&buffer, 3, "3,0/0 ", kNoError},
                {nullptr, 9, "3,0/0 ", kNoError},
                {&gone, 99, "3,0/-1 ", kInternal},
                {&cut, 99, "3,0/-1 ", kInternal},
                {&odd, 99, "3,0/-1 ", ""}}; // the system's
    for (const auto& row : rows) {
        CHECK(Values{owner.Play(row.buffer, 3, row.end), owner.TakeNotes()} == "0 " + row.notes);
        CHECK((row.error.empty() ? Player::Error() != kInternal : Player::Error() == row.error));
    }
    CxQuillAudio::ClearAudioError();
    CxQuillAudio::SetMMeError(60000); // has no text; nobody to tell
    CHECK(Player::Error() == kNoError);
    for (const int error : {-1, 2}) {
        CxQuillAudio::SetAoudioError(error);
        CHECK(Player::Error() == kInternal);
    }
    CxQuillAudio::ClearAudioError();
    CHECK(Player::m_nStatus == -1); // not free before a reset
    CHECK(Values{CxQuillAudio::OpenAudio(), Player::m_nStatus.Get()} == "1 0");
}

TEST_CASE("quill audio play: all of the region, from memory and from a file") {
    const struct {
        DWORD start, end;
        const char* played;
        const char* notes;
    } rows[] = {
        {0, 99, "abcdefghij", "3,1/1 back0/1 back1/1 back0/2 3,0/0 "}, // abcd efgh, ij, nothing
        {0, 3, "abc", "3,1/2 back0/2 3,0/0 "},
        {0, 5, "abcde", "3,1/1 back0/1 back1/2 3,0/0 "},
        {2, 10, "cdefghij", "3,1/1 back0/1 back1/2 3,0/0 "},
    };
    const Scratch file("abcdefghij");
    Held inMemory(1, 8, "abcdefghij", 4);
    CWaveBuffer inFile;
    inFile.SetRiffInfo(file.Text(), 0, 10);
    inFile.SetWaveInfo(1, 8, 4);
    Owner owner;
    const Player player;
    for (const auto& row : rows)
        for (CWaveBuffer* const buffer : {static_cast<CWaveBuffer*>(&inMemory), &inFile})
            for (const int together : {1, 2}) {
                CAPTURE(row.played);
                const WaveRecorderInList recorder;
                CHECK(owner.Play(buffer, row.start, row.end) == 1);
                CHECK(recorder->Format().nSamplesPerSec == 4);
                CHECK_FALSE(recorder->paused);
                CHECK(CxQuillAudio::IsAudioPlaying(owner.window) == 1);
                owner.PlayOut(recorder, together);
                CHECK(owner.TakeNotes() == row.notes);
                CHECK(Played(recorder) == row.played);
                CHECK(recorder->closed == 1);
                CHECK(CxQuillAudio::IsAudioPlaying(nullptr) == 0);
            }
}

TEST_CASE("quill audio play: a loop goes on until it is stopped, and again at once") {
    const WaveRecorderInList recorder;
    Owner owner;
    Held buffer(1, 8, "abcde", 4);
    const Player player;
    REQUIRE(owner.Play(&buffer, 1, 4, 1) == 1);
    owner.PlayOut(recorder, 1, 3);
    CHECK(Played(recorder) == "bcdbcdbcdbcd");
    owner.TakeNotes();
    owner.whenOver = [&] { CHECK(owner.Play(&buffer, 0, 5) == 1); };
    CHECK(CxQuillAudio::AudioStop(owner.window) == 1); // by a device that holds two blocks
    CHECK(owner.TakeNotes() == "3,0/0 3,1/1 ");
    CHECK(recorder->closed == 1);
    owner.Pump(); // what is left of the first play names headers that are at the device
    CHECK(recorder->Queued() == 2);
    owner.TakeNotes();
    owner.PlayOut(recorder, 1, 1);
    const BegunThread plays([&] { recorder->Finish(1); }); // before it is waited for, or meanwhile:
    CHECK(CxQuillAudio::OnAudioCallback(owner.window, Player::Header(0)) == 1); // told twice, it does not cut it off
    CHECK(owner.TakeNotes() == "back0/1 3,0/0 ");
    CHECK(plays.End());
    CHECK(Played(recorder) == "bcdbcdbcdbcdabcde");
}

TEST_CASE("quill audio play: who may do what to whose sound, and messages that are not the device's") {
    const WaveRecorderInList recorder;
    Held buffer(1, 8, "abcdefghij", 4);
    Held other(1, 8, "xyz", 4);
    Owner first, second;
    const Player player;
    REQUIRE(first.Play(&buffer) == 1);
    CHECK(Values(CxQuillAudio::OpenAudio(), second.Play(&other), CxQuillAudio::WaitReleaseCue(0)) == "0 0 0");
    CHECK(Values(CxQuillAudio::IsAudioPlaying(nullptr), CxQuillAudio::IsAudioPlaying(second.window)) == "1 0");
    CHECK(Values(CxQuillAudio::AudioStop(second.window), CxQuillAudio::AudioStop(nullptr)) == "0 0");
    WAVEHDR foreign{};
    for (const LPARAM header :
         {Player::Header(0), Player::Header(0) + 1, LPARAM{0}, reinterpret_cast<LPARAM>(&foreign)})
        CHECK(CxQuillAudio::OnAudioCallback(first.window, header) == 0); // both blocks are at the device
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
    CHECK(first.TakeNotes() == "3,1/1 back0/1 3,0/0 ");
    CHECK(buffer.SetPlayParam(0, 99, 0, 0) == 1);
    CHECK(buffer.LoadDataBlock(&played) == 0); // its blocks are freed
    CHECK(second.Play(&other) == 1);
    CHECK(CxQuillAudio::AudioAbort(second.window) == 1); // who aborts knows that it is over
    {
        const Owner gone;
        REQUIRE(gone.Play(&other) == 1);
    }
    recorder->Finish(1);
    CHECK(Values{second.Play(&other), CxQuillAudio::AudioAbort(second.window), second.Play(&other)} == "0 1 1");
    CHECK(second.TakeNotes() == "3,1/2 3,1/2 ");
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
    CHECK(Values{owner.Play(&buffer), Player::Error()} == "0 " + systemText(MMSYSERR_ALLOCATED));
    recorder->refuse = false;
    Player::m_stWaveHdr[1].dwFlags = WHDR_INQUEUE; // the second block cannot be written
    CHECK(Values{owner.Play(&buffer), Player::Error()} == "0 " + systemText(WAVERR_STILLPLAYING));
    CHECK(owner.TakeNotes() == "3,0/-1 3,0/-1 ");
    CHECK(Values(recorder->closed, Played(recorder)) == "1 ");

    REQUIRE(owner.Play(&buffer) == 1);
    CHECK(Player::Error() == kNoError);
    const HWAVEOUT device = std::exchange(Player::m_hWaveOut, reinterpret_cast<HWAVEOUT>(1)); // it is unplugged
    owner.PlayOut(recorder, 1, 1);
    CHECK(owner.TakeNotes() == "3,1/1 back0/1 -1,0/-1 ");
    CHECK(Player::Error() == systemText(MMSYSERR_INVALHANDLE));
    CHECK(CxQuillAudio::OnAudioCallback(owner.window, Player::Header(0)) == 0);
    CHECK(CxQuillAudio::IsAudioPlaying(nullptr) == 0);
    CHECK(CxQuillAudio::AudioStop(owner.window) == 0);
    CHECK(other.Play(&buffer) == 0);

    // The other block does not come back: what the device may read stays, and nothing else is played.
    CHECK(Values{CxQuillAudio::AudioReset(), Player::Error()} == "0 " + kInternal);
    CHECK(other.Play(&buffer) == 0);
    recorder->Finish(1);
    CHECK(CxQuillAudio::WaitReleaseCue() == 1);
    CHECK(Played(recorder) == "abcdefgh");
    CHECK(CxQuillAudio::AudioReset() == 1); // all are back: one that does not close is let go
    CHECK(waveOutClose(device) == MMSYSERR_NOERROR);
    CHECK(other.Play(&buffer, 0, 3) == 1);
    other.PlayOut(recorder);
    CHECK(other.TakeNotes() == "3,1/2 back0/2 3,0/0 ");
    CHECK(owner.TakeNotes() == "");
}
#endif
