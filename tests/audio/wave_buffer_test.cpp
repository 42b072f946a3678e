#include "audio/wave_test_files.h"
#include "values.h"

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

TEST_CASE("wave buffer: the format") {
    const struct {
        int channels, bits;
        DWORD rate;
        WAVEFORMATEX format; // tag, channels, rate, bytes a second, bytes a frame, bits
        DWORD frames;        // of 1000 bytes
    } cases[] = {
        {0, 0, 0, {1, 1, 44100, 88200, 2, 16, 0}, 500},
        {2, 24, 48000, {1, 2, 48000, 288000, 6, 24, 0}, 166},
        {2, 12, 8000, {1, 2, 8000, 32000, 4, 12, 0}, 250}, // bits fill whole bytes
        {-1, 0x10000, 0, {1, 1, 44100, 88200, 2, 16, 0}, 500},
        {1, 16, 0xFFFFFFFF, {1, 1, 0xFFFFFFFF, 0xFFFFFFFF, 2, 16, 0}, 500}, // cannot be told: the most there is
    };
    CWaveBuffer buffer;
    buffer.SetRiffInfo("x.wav", 44, 1000);
    for (const auto& test : cases) {
        CAPTURE(test.bits);
        buffer.SetWaveInfo(test.channels, test.bits, test.rate);
        WAVEFORMATEX format;
        buffer.MakeWaveFormat(format);
        CHECK(std::memcmp(&format, &test.format, sizeof format) == 0);
        CHECK(buffer.GetNumSamples() == test.frames);
        CHECK(buffer.GetWaveSize() == test.frames * test.format.nBlockAlign);
    }
    buffer.SetWaveInfo(2, 16, 44100);
    CHECK(buffer.CalcBuffSize(3) == 529200);
    CHECK(buffer.CalcBuffSize(24348) == 0xFFFFFFFF); // 24347 seconds are the last below 4 GiB
    buffer.Delete();
    CHECK(Values(buffer.GetSampleUnitSize(), buffer.GetNumSamples(), buffer.GetFilePath().IsEmpty()) == "2 0 1");
}

TEST_CASE("wave buffer: time of a length, place of a time") {
    const struct {
        DWORD rate, frames;
        const char* time; // minutes, seconds, milliseconds
    } cases[] = {
        {44100, 3000000, "1 8 27"}, // 68 s and 1200 frames: 27.2 ms
        {44100, 44099, "0 0 999"},
        {8000000, 7999999, "0 0 999"}, // the product passes 32 bits
        {1, 0xFFFFFFFF, "71582788 15 0"},
    };
    for (const auto& test : cases) {
        CWaveBuffer file;
        file.SetRiffInfo("", 0, test.frames);
        file.SetWaveInfo(1, 8, test.rate);
        SAMPLE_TIME time;
        file.GetSmapleTime(time);
        CHECK(time.samples == test.frames);
        CHECK(Values(time.minutes, time.seconds, time.milliseconds) == test.time);
    }

    Held stereo(2, 8, std::string(2600, 'x'), 10);
    CHECK(Values{stereo.MoveTo(7), stereo.GetIndex(), stereo.MoveTo(1301)} == "7 14 1300");
    CHECK(stereo.MoveTo(0, 2, 550) == 51); // two channels count twice: 2 x 20 + 550 x 20 / 1000
    CHECK(stereo.MoveTo(1, -59, 0) == 20);
    CHECK(stereo.MoveTo(0, 1, -2000) == 0);
    CHECK(stereo.MoveTo(32767, 32767, 32767) == 1300);
}

TEST_CASE("wave buffer: edits of whole frames keep every byte, whatever the frame and the block") {
    for (const int bits : {8, 24})
        for (const DWORD blockSize : {1u, 5u, 100000u}) {
            CAPTURE(bits);
            CAPTURE(blockSize);
            Held buffer(2, bits, "", 44100, blockSize);
            const auto unit = static_cast<DWORD>(2 * bits / 8);
            std::string expected;
            std::mt19937 random(blockSize + unit);
            for (int step = 0; step < 200; ++step) {
                const DWORD frames = random() % 12;
                std::string source(frames * unit, '\0');
                for (char& byte : source)
                    byte = static_cast<char>(random());
                const auto all = static_cast<DWORD>(expected.size() / unit);
                const DWORD at = random() % (all + 1);
                CHECK(buffer.MoveTo(at) == at);
                buffer.SetModify(0);
                DWORD changed = frames;
                switch (random() % 4) {
                case 0:
                    CHECK(buffer.AddSample(source.data(), frames) == frames);
                    expected += source;
                    break;
                case 1:
                    CHECK(buffer.WriteSample(source.data(), frames) == frames);
                    expected.replace(at * unit, source.size(), source);
                    break;
                case 2:
                    changed = std::min(frames, all - at);
                    CHECK(buffer.RemoveSample(frames) == changed);
                    expected.erase(at * unit, source.size());
                    break;
                default:
                    CHECK(buffer.InsertSample(source.data(), frames) == frames);
                    CHECK(buffer.GetSamplePosition() == at + frames);
                    expected.insert(at * unit, source);
                }
                CHECK(buffer.GetModify() == (changed > 0));
                CHECK(buffer.GetNumSamples() == expected.size() / unit);
            }
            CHECK(buffer.Content() == expected);
        }
}

