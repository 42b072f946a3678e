#include "platform/begun_thread.h"
#include "platform/temp_folder.h"
#include "torv/platform/wave_header.h"
#include "wave_recorder.h"

#include <doctest/doctest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

namespace {

WAVEFORMATEX Format(DWORD rate = 44100, WORD channels = 2, WORD bits = 16) {
    const WORD align = static_cast<WORD>(channels * bits / 8);
    return {WAVE_FORMAT_PCM, channels, rate, rate * align, align, bits, 0};
}

} // namespace

TEST_CASE("wave out: what is refused without a device, and the texts of errors") {
    const WAVEFORMATEX format = Format();
    const UINT none = waveOutGetNumDevs();
    HWAVEOUT device = nullptr;
    WAVEOUTCAPSA capabilities{};
    WAVEHDR header{};
    CHECK(waveOutGetDevCapsA(none, &capabilities, sizeof(capabilities)) == MMSYSERR_BADDEVICEID);
    CHECK(waveOutOpen(&device, none, &format, 0, 0, CALLBACK_NULL) == MMSYSERR_BADDEVICEID);
    CHECK(waveOutPrepareHeader(nullptr, &header, sizeof(header)) == MMSYSERR_INVALHANDLE);
    for (const auto call : {&waveOutReset, &waveOutClose})
        CHECK(call(nullptr) == MMSYSERR_INVALHANDLE);
    char text[MAXERRORLENGTH] = {};
    CHECK(waveOutGetErrorTextA(60000, text, sizeof(text)) == MMSYSERR_BADERRNUM);
    CHECK(waveOutGetErrorTextA(MMSYSERR_ALLOCATED, text, sizeof(text)) == MMSYSERR_NOERROR);
    CHECK(text[0] != 0);
}

#if !defined(_WIN32)
#include <csignal>
#include <cstdlib>

namespace {

using Clock = std::chrono::steady_clock;

/// No test plays on a real device: the sound library has its silent one.
const int g_silentDriver = setenv("SDL_AUDIODRIVER", "dummy", 0);

std::string DeviceName(UINT number) {
    WAVEOUTCAPSA capabilities{};
    return waveOutGetDevCapsA(number, &capabilities, sizeof(capabilities)) == MMSYSERR_NOERROR ? capabilities.szPname
                                                                                               : "";
}

HWAVEOUT OpenNumber(UINT number, const WAVEFORMATEX& format, DWORD_PTR callback = 0, DWORD flags = CALLBACK_NULL,
                    DWORD_PTR instance = 0) {
    HWAVEOUT device = nullptr;
    REQUIRE(waveOutOpen(&device, number, &format, callback, instance, flags) == MMSYSERR_NOERROR);
    return device;
}

HWAVEOUT OpenForThread(UINT number, const WAVEFORMATEX& format = Format()) {
    PostMessageA(nullptr, WM_NULL, 0, 0);
    return OpenNumber(number, format, GetCurrentThreadId(), CALLBACK_THREAD);
}

/// Some headers of `bytes` each, all filled with their number.
struct Headers {
    Headers(size_t count, DWORD bytes) : data(count, std::vector<char>(bytes)), headers(count) {
        for (size_t i = 0; i < count; ++i) {
            std::memset(data[i].data(), static_cast<int>(i + 1), bytes);
            headers[i] = {data[i].data(), bytes, 0, 0, 0, 0, nullptr, 0};
        }
    }
    void Prepare(HWAVEOUT device) {
        for (WAVEHDR& header : headers)
            CHECK(waveOutPrepareHeader(device, &header, sizeof(header)) == MMSYSERR_NOERROR);
    }
    void Write(HWAVEOUT device) {
        for (WAVEHDR& header : headers)
            CHECK(waveOutWrite(device, &header, sizeof(header)) == MMSYSERR_NOERROR);
    }
    void Unprepare(HWAVEOUT device) {
        for (WAVEHDR& header : headers) {
            CHECK(waveOutUnprepareHeader(device, &header, sizeof(header)) == MMSYSERR_NOERROR);
            CHECK(header.dwFlags == WHDR_DONE);
        }
    }
    LPARAM At(size_t i) const { return reinterpret_cast<LPARAM>(&headers[i]); }

