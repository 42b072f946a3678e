// Any bytes as a song of any format, up to what a voice sings of its parts.
#include "torv/songs/read_song.h"
#include "torv/songs/song_error.h"
#include "torv/songs/voice_line.h"

#include <cstddef>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        const torv::songs::Song song = torv::songs::ReadSong({data, size}, "fuzz");
        for (const torv::songs::Part& part : song.parts)
            torv::songs::MakeVoiceLine(part);
    } catch (const torv::songs::SongError&) {
        // one clear line for the user
    }
    return 0;
}
