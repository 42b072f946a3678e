#include "allocation_failure.h"
#include "audio/wave_test_files.h"
#include "values.h"

TEST_CASE("wave file: a new path becomes a header, and every frame appended is in the bytes") {
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

    CHECK(file.Open(path.Text()) == 1); // goes on at its end
    file.AppendSample(5, 6);
    file.Flush(); // the header is true at every flush
    CHECK(path.Get() == Wave(Fmt(2, 16) + Chunk("data", Words({0x0102, 0xFFFE, 0x0304, 0x0304, 5, 6}))));
    DWORD left = 0;
    DWORD right = 0;
    const auto read = [&] { return file.ReadSample(left, right); };
    CHECK(Values{read(), left, right} == "1 258 65534");
    CHECK(file.SeekSample(1, 1) == 1); // over the second
    CHECK(Values{read(), left, right} == "1 5 6");
    CHECK(Values{read(), left, right} == "0 0 0");
    CHECK(file.SeekSample(-9, 1) == 1); // held at the beginning
    CHECK(file.SeekSample(0, 2) == 0);
    CHECK(Values{read(), left, right} == "1 258 65534");
}

TEST_CASE("wave file: the buffer's size changes no byte; a full buffer is written by itself") {
    std::string reference;
    const DWORD rows[][2] = {{0, 1024}, {1, 256}, {256, 256}, {300, 512}}; // frames asked for, and held
    for (const auto& [asked, held] : rows) {
        CAPTURE(asked);
        const Scratch path;
        CWaveFile(path.Text()).Close(); // what is opened, not made, can be read by others meanwhile
        CWaveFile file(path.Text(), asked);
        DWORD left = 0;
        DWORD right = 0;
        for (DWORD i = 0; i < 3000; ++i) {
            if (i == held - 1)
                CHECK(path.Get().size() == 44);
            file.AppendSample(i, i * 7);
            if (i == held - 1)
                CHECK(path.Get().size() == 44 + held * 4);
            if (i > 1024 && i % 501 == 500) { // reading takes the buffer elsewhere
                file.SeekSample(static_cast<LONG>(i / 2), 0);
                CHECK(file.ReadSample(left, right) == 1);
                CHECK(left == i / 2);
            }
        }
        file.Close();
        if (reference.empty())
            reference = path.Get();
        CHECK(reference.size() == 44 + 3000 * 4);
        CHECK((path.Get() == reference));
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
        CFile& base = file;
        CHECK_FALSE(base.Open(path.Text(), CFile::modeRead, &error));
        CHECK(error.m_cause == CFileException::invalidFile);
    }
    CHECK_THROWS_AS(CWaveFile(CString("/no/such/folder/at all.wav")), const CFileException&);

    const Scratch path(MonoFile(Words({1, 2}) + "\x09")); // a broken frame at the end is not read, and written over
    CWaveFile file(path.Text());
    CHECK(Values(file.GetTotalSamples(), file.GetWaveDataByte()) == "2 5");
    file.AppendSample(3);
    file.Close();
    CHECK(path.Get() == MonoFile(Words({1, 2, 3})));
}

TEST_CASE("wave file: only an empty file changes its format") {
    const Scratch path;
    CWaveFile file(path.Text());
    file.SetWaveFormat({1, 1, 44100, 88200, 4, 16, 0}); // four bytes for one 16-bit value
    WAVEFORMATEX format;
    file.GetWaveFormat(format);
    CHECK(+format.nChannels == 2);
    file.SetWaveFormat(Format(1, 16));
    CHECK(file.SamplesToMilliSec(441) == 10.0);
    CHECK(file.MilliSecToSamples(20) == doctest::Approx(882));
    file.AppendSample(1, 99); // one channel takes the left value
    file.SetWaveFormat(Format(2, 16));
    file.Close();
    CHECK(path.Get() == MonoFile(Words({1})));
}

