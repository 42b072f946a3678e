// Any bytes as words that are given beside a song, up to the notes that sing them.
#include "torv/songs/given_words.h"
#include "torv/songs/song_error.h"

#include <cstddef>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    torv::songs::Song song;
    song.parts.resize(2);
    song.parts[0].name = "Alto";
    song.parts[0].notes.resize(9);
    song.parts[1].notes.resize(4);
    torv::songs::CompleteSong(song);
    try {
        torv::songs::SetWords(song, torv::songs::ReadWords({data, size}, "fuzz"), "fuzz");
    } catch (const torv::songs::SongError&) {
        // one clear line for the user
    }
    return 0;
}
