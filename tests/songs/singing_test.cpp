// From a song to its sound.
#include "torv/songs/casting.h"
#include "torv/songs/engine_stream.h"
#include "torv/songs/song_error.h"
#include "torv/songs/sound_curves.h"
#include "torv/songs/synthesis.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

using namespace torv::songs;

namespace {

Part PartOf(const std::string& name, int key) {
    Part part;
    part.name = name;
    for (uint32_t i = 0; i < 4; ++i)
        part.notes.push_back({i * 480, 400, key + static_cast<int>(i), 90, {{1, "la", false, false, false, {}}}});
    return part;
}

std::vector<char> BytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST_CASE("casting: by name, else by clef, else by range") {
    const MessageCatcher messages;
    Databases databases(messages);
    struct Row {
        const char* name;
        const char* clef;
        int key;
        const char* voice;
    };
    for (const Row& row :
         {Row{"Soprano 1", "bass", 40, "Susan"}, Row{"B.", "", 72, "Angus"}, Row{"Contralto", "", 60, "Susan"},
          Row{"Children", "", 60, "Robin"}, Row{"Mannen", "treble-8", 72, "Roger"}, Row{"Part", "bass", 72, "Angus"},
          Row{"Part", "treble", 60, "Susan"}, Row{"Part", "", 59, "Roger"}, Row{"Part", "", 52, "Roger"},
          Row{"Part", "", 51, "Angus"}}) { // by the third of four ascending keys: 62 and 54 are the lowest
        CAPTURE(row.name);
        CAPTURE(row.key);
        Part part = PartOf(row.name, row.key);
        part.clef = row.clef;
        CHECK(databases.NameOf(CastVoice(part, torv::kEnglish, databases)) == row.voice);
    }
    CHECK(databases.NameOf(CastVoice(PartOf("Bass", 45), torv::kJapanese, databases)) == "Akira");
    CHECK(StagePan(0, 1) == 0);
    CHECK(StagePan(1, 3) == 0);
    CHECK(StagePan(0, 4) == -StagePan(3, 4));

    CHECK(GuessOtherLanguage({"Stille", "Nacht", "und", "nicht", "der", "die"}) == "German");
    CHECK(GuessOtherLanguage({"Praise", "Him", "all", "of", "the", "und", "der", "die"}).empty()); // three of them
    CHECK(GuessOtherLanguage({"La", "la", "la", "la", "la"}).empty());
}

TEST_CASE("synthesis: parts side by side sound as one after another") {
    const MessageCatcher messages;
    Databases databases(messages);
    Song song;
    song.parts = {PartOf("S", 70), PartOf("A", 65), PartOf("B", 45)};
    CompleteSong(song);
    std::vector<PartPlan> plans;
    for (const Part& part : song.parts)
        plans.push_back({part.name, MakeVoiceLine(part), {{0, CastVoice(part, torv::kEnglish, databases)}}, {}, {}});
    plans[0].voices.push_back({1600, CastVoice(PartOf("Child", 60), torv::kEnglish, databases)}); // in the last note
    Score score = BuildScore(song, plans, {}, databases);
    AddPhonemes(score, messages);
    REQUIRE(score.parts.size() == 3);
    const CBreakPointList* const gender = score.parts[0].track->GetVoiceControlBreakPointList(16);
    REQUIRE(gender != nullptr);
    CHECK(gender->GetHead().value == 70); // the child's; the woman's is the usual one
    CHECK(gender->GetHead().position == static_cast<LONG>(score.leadTicks) + 1600);
    const auto sing = [&](const std::vector<size_t>& parts) {
        std::vector<std::unique_ptr<CQuillMidiBuffer>> streams;
        std::vector<std::unique_ptr<CWaveFile>> waves;
        std::vector<SingJob> jobs;
        for (const size_t i : parts) {
            streams.push_back(MakeEngineStream(score, score.parts[i], 2000));
            std::filesystem::remove("songs_test_" + std::to_string(i) + ".wav");
            waves.push_back(std::make_unique<CWaveFile>(("songs_test_" + std::to_string(i) + ".wav").c_str()));
            jobs.push_back({streams.back().get(), waves.back().get()});
        }
        double last = 0;
        SingStreams(jobs, 44100, [&](double done, double total) {
            CHECK(total == static_cast<double>(parts.size()));
            last = std::max(last, done);
        });
        CHECK(last == static_cast<double>(parts.size()));
    };
    std::vector<std::vector<char>> alone;
    for (size_t i = 0; i < 3; ++i) {
        sing({i});
        alone.push_back(BytesOf("songs_test_" + std::to_string(i) + ".wav"));
        CHECK(alone[i].size() > 44100 * 2);
    }
    sing({0, 1, 2});
    for (size_t i = 0; i < 3; ++i) {
        CHECK(BytesOf("songs_test_" + std::to_string(i) + ".wav") == alone[i]);
        std::filesystem::remove("songs_test_" + std::to_string(i) + ".wav");
    }
}

namespace {

/// The first part's samples.
std::vector<int16_t> SungPart(const Score& score) {
    const char* const path = "songs_test_sung.wav";
    std::filesystem::remove(path);
    {
        const auto stream = MakeEngineStream(score, score.parts[0], 2000);
        CWaveFile wave(path);
        SingStreams({{stream.get(), &wave}}, 44100);
    }
    const std::vector<char> bytes = BytesOf(path);
    std::filesystem::remove(path);
    std::vector<int16_t> samples((bytes.size() - 44) / 2);
    std::memcpy(samples.data(), bytes.data() + 44, samples.size() * 2);
    return samples;
}

} // namespace

TEST_CASE("slides: the pitch is on its way for all of a note, beside other bends; a short note has a slow transition") {
    const MessageCatcher messages;
    Databases databases(messages);
    Song song;
    Part part = PartOf("S", 69); // 69 until 1 s, 74 until 2 s, 74 for an eighth of a second, 71
    for (size_t i = 0; i < 4; ++i) {
        part.notes[i].tick = i < 3 ? static_cast<uint32_t>(960 * i) : 2040;
        part.notes[i].length = i < 2 ? 960 : 120;
        part.notes[i].key = i == 0 ? 69 : i < 3 ? 74 : 71;
        part.notes[i].slides = i % 2 == 0;
    }
    song.parts = {part};
    CompleteSong(song);
    CHECK_FALSE(MakeVoiceLine(part, 1, true).notes[0].slides); // in a plain song
    PartPlan plan{
        "S", MakeVoiceLine(part), {{0, databases.Find(kVoices, "Alice")}}, {}, FindExpressions(databases, {})};
    plan.curves.bends = {{1500, 4096}};
    Score score = BuildScore(song, {plan}, {}, databases);
    AddPhonemes(score, messages);
    const CBreakPointList& bends = *score.parts[0].track->GetPitchBendBreakPointList();
    CHECK(score.parts[0].track->GetPitchBendSensBreakPointList()->GetHead().value == 5);
    CHECK(bends.GetTail().position == static_cast<LONG>(score.leadTicks) + 1500);
    CHECK(bends.GetTail().value == 8192 / 5); // a semitone, as half of two was

    const std::vector<int16_t> samples = SungPart(score);
    const double begin = score.leadMilliseconds / 1000.0;
    const SoundCurves curves = MeasureSound(samples, 44100, {{begin, begin + 1, 71}, {begin + 1, begin + 3, 74}});
    for (const double at : {0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 0.96, 1.0, 1.04, 1.1, 1.2}) {
        const double pitch = curves.pitch.at(static_cast<size_t>(std::lround((begin + at) / kCurveStep)));
        CHECK_MESSAGE(std::abs(pitch - (69 + 5 * std::min(at, 1.0))) < 0.25, at << " s: " << pitch);
    }
}

TEST_CASE("a part with more notes than a track can give lyrics is told, and one with so many is built") {
    const MessageCatcher messages;
    Databases databases(messages);
    Song song;
    Part part = PartOf("S", 69);
    const Note note = part.notes.front();
    part.notes.assign(65535, note);
    for (uint32_t i = 0; i < part.notes.size(); ++i) {
        part.notes[i].tick = i * 60;
        part.notes[i].length = 60;
    }
    const auto build = [&] {
        song.parts = {part};
        CompleteSong(song);
        return BuildScore(song, {{"S", MakeVoiceLine(part), {{0, databases.Find(kVoices, "Alice")}}, {}, {}}}, {},
                          databases);
    };
    CHECK_THROWS_WITH_AS(build(), doctest::Contains("65535 notes are more than one track can give lyrics (65534)"),
                         SongError);
    part.notes.pop_back();
    CHECK(build().parts.front().notes.size() == 65534);
}

TEST_CASE("breaths: heard before the song and in its pauses, but not in short ones, and no notes of the part") {
    const MessageCatcher messages;
    Databases databases(messages);
    Song song;
    Part part = PartOf("S", 69);
    part.notes.resize(3);
    part.notes[1].tick = 1920; // after a second's pause
    part.notes[2].tick = 2592; // after less than half of one
    for (Note& note : part.notes)
        note.length = note.tick == 0 ? 960 : 240;
    song.parts = {part};
    CompleteSong(song);
    PartPlan plan{"S", MakeVoiceLine(part), {{0, databases.Find(kVoices, "Alice")}}, {}, {}};
    plan.breathes = true;
    Score score = BuildScore(song, {plan}, {}, databases);
    AddPhonemes(score, messages);
    CHECK(score.parts[0].notes.size() == 3);
    const std::vector<int16_t> samples = SungPart(score);
    const auto level = [&](double from, double to) {
        double sum = 0;
        const auto at = [&](double seconds) {
            return static_cast<size_t>((score.leadMilliseconds / 1000.0 + seconds) * 44100);
        };
        for (size_t i = at(from); i < at(to); ++i)
            sum += samples[i] * samples[i];
        return std::sqrt(sum / static_cast<double>(at(to) - at(from))) / 32768;
    };
    CHECK(level(-0.8, -0.6) == 0);
    for (const double note : {0.0, 2.0}) {
        CHECK(level(note - 0.5, note - 0.2) > 0.005); // softer than the voice
        CHECK(level(note - 0.5, note - 0.2) < 0.03);
    }
    CHECK(level(1.3, 1.4) < 0.0005);
    CHECK(level(2.36, 2.5) < 0.003);
}
