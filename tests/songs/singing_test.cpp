// From a song to its sound.
#include "torv/songs/casting.h"
#include "torv/songs/engine_stream.h"
#include "torv/songs/synthesis.h"

#include <doctest/doctest.h>

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
