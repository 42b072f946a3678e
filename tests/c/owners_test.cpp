// The C++ owners over the C interface.
#include <torv/c/torv.hpp>

#include <doctest/doctest.h>

using namespace torv::c;

TEST_CASE("owners: what is moved is freed once, and what fails is thrown with its status") {
    Song song = Song::Make();
    torv_song* const handle = song;
    Song other = std::move(song);
    CHECK(!song);
    CHECK(static_cast<torv_song*>(other) == handle);
    other = Song::Make();
    torv_song_info info = Sized<torv_song_info>();
    CHECK(torv_song_get_info(handle, &info) == TORV_BAD_HANDLE); // freed by the assignment
    other.AddPart("Alto");
    CHECK(other.Copy().Info().parts == 1);
    try {
        other.AddNote(0, 0, 480, 128, "x");
        FAIL("a key beyond 127 is taken");
    } catch (const Failure& failure) {
        CHECK(failure.Status() == TORV_OUT_OF_RANGE);
        CHECK(std::string(failure.what()).find("127") != std::string::npos);
    }
}

TEST_CASE("owners: spans show a sound's samples") {
    const float samples[] = {0.5F, -0.5F, 0.25F, 0.0F};
    const Sound sound(48000, 2, samples);
    CHECK(sound.Info().frames == 2);
    CHECK(std::vector<float>(sound.Samples().begin(), sound.Samples().end()) ==
          std::vector<float>{0.5F, -0.5F, 0.25F, 0.0F});
}
