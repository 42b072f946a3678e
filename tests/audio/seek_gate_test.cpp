#include "torv/audio/seek_gate.h"

#include "platform/begun_thread.h"

#include <doctest/doctest.h>

#include <atomic>

TEST_CASE("seek gate: however late a seek comes, it is done once, and never by two threads at a time") {
    for (int round = 0; round < 20; ++round) {
        torv::SeekGate gate;
        std::atomic<int> posted = 0; // the queue
        std::atomic<bool> isPlaying = true;
        int done = 0; // by either thread: no atomic, the gate is what orders them
        const BegunThread player([&] {
            while (posted < round) { // closes while more are coming
            }
            gate.Close([&] { done += posted.exchange(0); });
            gate.Close([&] { done += 1000; });
            isPlaying = false;
        });
        int asked = 0;
        for (; isPlaying || asked < round + 10; ++asked)
            if (!gate.Pass([&] { ++posted; }))
                ++done;
        CHECK(player.End());
        CHECK(done == asked);
    }
}
