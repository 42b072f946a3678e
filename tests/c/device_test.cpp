// What a player gives a wave device, which is in the test's hand where a library may be shown one.
#include <torv/c/torv.hpp>

#include <doctest/doctest.h>

#if !defined(_WIN32)
#include "wave_recorder.h"

#include <algorithm>
#include <cmath>

using namespace torv::c;

TEST_CASE("a player's device is given what a pulling host reads, in two channels of sixteen bits") {
    constexpr size_t kFrames = 3 * 48000 / 20; // the three buffers that it keeps there
    const WaveRecorderInList device;
    const Score score = Score::Make(Song::Open("c_twinkle.mid"), Databases::Open());
    std::vector<float> read(2 * kFrames);
    for (const int pull : {1, 0}) {
        torv_player_options options{};
        options.rate = 48000;
        options.pull = pull;
        Player player = Player::Make(score, options);
        while (player.State().sung < 3000)
            Sleep(1);
        player.Seek(2500);
        player.Start();
        if (pull)
            CHECK(player.Read(read) == TORV_OK);
        else
            while (device->Finish(1) == 0 || device->Played().size() < 4 * kFrames)
                Sleep(1);
    }
    CHECK(device->Format().nSamplesPerSec == 48000);
    CHECK(device->Format().nChannels == 2);
    CHECK(device->Format().wBitsPerSample == 16);
    std::vector<BYTE> wanted;
    for (const float value : read) {
        const auto sample = static_cast<int>(std::lround(value * 32768));
        wanted.insert(wanted.end(), {static_cast<BYTE>(sample), static_cast<BYTE>(sample >> 8)});
    }
    std::vector<BYTE> played = device->Played();
    played.resize(wanted.size());
    CHECK(played == wanted);
    CHECK(*std::max_element(wanted.begin(), wanted.end()) > 0);
}
#endif
