#include "audio/wave_test_files.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Levels = std::vector<float>;

/// Four mono frames: 0.125, 0.25, 0.375, 0.5 of full scale.
Bytes FourFrames() { return MonoFile({0x00, 0x10, 0x00, 0x20, 0x00, 0x30, 0x00, 0x40}); }

/// The left side of up to `most` frames, as long as the file plays.
Levels Play(CWaveFile& file, int loop, std::size_t most) {
    Levels played;
    float left = 0;
    float right = 0;
    while (played.size() < most && file.ReadSampleForPlay(left, right, loop))
        played.push_back(left);
    return played;
}

/// The first frame of a file of that format with that left value, as played at volume 1 in the centre.
float Played(WORD channels, WORD bits, DWORD value) {
    const ScratchPath path("torv_wave_converted.wav");
    CWaveFile file(path.Text());
    file.SetWaveFormat(Format(channels, bits));
    file.AppendSample(value);
    float left = -1;
    float right = -1;
    CHECK(file.ReadSampleForPlay(left, right, 0) == 1);
    CHECK(left == right);
    return left;
}

} // namespace

TEST_CASE("playing a wave file: lead-in, frames from play start to play end, tail") {
    const ScratchPath path("torv_wave_play.wav");
    path.Write(FourFrames());
    CWaveFile file(path.Text());
    CHECK(Play(file, 0, 99) == Levels{0.125F, 0.25F, 0.375F, 0.5F});
    float left = 1;
    float right = 1;
    CHECK(file.ReadSampleForPlay(left, right, 0) == 0);
    CHECK(left == 0.0F);

    file.SetPrePostBlanks(2, 1);
    file.SetPlayDuration(1, 3);
    CHECK(file.GetPlaySamples() == 5);
    file.SeekPlayPointer(0, 0);
    CHECK(Play(file, 0, 99) == Levels{0, 0, 0.25F, 0.375F, 0});

    SUBCASE("a loop starts again with the lead-in") {
        file.SeekPlayPointer(0, 0);
        CHECK(Play(file, 1, 8) == Levels{0, 0, 0.25F, 0.375F, 0, 0, 0, 0.25F});
    }
    SUBCASE("a loop without blanks is seamless, and its pointer returns to the play start") {
        file.SetPrePostBlanks(0, 0);
        file.SeekPlayPointer(0, 0);
        CHECK(file.GetCurrentPlayPointer() == 1);
        CHECK(Play(file, 1, 5) == Levels{0.25F, 0.375F, 0.25F, 0.375F, 0.25F});
        CHECK(file.GetCurrentPlayPointer() == 2);
    }
    SUBCASE("a pointer among the frames that are not played stands for the play start") {
        file.SeekPlayPointer(2, 0); // lead-in 2 + frame 0
        CHECK(file.GetCurrentPlayPointer() == 3);
        CHECK(Play(file, 0, 1) == Levels{0.25F});
        CHECK(file.SeekPlayPointer(-3, 1) == 1);
        CHECK(file.GetCurrentPlayPointer() == 1);
        CHECK(file.SeekPlayPointer(-3, 1) == 1); // never before 0
        CHECK(file.GetCurrentPlayPointer() == 0);
        CHECK(file.SeekPlayPointer(0, 2) == 0);
    }
    SUBCASE("an end of 0 keeps the old one; an end beyond the data plays silence; a crossed part plays nothing") {
        file.SetPrePostBlanks(0, 0);
        file.SetPlayDuration(2, 0);
        file.SeekPlayPointer(0, 0);
        CHECK(Play(file, 0, 99) == Levels{0.375F});
        file.SetPlayDuration(3, 6);
        file.SeekPlayPointer(0, 0);
        CHECK(Play(file, 0, 99) == Levels{0.5F, 0, 0});
        file.SetPlayDuration(4, 2);
        file.SeekPlayPointer(0, 0);
        CHECK(Play(file, 1, 99).empty()); // and a loop over nothing ends
    }
    SUBCASE("muted frames pass in silence") {
        file.SetMute(1);
        file.SeekPlayPointer(0, 0);
        CHECK(Play(file, 0, 99) == Levels(5));
    }
}

TEST_CASE("playing a wave file: the timeline is as long as it says") {
    const ScratchPath path("torv_wave_length.wav");
    path.Write(FourFrames());
    CWaveFile file(path.Text());
    file.SetPrePostBlanks(100, 50);
    file.SetPlayDuration(0, 1000);
    CHECK(file.GetPlaySamples() == 1150);
    for (const DWORD lead : {0u, 1u, 3u})
        for (const DWORD tail : {0u, 2u})
            for (const DWORD start : {0u, 1u, 4u}) {
                file.SetPrePostBlanks(lead, tail);
                file.SetPlayDuration(start, 4);
                file.SeekPlayPointer(0, 0);
                CHECK(Play(file, 0, 99).size() == file.GetPlaySamples());
            }
}

