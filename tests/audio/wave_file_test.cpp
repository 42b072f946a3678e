#include "allocation_failure.h"
#include "audio/wave_test_files.h"
#include "values.h"

#include <algorithm>
#include <random>

TEST_CASE("wave file: a new path becomes a header, and frames stand behind it") {
    const Scratch path;
    CWaveFile file(path.Text());
    file.Close();
    CHECK(path.Get() == Wave(Fmt(2, 16) + Chunk("data", "")));
    file.Open(path.Text());
    file.AppendSample(0x0102, 0xFFFE);
    file.AppendSample(0x0304);
    file.Close();
    CHECK(path.Get() == "RIFF\x2C\0\0\0WAVEfmt \x10\0\0\0\1\0\2\0" // 8 bytes of data + 36; PCM, 2 channels
                        "\x44\xAC\0\0\x10\xB1\2\0\4\0\x10\0"       // 44100, 176400, 4, 16
                        "data\x08\0\0\0\x02\x01\xFE\xFF\x04\x03\x04\x03"s);
}

TEST_CASE("wave file: what was appended is read, wherever the buffer is; a full one is written by itself") {
    const DWORD rows[][2] = {{0, 1024}, {1, 256}, {256, 256}, {300, 512}}; // frames asked for, and held
    for (const auto& [asked, held] : rows) {
        CAPTURE(asked);
        const Scratch path(MonoFile(""));
        CWaveFile file(path.Text(), asked);
        Shorts model;
        size_t at = 0;
        std::mt19937 random(asked);
        while (model.size() < 3 * held) {
            const auto frames = static_cast<LONG>(model.size());
            const LONG place = static_cast<LONG>(random() % (model.size() + 20)) - 10;
            DWORD left = 1;
            DWORD right = 2;
            switch (model.size() < held ? 9 : random() % 8) {
            default:
                CHECK((frames != static_cast<LONG>(held) - 1 || path.Get() == MonoFile("")));
                model.push_back(static_cast<short>(random()));
                CHECK(file.AppendSample(static_cast<DWORD>(model.back()), 99) == 1);
                CHECK((model.size() % held != 0 || path.Get().size() == 44 + 2 * model.size()));
                break;
            case 0:
                CHECK(file.SeekSample(random() % 2 ? place : place - static_cast<LONG>(at), 0) == 1);
                file.SeekSample(place - static_cast<LONG>(file.GetTotalSamples()) * 9, 1); // held at the beginning
                CHECK(file.SeekSample(place, 1) == 1);
                at = static_cast<size_t>(std::clamp<LONG>(place, 0, frames));
                break;
            case 1:
                CHECK(file.ReadSample(left, right) == (at < model.size()));
                CHECK(static_cast<short>(left) == (at < model.size() ? model[at] : 0));
                CHECK(left == right);
                at = std::min(at + 1, model.size());
                break;
            case 2:
                if (random() % 50 == 0) {
                    file.SetLength(static_cast<ULONGLONG>(frames - 3) * 2);
                    model.resize(model.size() - 3);
                    at = std::min(at, model.size());
                }
            }
        }
        CHECK(file.AppendFrames(reinterpret_cast<const BYTE*>(model.data()), 3 * held) == 1);
        CHECK(file.SeekSample(0, 2) == 0);
        file.Flush(); // the header is true at every flush
        model.insert(model.end(), model.begin(), model.end());
        CHECK(path.Get().substr(0, 44) == MonoFile(std::string(model.size() * 2, '?')).substr(0, 44));
        CHECK((ShortsIn(path.Get(), 44) == model));
        std::vector<short> read(model.size());
        file.AppendSample(0x12345, 0);
        file.SeekSample(1, 0);
        CHECK(file.ReadFrames(reinterpret_cast<BYTE*>(read.data()), 0xFFFFFFFF) == model.size());
        model.erase(model.begin());
        model.push_back(0x2345);
        CHECK((read == model));
        CHECK(file.ReadFrames(reinterpret_cast<BYTE*>(read.data()), 1) == 0);
    }
}

