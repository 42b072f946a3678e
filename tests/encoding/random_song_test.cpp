#include "random_song.h"

// The library's encoder against a plain one, over random songs: every block, its place and its bytes, in both modes.

namespace {

/// Up to the first place where the stream is another.
void CheckSame(CQuillMidiBuffer& stream, const std::vector<StreamEntry>& expected) {
    const auto entries = EntriesOf(stream);
    CHECK(entries.size() == expected.size());
    for (size_t i = 0; i < std::min(entries.size(), expected.size()); ++i) {
        CAPTURE(i);
        REQUIRE(Values(entries[i].tick, entries[i].time) == Values(expected[i].tick, expected[i].time));
        REQUIRE(entries[i].bytes == expected[i].bytes);
    }
}

} // namespace

TEST_CASE("encoder: random songs become what a plain encoder makes of them") {
    struct FileEncoder : CxQuillMidiEncoder {
        int Write(CQuillMidiBuffer& buffer, CSequenceObject& track, const tagSequenceTimeMap* map) {
            const TrackRun run(*this, buffer, &track);
            return WriteQuillMidiTrack(&track, map);
        }
    };
    const Articulations catalogue;
    size_t blocks = 0;
    for (unsigned seed = 1; seed <= 400; ++seed) {
        CAPTURE(seed);
        RandomSong song(seed);
        FileEncoder encoder;
        song.SetUp(encoder);
        const PlainEncoder plain(song, encoder);
        const auto stream = Encode(song, encoder);
        REQUIRE(stream);
        CheckSame(*stream, plain.placed);
        CHECK(Values(stream->GetLastTick(), stream->GetLastTime()) == Values(plain.lastTick, plain.lastTime));
        blocks += plain.placed.size();

        const DWORD interval = seed % 3;
        CQuillMidiBuffer buffer;
        buffer.Create(CxQuillMidiEncoder::kFileMode, encoder.GetPresendTime(), static_cast<int>(interval));
        REQUIRE(encoder.Write(buffer, song.Track(), MapOf(song).get()) == 1);
        CheckSame(buffer, plain.Messages(interval));
    }
    CHECK(blocks > 15000);
}
