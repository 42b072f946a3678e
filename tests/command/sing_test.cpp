// The program itself, as a user runs it: what it says, what it leaves behind, and whether the wave sings the file.
#include "analysis.h"
#include "run_command.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <string>

namespace {

/// Eight notes with gaps, a change of tempo in the middle: 120 beats a minute, then 80.
const int kKeys[] = {60, 62, 64, 65, 67, 64, 62, 60};
FileBytes Scale(bool lyrics) {
    TrackBytes conductor, voice;
    conductor.Meta(0, 0x51, std::string("\x07\xA1\x20", 3)).Meta(480 * 5, 0x51, std::string("\x0B\x71\xB0", 3));
    voice.Meta(0, 3, "Voice");
    uint32_t wait = 480;
    for (const int key : kKeys) {
        if (lyrics)
            voice.Lyric(wait, "la");
        voice.On(lyrics ? 0 : wait, key).Off(360, key);
        wait = 120;
    }
    return MidiFile(1, 480, {conductor, voice});
}

} // namespace

TEST_CASE("sing: the wave's pitches and times are the file's") {
    const Folder folder;
    const std::string song = folder.File("scale.mid", Scale(true));
    for (const std::string options : {"--plain", "--transpose 12 --voice thomas --plain"}) {
        CAPTURE(options);
        const Run run = folder.Torv("sing " + song +
                                    " -o command_test_files/out.wav --report command_test_files/out.json " + options);
        REQUIRE(run.status == 0);
        CHECK(run.said.find("8 notes") != std::string::npos);
        const std::vector<double> sound = Wave(folder.path / "out.wav");
        std::ifstream file(folder.path / "out.json");
        const nlohmann::json report = nlohmann::json::parse(file);
        CHECK(report["parts"].size() == 1);
        CHECK(report["measures"][0]["beats"] == nlohmann::json{0, 0.5, 1, 1.5});
        const nlohmann::json& notes = report["parts"][0]["notes"];
        REQUIRE(notes.size() == 8);
        const double shift = options == "--plain" ? 0 : 12;
        for (int i = 0; i < 8; ++i) {
            // Beats 1 to 4 at 500 ms, from beat 5 on at 750 ms.
            const double start = i < 4 ? 500.0 * (i + 1) : 2500 + 750.0 * (i - 4);
            CAPTURE(i);
            CHECK(notes[static_cast<size_t>(i)]["start"].get<double>() * 1000 == doctest::Approx(start).epsilon(0.001));
            CHECK(notes[static_cast<size_t>(i)]["lyric"][0]["phonemes"][0]["symbol"] == "l");
            const double expected = HzOf(kKeys[i] + shift);
            CHECK(std::abs(Cents(PitchOf(Part(sound, start + 120, start + 330), expected), expected)) < 3);
            CHECK(Rms(Part(sound, start + 120, start + 330)) >
                  2 * Rms(Part(sound, start - 95, start - 75))); // an l is there
        }
        CHECK(folder.Count() == 3); // song, wave, report
    }
}

TEST_CASE("sing: velocities, expression and bends are heard, unless it is to be plain") {
    const Folder folder;
    TrackBytes track; // two seconds each: pp, ff, then ff at expression 64 and bent by 3.5 semitones
    track.Event(0, {0xB0, 101, 0}).Event(0, {0xB0, 100, 0}).Event(0, {0xB0, 6, 7});
    track.Lyric(0, "la").Event(0, {0x90, 57, 33}).Off(1800, 57);
    track.Lyric(120, "la").Event(0, {0x90, 57, 112}).Off(1800, 57);
    track.Event(120, {0xB0, 11, 64}).Event(0, {0xE0, 0, 96}).Lyric(0, "la").Event(0, {0x90, 57, 112}).Off(1800, 57);
    const std::string song = folder.File("loud.mid", MidiFile(0, 480, {track}));
    for (const bool isPlain : {false, true}) {
        CAPTURE(isPlain);
        const std::string options = std::string(" --voice Thomas --vibrato none") + (isPlain ? " --plain" : "");
        REQUIRE(folder.Torv("sing " + song + " -o command_test_files/out.wav" + options).status == 0);
        const std::vector<double> sound = Wave(folder.path / "out.wav");
        double level[3];
        for (int i = 0; i < 3; ++i)
            level[i] = Db(Rms(Part(sound, 2000 * i + 600, 2000 * i + 1400)));
        CHECK(std::abs(level[1] - level[0] - (isPlain ? 0 : 15.8)) < 1.5);
        CHECK(std::abs(level[2] - level[1] + (isPlain ? 0 : 11.9)) < 1.5); // 40 lg(64/127)
        const double expected = HzOf(isPlain ? 57 : 60.5);
        CHECK(std::abs(Cents(PitchOf(Part(sound, 4600, 5400), expected), expected)) < 10);
    }
}

