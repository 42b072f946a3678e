// Words that are given beside a song, and phonemes that are given in words.
#include "command/midi_bytes.h"

#include "torv/songs/given_words.h"
#include "torv/songs/hand_phonemes.h"
#include "torv/songs/read_song.h"
#include "torv/songs/song_error.h"
#include "torv/songs/word_joining.h"

#include "torv/platform/language.h"

#include <doctest/doctest.h>

using namespace torv::songs;

namespace {

using Texts = std::vector<std::string>;

std::vector<GivenWords> WordsOf(const std::string& text) {
    return ReadWords({reinterpret_cast<const unsigned char*>(text.data()), text.size()}, "w.txt");
}

/// Quarter notes, the second goes on into the third; `words` says which have a syllable, and of which verse.
Part PartOf(const std::string& name, const std::string& words) {
    Part part;
    part.name = name;
    for (uint32_t i = 0; i < words.size(); ++i) {
        part.notes.push_back({i * 480, 480, 60, 80, {}});
        part.notes[i].slurred = i == 1;
        if (words[i] != '.')
            part.notes[i].words.push_back({words[i] - '0', "old", false, false, false, {}});
    }
    return part;
}

/// "la-" with the phonemes behind it, verses parted by '|'; "." for a note without a word.
std::string Shown(const Part& part) {
    std::string text;
    for (const Note& note : part.notes) {
        text += text.empty() ? "" : " ";
        for (const Word& word : note.words)
            text += (word.verse > 1 ? "|" : "") + word.text + (word.hyphenAfter ? "-" : "") +
                    (word.phonemes.empty() ? "" : " + " + word.phonemes);
        text += note.words.empty() ? "." : "";
    }
    return text;
}

} // namespace

TEST_CASE("given words: each syllable on its note, too many and too few told in a line") {
    const struct {
        std::string words;
        const char* old; // of S and A
        const char* sung;
        Texts remarks;
    } rows[] = {
        {"Hel-lo night[n  aI t],\nev~er", "1111", "Hel- lo night, + n aI t ev er", {}},
        {"a b c", "....", "a b . c", {"A: sings the words of S, with which it moves"}},
        {"a b c", "1.11", "a . b c", {}},
        {"[Verse 1]\n1. a\n2. x\n[Chorus]\ny",
         "1111",
         "a|x |y . .",
         {"S, A: w.txt has 2 syllables too few: from bar 1 on the vowel before goes on",
          "S, A: w.txt has 3 syllables too few: from bar 1 on the vowel before goes on"}},
        {"Verse 1:\nRefrain: a b\n(Coda)\nBridge c d",
         "1111",
         "a b Bridge c",
         {"S, A: w.txt has 1 syllable too many, from \"d\" in line 4 on: left out"}},
        {"a b c", "2.22", "a . b c", {}}, // the places are the verse's that there is
        {"glo__ - ri -- a __",
         "1111",
         "glo- . . ri-",
         {"S, A: w.txt has 1 syllable too many, from \"a\" in line 1 on: left out"}},
        {"ne-\nver\n",
         "1111",
         "ne- ver . .",
         {"S, A: w.txt has 2 syllables too few: from bar 1 on the vowel before goes on"}},
        {"1. a b\n2) c, _ \xE3\x81\x95\xE3\x81\x8F", "1111", "a|c, b |\xE3\x81\x95 |\xE3\x81\x8F", {}},
        {"[A]\nx x x x\n[1]\na b c d", "1111", "a b c d", {}},
    };
    for (const auto& row : rows) {
        CAPTURE(row.words);
        Song song;
        song.parts = {PartOf("S", row.old), PartOf("A", row.old)};
        CompleteSong(song);
        song.parts[0].wordsAreUndivided = true;
        SetWords(song, WordsOf(row.words), "w.txt");
        CHECK_FALSE(song.parts[0].wordsAreUndivided);
        CHECK(Shown(song.parts[0]) == row.sung);
        if (!row.words.starts_with("[A]"))
            CHECK(Shown(song.parts[1]) == row.sung);
        if (row.words[0] != '1')
            CHECK(song.remarks == row.remarks);
    }
    Song song;
    song.parts = {PartOf("Soprano", "11"), PartOf("Alto", "11")};
    for (const auto& [text, says] : {std::pair{"a\nnight[n aI", "w.txt: line 2: \"night[n aI\" lacks the closing"},
                                     {"-- \n !", "w.txt: there are no words in it"},
                                     {"[Altus]\nx", "w.txt: line 1: there is no part \"Altus\": did you mean"},
                                     {"0. a", "w.txt: line 1: verses count from 1 to 99"}})
        CHECK_THROWS_WITH_AS(SetWords(song, WordsOf(text), "w.txt"), doctest::Contains(says), SongError);
    CHECK_THROWS_AS(WordsOf(std::string(2, '\0')), SongError);
    CHECK_THROWS_AS(WordsOf(std::string(1 << 21, 'a')), SongError);
}

