#include "companions/rve/engine_text.h"
#include "synthesis/play_fixture.h"

namespace {

constexpr int kPresend = 500; // milliseconds

/// A play of the reference engine: all of a song's state is set at its very beginning.
struct ReferencePlay : Play {
    ReferencePlay() {
        driver.CloseSynthesizer();
        driver.SetEngineLibrary("RVE.dll");
        REQUIRE(driver.OpenSynthesizer() == 1);
        Add(0, Stream().Value(0x60, 0, kPresend));
        Add(0, Stream().Value(0x53, 3, kPresend));   // a bass
        Add(0, Stream().Value(0x63, 110, kPresend)); // loud
        Add(0, Stream().Value(0x64, 100, kPresend)); // a fast vibrato,
        Add(0, Stream().Value(0x65, 90, kPresend));  // deep
        Add(0, Stream().Value(0x67, 12, kPresend));  // bends of an octave
        Add(0, Stream().Bend(4096, kPresend));       // half of it
        Add(0, Stream().VoiceControl(0, 127, kPresend));
        Add(0, Stream().VoiceControl(1, 20, kPresend));
        for (int i = 0; i < 4; ++i) {
            Stream::NoteText note;
            note.note = 50 + i;
            note.startMs = kPresend;
            note.lengthMs = 700;
            note.vibratoStart = 30;
            Add(500 + i * 1000, Stream().Note(note)); // heard at 1, 2, 3 and 4 seconds
        }
        streams[0].SetLast(1, 4700);
    }
    void Add(LONG time, const Stream& text) {
        Bytes bytes;
        for (const RVEEvent& event : text.Events())
            bytes.insert(bytes.end(), {event.status, event.data1, event.data2});
        REQUIRE(streams[0].AddEvent(1, bytes.data(), static_cast<DWORD>(bytes.size()), time) == 1);
    }
    Samples PlayFrom(DWORD position, int chase) {
        SetUp(kPresend, chase);
        const size_t before = Heard().size();
        const size_t ends = HowOften(kEnd);
        Begin(0, 0x7FFFFFFF, position);
        REQUIRE(Await([&] { return HowOften(kEnd) > ends; }));
        Samples heard = Heard();
        heard.erase(heard.begin(), heard.begin() + static_cast<std::ptrdiff_t>(before));
        return heard;
    }
};

} // namespace

TEST_CASE("play: from the middle the reference engine sings as if it had sung all along") {
    ReferencePlay play;
    const Samples whole = play.PlayFrom(0, 1);
    REQUIRE(whole.size() > 44100 * 4);
    const Samples middle = play.PlayFrom(2500, 1); // from step 430, which is at 2496.1 ms
    const Samples unchased = play.PlayFrom(2500, 0);
    constexpr size_t kBegin = 430 * 256;
    const auto farthest = [&whole](const Samples& heard, double fromMs) {
        int most = 0;
        const auto from = static_cast<size_t>(fromMs * 44.1);
        for (size_t i = from; i < from + 44100 / 2; ++i)
            most = std::max(most, std::abs(whole[i] - heard[i - kBegin]));
        return most;
    };
    CHECK(farthest(middle, 3000) <= 4); // of 32768: in the first note a rest of the beginning
    CHECK(farthest(middle, 4000) == 0);
    CHECK(farthest(unchased, 4000) > 3000); // another voice, softer, on another note
}