TEST_CASE("sing: without lyrics on a vowel; stereo with a pan") {
    const Folder folder;
    const std::string song = folder.File("vowels.mid", Scale(false));
    const Run run = folder.Torv("sing " + song + " -o command_test_files/out.wav --pan 1 --rate 48000 --language ja");
    CHECK(run.status == 0);
    CHECK(run.said.find("no lyrics: it is sung on a vowel") != std::string::npos);
    const std::vector<double> frames = Wave(folder.path / "out.wav");
    double left = 0, right = 0;
    for (size_t i = 0; i + 1 < frames.size(); i += 2) {
        left = std::max(left, std::abs(frames[i]));
        right = std::max(right, std::abs(frames[i + 1]));
    }
    CHECK((left == 0 && right > 0.05));
}

TEST_CASE("sing: a consonant before the first beat is kept, and said, or left out") {
    const Folder folder;
    TrackBytes voice;
    voice.Lyric(0, "sing").On(0, 60).Off(960, 60);
    const std::string song = folder.File("song.mid", MidiFile(0, 480, {voice}));
    const auto sing = [&](const char* name, const std::string& options) {
        const Run run = folder.Torv("sing " + song + " -o command_test_files/" + name + " --quiet " + options);
        CHECK_MESSAGE(run.status == 0, run.said);
        return Wave(folder.path / name);
    };
    const std::vector<double> cut = sing("cut.wav", "--lead-in 0");
    const std::vector<double> whole = sing("whole.wav", "");
    const std::vector<double> early = sing("early.wav", "--lead-in 3"); // more than there is before the song
    const size_t lead = whole.size() - cut.size();
    CHECK(lead > 441); // an s of 10 ms at least
    CHECK(std::equal(cut.begin(), cut.end(), whole.begin() + static_cast<std::ptrdiff_t>(lead)));
    CHECK(std::abs(whole.front()) + std::abs(whole[20]) + std::abs(whole[40]) > 0);
    CHECK(early.size() == cut.size() + 132300);
    CHECK(std::equal(whole.begin(), whole.end(), early.end() - static_cast<std::ptrdiff_t>(whole.size())));
    const Run run = folder.Torv("sing " + song + " -o command_test_files/out.wav --report command_test_files/out.json");
    CHECK(run.said.find("song.mid: the wave begins 0.") != std::string::npos);
    std::ifstream file(folder.path / "out.json");
    const double start = nlohmann::json::parse(file)["parts"][0]["notes"][0]["start"];
    CHECK(start == doctest::Approx(static_cast<double>(lead) / 44100).epsilon(0.001));
}

