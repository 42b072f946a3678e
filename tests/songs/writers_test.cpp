#include "torv/songs/read_song.h"
#include "torv/songs/voice_line.h"
#include "torv/songs/word_joining.h"

#include "platform/temp_folder.h"

#include <doctest/doctest.h>

#include <cstdlib>

using namespace torv::songs;

namespace {

std::string WordsOf(const SungNote& note) {
    std::string text;
    for (const Word& word : note.words)
        text += std::string(word.hyphenBefore ? " -" : " ") + word.text + (word.hyphenAfter ? "-" : "");
    return text;
}

/// Of every part of a file what is sung when, as far as programs that end notes a little early agree.
std::vector<std::string> SungBy(const std::string& path, bool withWords = true) {
    Song song = ReadSongFile(path);
    JoinWords(song, KnowEnglishWord);
    std::vector<std::string> parts;
    for (const Part& part : song.parts) {
        std::string& notes = parts.emplace_back();
        const std::vector<SungNote> sung = MakeVoiceLine(part).notes;
        for (const SungNote& note : sung)
            notes +=
                std::to_string(note.tick) + " " + std::to_string(note.key) + (withWords ? WordsOf(note) : "") + ", ";
        notes += "to " + std::to_string((sung.back().tick + sung.back().length + 30) / 60);
    }
    return parts;
}

} // namespace

TEST_CASE("writers: the hymn as MIDI and as a score has the same notes and syllables in all parts") {
    const std::vector<std::string> midi = SungBy(TORV_EXAMPLES "hymn.mid");
    CHECK(midi.size() == 4);
    CHECK(midi == SungBy(TORV_EXAMPLES "hymn.musicxml"));
    CHECK(midi.at(1).find("0 62 Praise, 480 62 God,") == 0);
    CHECK(ReadSongFile(TORV_EXAMPLES "hymn.mid").title == ReadSongFile(TORV_EXAMPLES "hymn.musicxml").title);
}

#if !defined(_WIN32)
TEST_CASE("writers: the hymn that other programs write is ours in all parts") {
    const TempFolder folder;
    const std::string theirs = folder.Path("theirs");
    const std::string muse = "QT_QPA_PLATFORM=offscreen mscore3 -o " + theirs + ".mxl " TORV_EXAMPLES;
    // python3-ly gives a tied note the next syllable, where LilyPond goes on with the vowel.
    const std::string tied =
        "sed -E 's/(flow|low|host|Ghost\\.)$/& \"_\"/' " TORV_EXAMPLES "hymn.ly >" + theirs + ".ly && ";
    const struct {
        const char* package;
        const char* program;
        std::string command;
        const char* ending;
        bool hasWords;
    } rows[] = {
        {"lilypond", "lilypond", "lilypond -s -dno-print-pages -o " + theirs + " " TORV_EXAMPLES "hymn.ly", ".midi",
         true},
        {"python3-ly", "ly", tied + "ly musicxml " + theirs + ".ly -o " + theirs + ".xml", ".xml", true},
        {"musescore3", "mscore3", muse + "hymn.musicxml", ".mxl", true},
        {"musescore3", "mscore3", muse + "hymn.mid", ".mxl", true},
        {"denemo", "denemo",
         "GUILE_AUTO_COMPILE=0 HOME=" + folder.Path("") +
             " timeout 400 xvfb-run -a denemo -a '(begin (d-ExportMusicXML \"" + theirs +
             "\") (d-Exit))' " TORV_EXAMPLES "hymn.musicxml",
         ".xml", false},
    };
    for (const auto& row : rows) {
        CAPTURE(row.command);
        if (std::system((std::string("command -v ") + row.program + " >/dev/null").c_str()) != 0) {
            MESSAGE("SKIPPED: " << std::string(row.program) << " (package " << std::string(row.package)
                                << ") is not installed");
            continue;
        }
        REQUIRE(std::system(("(" + row.command + ") >/dev/null 2>&1").c_str()) == 0);
        CHECK(SungBy(theirs + row.ending, row.hasWords) == SungBy(TORV_EXAMPLES "hymn.mid", row.hasWords));
    }
}
#endif
