#include "audio/wave_out_fixture.h"
#include "values.h"

#include <algorithm>
#include <limits>
#include <random>

namespace {

using Levels = std::vector<float>;

/// The left side of what is read in such pieces, up to `most` frames.
Levels Play(CWaveFile& file, int loop = 0, DWORD piece = 1, size_t most = 99) {
    Levels played;
    Levels left(piece), right(piece);
    DWORD count = piece;
    while (played.size() < most && count == piece) {
        std::fill(left.begin(), left.end(), -9.0F);
        count = file.ReadFramesForPlay(left.data(), right.data(), piece, loop);
        played.insert(played.end(), left.begin(), left.begin() + count);
        CHECK((count == piece || left[count] == 0.0F)); // silence at the end
    }
    return played;
}

} // namespace

TEST_CASE("playing a wave file: lead-in, frames from play start to play end, tail, however many are read at a time") {
    constexpr int kData = 700;
    const Scratch path;
    CWaveFile file(path.Text(), 256); // windows of 256 frames
    file.SetWaveFormat(Format(1, 16));
    const Shorts data = Ramp(kData, 40);
    CHECK(file.AppendFrames(reinterpret_cast<const BYTE*>(data.data()), kData) == 1);
    std::mt19937 random(1);
    for (int round = 0; round < 400; ++round) {
        CAPTURE(round);
        const DWORD lead = random() % 4, tail = random() % 4, start = random() % (kData + 9);
        const DWORD end = round % 3 ? 1 + random() % (kData + 99) : start + random() % 9 + 1; // also a crossed part
        const int isMute = round % 7 == 0;
        const int loop = round % 2;
        file.SetPrePostBlanks(lead, tail);
        file.SetPlayDuration(start, end);
        file.SetPlayDuration(start, 0); // keeps the end
        file.SetMute(isMute);
        const LONG from = round % 5 ? 0 : static_cast<LONG>(random() % kData) - 9;
        CHECK(file.SeekPlayPointer(from + 5, 0) == 1);
        const LONG back = static_cast<LONG>(file.GetCurrentPlayPointer());
        CHECK(file.SeekPlayPointer(from - back, 1) == 1);

        const DWORD dataEnd = lead + std::max(start, end);
        const DWORD frames = lead + tail + (end > start ? end - start : 0);
        CHECK(file.GetPlaySamples() == frames);
        const DWORD piece = round % 4 ? 1 + random() % 600 : 1;
        Levels expected;
        DWORD at = from > 0 ? static_cast<DWORD>(from) : 0;
        const auto skip = [&] { at = at >= lead ? std::max(at, lead + start) : at; }; // to what is played
        for (skip(); loop ? frames > 0 && expected.size() < 1500 : at < dataEnd + tail;) {
            if (at >= dataEnd + tail)
                at = 0;
            skip();
            const bool isHeard = at >= lead && at < dataEnd && at - lead < kData && !isMute;
            expected.push_back(isHeard ? static_cast<float>(data[at - lead]) / 32768.0F : 0.0F);
            ++at;
            skip();
        }
        Levels played = Play(file, loop, piece, 1500);
        played.resize(std::min(played.size(), loop ? expected.size() : played.size()));
        CHECK((played == expected));
        if (!loop)
            CHECK(file.GetCurrentPlayPointer() == at);
    }
    CHECK(file.SeekPlayPointer(0, 2) == 0);
}

TEST_CASE("playing a wave file: a value is converted by bits per sample over channels, and by volume and pan") {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const struct {
        WORD channels, bits;
        DWORD value;
        double volumeLeft, volumeRight, pan;
        float left, right;
    } rows[] = {{1, 8, 192, 1, 1, 0, 0.5F, 0.5F},                      // (192 - 128) / 128
                {1, 16, 0x8000, 1, 1, 0, -1.0F, -1.0F},                // -32768 / 32768
                {1, 24, 1, 1, 1, 0, 1.0F / 32768.0F, 1.0F / 32768.0F}, // shifted by 8, over 2^23: full scale is 256
                {1, 24, 0x800000, 1, 1, 0, -256.0F, -256.0F},          // -2^31 / 2^23
                {1, 32, 0x3E800000, 1, 1, 0, 0.25F, 0.25F},            // the bits of 0.25f
                {2, 16, 1128, 1, 2, 0, 7.8125F, 15.625F},              // the rule for 8 bits: (1128 - 128) / 128
                {2, 24, 0x400000, 1, 1, 0, 0.0F, 0.0F},                // 12 bits: no rule
                {1, 16, 0x4000, 1, 2, 0.5, 0.25F, 1.5F}, // q = 0.75: left 2 x 0.25 x 1, right 2 x 0.75 x 2
                {1, 16, 0x4000, 1, 1, 1.5, 0.5F, 0.5F},
                {1, 16, 0x4000, kNaN, 2, kNaN, 0.5F, 1.0F}};
    for (const auto& row : rows) {
        CAPTURE(&row - rows);
        const Scratch path;
        CWaveFile file(path.Text());
        file.SetWaveFormat(Format(row.channels, row.bits));
        file.AppendSample(row.value);
        file.SetAmplitudes(row.volumeLeft, row.volumeRight, row.pan);
        float left = -1;
        float right = -1;
        CHECK(file.ReadSampleForPlay(left, right, 0) == 1);
        CHECK(Values(left, right) == Values(row.left, row.right));
    }
    MonoWave wave({0x1000, 0x2000});
    wave.file.SetAmplitudes(1, 2, -0.5);
    wave.file.SetPanpot(-1.0); // the volumes stay
    CHECK(Play(wave.file, 0, 1, 1) == Levels{0.25F});
    wave.file.SetVolume(0.5); // the pan stays
    CHECK(Play(wave.file) == Levels{0.25F});
}

TEST_CASE("playing a wave file: peaks are posted once an interval") {
    MonoWave wave({-0x4000, 0x2000, 0x1000, 0x800, 0x7F00}); // -0.5, 0.25, 0.125, ..
    wave.file.Close();
    CWaveFile file;
    {
        HostWindow window;
        file.SetLevelNotify(&window, &window, kHostMessage, 42, 2);
        file.SetLevelNotify(&window, nullptr, kHostMessage, 0, 0); // zeros keep code and interval
        file.SetWaveFormat(Format(2, 16));                         // and so does a format, or another file
        file.Open(wave.path.Text());
        Play(file);
        // 0.5 and 0.125 of 32767, truncated; the fifth frame waits
        CHECK(window.Take() == HostWindow::Posted{{42, 16383}, {42, 4095}});
    }
    file.Open(wave.path.Text());   // begins anew
    CHECK(Play(file).size() == 5); // nobody to tell any more

    HostWindow window;
    MonoWave second(Shorts(4409, 1)); // 50 ms are 2205 frames
    second.file.SetLevelNotify(nullptr, &window, kHostMessage, 7, 0);
    Play(second.file, 0, 9999);
    CHECK(window.Take() == HostWindow::Posted{{7, 0}});
}
