#include "allocation_failure.h"
#include "audio/wave_test_files.h"

#include <doctest/doctest.h>

TEST_CASE("wave file: a new path becomes a header, and every frame appended is in the bytes") {
    const ScratchPath path;
    CWaveFile file(path.Text());
    file.Close();
    CHECK(path.Content().size() == 44);
    file.Open(path.Text());
    file.AppendSample(0x0102, 0xFFFE);
    file.AppendSample(0x0304);
    file.Close();
    CHECK(path.Content() ==
          Bytes{'R',  'I',  'F',  'F',  44,   0,    0,    0,   'W', 'A', 'V', 'E', // 8 bytes of data + 36
                'f',  'm',  't',  ' ',  16,   0,    0,    0,   1,   0,   2,   0,   // PCM, 2 channels
                0x44, 0xAC, 0,    0,    0x10, 0xB1, 2,    0,   4,   0,   16,  0,   // 44100, 176400, 4, 16
                'd',  'a',  't',  'a',  8,    0,    0,    0,                       //
                0x02, 0x01, 0xFE, 0xFF, 0x04, 0x03, 0x04, 0x03});

    CHECK(file.Open(path.Text()) == 1); // goes on at its end
    CHECK(file.GetTotalSamples() == 2);
    file.AppendSample(5, 6);
    file.Flush(); // the header is true at every flush
    CHECK(path.Content().size() == 44 + 12);
    CHECK(path.Content()[4] == 12 + 36);
    CHECK(path.Content()[40] == 12);
    DWORD left = 0;
    DWORD right = 0;
    CHECK(file.ReadSample(left, right) == 1);
    CHECK(left == 0x0102);
    CHECK(right == 0xFFFE);
    CHECK(file.SeekSample(1, 1) == 1); // over the second
    CHECK(file.ReadSample(left, right) == 1);
    CHECK(right == 6);
    CHECK(file.ReadSample(left, right) == 0);
    CHECK(right == 0);
    CHECK(file.SeekSample(0, 2) == 0);
    while (file.GetTotalSamples() < 1024)
        file.AppendSample(7);
    CHECK(path.Content().size() == 44 + 4096); // a full buffer flushes by itself
    CHECK(path.Content()[41] == 0x10);
}

TEST_CASE("wave file: the buffer's size changes no byte") {
    Bytes reference;
    for (const DWORD frames : {1u, 256u, 300u, 5000u}) { // 1 counts as 256, 300 as 512
        CAPTURE(frames);
        const ScratchPath path;
        CWaveFile(path.Text()).Close(); // what is opened, not made, can be read by others meanwhile
        CWaveFile file(path.Text(), frames);
        DWORD left = 0;
        DWORD right = 0;
        for (DWORD i = 0; i < 3000; ++i) {
            file.AppendSample(i, i * 7);
            if (i == (frames <= 256 ? 255u : 511u) && frames <= 300)
                CHECK(path.Content().size() == 44 + 4 * (i + 1)); // full, and written
            if (i % 501 == 500) {                                 // reading takes the buffer elsewhere
                file.SeekSample(static_cast<LONG>(i / 2), 0);
                CHECK(file.ReadSample(left, right) == 1);
                CHECK(left == i / 2);
            }
        }
        file.Close();
        if (reference.empty())
            reference = path.Content();
        CHECK(reference.size() == 44 + 3000 * 4);
        CHECK(path.Content() == reference);
    }
}