TEST_CASE("wave buffer: a frame put in by itself counts as its bytes; what is short or missing changes nothing") {
    Held buffer(2, 16, "");
    CHECK(Values{buffer.AddSample("1234"), buffer.GetNumSamples(), buffer.GetModify()} == "1 4 1");
    CHECK(Values{buffer.AddSample("5678", 1), buffer.GetNumSamples()} == "1 5");
    buffer.SeekTo(4);
    CHECK(Values{buffer.InsertSample("abcd"), buffer.GetNumSamples()} == "1 9");
    buffer.SeekTo(4);
    CHECK(Values{buffer.WriteSample("efgh"), buffer.GetNumSamples()} == "1 3"); // of the bytes again
    CHECK(buffer.Content() == "1234efgh5678");
    buffer.AddSample("9abc");
    buffer.MoveTo(1);
    CHECK(Values{buffer.RemoveSample(1), buffer.GetNumSamples()} == "1 6"); // 3 + 4 - 1
    // From the beginning, wherever the cursor is.
    CHECK(Values{buffer.RemoveSample(0xFFFFFFFF), buffer.GetNumSamples(), buffer.GetSize()} == "3 0 0");

    buffer.AddSample("1234", 1);
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
        {0, 26, 0, 1, "abcdefghij|klmnopqrst|uvwxyz"},
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

    file.ReleaseDataCue();
    CHECK_NOTHROW(CFile::Remove(path.Text())); // the file is free again
    path.Put("headabc");                       // one that has become shorter ends the play
    for (const int loop : {0, 1}) {
        CHECK(file.SetPlayParam(0, 26, loop, 2) == 1);
        CHECK(Play(file) == (loop ? "" : "abc"));
    }
    file.SetRiffInfo("torv_no_such_file.wav", 4, 26);
    CHECK(Play(file) == "failed");
}

TEST_CASE("wave buffer: headers that are not its own, counts and sizes that cannot be") {
    Held buffer(1, 16, "", 4);
    buffer.AddSample("ab"); // counts two
    CHECK(buffer.SetPlayParam(0, 0xFFFFFFFF, 0, 0) == 1);
    CHECK(Play(buffer) == "ab");
    WAVEHDR headers[2] = {};
    CHECK(buffer.InitialLoadDataBlock(nullptr) == 0);
    CHECK(buffer.LoadDataBlock(nullptr) == 0);
    CHECK(buffer.InitialLoadDataBlock(headers) == 1);
    char own[4] = "123"; // shorter than a block
    WAVEHDR foreign{};
    foreign.lpData = own;
    CHECK(buffer.LoadDataBlock(&foreign) == 0);
    CHECK(own == "123"s);
    buffer.ReleaseDataCue();
    CHECK(buffer.LoadDataBlock(&headers[0]) == 0); // its block is gone

    // Frames whose bytes pass 4 GiB are refused, not wrapped around: 0x40000000 x 4 bytes would be 0.
    CWaveBuffer vast;
    vast.SetRiffInfo("", 0, 0xFFFFFFFF);
    vast.SetWaveInfo(1, 8, 10);
    CHECK(vast.SetPlayParam(0, 0xFFFFFFFF, 0, 0) == 1);
    vast.SetWaveInfo(2, 16, 10);
    CHECK(vast.SetPlayParam(0x40000000, 0xFFFFFFFF, 0, 0) == 0);
    vast.SetWaveInfo(2, 16, 0xFFFFFFFF); // a second of 16 GiB
    CHECK(vast.InitialLoadDataBlock(headers) == 0);
    CHECK(headers[0].lpData == nullptr);
}