TEST_CASE("wave file: what is no wave file of this layout is refused and left as it was") {
    const std::string good = MonoFile(Words({1, 2}));
    const struct {
        const char* what;
        std::size_t at;
        char value;
    } damages[] = {{"RIFF", 3, 'X'},           {"WAVE", 8, 'w'},    {"fmt", 12, 'F'},       {"fmt size", 16, 18},
                   {"data", 36, 'L'},          {"length", 4, 41},   {"align 0", 32, 0},     {"channels 0", 22, 0},
                   {"align too large", 32, 4}, {"12 bits", 34, 12}, {"64 channels", 22, 64}};
    for (const auto& damage : damages) {
        CAPTURE(damage.what);
        std::string bad = good;
        bad[damage.at] = damage.value;
        const Scratch path(bad);
        CWaveFile file;
        CHECK_THROWS_AS(file.Open(path.Text()), const CFileException&);
        CHECK(path.Get() == bad);
        CHECK(file.AppendSample(1) == 0); // nothing is open
        CFileException error;
        CHECK_FALSE(static_cast<CFile&>(file).Open(path.Text(), CFile::modeRead, &error));
        CHECK(error.m_cause == CFileException::invalidFile);
    }
    CHECK_THROWS_AS(CWaveFile(CString("/no/such/folder/at all.wav")), const CFileException&);

    const Scratch path(MonoFile(Words({1, 2}) + "\x09")); // a broken frame at the end is not read, and written over
    CWaveFile file(path.Text());
    CHECK(Values(file.GetTotalSamples(), file.GetWaveDataByte()) == "2 5");
    file.AppendSample(3);
    Bytes data(8, 0xEE);
    CHECK(file.GetWaveData(data.data(), 8) == 6);
    CHECK(data == Bytes{1, 0, 2, 0, 3, 0, 0xEE, 0xEE});
    for (const ULONGLONG length : {0xFFFFFFFFFFULL, 0xFFFFFFFFULL}) // no header can tell that
        file.SetLength(length);
    file.Close();
    CHECK(path.Get() == MonoFile(Words({1, 2, 3})));
    file.Open(path.Text());
    CHECK(Values{file.Remove(), path.Exists(), file.Remove()} == "1 0 0");
    CHECK_THROWS_AS(file.OpenExisting(path.Text()), const CFileException&);
    CHECK_FALSE(path.Exists());
}

TEST_CASE("wave file: only an empty file changes its format") {
    const Scratch path(Wave(Fmt(2, 16) + Chunk("data", "")));
    CWaveFile file(path.Text());
    file.SetWaveFormat({1, 1, 44100, 88200, 4, 16, 0}); // four bytes for one 16-bit value
    CHECK(path.Get().substr(12, 24) == Fmt(2, 16));
    file.SetWaveFormat(Format(1, 16));
    CHECK(path.Get() == MonoFile(""));
    CHECK(file.SamplesToMilliSec(441) == 10.0);
    CHECK(file.MilliSecToSamples(20) == doctest::Approx(882));
    file.AppendSample(1, 99); // one channel takes the left value
    file.SetWaveFormat(Format(2, 16));
    file.Close();
    CHECK(path.Get() == MonoFile(Words({1})));
}

TEST_CASE("wave file: raw data scaled by the gains, each value by its own width") {
    CWaveFile file;
    const struct {
        WORD channels, bits;
        int clip;
        double left, right; // volumes at the centre
        std::string in, out;
    } rows[] = {
        {2, 16, 0, 0.5, 0.0, Words({1000, 1000}) + "x", Words({500, 0}) + "x"}, // a broken frame is copied
        {1, 16, 1, 2.0, 2.0, Words({30000, -30000}), Words({32767, -32768})},   // stay at the ends
        {1, 16, 0, 2.0, 2.0, Words({30000}), Words({-5536})},                   // 60000 wraps
        {1, 8, 1, 2.0, 2.0, "\x90\xE4\x1C", "\xA0\xFF\0"s},                     // +16, +-100 around 128
        {1, 32, 0, 0.5, 0.5, Le(0x3F800000), Le(0x3F000000)},                   // 1.0f, 0.5f
    };
    for (const auto& row : rows) {
        file.SetWaveFormat(Format(row.channels, row.bits));
        file.SetAmplitudes(row.left, row.right, 0.0);
        Bytes data(row.in.begin(), row.in.end());
        CHECK(file.AddVolumeToWaveData(data.data(), data.data(), static_cast<DWORD>(data.size()), row.clip) == 1);
        CHECK(std::string(data.begin(), data.end()) == row.out);
    }
    CHECK(file.AddVolumeToWaveData(nullptr, nullptr, 4, 0) == 0);
}

TEST_CASE("wave file: without memory nothing is open, or nothing has changed") {
    FailEachAllocation([&](AllocationFailure& failure) {
        const Scratch path(MonoFile(""));
        const CString name = path.Text();
        CWaveFile file;
        const bool isSet = failure.During([&] {
            if (static_cast<CFile&>(file).Open(name, 0, nullptr))
                try {
                    file.SetWaveFormat(Format(2, 32));
                    return true;
                } catch (const CMemoryException&) {
                }
            return false;
        });
        CHECK((isSet || failure.HasHappened())); // what failed once may have been had at the second try
        const int isOpen = file.AppendSample(0x40000000);
        CHECK(file.GetLength() == (isSet ? 8 : 2 * isOpen));
    });
}