TEST_CASE("wave file: what is no wave file of this layout is refused and left as it was") {
    const ScratchPath path;
    const Bytes good = MonoFile({1, 0, 2, 0});
    const struct {
        const char* what;
        std::size_t at;
        BYTE value;
    } damages[] = {{"RIFF", 3, 'X'},           {"WAVE", 8, 'w'},    {"fmt", 12, 'F'},       {"fmt size", 16, 18},
                   {"data", 36, 'L'},          {"length", 4, 41},   {"align 0", 32, 0},     {"channels 0", 22, 0},
                   {"align too large", 32, 4}, {"12 bits", 34, 12}, {"64 channels", 22, 64}};
    for (const auto& damage : damages) {
        CAPTURE(damage.what);
        Bytes bad = good;
        bad[damage.at] = damage.value;
        path.Write(bad);
        CWaveFile file;
        CHECK_THROWS_AS(file.Open(path.Text()), const CFileException&);
        CHECK(path.Content() == bad);
        CHECK(file.AppendSample(1) == 0); // nothing is open
        CFileException error;
        CFile& base = file;
        CHECK_FALSE(base.Open(path.Text(), CFile::modeRead, &error));
        CHECK(error.m_cause == CFileException::invalidFile);
    }
    CHECK_THROWS_AS(CWaveFile(CString("/no/such/folder/at all.wav")), const CFileException&);

    Bytes broken = MonoFile({1, 0, 2, 0, 9}); // a broken frame at the end is not read, and written over
    path.Write(broken);
    CWaveFile file(path.Text());
    CHECK(file.GetTotalSamples() == 2);
    CHECK(file.GetWaveDataByte() == 5);
    file.AppendSample(3);
    file.Close();
    CHECK(path.Content() == MonoFile({1, 0, 2, 0, 3, 0}));
}

TEST_CASE("wave file: only an empty file changes its format") {
    const ScratchPath path;
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
    CHECK(path.Content() == MonoFile({1, 0}));
}

TEST_CASE("wave file: length and whole data") {
    const ScratchPath path;
    path.Write(MonoFile({1, 0, 2, 0}));
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
    CHECK(path.Content() == MonoFile({1, 0, 9, 0}));
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
        Bytes in, out;
    } rows[] = {
        {1, 16, 0, 0.5, 9, {0xE8, 0x03, 0x18, 0xFC}, {0xF4, 0x01, 0x0C, 0xFE}},         // 1000, -1000 halved
        {2, 16, 0, 1.0, 0.0, {0xE8, 0x03, 0xE8, 0x03, 0x77}, {0xE8, 0x03, 0, 0, 0x77}}, // a broken frame is copied
        {1, 16, 1, 2.0, 2.0, {0x30, 0x75, 0xD0, 0x8A}, {0xFF, 0x7F, 0x00, 0x80}},       // +-30000 stay at the ends
        {1, 16, 0, 2.0, 2.0, {0x30, 0x75}, {0x60, 0xEA}},                               // 60000 wraps to -5536
        {1, 8, 0, 0.5, 0.5, {228, 28, 128}, {178, 78, 128}},                            // +-100 around 128
        {1, 8, 1, 2.0, 2.0, {228, 28}, {255, 0}},
        {1, 24, 0, 0.5, 0.5, {0x00, 0x00, 0x80}, {0x00, 0x00, 0xC0}},             // -8388608 halved
        {1, 32, 0, 0.5, 0.5, {0x00, 0x00, 0x80, 0x3F}, {0x00, 0x00, 0x00, 0x3F}}, // 1.0f, 0.5f
    };
    for (const auto& row : rows) {
        CAPTURE(&row - rows);
        file.SetWaveFormat(Format(row.channels, row.bits));
        file.SetAmplitudes(row.left, row.right, 0.0);
        Bytes out(row.in.size());
        CHECK(file.AddVolumeToWaveData(row.in.data(), out.data(), static_cast<DWORD>(out.size()), row.clip) == 1);
        CHECK(out == row.out);
    }
    CHECK(file.AddVolumeToWaveData(nullptr, nullptr, 4, 0) == 0);
}

TEST_CASE("wave file: without memory nothing is open, or nothing has changed") {
    const ScratchPath path;
    FailEachAllocation([&](AllocationFailure& failure) {
        path.Write(MonoFile({}));
        CWaveFile file;
        CFile& base = file;
        const CString name = path.Text();
        if (failure.During([&] { return base.Open(name, 0, nullptr); })) {
            file.AppendSample(1); // what failed once may have been had at the second try
        } else {
            CHECK(failure.HasHappened());
            CHECK(file.AppendSample(1) == 0);
        }
    });
    FailEachAllocation([&](AllocationFailure& failure) {
        path.Write(MonoFile({}));
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