    std::vector<std::vector<char>> data;
    std::vector<WAVEHDR> headers;
};

struct Note {
    UINT message;
    LPARAM header;
    bool operator==(const Note&) const = default;
};

/// What has been posted of the device, `window` null for the calling thread.
std::vector<Note> Notes(HWAVEOUT device, HWND window = reinterpret_cast<HWND>(LONG_PTR{-1})) {
    std::vector<Note> notes;
    MSG message;
    while (PeekMessageA(&message, window, MM_WOM_OPEN, MM_WOM_DONE, PM_REMOVE)) {
        CHECK(message.wParam == reinterpret_cast<WPARAM>(device));
        notes.push_back({message.message, message.lParam});
    }
    return notes;
}

/// The next MM_WOM_DONE of the calling thread.
const WAVEHDR* NextDone() {
    MSG message;
    REQUIRE(GetMessageA(&message, nullptr, MM_WOM_DONE, MM_WOM_DONE) > 0);
    return reinterpret_cast<const WAVEHDR*>(message.lParam);
}

double Milliseconds(Clock::duration time) { return std::chrono::duration<double, std::milli>(time).count(); }

} // namespace

TEST_CASE("wave out: the list begins with what was added and ends with the output that is always there") {
    const UINT alone = waveOutGetNumDevs();
    CHECK(alone >= 1);
    CHECK(DeviceName(alone - 1) == "Null Output");
    CHECK(DeviceName(WAVE_MAPPER) == "Wave Mapper");
    HWAVEOUT device = nullptr;
    {
        const WaveRecorderInList recorder;
        CHECK(waveOutGetNumDevs() == alone + 1);
        CHECK(DeviceName(0) == "A recorder with a name of more ");
        CHECK(DeviceName(alone) == "Null Output");
        device = OpenNumber(WAVE_MAPPER, Format());
        CHECK(recorder->opened == 1);
    }
    CHECK(waveOutGetNumDevs() == alone);
    CHECK(waveOutClose(device) == MMSYSERR_NOERROR); // open devices outlive their place in the list
}