TEST_CASE("wave file: length and whole data") {
    const Scratch path(MonoFile(Words({1, 2})));
    CWaveFile file(path.Text());
    file.AppendSample(3);
    Bytes data(8, 0xEE);
    CHECK(file.GetWaveData(data.data(), 8) == 6);
    CHECK(data == Bytes{1, 0, 2, 0, 3, 0, 0xEE, 0xEE});
    file.SeekSample(99, 0); // held at the end
    file.SetLength(2);
    DWORD left = 0;
    DWORD right = 0;
    CHECK(file.ReadSample(left, right) == 0);
    file.AppendSample(9);
    for (const ULONGLONG length : {0xFFFFFFFFFFULL, 0xFFFFFFFFULL}) { // no header can tell that
        file.SetLength(length);
        CHECK(file.GetLength() == 4);
    }
    file.Close();
    CHECK(path.Get() == MonoFile(Words({1, 9})));
    file.Open(path.Text());
    CHECK(file.Remove() == 1);
    CHECK_FALSE(path.Exists());
    CHECK(file.Remove() == 0);
}

TEST_CASE("wave file: raw data scaled by the gains, each value by its own width") {
    CWaveFile file;
    const struct {
        WORD channels, bits;
        int clip;
        double left, right; // volumes at the centre
        std::string in, out;
    } rows[] = {
        {1, 16, 0, 0.5, 9, Words({1000, -1000}), Words({500, -500})},
        {2, 16, 0, 1.0, 0.0, Words({1000, 1000}) + "x", Words({1000, 0}) + "x"}, // a broken frame is copied
        {1, 16, 1, 2.0, 2.0, Words({30000, -30000}), Words({32767, -32768})},    // stay at the ends
        {1, 16, 0, 2.0, 2.0, Words({30000}), Words({-5536})},                    // 60000 wraps
        {1, 8, 0, 0.5, 0.5, "\xE4\x1C\x80", "\xB2\x4E\x80"},                     // +-100 around 128
        {1, 8, 1, 2.0, 2.0, "\xE4\x1C", "\xFF\0"s},
        {1, 24, 0, 0.5, 0.5, Le(0x800000, 3), Le(0xC00000, 3)}, // -8388608 halved
        {1, 32, 0, 0.5, 0.5, Le(0x3F800000), Le(0x3F000000)},   // 1.0f, 0.5f
    };
    for (const auto& row : rows) {
        CAPTURE(&row - rows);
        file.SetWaveFormat(Format(row.channels, row.bits));
        file.SetAmplitudes(row.left, row.right, 0.0);
        std::string out(row.in.size(), '?');
        CHECK(file.AddVolumeToWaveData(reinterpret_cast<const BYTE*>(row.in.data()), reinterpret_cast<BYTE*>(&out[0]),
                                       static_cast<DWORD>(out.size()), row.clip) == 1);
        CHECK(out == row.out);
    }
    CHECK(file.AddVolumeToWaveData(nullptr, nullptr, 4, 0) == 0);
}

TEST_CASE("wave file: without memory nothing is open, or nothing has changed") {
    FailEachAllocation([&](AllocationFailure& failure) {
        const Scratch path(MonoFile(""));
        CWaveFile file;
        CFile& base = file;
        const CString name = path.Text();
        const BOOL isOpen = failure.During([&] { return base.Open(name, 0, nullptr); });
        CHECK((isOpen || failure.HasHappened())); // what failed once may have been had at the second try
        CHECK(file.AppendSample(1) == isOpen);
    });
    FailEachAllocation([&](AllocationFailure& failure) {
        const Scratch path(MonoFile(""));
        CWaveFile file(path.Text());
        const bool isSet = failure.During([&] {
            try {
                file.SetWaveFormat(Format(2, 32));
                return true;
            } catch (const CMemoryException&) {
                return false;
            }
        });
        CHECK(isSet != failure.HasHappened());
        CHECK(file.AppendSample(0x40000000) == 1);
        CHECK(file.GetLength() == (isSet ? 8 : 2));
    });
}