TEST_CASE("sing: what cannot be sung is told in one line and leaves nothing behind") {
    const Folder folder;
    const std::string good = folder.File("good.mid", Scale(true));
    const std::string text = folder.File("text.mid", {'h', 'i'});
    const std::string silent = folder.File("silent.mid", MidiFile(1, 480, {TrackBytes()}));
    const size_t before = folder.Count();
    struct Row {
        std::string arguments;
        int status;
        const char* says;
    };
    const std::string out = " -o command_test_files/out.wav";
    for (const Row& row :
         {Row{"sing " + text + out, 1, "export one of these"},
          Row{"sing " + silent + out, 1, "no notes"},
          Row{"sing nowhere.mid" + out, 1, "cannot be opened"},
          Row{"sing command_test_files" + out, 1, "is a folder"},
          Row{"sing " + good + out + " --voice alise", 2, "did you mean Alice"},
          Row{"sing " + good + out + " --track 9", 2, "no track 9"},
          Row{"sing " + good + out + " --from 9:59", 1, "--from 9:59: the song ends before that"},
          Row{"sing " + good + out + " --at 9:59=mf", 1, "--at 9:59: the song ends before that"},
          Row{"sing " + good + out + " --at 0=mf", 1, "has no bar 0; the first one is 1"},
          Row{"sing " + good + out + " --verse 2", 2, "no verse 2; the last one is 1"},
          Row{"sing " + good + out + " --part Vioce", 2, "no part \"Vioce\"; it has 1 \"Voice\""},
          Row{"sing " + good + out + " --dynamics 2=mx", 2, "did you mean mp"},
          Row{"sing " + good + out + " --encoding utf-77", 2, "no encoding \"utf-77\""},
          Row{"icons --kind dynamic-s", 2, "no kind of icons"},
          Row{"sing " + good + " -o nowhere/out.wav", 1, "cannot be written"},
          Row{"sing " + good, 2, "--output"},
          Row{"sing " + good + out + " --rate 8000", 2, "--rate"},
          Row{"sing " + good + out + " --voice", 2, "torv: --voice needs a value"},
          Row{"sing " + good + out + " --track 1 --part 1", 2, "--part excludes --track"},
          Row{"sang", 2, "no verb \"sang\": did you mean sing"},
          Row{"sing " + good + out + " --vioce x", 2, "no option --vioce of torv sing: did you mean --voice"},
          Row{"sing " + good + out + " --pan x", 2, "\"x\" is no number from -1 to 1"},
          Row{"sing " + good + " " + good + out, 2, "several songs are written into a folder"},
          Row{"sing " + good + out + " --report nowhere/x.html", 1, "there is no folder nowhere"}}) {
        CAPTURE(row.arguments);
        const Run run = folder.Torv(row.arguments);
        CHECK(run.status == row.status);
        CHECK(run.said.find(row.says) != std::string::npos);
        if (std::string(row.says).front() != '-') // those are the parser's
            CHECK(std::count(run.said.begin(), run.said.end(), '\n') == 1);
        CHECK(folder.Count() == before);
    }
}

TEST_CASE("phonemes: of a song with other words and of a text, and where they come from") {
    const Folder folder;
    const std::string song = folder.File("scale.mid", Scale(true));
    const std::string words = "night[n i: t] _ la";
    folder.File("words.txt", {words.begin(), words.end()});
    const Run run = folder.Torv("phonemes " + song + " --words command_test_files/words.txt");
    CHECK(run.said.find("words.txt has 5 syllables too few: from bar 2 on the vowel before goes on") !=
          std::string::npos);
    CHECK(run.said.find("night-_       n i: - i: t              by hand\n") != std::string::npos);
    CHECK(run.said.find("la-_-_-_-_-_  l Q - Q - Q - Q - Q - Q  lexicon\n") != std::string::npos);
    const auto json = nlohmann::json::parse(folder.Torv("phonemes --json --text \"sa-ku[k M] ra\" --language ja").said);
    const auto& sung = json.at(0).at("words");
    CHECK(sung.at(0).at("syllables").at(1).at("from") == "by hand");
    CHECK(sung.at(1).at("syllables").at(0).at("from") == "rule");
    CHECK(sung.at(1).at("syllables").at(0).at("phonemes") == nlohmann::json{"4", "a"});
    CHECK(folder.Torv("phonemes").status == 2);
}
