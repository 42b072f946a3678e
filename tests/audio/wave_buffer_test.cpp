#include "audio/wave_test_files.h"
#include "values.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace {

/// The blocks of a play, "|" between them, until none comes or there are four.
std::string Play(CWaveBuffer& buffer) {
    WAVEHDR headers[2] = {};
    if (!buffer.InitialLoadDataBlock(headers))
        return "failed";
    std::string blocks;
    for (int i = 0; i < 4 && (i < 2 ? headers[i].dwBufferLength > 0 : buffer.LoadDataBlock(&headers[i % 2])); ++i)
        blocks += (i ? "|" : "") + std::string(headers[i % 2].lpData, headers[i % 2].dwBufferLength);
    return blocks;
}

} // namespace

TEST_CASE("wave buffer: the format, and lengths in bytes and in time") {
    const struct {
        int channels, bits;
        DWORD rate;
        WAVEFORMATEX format; // tag, channels, rate, bytes a second, bytes a frame, bits
        DWORD bytes, frames;
        const char* time; // minutes, seconds, milliseconds
    } cases[] = {
        {0, 0, 0, {1, 1, 44100, 88200, 2, 16, 0}, 6000001, 3000000, "1 8 27"}, // 68 s and 1200 frames: 27.2 ms
        {2, 24, 48000, {1, 2, 48000, 288000, 6, 24, 0}, 1000, 166, "0 0 3"},
        {2, 12, 8000, {1, 2, 8000, 32000, 4, 12, 0}, 1000, 250, "0 0 31"}, // bits fill whole bytes
        {-1, 0x10000, 0, {1, 1, 44100, 88200, 2, 16, 0}, 88198, 44099, "0 0 999"},
        {1, 16, 0xFFFFFFFF, {1, 1, 0xFFFFFFFF, 0xFFFFFFFF, 2, 16, 0}, 1000, 500, "0 0 0"}, // the most there is
        {1, 8, 8000000, {1, 1, 8000000, 8000000, 1, 8, 0}, 7999999, 7999999, "0 0 999"},   // beyond 32 bits
        {1, 8, 1, {1, 1, 1, 1, 1, 8, 0}, 0xFFFFFFFF, 0xFFFFFFFF, "71582788 15 0"},
    };
    CWaveBuffer buffer;
    for (const auto& test : cases) {
        CAPTURE(test.bits);
        buffer.SetRiffInfo("x.wav", 44, test.bytes);
        buffer.SetWaveInfo(test.channels, test.bits, test.rate);
        WAVEFORMATEX format;
        buffer.MakeWaveFormat(format);
        CHECK(std::memcmp(&format, &test.format, sizeof format) == 0);
        CHECK(buffer.GetWaveSize() == test.frames * test.format.nBlockAlign);
        SAMPLE_TIME time;
        buffer.GetSmapleTime(time);
        CHECK(Values(buffer.GetNumSamples(), time.samples) == Values(test.frames, test.frames));
        CHECK(Values(time.minutes, time.seconds, time.milliseconds) == test.time);
    }
    buffer.SetWaveInfo(2, 16, 44100);
    CHECK(buffer.CalcBuffSize(3) == 529200);
    CHECK(buffer.CalcBuffSize(24348) == 0xFFFFFFFF); // 24347 seconds are the last below 4 GiB
    buffer.Delete();
    CHECK(Values(buffer.GetSampleUnitSize(), buffer.GetNumSamples(), buffer.GetFilePath().IsEmpty()) == "2 0 1");

    Held stereo(2, 8, std::string(2600, 'x'), 10);
    CHECK(Values{stereo.MoveTo(7), stereo.GetIndex(), stereo.MoveTo(1301)} == "7 14 1300");
    CHECK(stereo.MoveTo(0, 2, 550) == 51); // two channels count twice: 2 x 20 + 550 x 20 / 1000
    CHECK(stereo.MoveTo(1, -59, 0) == 20);
    CHECK(stereo.MoveTo(0, 1, -2000) == 0);
    CHECK(stereo.MoveTo(32767, 32767, 32767) == 1300);
}

TEST_CASE("wave buffer: edits keep every byte, whatever the block; a frame put in by itself counts as its bytes") {
    for (const DWORD blockSize : {1u, 5u, 100000u}) {
        CAPTURE(blockSize);
        constexpr DWORD kUnit = 6;
        Held buffer(2, 24, "", 44100, blockSize);
        std::string expected;
        DWORD count = 0;
        std::mt19937 random(blockSize);
        for (int step = 0; step < 600; ++step) {
            const DWORD frames = random() % 4;
            const bool isOne = frames == 1 && step % 2;
            std::string source(frames * kUnit, '\0');
            for (char& byte : source)
                byte = static_cast<char>(random());
            const auto all = static_cast<DWORD>(expected.size() / kUnit);
            const DWORD at = random() % (all + 1);
            const DWORD counted = isOne ? kUnit : frames;
            buffer.SeekTo(at * kUnit);
            buffer.SetModify(0);
            const std::string before = expected;
            DWORD done = frames;
            const char* const from = source.data();
            switch (random() % 4) {
            case 0:
                done = isOne ? buffer.AddSample(from) : buffer.AddSample(from, frames);
                expected += source;
                count += counted;
                break;
            case 1:
                done = isOne ? buffer.InsertSample(from) : buffer.InsertSample(from, frames);
                CHECK(buffer.GetSamplePosition() == at + frames);
                expected.insert(at * kUnit, source);
                count += counted;
                break;
            case 2:
                done = isOne ? buffer.WriteSample(from) : buffer.WriteSample(from, frames);
                expected.replace(at * kUnit, source.size(), source);
                count = frames ? static_cast<DWORD>(expected.size()) / kUnit : count; // of the bytes again
                break;
            default:
                CHECK(buffer.RemoveSample(frames) == std::min(frames, all - at));
                expected.erase(at * kUnit, source.size());
                count -= std::min(count, std::min(frames, all - at));
            }
            CHECK(done == frames);
            CHECK(Values(buffer.GetModify(), buffer.GetNumSamples()) == Values(expected != before, count));
        }
        CHECK(buffer.Content() == expected);
        buffer.SeekTo(5); // from the beginning, wherever the cursor is
        CHECK(buffer.RemoveSample(torv::kAllFrames) == expected.size() / kUnit);
        CHECK(Values(buffer.GetNumSamples(), buffer.GetSize()) == "0 0");
    }
}

