// Files of every kind that are cut off or damaged anywhere: read or refused in one line.
#include "torv/songs/given_words.h"
#include "torv/songs/song_error.h"
#include "torv/songs/voice_line.h"

#include <doctest/doctest.h>

#include <fstream>
#include <iterator>

using namespace torv::songs;

namespace {

using FileBytes = std::vector<unsigned char>;

FileBytes ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Song ReadAny(const FileBytes& bytes, bool isWords) {
    if (!isWords)
        return ReadSong(bytes, "x");
    Song song;
    song.parts.resize(1);
    song.parts[0].notes.resize(4);
    CompleteSong(song);
    SetWords(song, ReadWords(bytes, "x"), "x");
    return song;
}

/// What is said of the bytes; empty when they are read.
std::string Said(const FileBytes& bytes, bool isWords) {
    try {
        for (const Part& part : ReadAny(bytes, isWords).parts)
            CHECK(MakeVoiceLine(part).notes.size() <= part.notes.size());
        return {};
    } catch (const SongError& error) {
        return error.what();
    }
}

} // namespace

TEST_CASE("damage: songs and words of every kind may end anywhere and have any bit wrong") {
    for (const std::string name : {"song_file/japanese.mid", "song_file/round.musicxml", "zip_archive/score.mxl",
                                   "ust_song/two.ust", "given_words/verses.txt"}) {
        CAPTURE(name);
        const FileBytes whole = ContentOf(TORV_EXAMPLES "../fuzz/corpus/" + name);
        const bool isWords = name.starts_with("given_words");
        REQUIRE_FALSE(whole.empty());
        size_t refused = 0;
        const auto ask = [&](const FileBytes& bytes) {
            const std::string said = Said(bytes, isWords);
            refused += !said.empty();
            CHECK((said.empty() || said.starts_with("x: ")));
            CHECK(said.find('\n') == std::string::npos);
        };
        for (size_t size = 0; size < whole.size(); ++size)
            ask({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        CHECK(refused > 0); // of nothing at all, at least
        for (size_t bit = 0; bit < whole.size() * 8; ++bit) {
            FileBytes bytes = whole;
            bytes[bit / 8] ^= static_cast<unsigned char>(1U << (bit % 8));
            ask(bytes);
        }
        CHECK(refused < whole.size() * 9); // most is read all the same
    }
    CHECK(Said(FileBytes(1 << 20), false).find("neither a standard") != std::string::npos);
}
