#include "midi_recorder.h"

#include <doctest/doctest.h>

#include <string>
#include <thread>
#include <vector>

TEST_CASE("midi out: a device that is not there") {
    HMIDIOUT device = nullptr;
    const UINT none = midiOutGetNumDevs();
    MIDIOUTCAPSA capabilities{};
    CHECK(midiOutGetDevCapsA(none, &capabilities, sizeof(capabilities)) != MMSYSERR_NOERROR);
    CHECK(midiOutOpen(&device, none, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR);
    CHECK(midiOutShortMsg(nullptr, 0x403C90) == MMSYSERR_INVALHANDLE);
    CHECK(midiOutClose(nullptr) == MMSYSERR_INVALHANDLE);
}

#if !defined(_WIN32)
#include <unistd.h>

#include <cstdio>

namespace {

std::string DeviceName(UINT number) {
    MIDIOUTCAPSA capabilities{};
    return midiOutGetDevCapsA(number, &capabilities, sizeof(capabilities)) == MMSYSERR_NOERROR ? capabilities.szPname
                                                                                               : "";
}

/// What has been told by a device's callback.
struct Told {
    std::mutex mutex;
    std::vector<UINT> messages;
    std::atomic<int> done = 0;
    MMRESULT closing = 0; // from within the callback
};

void CALLBACK Tell(HMIDIOUT device, UINT message, DWORD_PTR instance, DWORD_PTR, DWORD_PTR) {
    Told& told = *reinterpret_cast<Told*>(instance);
    const std::lock_guard lock(told.mutex);
    told.messages.push_back(message);
    if (message == MOM_DONE) {
        told.closing = midiOutClose(device);
        ++told.done;
    }
}

} // namespace

TEST_CASE("midi out: the list ends with the output that is always there, and nothing is said") {
    std::FILE* said = std::tmpfile();
    const int error = dup(2);
    dup2(fileno(said), 2);
    const UINT alone = midiOutGetNumDevs();
    const std::string last = DeviceName(alone - 1);
    HMIDIOUT device = nullptr;
    const MMRESULT opened = midiOutOpen(&device, alone - 1, 0, 0, CALLBACK_NULL);
    dup2(error, 2);
    close(error);
    CHECK(std::fseek(said, 0, SEEK_END) == 0);
    CHECK(std::ftell(said) == 0);
    std::fclose(said);

    CHECK(alone >= 1);
    CHECK(last == "Null Output");
    REQUIRE(opened == MMSYSERR_NOERROR);
    CHECK(midiOutShortMsg(device, 0x403C90) == MMSYSERR_NOERROR);
    CHECK(midiOutClose(device) == MMSYSERR_NOERROR);
    CHECK(midiOutClose(device) == MMSYSERR_INVALHANDLE);
    {
        const RecorderInList recorder;
        CHECK(midiOutGetNumDevs() == alone + 1);
        CHECK(DeviceName(0) == "A recorder with a name of more ");
        CHECK(DeviceName(alone) == "Null Output");
        CHECK(midiOutOpen(&device, MIDI_MAPPER, 0, 0, CALLBACK_NULL) == MMSYSERR_NOERROR);
        CHECK(recorder->opened == 1);
        HMIDIOUT second = nullptr;
        CHECK(midiOutOpen(&second, 0, 0, 0, CALLBACK_NULL) == MMSYSERR_ALLOCATED);
    }
    CHECK(midiOutGetNumDevs() == alone);
    CHECK(midiOutClose(device) == MMSYSERR_NOERROR); // open devices outlive their place in the list
}

TEST_CASE("midi out: short messages have the length of their status") {
    const RecorderInList recorder;
    HMIDIOUT device = nullptr;
    recorder->refuse = true;
    CHECK(midiOutOpen(&device, 0, 0, 0, CALLBACK_NULL) == MIDIERR_NODEVICE);
    recorder->refuse = false;
    CHECK(midiOutOpen(&device, 0, 0, 0, 0x00010000) == MMSYSERR_INVALFLAG); // a window
    REQUIRE(midiOutOpen(&device, 0, 0, 0, CALLBACK_NULL) == MMSYSERR_NOERROR);
    for (const DWORD message : {0xFF403C90u, 0x7F07C5u, 0x7F07D5u, 0x4000E1u, 0x1F01F1u, 0x0102F2u, 0x0102F8u})
        CHECK(midiOutShortMsg(device, message) == MMSYSERR_NOERROR);
    for (const DWORD bad : {0x403C7Fu, 0xF0u, 0xF7u, 0u})
        CHECK(midiOutShortMsg(device, bad) == MMSYSERR_INVALPARAM);
    CHECK(midiOutClose(device) == MMSYSERR_NOERROR);
    std::vector<DWORD> sent;
    for (const auto& message : recorder->Messages())
        sent.insert(sent.end(), {message.bytes, message.length});
    CHECK(sent == std::vector<DWORD>{0x403C90, 3, 0x07C5, 2, 0x07D5, 2, 0x4000E1, 3, 0x01F1, 2, 0x0102F2, 3, 0xF8, 1});
}

TEST_CASE("midi out: headers wait their turn and come back, by themselves or by a reset") {
    const RecorderInList recorder;
    Told told;
    HMIDIOUT device = nullptr;
    REQUIRE(midiOutOpen(&device, 0, reinterpret_cast<DWORD_PTR>(&Tell), reinterpret_cast<DWORD_PTR>(&told),
                        CALLBACK_FUNCTION) == MMSYSERR_NOERROR);
    char bytes[] = "\xF0\x01\x02\xF7";
    MIDIHDR headers[3] = {};
    for (MIDIHDR& header : headers) {
        header.lpData = bytes;
        header.dwBufferLength = 4;
        CHECK(midiOutLongMsg(device, &header, sizeof(header)) == MIDIERR_UNPREPARED);
        CHECK(midiOutPrepareHeader(device, &header, sizeof(header)) == MMSYSERR_NOERROR);
    }
    recorder->hold = true;
    for (MIDIHDR& header : headers)
        CHECK(midiOutLongMsg(device, &header, sizeof(header)) == MMSYSERR_NOERROR);
    CHECK(midiOutLongMsg(device, &headers[1], sizeof(MIDIHDR)) == MIDIERR_STILLPLAYING);
    CHECK(midiOutUnprepareHeader(device, &headers[0], sizeof(MIDIHDR)) == MIDIERR_STILLPLAYING);
    CHECK(midiOutShortMsg(device, 0x403C90) == MIDIERR_NOTREADY);
    CHECK(midiOutClose(device) == MIDIERR_STILLPLAYING);
    REQUIRE(recorder->Await(1));

    std::thread release([&] {
        Sleep(20);
        recorder->hold = false;
    });
    CHECK(midiOutReset(device) == MMSYSERR_NOERROR);
    release.join();
    CHECK(told.done == 3);
    CHECK(told.closing == MMSYSERR_HANDLEBUSY);
    const auto messages = recorder->Messages();
    REQUIRE(messages.size() == 33); // one went out, the other two were dropped; then pedal and notes of each channel
    CHECK(messages[1].bytes == 0x0040B0);
    CHECK(messages[32].bytes == 0x007BBF);

    CHECK(midiOutLongMsg(device, &headers[2], sizeof(MIDIHDR)) == MMSYSERR_NOERROR);
    REQUIRE(recorder->Await(34));
    while (told.done < 4)
        Sleep(1);
    for (MIDIHDR& header : headers) {
        CHECK(midiOutUnprepareHeader(device, &header, sizeof(header)) == MMSYSERR_NOERROR);
        CHECK(header.dwFlags == MHDR_DONE);
    }
    CHECK(midiOutClose(device) == MMSYSERR_NOERROR);
    CHECK(recorder->LongBytes().size() == 8);
    CHECK(told.messages == std::vector<UINT>{MOM_OPEN, MOM_DONE, MOM_DONE, MOM_DONE, MOM_DONE, MOM_CLOSE});
}
#endif