TEST_CASE("playing a wave file: a value is converted by bits per sample over channels") {
    CHECK(Played(1, 8, 192) == 0.5F);           // (192 - 128) / 128
    CHECK(Played(1, 16, 0x8000) == -1.0F);      // -32768 / 32768
    CHECK(Played(1, 24, 1) == 1.0F / 32768.0F); // shifted by 8, over 2^23: full scale is 256
    CHECK(Played(1, 24, 0x800000) == -256.0F);  // -2^31 / 2^23
    CHECK(Played(1, 32, 0x3E800000) == 0.25F);  // the bits of 0.25f
    CHECK(Played(2, 16, 1128) == 7.8125F);      // the rule for 8 bits: (1128 - 128) / 128
    CHECK(Played(2, 24, 0x400000) == 0.0F);     // 12 bits: no rule
}

TEST_CASE("playing a wave file: volume and pan") {
    const ScratchPath path("torv_wave_pan.wav");
    path.Write(FourFrames());
    CWaveFile file(path.Text());
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    struct Row {
        double volumeLeft;
        double volumeRight;
        double pan;
        float left; ///< of the last frame, 0.5
        float right;
    };
    const Row rows[] = {{1, 1, 0, 0.5F, 0.5F},    {1, 1, -1, 1.0F, 0.0F},   {1, 1, 1, 0.0F, 1.0F},
                        {1, 2, 0.5, 0.25F, 1.5F}, // q = 0.75: left 2 x 0.25 x 1, right 2 x 0.75 x 2
                        {1, 1, 1.5, 0.5F, 0.5F},  {1, 1, kNaN, 0.5F, 0.5F}, {kNaN, 1, 0, 0.5F, 0.5F}};
    for (const auto& row : rows) {
        CAPTURE(row.pan);
        file.SetAmplitudes(row.volumeLeft, row.volumeRight, row.pan);
        file.SeekPlayPointer(3, 0);
        float left = -1;
        float right = -1;
        CHECK(file.ReadSampleForPlay(left, right, 0) == 1);
        CHECK(left == row.left);
        CHECK(right == row.right);
    }
}

TEST_CASE("playing a wave file: peaks are posted once an interval") {
    const ScratchPath path("torv_wave_levels.wav");
    path.Write(MonoFile({0x00, 0xC0, 0x00, 0x20, 0x00, 0x10, 0x00, 0x08, 0x00, 0x7F})); // -0.5, 0.25, 0.125, ..
    CWaveFile file;
    CWnd window(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
    REQUIRE(window.m_hWnd != nullptr);
    file.SetLevelNotify(&window, nullptr, WM_USER + 7, 42, 2);
    file.SetLevelNotify(&window, nullptr, WM_USER + 7, 0, 0); // zeros keep code and interval
    file.SetWaveFormat(Format(2, 16));                        // and so does a format, or another file
    file.Open(path.Text());
    Play(file, 0, 99);
    std::vector<LPARAM> peaks;
    MSG message;
    while (PeekMessageA(&message, window.m_hWnd, WM_USER + 7, WM_USER + 7, PM_REMOVE)) {
        CHECK(message.wParam == 42);
        peaks.push_back(message.lParam);
    }
    CHECK(peaks == std::vector<LPARAM>{16383, 4095}); // 0.5 and 0.125 of 32767, truncated; the fifth frame waits
    DestroyWindow(window.m_hWnd);
    file.SeekPlayPointer(0, 0);
    CHECK(Play(file, 0, 99).size() == 5); // nobody to tell any more
}

TEST_CASE("playing a wave file: how many frames are read at a time changes none of them") {
    const ScratchPath path("torv_wave_pieces.wav");
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
    file.GetWaveData(kept.data(), static_cast<DWORD>(kept.size()));
    CHECK(kept == data);

    file.SetAmplitudes(0.7, 0.9, -0.3);
    file.SetPrePostBlanks(30, 20);
    for (const int loop : {0, 1})
        for (const DWORD end : {690u, 800u}) { // 800: the last 100 are silent
            file.SetPlayDuration(10, end);
            Levels lefts(3000, -1.0F);
            Levels rights(3000, -1.0F);
            file.SeekPlayPointer(0, 0);
            size_t played = 0;
            for (size_t i = 0; i < lefts.size(); ++i)
                played += static_cast<size_t>(file.ReadSampleForPlay(lefts[i], rights[i], loop));
            CHECK(played == (loop ? 3000 : 50 + end - 10));
            CHECK(lefts[31] == static_cast<float>(static_cast<SHORT>(11 | (11 * 37 & 0xFF) << 8) * 1.3 * 0.7 / 32768));
            for (const DWORD piece : {7u, 256u, 1000u}) {
                Levels left(3000 + piece, -1.0F);
                Levels right(3000 + piece, -1.0F);
                file.SeekPlayPointer(0, 0);
                for (DWORD at = 0; at < 3000; at += piece)
                    file.ReadFramesForPlay(&left[at], &right[at], piece, loop);
                CHECK(std::equal(lefts.begin(), lefts.end(), left.begin()));
                CHECK(std::equal(rights.begin(), rights.end(), right.begin()));
            }
        }
}