TEST_CASE("phonemes by hand: taken from the text, spread over the notes that go on, unknown ones dropped") {
    for (const auto& [text, shown] : {std::pair{"night[n aI t]", "night + n aI t"},
                                      {"hel-[h e]", "hel- + h e"},
                                      {"hel[h e]-", "hel- + h e"},
                                      {"night[n aI t]!", "night! + n aI t"},
                                      {"[n aI t]", "[n aI t]"},
                                      {"oh[]", "oh[]"},
                                      {"a]b[", "a]b["},
                                      {"a[b]c", "a[b]c"}}) {
        Part part = PartOf("", "1");
        part.notes[0].words[0].text = text;
        TakePhonemes(part.notes[0].words[0]);
        CHECK(Shown(part) == shown);
    }
    Part part = PartOf("", "1..1");
    part.notes[0].words[0].phonemes = "n aI t s";
    part.notes[3].words[0].phonemes = "n ai t";
    VoiceLine line = MakeVoiceLine(part);
    const Texts told = DropUnknownPhonemes(line, torv::kEnglish, {});
    REQUIRE(told.size() == 1);
    CHECK(told[0].find("English has no sound \"ai\" as in \"old[n ai t]\"") != std::string::npos);
    CHECK(told[0].find("did you mean aI") != std::string::npos);
    SpreadPhonemes(line.notes, torv::kEnglish);
    Texts phonemes;
    for (const SungNote& note : line.notes)
        phonemes.push_back(note.words.at(0).phonemes);
    CHECK(phonemes == Texts{"n aI", "aI", "aI t s", ""});
}

TEST_CASE("words without hyphens and blanks are put together as a language has them") {
    const auto know = [](const std::string& word) {
        for (const char* const common : {"the", "me", "in", "to", "there", "mother", "an", "up", "on"})
            if (word == common)
                return WordKnowledge::Common;
        for (const char* const known :
             {"redeemer", "deem", "er", "moth", "theme", "into", "angels", "gels", "together", "upon"})
            if (word == known)
                return WordKnowledge::Known;
        return WordKnowledge::Unknown;
    };
    const struct {
        Texts events;
        const char* joined;
    } rows[] = {
        {{"the", "re", "deem", "er"}, "the re- deem- er"}, // not "there deem er"
        {{"the", "me", "in", "to"}, "the me in to"},
        {{"up", "on", "the", "up,", "on"}, "up- on the up, on"},
        {{"Moth", "er", "an", "gels"}, "Moth- er an- gels"},
        {{"moth,", "er"}, "moth, er"},
        {{"to", "geth", "er", "xyz"}, "to- geth- er xyz"},
        {{"moth-", "er", "to", "geth", "er"}, "moth- er to geth er"},   // hyphens say it
        {{"moth", "er ", "to ", "geth", "er"}, "moth- er to geth- er"}, // blanks
        {{"der", "moth", "er", "und", "die", "nicht"}, "der moth er und die nicht"},
    };
    for (const auto& row : rows) {
        TrackBytes track;
        for (const std::string& event : row.events)
            track.Lyric(0, event).On(0, 60).Off(480, 60);
        Song song = ReadSong(MidiFile(0, 480, {track}), "");
        JoinWords(song, know);
        CHECK(Shown(song.parts.at(0)) == row.joined);
    }
}
