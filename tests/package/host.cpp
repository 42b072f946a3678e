#include <torv/songs/read_song.h>
#include <torv/songs/score_builder.h>
#include <torv/torv.h>

#include <cstdio>
#include <exception>

/// Reads a song with one library and counts its ticks with the other.
int main(int count, char** arguments) try {
    if (count < 2)
        return 2;
    const torv::songs::Song song = torv::songs::ReadSongFile(arguments[1]);
    std::printf("%zu notes, a measure has %d ticks\n", song.parts.at(0).notes.size(),
                CSequenceObject::CalcMeasureClock(4, 2));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
