// Any bytes as a compressed score's archive: every file in it.
#include "torv/songs/zip_archive.h"
#include "torv/songs/song_error.h"

#include <cstddef>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kMost = 1U << 20;
    try {
        const torv::songs::ZipArchive archive({data, size});
        for (const std::string& name : archive.Names())
            try {
                if (archive.Read(name, kMost).value_or("").size() > kMost)
                    __builtin_trap(); // more than was asked for
            } catch (const torv::songs::SongError&) {
                // one clear line for the user
            }
    } catch (const torv::songs::SongError&) {
        // the same
    }
    return 0;
}
