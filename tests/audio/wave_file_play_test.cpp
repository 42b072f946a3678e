#include "audio/wave_out_fixture.h"

#include <limits>

namespace {

using Levels = std::vector<float>;

/// Four mono frames: 0.125, 0.25, 0.375, 0.5 of full scale.
struct FourFrames : MonoWave {
    FourFrames() : MonoWave({0x1000, 0x2000, 0x3000, 0x4000}) {}
};

/// The left side of up to `most` frames, as long as the file plays.
Levels Play(CWaveFile& file, int loop = 0, std::size_t most = 99) {
    Levels played;
    float left = 0;
    float right = 0;
    while (played.size() < most && file.ReadSampleForPlay(left, right, loop))
        played.push_back(left);
    CHECK((played.size() == most || left == 0.0F)); // silence at the end
    return played;
}

} // namespace

TEST_CASE("playing a wave file: lead-in, frames from play start to play end, tail") {
    const struct {
        DWORD lead, tail, start, end;
        int loop, mute;
        LONG from;
        Levels played; // up to eight
        DWORD pointer; // then
    } rows[] = {{0, 0, 0, 0, 0, 0, 0, {0.125F, 0.25F, 0.375F, 0.5F}, 4},
                {2, 1, 1, 3, 0, 0, 0, {0, 0, 0.25F, 0.375F, 0}, 6},
                {2, 1, 1, 3, 1, 0, 0, {0, 0, 0.25F, 0.375F, 0, 0, 0, 0.25F}, 4}, // again with the lead-in
                {0, 0, 1, 3, 1, 0, 0, {0.25F, 0.375F, 0.25F, 0.375F, 0.25F, 0.375F, 0.25F, 0.375F}, 3},
                {2, 1, 1, 3, 0, 0, 2, {0.25F, 0.375F, 0}, 6}, // a pointer among frames that are not played
                {2, 1, 1, 3, 0, 0, -9, {0, 0, 0.25F, 0.375F, 0}, 6},
                {2, 1, 1, 3, 0, 1, 0, {0, 0, 0, 0, 0}, 6}, // muted
                {0, 0, 2, 0, 0, 0, 0, {0.375F, 0.5F}, 4},  // an end of 0 keeps the old one
                {0, 0, 3, 6, 0, 0, 0, {0.5F, 0, 0}, 6},    // an end beyond the data plays silence
                {0, 0, 4, 2, 1, 0, 0, {}, 4}};             // a crossed part nothing, and a loop over it ends
    for (const auto& row : rows) {
        CAPTURE(&row - rows);
        FourFrames wave;
        CWaveFile& file = wave.file;
        file.SetPrePostBlanks(row.lead, row.tail);
        file.SetPlayDuration(row.start, row.end);
        file.SetMute(row.mute);
        CHECK(file.SeekPlayPointer(row.from, 0) == 1);
        CHECK(Play(file, row.loop, 8) == row.played);
        CHECK(file.GetCurrentPlayPointer() == row.pointer);
        if (!row.loop && row.from <= 0)
            CHECK(file.GetPlaySamples() == row.played.size());
    }
    FourFrames wave;
    wave.file.SeekPlayPointer(3, 0);
    CHECK(wave.file.SeekPlayPointer(-2, 1) == 1);
    CHECK(wave.file.GetCurrentPlayPointer() == 1);
    CHECK(wave.file.SeekPlayPointer(0, 2) == 0);
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
                {1, 16, 0x4000, 1, 1, -1, 1.0F, 0.0F},
                {1, 16, 0x4000, 1, 2, 0.5, 0.25F, 1.5F}, // q = 0.75: left 2 x 0.25 x 1, right 2 x 0.75 x 2
                {1, 16, 0x4000, 1, 1, 1.5, 0.5F, 0.5F},
                {1, 16, 0x4000, 1, 1, kNaN, 0.5F, 0.5F},
                {1, 16, 0x4000, kNaN, 2, 0, 0.5F, 1.0F}};
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
        CHECK(left == row.left);
        CHECK(right == row.right);
    }
    FourFrames wave;
    wave.file.SetAmplitudes(1, 2, -0.5);
    wave.file.SetPanpot(-1.0); // the volumes stay
    CHECK(Play(wave.file, 0, 1) == Levels{0.25F});
    wave.file.SetVolume(0.5); // the pan stays
    CHECK(Play(wave.file) == Levels{0.25F, 0.375F, 0.5F});
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
    file.SeekPlayPointer(0, 0);
    CHECK(Play(file).size() == 5); // nobody to tell any more

    HostWindow window;
    MonoWave second(Shorts(4409, 1)); // 50 ms are 2205 frames
    second.file.SetLevelNotify(nullptr, &window, kHostMessage, 7, 0);
    Play(second.file, 0, 9999);
    CHECK(window.Take() == HostWindow::Posted{{7, 0}});
}

TEST_CASE("playing a wave file: how many frames are read at a time changes none of them") {
    const Scratch path;
    CWaveFile file(path.Text(), 256); // windows of 256 frames
    file.SetWaveFormat(Format(1, 16));
    Bytes data;
    for (int i = 0; i < 700; ++i) {
        data.push_back(static_cast<BYTE>(i));
        data.push_back(static_cast<BYTE>(i * 37));
    }
    CHECK(file.AppendFrames(data.data(), 200) == 1);
    CHECK(file.AppendFrames(data.data() + 400, 500) == 1);
    Bytes kept(data.size());
    CHECK(file.GetWaveData(kept.data(), 9999) == kept.size());
    CHECK(kept == data);

    file.SetPrePostBlanks(30, 20);
    for (const int loop : {0, 1})
        for (const DWORD end : {690u, 800u}) { // 800: the last 100 are silent
            file.SetPlayDuration(10, end);
            const auto read = [&](DWORD piece) {
                Levels levels(8000, -1.0F);
                file.SeekPlayPointer(0, 0);
                DWORD played = 0;
                for (DWORD at = 0; at < 3000; at += piece)
                    played += file.ReadFramesForPlay(&levels[at], &levels[at + 4000], piece, loop);
                CHECK((loop || played == 50 + end - 10));
                return Levels(levels.begin(), levels.begin() + 3000);
            };
            const auto one = read(1);
            CHECK(one[31] == static_cast<float>(static_cast<short>(11 | (11 * 37 & 0xFF) << 8)) / 32768);
            for (const DWORD piece : {7u, 256u, 1000u})
                CHECK((read(piece) == one));
        }
}
