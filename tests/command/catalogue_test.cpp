// Voices, expressions and dynamics from the databases, as a user names them.
#include "analysis.h"
#include "run_command.h"

#include "errors.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <set>

namespace {

/// Eight bars of 4/4 at 120 beats a minute, two seconds each, with one note of seven quarters of an eighth's bar.
FileBytes LongNotes() {
    TrackBytes voice;
    uint32_t wait = 0;
    for (int bar = 0; bar < 8; ++bar) {
        voice.Lyric(wait, "la").On(0, 60).Off(1680, 60);
        wait = 240;
    }
    return MidiFile(1, 480, {TrackBytes(), voice});
}

std::vector<double> Bar(const std::vector<double>& sound, int bar) {
    return Part(sound, bar * 2000 - 1500, bar * 2000 - 600);
}

} // namespace

TEST_CASE("voices and icons: listed as text and as JSON") {
    const Folder folder;
    Run run = folder.Torv("voices --json");
    REQUIRE(run.status == 0);
    const auto voices = nlohmann::json::parse(run.said);
    std::set<std::string> languages, sounds;
    for (const auto& voice : voices) {
        languages.insert(voice["language"].get<std::string>());
        sounds.insert(voice["program"].dump() + voice["parameters"].dump());
    }
    CHECK(voices.size() >= 3);
    CHECK(sounds.size() == voices.size()); // no two sound the same
    CHECK(languages == std::set<std::string>{"English", "Japanese"});
    run = folder.Torv("voices");
    CHECK(run.said.find("Alice") != std::string::npos);
    CHECK(std::count(run.said.begin(), run.said.end(), '\n') == static_cast<int>(voices.size()) + 1);

    run = folder.Torv("icons --json");
    REQUIRE(run.status == 0);
    std::map<std::string, int> kinds;
    for (const auto& icon : nlohmann::json::parse(run.said))
        ++kinds[icon["kind"].get<std::string>()];
    CHECK(kinds == std::map<std::string, int>{
                       {"attack", 5}, {"dynamics", 16}, {"release", 4}, {"transition", 3}, {"vibrato", 5}});
    run = folder.Torv("icons --kind vibrato");
    CHECK(run.said.find("Wide Vibrato") != std::string::npos);
    CHECK(run.said.find("Attack") == std::string::npos);
    run = folder.Torv("icons --kind dinamics");
    CHECK(run.status == 2);
    CHECK(run.said.find("did you mean dynamics") != std::string::npos);
    CHECK(folder.Count() == 0); // looking leaves nothing
}

TEST_CASE("sing: voices, dynamics and expressions are heard where they were asked for") {
    const Folder folder;
    const std::string song = folder.File("long.mid", LongNotes());
    const auto sing = [&](const std::string& options) {
        const Run run = folder.Torv("sing " + song + " -o command_test_files/out.wav --language en " + options);
        CAPTURE(run.said);
        REQUIRE(run.status == 0);
        return Wave(folder.path / "out.wav");
    };
    const std::vector<double> plain = sing("--plain");
    SUBCASE("another voice from a bar on") {
        const std::vector<double> child = sing("--plain --voice Robin");
        const std::vector<double> sound = sing("--plain --voice Robin --voice-at 5=George");
        CHECK(Bar(sound, 4) == Bar(child, 4));
        CHECK(Bar(sound, 5) != Bar(child, 5));
        // The same note, of a longer tract: its energy lies lower.
        const auto centre = [](const std::vector<double>& part) {
            double low = 0, all = 0;
            for (int harmonic = 1; harmonic <= 12; ++harmonic) {
                const double level = Tone(part, HzOf(60) * harmonic);
                low += level * harmonic;
                all += level;
            }
            return low / all;
        };
        CHECK(centre(Bar(sound, 6)) < 0.95 * centre(Bar(child, 6)));
    }
    SUBCASE("a level from the start, a crescendo and a level again") {
        const std::vector<double> sound = sing("--plain --dynamics pp --dynamics 3=crescendo --dynamics 7=ff");
        const auto level = [&](int bar) { return Db(Rms(Bar(sound, bar))); };
        CHECK(level(2) < Db(Rms(Bar(plain, 2))) - 6);
        CHECK(std::abs(level(2) - level(1)) < 0.5);
        CHECK(level(5) > level(2) + 4);
        CHECK(level(8) > level(6) + 4);
    }
    SUBCASE("expressions") {
        const std::vector<double> wide = sing("--vibrato wide --attack none --release none");
        const std::vector<double> none = sing("--vibrato none --attack none --release none");
        CHECK(Bar(wide, 2) != Bar(plain, 2));
        CHECK(sing("--attack slow") != sing("--attack sharp"));
        CHECK(sing("--release long") != sing("--release cut"));
        CHECK(sing("--plain --breaths").size() > plain.size() + 4000); // one before the song
    }
}

TEST_CASE("sing: a voice of another language is remarked on, or refused where the language was asked for") {
    const Folder folder;
    const std::string song = folder.File("long.mid", LongNotes());
    Run run = folder.Torv("sing " + song + " -o command_test_files/out.wav --voice hana");
    CHECK((run.status == 0 && run.said.find("Hana sings Japanese") != std::string::npos));
    run = folder.Torv("sing " + song + " -o command_test_files/out2.wav --voice hana --language en");
    CHECK((run.status == 1 && run.said.find("--language asks for English") != std::string::npos));
    run = folder.Torv("sing " + song + " -o command_test_files/out2.wav --voice-at 77=Alice");
    CHECK((run.status == 1 && run.said.find("no bar 77; the last one is 8") != std::string::npos));
    CHECK(!fs::exists(folder.path / "out2.wav"));
}
