// The band: when it plays, and how loud it is beside the voices.
#include "analysis.h"
#include "band_events.h"
#include "errors.h"
#include "run_command.h"
#include "sound_font.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <fstream>

TEST_CASE("band: after five minutes of changing tempos it is at its frame; marks and transposition count") {
    torv::songs::Song song;
    double seconds = 0;
    for (uint32_t bar = 0; bar < 150; ++bar) {
        song.tempos.push_back({bar * 1920, 500000 + bar * 7919 % 1237});
        seconds += 4 * song.tempos.back().microsecondsPerQuarter / 1e6;
    }
    torv::songs::Part flute, drums;
    torv::songs::Note high;
    high.tick = 150 * 1920;
    high.key = 120;
    high.staccato = true;
    flute.notes = {{}, high};
    flute.dynamics = {{1920, torv::songs::Dynamic::Kind::Level, "p", 0}};
    torv::songs::Note soft;
    soft.key = 40;
    soft.velocity = 7;
    drums.channel = torv::songs::kPercussionChannel;
    drums.notes = {soft};
    song.parts = {flute, drums};
    const auto events =
        BandEventsOf(song, {.parts = {1, 0}, .soundFont = {}, .transpose = 5, .rate = 48000, .start = 1.5});
    REQUIRE(events.size() == 6);
    CHECK(events[0].frame == -72000);
    CHECK(events[0].channel == 0);
    CHECK(events[0].number == 40); // drums stay
    CHECK(events[0].value == 7);
    CHECK(events[4].frame == std::llround((seconds - 1.5) * 48000));
    CHECK(events[4].number == 125);
    CHECK(events[4].value == 49);
    CHECK(events[5].frame - events[4].frame == 12026); // a half of a quarter of 501070 microseconds
}

TEST_CASE("band: as loud against the voices as is asked for, softer when practising") {
    const Folder folder;
    TrackBytes voice, organ; // two seconds of each, a second between them
    voice.Lyric(0, "la").On(0, 69).Off(1920, 69);
    organ.Event(0, {0xC1, 19}).On(2880, 57, 1).Off(1920, 57, 1);
    const std::string song = folder.File("song.mid", MidiFile(1, 480, {voice, organ}));
    const std::string command = "sing " + song + " --quiet --lead-in 0 -o command_test_files/";
#ifdef _WIN32
    CHECK(folder.Torv(command + "out.wav --band").said.find("there is no band on Windows") != std::string::npos);
    return;
#endif
    try {
        FindSoundFont();
    } catch (const InputError& error) {
        MESSAGE("SKIPPED, the band is not heard: " << error.message);
        return;
    }
    const auto levels = [&](const char* name, const std::string& options) {
        const Run run = folder.Torv(command + name + " " + options);
        CHECK_MESSAGE(run.status == 0, run.said);
        const std::vector<double> sound = Wave(folder.path / name); // both channels, one after the other
        return std::make_pair(Db(Rms(Part(sound, 400, 3600))), Db(Rms(Part(sound, 6400, 9600))));
    };
    const auto [sung, played] = levels("out.wav", "--band -6 --practice command_test_files/practice");
    CHECK(played - sung == doctest::Approx(-6).epsilon(0.25));
    const auto [louder, alone] = levels("loud.wav", "--band 3 --level -10 --report command_test_files/out.json");
    std::ifstream file(folder.path / "out.json");
    CHECK(nlohmann::json::parse(file)["parts"][1]["name"] == "Band: part 2");
    CHECK(alone - louder == doctest::Approx(3).epsilon(0.5));
    CHECK(louder - sung == doctest::Approx(-10).epsilon(0.01));
    const std::vector<double> practice = Wave(folder.path / "practice/song-1-part 1.wav");
    CHECK(played - Db(Rms(Part(practice, 6400, 9600))) == doctest::Approx(12).epsilon(0.01));
    CHECK(folder.Torv(command + "no.wav --band --soundfont " + song).said.find("cannot be read as a sound font") !=
          std::string::npos);
}

TEST_CASE("band: behind a fermata and a change of tempo band and voice are where they should be") {
    const auto note = [](const std::string& step, int quarters, const std::string& more) {
        const std::string pitch =
            step.empty() ? "<rest/>" : "<pitch><step>" + step + "</step><octave>4</octave></pitch>";
        return "<note>" + pitch + "<duration>" + std::to_string(quarters) + "</duration>" + more + "</note>";
    };
    const auto part = [](const std::string& id, const std::vector<std::string>& bars) {
        std::string text = "<part id=\"" + id + "\">";
        for (const std::string& bar : bars)
            text += "<measure>" + bar + "</measure>";
        return text + "</part>";
    };
    const std::string ah = "<lyric><text>ah</text></lyric>";
    const std::string rest = note("", 4, "");
    const Folder folder;
    const std::string score =
        "<score-partwise><part-list><score-part id=\"V\"/><score-part id=\"O\"><midi-instrument><midi-program>20"
        "</midi-program></midi-instrument></score-part></part-list>" +
        part("V", {note("A", 4, "<notations><fermata/></notations>" + ah), "<sound tempo=\"90\"/>" + rest, rest,
                   note("A", 4, ah)}) +
        part("O", {rest, rest, note("C", 1, "") + note("", 3, ""), rest}) + "</score-partwise>";
    const std::string song = folder.File("song.musicxml", {score.begin(), score.end()});
    const Run run = folder.Torv("sing " + song + " --quiet --lead-in 0 --band 9 -o command_test_files/out.wav");
    if (run.status != 0) {
        MESSAGE("SKIPPED, the band is not heard: " << run.said);
        return;
    }
    const std::vector<double> sound = Wave(folder.path / "out.wav"); // both channels, one after the other
    const auto onsetAfter = [&](double ms) { return ms + OnsetOf(Part(sound, 2 * ms, 1e9), 0.01) / 2; };
    // Two quarters of half a second and two held half as long again, four of 2/3 s; then four more.
    CHECK(onsetAfter(4000) == doctest::Approx(2500 + 8000 / 3.0).epsilon(0.01));
    CHECK(onsetAfter(7000) == doctest::Approx(2500 + 16000 / 3.0).epsilon(0.01));
}