TEST_CASE("wave buffer: what is short or missing changes nothing") {
    Held buffer(2, 16, "1234");
    buffer.Append("56", 2); // half a frame more
    CWaveBuffer none;       // without Create
    for (CWaveBuffer* const lacking : {static_cast<CWaveBuffer*>(&buffer), &none}) {
        const bool isNone = lacking == &none;
        lacking->SetModify(0);
        lacking->SeekTo(4);
        char frames[12];
        CHECK(Values(lacking->ReadSample(frames), lacking->ReadSample(nullptr)) == "0 0");
        const char* const source = isNone ? "12345678" : nullptr;
        CHECK(Values(lacking->WriteSample(source), lacking->WriteSample(source, 2)) == "0 0");
        CHECK(Values(lacking->InsertSample(source), lacking->InsertSample(source, 2)) == "0 0");
        CHECK(Values(lacking->AddSample(source), lacking->AddSample(source, 2)) == "0 0");
        CHECK(Values(lacking->GetModify(), lacking->GetNumSamples()) == (isNone ? "0 0" : "0 1"));
        lacking->SeekTo(0);
        CHECK(lacking->ReadSample(frames, 0xFFFFFFFF / 4) == !isNone);
    }
    CHECK(none.Create(0) == 0);
    buffer.SetLoadMark(1);
    CHECK(buffer.Create(16) == 1); // begins anew, but the count may be a file's
    CHECK(Values(buffer.IsLoaded(), buffer.GetSize(), buffer.GetNumSamples()) == "0 0 1");
}

TEST_CASE("wave buffer: memory and file play the same") {
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    Held memory(1, 8, letters, 10, 7);          // ten frames of a byte in a second, and so in a play block
    const Scratch path("head" + letters + "!"); // the last is no part of the data
    CWaveBuffer file;
    file.SetRiffInfo(path.Text(), 4, 26);
    file.SetWaveInfo(1, 8, 10);
    const struct {
        DWORD start, end;
        int loop, plays;
        const char* blocks;
    } cases[] = {
        {3, 0xFFFFFFFF, 0, 1, "defghijklm|nopqrstuvw|xyz"},
        {0, 10, 0, 1, "abcdefghij"}, // nothing is left for the second
        {22, 26, 1, 1, "wxyzwxyzwx|yzwxyzwxyz|wxyzwxyzwx|yzwxyzwxyz"},
        {0, 15, 1, 1, "abcdefghij|klmnoabcde|fghijklmno|abcdefghij"},
        {10, 10, 0, 0, ""},
        {11, 10, 1, 0, ""}, // an empty loop would never fill a block
        {0xFFFFFFFF, 0xFFFFFFFF, 1, 0, ""},
    };
    for (const auto& test : cases)
        for (CWaveBuffer* const buffer : {static_cast<CWaveBuffer*>(&memory), &file}) {
            CAPTURE(test.blocks);
            memory.MoveTo(5);
            CHECK(buffer->SetPlayParam(test.start, test.end, test.loop, 0) == test.plays);
            CHECK(buffer->GetPlaySource() == (buffer == &memory ? 1 : 2));
            CHECK(Play(*buffer) == test.blocks);
            CHECK(memory.GetSamplePosition() == 5);
        }
    CHECK(memory.SetPlayParam(0, 26, 0, 3) == 1); // no source: silence, and it ends
    CHECK(Play(memory) == std::string(10, '\0') + "|" + std::string(10, '\0') + "|" + std::string(6, '\0'));
    WAVEHDR headers[2] = {};
    char own[4] = "123"; // shorter than a block
    headers[1].lpData = own;
    CHECK(Values(memory.LoadDataBlock(&headers[1]), own) == "0 123"); // a header that is not its own
    CHECK(Values(memory.InitialLoadDataBlock(nullptr), memory.LoadDataBlock(nullptr)) == "0 0");

    file.ReleaseDataCue();
    CHECK_NOTHROW(CFile::Remove(path.Text())); // the file is free again
    path.Put("headabc");                       // one that has become shorter ends the play
    for (const int loop : {0, 1}) {
        CHECK(file.SetPlayParam(0, 26, loop, 2) == 1);
        CHECK(Play(file) == (loop ? "" : "abc"));
    }
    // Frames whose bytes pass 4 GiB are refused, not wrapped around: 0x40000000 x 4 bytes would be 0.
    file.SetRiffInfo("", 0, 0xFFFFFFFF);
    file.SetWaveInfo(2, 16, 10);
    CHECK(file.SetPlayParam(0x40000000, 0xFFFFFFFF, 0, 0) == 0);
    file.SetWaveInfo(2, 16, 0xFFFFFFFF); // a second of 16 GiB
    CHECK(file.InitialLoadDataBlock(headers) == 0);
    CHECK(headers[0].lpData == nullptr);
}