TEST_CASE("wave out: the sound library gets every byte once, 24 bits widened to 32") {
    if (std::getenv("TORV_TEST_ALONE")) {
        std::signal(SIGTERM, SIG_DFL); // whose end of the program is nothing to the library
        const HWAVEOUT device = OpenForThread(0, Format(48000, 1, 24));
        std::vector<char> bytes(3508 * 3);
        for (size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(1 + i % 255);
        DWORD at = 0;
        std::vector<WAVEHDR> headers;
        for (const DWORD frames : {7u, 1u, 0u, 3000u, 500u}) { // more and less than the device asks for at once
            headers.push_back({&bytes[at], frames * 3, 0, 0, 0, 0, nullptr, 0});
            at += frames * 3;
        }
        for (WAVEHDR& header : headers) {
            CHECK(waveOutPrepareHeader(device, &header, sizeof(header)) == MMSYSERR_NOERROR);
            CHECK(waveOutWrite(device, &header, sizeof(header)) == MMSYSERR_NOERROR);
        }
        for (const WAVEHDR& header : headers)
            CHECK(NextDone() == &header);
        CHECK(waveOutClose(device) == MMSYSERR_NOERROR);
        CHECK((std::signal(SIGTERM, SIG_DFL) == SIG_DFL));
        return;
    }
    const TempFolder folder;
    // The library's driver that writes a file, as fast as it gets the samples, in a program of its own: one that hangs
    // must not fill the disk.
    const std::string command =
        "ulimit -f 100000; TORV_TEST_ALONE=1 SDL_AUDIODRIVER=disk SDL_DISKAUDIODELAY=0 SDL_DISKAUDIOFILE=" +
        folder.Path("sound") + " \"/proc/$PPID/exe\" -tc='wave out: the sound library gets*' >/dev/null 2>&1";
    CHECK(std::system(command.c_str()) == 0);
    const std::string sound = folder.Content("sound");
    std::string heard, expected;
    for (size_t at = 0; at + 4 <= sound.size(); at += 4)
        if (sound.substr(at, 4) != std::string(4, '\0')) // silence before and behind
            heard += sound.substr(at, 4);
    for (size_t i = 0; i < 3508 * 3; ++i)
        expected.append(i % 3 == 0, '\0') += static_cast<char>(1 + i % 255);
    CHECK(heard.size() == expected.size());
    CHECK((heard == expected)); // not shown: it is long
}

TEST_CASE("wave out: formats and flags that are refused") {
    const WaveRecorderInList recorder;
    HWAVEOUT device = nullptr;
    const auto open = [&](WAVEFORMATEX format, DWORD flags, DWORD_PTR callback = 0) {
        return waveOutOpen(&device, 0, &format, callback, 0, flags);
    };
    const WAVEFORMATEX good = Format();
    WAVEFORMATEX isCompressed = good, isMisaligned = good, isBroken = good;
    isCompressed.wFormatTag = 0x55;
    isMisaligned.nBlockAlign = 3;
    isBroken.nBlockAlign = isBroken.nChannels = 0;
    for (const WAVEFORMATEX& bad : {isCompressed, isMisaligned, isBroken, Format(0), Format(44100, 2, 12),
                                    Format(44100, 2, 64), Format(44100, 2, 32)})
        CHECK(open(bad, CALLBACK_NULL) == WAVERR_BADFORMAT);
    CHECK(waveOutOpen(nullptr, 0, &good, 0, 0, WAVE_FORMAT_QUERY) == MMSYSERR_NOERROR);
    CHECK(waveOutOpen(nullptr, 0, &good, 0, 0, CALLBACK_NULL) == MMSYSERR_INVALPARAM);
    CHECK(waveOutOpen(&device, 0, nullptr, 0, 0, CALLBACK_NULL) == MMSYSERR_INVALPARAM);
    CHECK(open(good, 0x00050000) == MMSYSERR_INVALFLAG); // an event object
    CHECK(open(good, CALLBACK_FUNCTION) == MMSYSERR_INVALPARAM);
    CHECK(open(good, CALLBACK_WINDOW, 0x1234) == MMSYSERR_INVALPARAM);
    recorder->refuse = true;
    CHECK(open(good, CALLBACK_NULL) == MMSYSERR_ALLOCATED);
    CHECK(recorder->opened == 0);
    recorder->refuse = false;
    CHECK(open(Format(48000, 1, 24), CALLBACK_NULL) == MMSYSERR_NOERROR);
    CHECK(waveOutClose(device) == MMSYSERR_NOERROR);
    CHECK(waveOutClose(device) == MMSYSERR_INVALHANDLE);
}

TEST_CASE("wave out: flags of a header on its way, and messages in their order") {
    const WaveRecorderInList recorder;
    Headers blocks(3, 8);
    WAVEHDR& first = blocks.headers[0];
    const HWAVEOUT device = OpenForThread(0);
    CHECK(waveOutWrite(device, &first, sizeof(first)) == WAVERR_UNPREPARED);
    CHECK(waveOutPrepareHeader(device, &first, sizeof(first) - 1) == MMSYSERR_INVALPARAM);
    CHECK(waveOutUnprepareHeader(device, &first, sizeof(first)) == MMSYSERR_NOERROR);
    blocks.Prepare(device);
    CHECK(waveOutPause(device) == MMSYSERR_NOERROR);
    blocks.Write(device);
    CHECK(first.dwFlags == (WHDR_PREPARED | WHDR_INQUEUE));
    for (const auto call : {&waveOutWrite, &waveOutPrepareHeader, &waveOutUnprepareHeader})
        CHECK(call(device, &first, sizeof(first)) == WAVERR_STILLPLAYING);
    CHECK(waveOutClose(device) == WAVERR_STILLPLAYING);
    CHECK(recorder->Finish(1) == 0); // it is paused
    CHECK(waveOutRestart(device) == MMSYSERR_NOERROR);
    CHECK(recorder->Finish(1) == 1);
    CHECK(torv::HeaderFlags(first) == (WHDR_PREPARED | WHDR_DONE));
    CHECK(waveOutWrite(device, &first, sizeof(first)) == MMSYSERR_NOERROR); // at the end again
    CHECK(first.dwFlags == (WHDR_PREPARED | WHDR_INQUEUE));
    recorder->Claim(1); // what is through is not done again,
    recorder->Claim(9); // and what was not written not at all
    CHECK(recorder->Finish(9) == 3);
    CHECK(Notes(device) == std::vector<Note>{{MM_WOM_OPEN, 0},
                                             {MM_WOM_DONE, blocks.At(0)},
                                             {MM_WOM_DONE, blocks.At(1)},
                                             {MM_WOM_DONE, blocks.At(2)},
                                             {MM_WOM_DONE, blocks.At(0)}});
    blocks.Unprepare(device);
    CHECK(waveOutClose(device) == MMSYSERR_NOERROR);
    CHECK(Notes(device) == std::vector<Note>{{MM_WOM_CLOSE, 0}});
    CHECK(recorder->closed == 1);
    std::vector<BYTE> played;
    for (const BYTE number : {1, 2, 3, 1})
        played.insert(played.end(), 8, number);
    CHECK(recorder->Played() == played);
}

TEST_CASE("wave out: a reset returns all of them, in order, and the device plays on") {
    const WaveRecorderInList recorder;
    Headers blocks(40, 4); // more than a device has room for at first
    const HWND window = NewWindow();
    const HWAVEOUT device = OpenNumber(0, Format(), reinterpret_cast<DWORD_PTR>(window), CALLBACK_WINDOW);
    blocks.Prepare(device);
    std::vector<Note> expected{{MM_WOM_OPEN, 0}};
    for (ULONGLONG round = 1; round < 3; ++round) {
        CHECK(waveOutPause(device) == MMSYSERR_NOERROR);
        blocks.Write(device);
        CHECK(waveOutReset(device) == MMSYSERR_NOERROR);
        for (size_t i = 0; i < blocks.headers.size(); ++i)
            expected.push_back({MM_WOM_DONE, blocks.At(i)});
        recorder->Claim(40 * round); // told once more, too late
    }
    CHECK_FALSE(recorder->paused);
    CHECK(Notes(device, window) == expected);
    blocks.Write(device);
    CHECK(recorder->Finish(40) == 40);
    blocks.Unprepare(device);
    CHECK(waveOutClose(device) == MMSYSERR_NOERROR);
    CHECK(DestroyWindow(window));
}

/// Told of a device by a callback function, from which it calls back.
struct Caller {
    std::atomic<int> done = 0, opened = 0, closed = 0;
    std::atomic<int> more = 0; // to be written again
    std::atomic<MMRESULT> closing = 0;

    static void CALLBACK Tell(HWAVEOUT device, UINT message, DWORD_PTR instance, DWORD_PTR header, DWORD_PTR) {
        Caller& caller = *reinterpret_cast<Caller*>(instance);
        caller.opened += message == WOM_OPEN;
        caller.closed += message == WOM_CLOSE;
        if (message != WOM_DONE)
            return;
        caller.closing = waveOutClose(device);
        if (caller.more-- > 0)
            waveOutWrite(device, reinterpret_cast<LPWAVEHDR>(header), sizeof(WAVEHDR));
        ++caller.done;
    }
};

TEST_CASE("wave out: a callback function may call back") {
    Caller caller;
    const WaveRecorderInList recorder;
    const HWAVEOUT device = OpenNumber(0, Format(), reinterpret_cast<DWORD_PTR>(&Caller::Tell), CALLBACK_FUNCTION,
                                       reinterpret_cast<DWORD_PTR>(&caller));
    CHECK(caller.opened == 1);
    Headers blocks(2, 4);
    blocks.Prepare(device);
    caller.more = 2;
    blocks.Write(device);
    CHECK(recorder->Finish(2) == 2);
    REQUIRE(Await([&] { return caller.done == 2; }));
    CHECK(caller.closing == MMSYSERR_HANDLEBUSY);
    CHECK(recorder->Queued() == 2); // written by the callback
    caller.more = 1;
    CHECK(waveOutReset(device) == MMSYSERR_NOERROR);
    CHECK(caller.done == 4);
    CHECK(recorder->Queued() == 1); // what it wrote while it was told of the reset
    CHECK(waveOutReset(device) == MMSYSERR_NOERROR);
    CHECK(caller.done == 5);
    blocks.Unprepare(device);
    CHECK(waveOutClose(device) == MMSYSERR_NOERROR);
    CHECK(caller.closed == 1);
}

TEST_CASE("wave out: the null output keeps the time of what it is given, whatever it and the caller are late") {
    Headers blocks(8820, 2); // of one frame each: 200 ms
    const HWAVEOUT device = OpenForThread(waveOutGetNumDevs() - 1, Format(44100, 1, 16));
    blocks.Prepare(device);
    // 8820 wake-ups, each a little late: added up they would take longer every time.
    bool isInTime = false;
    for (int attempt = 0; attempt < 20 && !isInTime; ++attempt) {
        const auto start = Clock::now();
        blocks.Write(device);
        for (const WAVEHDR& header : blocks.headers)
            CHECK(NextDone() == &header);
        const double elapsed = Milliseconds(Clock::now() - start);
        CHECK(elapsed >= 200);
        isInTime = elapsed <= 200 + 200;
    }
    CHECK(isInTime);

    Headers whole(1, 2 * 8820); // what is paused stays where it is
    whole.Prepare(device);
    const auto start = Clock::now();
    whole.Write(device);
    CHECK(waveOutPause(device) == MMSYSERR_NOERROR);
    Sleep(40);
    CHECK(waveOutRestart(device) == MMSYSERR_NOERROR);
    CHECK(NextDone() == &whole.headers[0]);
    CHECK(Milliseconds(Clock::now() - start) >= 240);
    CHECK(waveOutClose(device) == MMSYSERR_NOERROR);
    CHECK(Notes(device) == std::vector<Note>{{MM_WOM_OPEN, 0}, {MM_WOM_CLOSE, 0}});
}

TEST_CASE("wave out: the sound library's devices play every width") {
    const UINT count = waveOutGetNumDevs() - 1; // on a machine whose library lacks its silent driver there may be none
    for (UINT number = 0; number < count; ++number) {
        for (const WORD bits : {WORD{8}, WORD{16}, WORD{24}, WORD{32}}) {
            Headers blocks(2, 441u * 2 * bits / 8 + 1); // 10 ms, and a piece of a frame
            const HWAVEOUT device = OpenForThread(number, Format(44100, 2, bits));
            blocks.Prepare(device);
            blocks.Write(device);
            CHECK(NextDone() == &blocks.headers[0]);
            CHECK(waveOutReset(device) == MMSYSERR_NOERROR);
            blocks.Unprepare(device);
            CHECK(waveOutClose(device) == MMSYSERR_NOERROR);
            CHECK(Notes(device).size() == 3);
        }
    }
}
#endif
