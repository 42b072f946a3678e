#include "model/edits.h"
#include "model/score.h"

#include <doctest/doctest.h>

#include <set>

using namespace editor;

namespace {

Document Twinkle() {
    Document document;
    Track& track = document.tracks[0];
    track.voice = "Susan";
    for (uint32_t i = 0; i < 4; ++i)
        AddNote(track, {.tick = i * 480, .key = i < 2 ? 60 : 67});
    TypeLyrics(track, 0, "twin-kle night[n aI t]");
    return document;
}

/// The engine parameters that a part's stream sets: the first byte of each message's number.
std::set<int> ParametersOf(const Score& score) {
    const std::unique_ptr<CQuillMidiBuffer> stream = score.MakeStream(0);
    std::set<int> parameters;
    tagQuillMidiEntry entry;
    for (stream->SeekToBegin(); stream->ReadNextEntry(&entry);) {
        BYTE message[3]{};
        stream->ReadEvent(entry.offset, message, sizeof message);
        parameters.insert(message[2]);
    }
    return parameters;
}

} // namespace

TEST_CASE("score: syllables come back as phonemes, under the notes that sing them") {
    Library library;
    const Score score(Twinkle(), library);
    REQUIRE(score.Parts().size() == 1);
    const std::vector<std::string>& phonemes = score.Parts()[0].phonemes;
    CHECK(phonemes[0] == "th w I N");
    CHECK(phonemes[2] == "n aI"); // the word's end comes with the last note that sings it
    CHECK(phonemes[3] == "aI t");
    CHECK(score.Remarks().empty());
    CHECK(score.TickOf(score.TimeOf(1440)) == 1440);
    CHECK(score.TickOf(score.LeadMilliseconds() / 2) == 0);
}

TEST_CASE("score: icons and curves reach the engine, what is not known is told once") {
    Library library;
    Document document = Twinkle();
    Track& track = document.tracks[0];
    const auto only = [&](const Document& changed) {
        std::set<int> more = ParametersOf(Score(changed, library));
        for (const int usual : ParametersOf(Score(Twinkle(), library)))
            more.erase(usual);
        return more;
    };
    SetMark(track, 0, "f");
    CHECK(only(document) == std::set{0x63}); // dynamics
    track.marks.clear();
    DrawCurve(track.curves[kDynamics], kDynamics, {0, 40}, {480, 100});
    CHECK(only(document) == std::set{0x63});
    track.curves = {};
    DrawCurve(track.curves[kPitch], kPitch, {480, 0}, {960, 200});
    CHECK(only(document) == std::set{0x54, 0x67}); // bend and its range
    track.curves = {};
    SetIcon(track, {3}, kVibrato, library.Icons(kVibrato).front());
    CHECK(only(document) == std::set{0x64, 0x65}); // its rate and depth

    SetIcon(track, {0, 1, 2}, kAttack, "Unheard of");
    track.voice = "Nobody";
    const Score score(document, library);
    CHECK(score.Remarks().size() == 2);
    CHECK(library.FindVoice(score.Parts()[0].voice));
}

TEST_CASE("score: chords, notes of a minute and tracks without notes are sung as far as they can be") {
    Library library;
    Document document = Twinkle();
    document.tracks.insert(document.tracks.begin(), Track{});
    Track& track = document.tracks[1];
    AddNote(track, {.tick = 0, .key = 72, .lyric = "ah", .icons = library.UsualIcons()});
    AddNote(track, {.tick = 1920, .length = 60000, .icons = {"", "", "", library.Icons(kVibrato).front()}});
    const Score score(document, library);
    REQUIRE(score.Parts().size() == 1);
    CHECK(score.Parts()[0].track == 1);
    CHECK(score.Parts()[0].phonemes[0].empty()); // under the chord's highest note
    CHECK_FALSE(score.Parts()[0].phonemes[1].empty());
    CHECK(score.MakeStream(0)->GetLastTime() >= score.TimeOf(61920));
    CHECK(Score(Document{}, library).Parts().empty());
}
