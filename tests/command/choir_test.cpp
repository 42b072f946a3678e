// Songs of several parts, and several songs.
#include "analysis.h"
#include "run_command.h"
#include "values.h"

#include "errors.h"
#include "part_choice.h"

#include <doctest/doctest.h>

namespace {

/// A high voice in the first bar and a low one in the second, with words, and a piano over both.
FileBytes Duet() {
    TrackBytes high, low, piano;
    high.Meta(0, 3, "Soprano").Lyric(0, "la").On(0, 72).Off(1920, 72);
    low.Meta(0, 3, "Bass").Lyric(1920, "lo").On(0, 48, 1).Off(1920, 48, 1);
    piano.Meta(0, 3, "Piano").Event(0, {0xC2, 1}).On(0, 60, 2).Off(3840, 60, 2);
    return MidiFile(1, 480, {high, low, piano});
}

/// The levels of the two bars (120 beats a minute, two seconds each) in the middle of them, dB; one channel or the
/// other.
std::vector<double> LevelsOf(const fs::path& path, size_t channel) {
    const std::vector<double> frames = Wave(path);
    std::vector<double> side;
    for (size_t i = channel; i < frames.size(); i += 2)
        side.push_back(frames[i]);
    return {Db(Rms(Part(side, 500, 1700))), Db(Rms(Part(side, 2500, 3700)))};
}

} // namespace

TEST_CASE("choir: every part with words, each by a voice that suits it, from left to right") {
    const Folder folder;
    const std::string song = folder.File("duet.mid", Duet());
    const Run list = folder.Torv("sing --list " + song);
    CHECK(list.status == 0);
    CHECK(list.said == "PART  NAME     VOICE  RANGE  NOTES  SYLLABLES\n"
                       "1     Soprano  Susan  C5-C5  1      1\n"
                       "2     Bass     Angus  C3-C3  1      1\n"
                       "3     Piano    -      C4-C4  1      0\n"
                       "2 measures, 1 verse\n");
    const Run run =
        folder.Torv("sing " + song + " -o command_test_files/all.wav --practice command_test_files/practice");
    CHECK(run.status == 0);
    CHECK(run.said.find("Soprano: Susan, 1 note, 1 syllable\nBass: Angus, 1 note, 1 syllable\n2 parts, 2 notes, ") !=
          std::string::npos);
    const auto left = LevelsOf(folder.path / "all.wav", 0);
    const auto right = LevelsOf(folder.path / "all.wav", 1);
    CHECK(left[0] > right[0] + 3);
    CHECK(right[1] > left[1] + 3);

    const fs::path practice = folder.path / "practice";
    CHECK(folder.Content("practice/duet-all.wav") == folder.Content("all.wav"));
    const auto soprano = LevelsOf(practice / "duet-1-Soprano.wav", 1);
    const auto bass = LevelsOf(practice / "duet-2-Bass.wav", 1);
    // The part in front stands in the centre, where it has its full level; the others are 12 dB softer.
    CHECK(right[1] - soprano[1] == doctest::Approx(12).epsilon(0.01));
    CHECK(soprano[0] > bass[0] + 12);

    const Run one = folder.Torv("sing " + song + " -o command_test_files/one.wav --part bass=Thomas:-6 --from 2");
    CHECK(one.said.find("1 note, 0:0") != std::string::npos);
    CHECK(Wave(folder.path / "one.wav").size() < 44100 * 4); // mono, from its own bar on
}

TEST_CASE("choir: parts as users name them") {
    torv::songs::Song song;
    song.source = "s";
    for (const char* name : {"Soprano", "Alto", "7"})
        song.parts.emplace_back().name = name;
    CHECK(ReadPartChoice("alto", song).index == 1);
    CHECK(ReadPartChoice("2", song).index == 1);
    CHECK(ReadPartChoice("7", song).index == 2); // a name comes first
    const PartChoice full = ReadPartChoice("s=Alice:-3.5:0.25", song);
    CHECK(Values{full.index, full.voice, full.decibels, full.pan.value_or(0)} == "0 Alice -3.5 0.25");
    CHECK(ReadPartChoice("s=::-1", song).pan == -1.0);
    for (const char* text : {"9", "0", "x", "", "s=a:b", "s=a:1:2", "s=a:99", "s=a:0:0:0", "s=a:nan"})
        CHECK_THROWS_AS_MESSAGE(ReadPartChoice(text, song), WrongUse, text);
}

TEST_CASE("choir: of several songs those that can be sung are, and the others are counted") {
    const Folder folder;
    const std::string good = folder.File("good.mid", Duet());
    const std::string bad = folder.File("bad.mid", {'x'});
    const Run run =
        folder.Torv("sing " + bad + " " + good + " " + good + " -o command_test_files/out --part 1 --plain");
    CHECK(run.status == 1);
    CHECK(run.said.find("bad.mid: neither") != std::string::npos);
    CHECK(run.said.find("1 of 3 songs could not be sung") != std::string::npos);
    CHECK(fs::exists(folder.path / "out/good-2.wav"));
    CHECK(!fs::exists(folder.path / "out/bad.wav"));
}
