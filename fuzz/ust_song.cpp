// Any bytes as a UST, whatever they begin with.
#include "torv/songs/song_error.h"
#include "torv/songs/ust_reader.h"

#include <algorithm>
#include <cstddef>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr char kHead[] = "[#SETTING]\n";
    std::vector<unsigned char> bytes(kHead, kHead + sizeof kHead - 1);
    bytes.insert(bytes.end(), data, data + size);
    try {
        torv::songs::Song song = torv::songs::ReadUstSong(bytes, {});
        torv::songs::CompleteSong(song);
    } catch (const torv::songs::SongError&) {
        // one clear line for the user
    }
    return 0;
}
