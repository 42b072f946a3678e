#include "torv/platform/save_turn.h"

#include "platform/begun_thread.h"
#include "platform/temp_folder.h"

#include <doctest/doctest.h>

#include <memory>
#include <string>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

constexpr int kRounds = 100;

/// Each round reads a number again and writes the next one.
void Count(const TempFolder& folder) {
    for (int round = 0; round < kRounds; ++round) {
        const torv::SaveTurn turn(folder.Path("count").c_str());
        const std::string next = std::to_string(std::stoi(folder.Content("count")) + 1);
        folder.File("count", next.c_str());
    }
}

} // namespace

TEST_CASE("save turn: what two write after reading it again is all there") {
    const TempFolder folder;
    folder.File("count", "0");
    SUBCASE("threads") {
        const BegunThread other([&] { Count(folder); });
        Count(folder);
        CHECK(other.End());
    }
#if !defined(_WIN32)
    SUBCASE("processes") {
        const pid_t child = fork();
        Count(folder);
        if (child == 0)
            _exit(0);
        CHECK(waitpid(child, nullptr, 0) == child);
    }
#endif
    CHECK(folder.Content("count") == std::to_string(2 * kRounds));
    CHECK(std::distance(std::filesystem::directory_iterator(folder.Path("")), {}) == 1);
}

TEST_CASE("save turn: one that is over leaves the way to the next, and a folder that is not there is no bar") {
    const TempFolder folder;
    for (int round = 0; round < 3; ++round)
        CHECK(torv::SaveTurn(folder.Path("x").c_str()).IsHeld());
#if !defined(_WIN32)
    CHECK_FALSE(torv::SaveTurn(folder.Path("nowhere/x").c_str()).IsHeld());
#endif
}
