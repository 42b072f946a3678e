#include "torv/songs/read_song.h"

#include <doctest/doctest.h>

using namespace torv::songs;

namespace {

Song Read(const std::string& text, const ReadOptions& options = {}) {
    return ReadSong({reinterpret_cast<const unsigned char*>(text.data()), text.size()}, "s.ust", options);
}

std::string NotesOf(const Song& song) {
    std::string notes;
    for (const Note& note : song.parts.at(0).notes)
        notes += std::to_string(note.tick) + "+" + std::to_string(note.length) + " " + std::to_string(note.key) + " " +
                 (note.words.empty() ? "~" : note.words[0].text) + ", ";
    return notes;
}

std::string Section(const std::string& lyric, const std::string& more = "Length=480\r\nNoteNum=60\r\n") {
    return "[#0000]\r\nLyric=" + lyric + "\r\n" + more;
}

} // namespace

TEST_CASE("UST: notes, rests, syllables and tempos") {
    const Song song =
        Read("[#VERSION]\r\nUST Version1.2\r\n[#SETTING]\r\nTempo=90,00\r\nProjectName=Song\r\n" + Section("ka") +
             Section("R") + Section("a ka", "Length=240\r\nNoteNum=62\r\nIntensity=50\r\n") +
             Section("+", "Length=240\r\nNoteNum=64\r\nTempo=180\r\nPBS=-1\r\n") + Section("sing") +
             Section("lost", "Length=0\r\nNoteNum=60\r\n") +
             Section("a R", "Length=480\r\nNoteNum=60\r\nTempo=500000\r\n") + "[#TRACKEND]\r\n");
    CHECK(NotesOf(song) == "0+480 60 ka, 960+240 62 ka, 1200+240 64 ~, 1440+480 60 sing, ");
    CHECK(song.title == "Song");
    CHECK(song.parts[0].notes[0].velocity == 80);
    CHECK(song.parts[0].notes[1].velocity == 40);
    REQUIRE(song.tempos.size() == 2);
    CHECK(song.tempos[0].microsecondsPerQuarter == 666667);
    CHECK(song.tempos[1].tick == 1200);
    CHECK(song.remarks == std::vector<std::string>{"curves of pitch and loudness within notes are left out",
                                                   "a tempo that is not from 4 to 3000 quarters a minute is left out",
                                                   "1 note has no length or key that can be read and is left out: "
                                                   "[#0000]"});
}

TEST_CASE("UST: the words' encoding is named, seen or given") {
    const std::string ka = "\xE3\x81\x8B";
    CHECK(NotesOf(Read("[#SETTING]\n" + Section("\x82\xA9"))) == "0+480 60 " + ka + ", ");
    CHECK(NotesOf(Read("\xEF\xBB\xBF[#SETTING]\n" + Section(ka))) == "0+480 60 " + ka + ", ");
    CHECK(NotesOf(Read("[#VERSION]\nCharset=UTF-8\n" + Section(ka))) == "0+480 60 " + ka + ", ");
    CHECK(NotesOf(Read("[#SETTING]\n" + Section("\xA4\xAB"), {"euc-jp"})) == "0+480 60 " + ka + ", ");
    std::string wide = "\xFF\xFE";
    for (const char c : "[#SETTING]\n" + Section("ka"))
        wide += {c, '\0'};
    CHECK(NotesOf(Read(wide)) == "0+480 60 ka, ");
    // What is behind the kana names a recording, and a breath is a rest.
    CHECK(NotesOf(Read("[#SETTING]\n" + Section("a @" + ka + "\xE5\xBC\xB7_C4") + Section("br") +
                       Section("\xE6\x81\xAF"))) == "0+480 60 " + ka + ", ");
}

TEST_CASE("UST: what makes no sense is left out") {
    const std::string odd = "[#SETTING]\nTempo=-1\nTempo\n=\n" + Section("a", "Length=1e99\nNoteNum=-5\nTempo=nan\n") +
                            Section("b", "Length=x\nNoteNum=999\n") + Section("c") + "[#\n[";
    CHECK(Read(odd).parts.empty()); // what is longer than any song ends it
    const std::string lost = "[#0007]\nLyric=a\nLength=480\nNoteNum=128\n" + Section("b", "Length=-3\nNoteNum=0\n");
    const Song rest = Read("[#SETTING]\n" + Section("", "Length=480\n") + lost + Section("R", "Length=x\n"));
    CHECK(rest.remarks == std::vector<std::string>{"2 notes have no length or key that can be read and are left out, "
                                                   "the first in [#0007]"});
}
