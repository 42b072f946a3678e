#include "torv/songs/read_song.h"
#include "torv/songs/song_error.h"

#include "platform/temp_folder.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstdlib>
#include <zlib.h>

using namespace torv::songs;

namespace {

/// A score of one part whose measures have 4 divisions a quarter, in 4/4 unless they say otherwise.
std::string Score(const std::string& measures, const std::string& name = "Choir") {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE score-partwise PUBLIC "-//Recordare//DTD MusicXML 4.0 Partwise//EN" "http://www.musicxml.org/dtds/partwise.dtd">
<score-partwise version="4.0"><work><work-title>A &amp; B</work-title></work>
<identification><creator type="lyricist">No</creator><creator type="composer">Anon.</creator></identification>
<part-list><score-part id="P1"><part-name>)" +
           name + R"(</part-name><midi-instrument id="I"><midi-channel>3</midi-channel><midi-program>53</midi-program>
</midi-instrument></score-part></part-list><part id="P1">)" +
           measures + "</part></score-partwise>";
}

std::string Bar(const std::string& content, const std::string& attributes = "") {
    return "<measure " + attributes + "><attributes><divisions>4</divisions></attributes>" + content + "</measure>";
}

/// Of a length in quarters of a quarter, with what else stands in it.
std::string N(const std::string& pitch, int length, const std::string& more = "") {
    const bool isSharp = pitch.size() > 2;
    return "<note><pitch><step>" + pitch.substr(0, 1) + "</step>" + (isSharp ? "<alter>1</alter>" : "") + "<octave>" +
           pitch.back() + "</octave></pitch><duration>" + std::to_string(length) + "</duration>" + more + "</note>";
}

std::string Lyric(const std::string& text, const std::string& syllabic = "single", const std::string& number = "1") {
    return "<lyric number=\"" + number + "\"><syllabic>" + syllabic + "</syllabic><text>" + text + "</text></lyric>";
}

Song Read(const std::string& text) {
    return ReadSong({reinterpret_cast<const unsigned char*>(text.data()), text.size()}, "s.musicxml");
}

std::string WordOf(const Word& word) {
    return std::string(word.hyphenBefore ? "-" : "") + word.text + (word.hyphenAfter ? "-" : "") +
           (word.extends ? "_" : "") + (word.verse == 1 ? "" : std::to_string(word.verse));
}

/// "tick+length key word/word" of each note; "~" behind what goes on into the next, "." staccato, "^" held.
std::string NotesOf(const Part& part) {
    std::string notes;
    for (const Note& note : part.notes) {
        notes += (notes.empty() ? "" : ", ") + std::to_string(note.tick) + "+" + std::to_string(note.length) + " " +
                 std::to_string(note.key);
        for (const Word& word : note.words)
            notes += (&word == note.words.data() ? " " : "/") + WordOf(word);
        notes += std::string(note.slurred ? "~" : "") + (note.staccato ? "." : "") + (note.fermata ? "^" : "");
    }
    return notes;
}

std::string NotesOf(const std::string& measures) {
    const Song song = Read(Score(measures));
    REQUIRE(song.parts.size() == 1);
    return NotesOf(song.parts[0]);
}

/// The written measures, each a whole note on a key of its own, in the order in which they sound.
std::string OrderOf(const std::vector<std::string>& measures) {
    std::string text;
    for (size_t i = 0; i < measures.size(); ++i)
        text += Bar(N(std::string(1, "CDEFGAB"[i]) + "4", 16) + measures[i]);
    std::string order;
    const Song song = Read(Score(text));
    for (const Note& note : song.parts.at(0).notes)
        order += std::string("ccddeffggaab")[static_cast<size_t>(note.key - 60)];
    return order;
}

std::string ErrorOf(const std::string& text) {
    try {
        Read(text);
    } catch (const SongError& error) {
        return error.what();
    }
    return "";
}

std::string Number(uint64_t value, int bytes) {
    std::string number;
    for (int i = 0; i < bytes; ++i)
        number += i < 8 ? static_cast<char>(value >> 8 * i) : '\0';
    return number;
}

/// A zip archive of deflated files.
std::string Zip(const std::vector<std::pair<std::string, std::string>>& files) {
    std::string archive;
    std::string list;
    for (const auto& [name, content] : files) {
        const auto* const bytes = reinterpret_cast<const Bytef*>(content.data());
        uLongf size = compressBound(static_cast<uLong>(content.size()));
        std::string packed(size, '\0');
        compress(reinterpret_cast<Bytef*>(packed.data()), &size, bytes, static_cast<uLong>(content.size()));
        packed = packed.substr(2, size - 6); // without zlib's own frame
        const std::string fields = Number(20, 2) + Number(0, 2) + Number(8, 2) + Number(0, 4) +
                                   Number(crc32(0, bytes, static_cast<uInt>(content.size())), 4) +
                                   Number(packed.size(), 4) + Number(content.size(), 4) + Number(name.size(), 2);
        list += "PK\x01\x02" + Number(20, 2) + fields + Number(0, 12) + Number(archive.size(), 4) + name;
        archive += "PK\x03\x04" + fields + Number(0, 2) + name + packed;
    }
    const std::string count = Number(files.size(), 2);
    return archive + list + "PK\x05\x06" + Number(0, 4) + count + count + Number(list.size(), 4) +
           Number(archive.size(), 4) + Number(0, 2);
}

const std::string kForward = R"(<barline location="left"><repeat direction="forward"/></barline>)";
const std::string kBackward = R"(<barline location="right"><repeat direction="backward"/></barline>)";

std::string Ending(const std::string& numbers, bool isRepeated) {
    return R"(<barline location="left"><ending number=")" + numbers + R"(" type="start"/></barline>)" +
           R"(<barline location="right"><ending number=")" + numbers + R"(" type="stop"/>)" +
           (isRepeated ? R"(<repeat direction="backward"/>)" : "") + "</barline>";
}

std::string Sound(const std::string& attributes) { return "<sound " + attributes + "/>"; }

std::string Words(const std::string& words) {
    return "<direction><direction-type><words>" + words + "</words></direction-type></direction>";
}

const std::string kPickup = "<attributes><time><beats>3</beats><beat-type>4</beat-type></time>"
                            "<key><fifths>-2</fifths></key></attributes>";

} // namespace

TEST_CASE("MusicXML: what stands over a score, its measures and tempos") {
    const std::string metronome = "<direction><direction-type><metronome><beat-unit>quarter</beat-unit><beat-unit-dot/>"
                                  "<per-minute>ca. 60</per-minute></metronome></direction-type></direction>";
    const Song song = Read(Score(Bar(kPickup + metronome + N("G4", 4), "number=\"0\" implicit=\"yes\"") +
                                 Bar(N("C5", 12), "number=\"1\"") + Bar(Sound("tempo=\"120\""), "number=\"2\"")));
    CHECK(song.title == "A & B");
    CHECK(song.composer == "Anon.");
    CHECK(song.format == "MusicXML");
    const Part& part = song.parts.at(0);
    CHECK(part.name == "Choir");
    CHECK(part.channel == 2);
    CHECK(part.program == 52);
    REQUIRE(song.measures.size() == 3);
    CHECK(song.measures[0].number == 0);
    CHECK(song.measures[1].tick == 480);
    CHECK(song.measures[2].length == 1440); // nothing stands in it
    CHECK(song.end == 480 + 2 * 1440);
    CHECK(song.meters.at(0).numerator == 3);
    CHECK(song.keys.at(0).fifths == -2);
    REQUIRE(song.tempos.size() == 2);
    CHECK(song.tempos[0].microsecondsPerQuarter == 666667); // 60 dotted quarters are 90 quarters
    CHECK(song.tempos[1].tick == 480 + 1440);
}

TEST_CASE("MusicXML: pitches, tuplets, ties, rests, chords and transposition") {
    CHECK(NotesOf(Bar(N("C4", 4) + N("F#5", 4) + "<note><rest/><duration>4</duration></note>" + N("B3", 4))) ==
          "0+480 60, 480+480 78, 1440+480 59");
    CHECK(NotesOf("<measure><attributes><divisions>3</divisions></attributes>" + N("C4", 1) + N("D4", 1) + N("E4", 1) +
                  "<attributes><divisions>1</divisions></attributes>" + N("F4", 1) + "</measure>") ==
          "0+160 60, 160+160 62, 320+160 64, 480+480 65");
    const std::string start = "<tie type=\"start\"/>";
    const std::string stop = "<tie type=\"stop\"/>";
    CHECK(NotesOf(Bar(N("C4", 8, start + Lyric("oh")) + N("C4", 8, stop + start)) + Bar(N("C4", 4, stop))) ==
          "0+2400 60 oh");
    CHECK(NotesOf(Bar(N("C4", 4, start + Lyric("one") + Lyric("a", "single", "2")) +
                      N("C4", 4, stop + Lyric("b", "single", "2")))) == "0+480 60 one/a2~, 480+480 60 b2");
    CHECK(NotesOf(Bar(N("D4", 4, start)) + Bar(N("D4", 4, stop) + Ending("1", true)) +
                  Bar(N("D4", 4, stop) + Ending("2", false))) == "0+960 62, 960+960 62");
    CHECK(NotesOf(Bar(N("C4", 8, "<notations><tied type=\"start\"/></notations>") +
                      N("C4", 8, "<notations><tied type=\"stop\"/></notations>"))) == "0+1920 60");
    CHECK(NotesOf(Bar(N("C4", 8, start) + N("D4", 4) + N("C4", 4, stop))) == "0+960 60, 960+480 62, 1440+480 60");
    CHECK(NotesOf(Bar(N("C4", 4) + N("E4", 4, "<chord/>") + N("D4", 4))) == "0+480 60, 0+480 64, 480+480 62");
    CHECK(NotesOf(Bar("<attributes><transpose><chromatic>-2</chromatic><octave-change>-1</octave-change>"
                      "</transpose></attributes>" +
                      N("C5", 4))) == "0+480 58");
}

TEST_CASE("MusicXML: grace notes take their time, and the syllable, from the note after them") {
    const auto grace = [](const std::string& slash) {
        return "<note><grace " + slash + "/><pitch><step>D</step><octave>4</octave></pitch></note>";
    };
    CHECK(NotesOf(Bar(grace("slash=\"yes\"") + N("C4", 4, Lyric("la")))) == "0+60 62 la~, 60+420 60");
    CHECK(NotesOf(Bar(grace("") + N("C4", 4))) == "0+240 62~, 240+240 60");
    CHECK(NotesOf(Bar(grace("") + grace("") + N("C4", 2) + N("E4", 2, "<chord/>"))) ==
          "0+60 62~, 60+60 62~, 120+120 60, 120+120 64");
    const std::string rest = "<note><rest/><duration>4</duration></note>";
    CHECK(NotesOf(Bar(N("C4", 4, Lyric("la")) + grace("")) + Bar(N("E4", 4))) == "0+420 60 la~, 420+60 62, 480+480 64");
    CHECK(NotesOf(Bar(N("C4", 4) + N("E4", 4, "<chord/>") + grace("") + grace("") + rest + N("F4", 4))) ==
          "0+360 60~, 0+360 64~, 360+60 62~, 420+60 62, 960+480 65");
    const Song lost = Read(Score(Bar(rest + N("C4", 4) + rest + grace(""))));
    CHECK(lost.remarks == std::vector<std::string>{"1 grace note has no note to stand before and is left out"});
}

TEST_CASE("MusicXML: slurs, articulations, marks") {
    const auto notations = [](const std::string& content) { return "<notations>" + content + "</notations>"; };
    const auto articulation = [&](const std::string& name) {
        return notations("<articulations><" + name + "/></articulations>");
    };
    CHECK(NotesOf(Bar(N("C4", 4, notations("<slur type=\"start\"/>")) + N("D4", 4) +
                      N("E4", 4, notations("<slur type=\"stop\"/>")) +
                      N("F4", 4, articulation("staccato") + notations("<fermata/>")))) ==
          "0+480 60~, 480+480 62~, 960+480 64, 1440+480 65.^");
    const Song song = Read(Score(Bar(N("C4", 4, articulation("tenuto")) + N("D4", 4, articulation("accent")) +
                                     N("E4", 4, articulation("breath-mark")))));
    CHECK(song.parts.at(0).notes.at(0).tenuto);
    CHECK(song.parts[0].notes.at(1).accent);
    CHECK(song.parts[0].notes.at(2).breathAfter);
}

TEST_CASE("MusicXML: dynamics and hairpins stand over the voices of their staff") {
    const auto direction = [](const std::string& type) {
        return "<direction><direction-type>" + type + "</direction-type></direction>";
    };
    const Song song =
        Read(Score(Bar(direction("<dynamics><p/></dynamics>") + N("C4", 4) + direction("<wedge type=\"crescendo\"/>") +
                       N("D4", 8) + direction("<wedge type=\"stop\"/>") +
                       direction("<dynamics><other-dynamics>molto f</other-dynamics></dynamics>") + N("E4", 4))));
    std::string found;
    for (const Dynamic& each : song.parts.at(0).dynamics)
        found += std::to_string(each.tick) + "+" + std::to_string(each.length) + " " +
                 std::to_string(static_cast<int>(each.kind)) + " " + each.level + ", ";
    CHECK(found == "0+0 0 p, 480+960 1 molto f, 1440+0 0 molto f, ");
}

TEST_CASE("MusicXML: words by syllable and verse") {
    CHECK(NotesOf(Bar(N("C4", 4, Lyric("1. A", "begin") + Lyric("2. Sa", "begin", "2")) +
                      N("D4", 4, Lyric("ma", "middle") + Lyric("ved", "end", "2")) +
                      N("E4", 4, "<lyric><syllabic>end</syllabic><text>zing</text><extend/></lyric>") + N("F4", 4))) ==
          "0+480 60 A-/Sa-2, 480+480 62 -ma-/-ved2, 960+480 64 -zing_, 1440+480 65");
    CHECK(NotesOf(Bar(N("C4", 4,
                        "<lyric><syllabic>end</syllabic><text>glo</text><elision>_</elision>"
                        "<syllabic>begin</syllabic><text>in</text></lyric>"))) == "0+480 60 -glo in-");
    // Each pass takes its own line; a line that is alone is sung each time; twice as many lines make two verses.
    const std::string two = N("C4", 16, Lyric("one") + Lyric("two", "single", "2"));
    const std::string four = N("C4", 16, Lyric("a") + Lyric("b", "single", "2") + Lyric("c", "single", "3"));
    const std::string one = N("D4", 16, Lyric("all"));
    CHECK(NotesOf(Bar(two) + Bar(one + kBackward)) ==
          "0+1920 60 one, 1920+1920 62 all, 3840+1920 60 two, 5760+1920 62 all");
    const auto line = [](const char* number) { return N("D4", 16, Lyric("l", "single", number)); };
    CHECK(NotesOf(Bar(two) + Bar(line("1") + Ending("1", true)) + Bar(line("2") + line("4") + Ending("2", false))) ==
          "0+1920 60 one, 1920+1920 62 l, 3840+1920 60 two, 5760+1920 62 l, 7680+1920 62 l2");
    CHECK(NotesOf(Bar(four + kBackward)) == "0+1920 60 a/c2, 1920+1920 60 b");
    const auto only = [](const char* pass, const char* text) {
        return std::string("<lyric time-only=\"") + pass + "\"><text>" + text + "</text></lyric>";
    };
    const std::string secondNote = "<note time-only=\"2\">" + N("E4", 8, only("1,2", "x")).substr(6);
    CHECK(NotesOf(Bar(N("C4", 8, only("2", "b") + only("1", "a") + Lyric("no", "single", "2")) + secondNote +
                      kBackward)) == "0+960 60 a, 1920+960 60 b, 2880+960 64 x");
    CHECK(NotesOf(Bar(N("C4", 4,
                        Lyric("la\xE2\x80\xBF"
                              "a")))) == "0+480 60 la a");
    CHECK(NotesOf(Bar(N("C4", 4, "<lyric><humming/></lyric>"))) == "0+480 60 mm");
    CHECK(NotesOf(Bar(N("C4", 4, Lyric("(Refrain) 1. Glo\xE2\x80\x91")) + N("D4", 4, Lyric("(Verse 2)")))) ==
          "0+480 60 Glo-, 480+480 62");
    CHECK(NotesOf(Bar(N("C4", 4, Lyric("-glo")) + N("D4", 4, Lyric("ri", "middle")))) ==
          "0+480 60 -glo, 480+480 62 -ri-");
}

TEST_CASE("MusicXML: quarter tones are bent keys, until the next note") {
    const auto alter = [](const std::string& by, const std::string& more = "") {
        return "<note>" + more + "<pitch><step>C</step><alter>" + by + "</alter><octave>5</octave></pitch>" +
               (more.empty() ? "<duration>4</duration>" : "") + "</note>";
    };
    const Song song =
        Read(Score(Bar(alter("0") + alter("-1.5") + alter("-1.5") + alter("0.25", "<grace/>") + N("D5", 4))));
    CHECK(NotesOf(song.parts.at(0)) == "0+480 72, 480+480 70, 960+480 70, 1440+240 72~, 1680+240 74");
    std::string bends;
    for (const PitchBend& bend : song.parts[0].bends)
        bends += std::to_string(bend.tick) + ":" + std::to_string(std::lround(bend.semitones * 100)) + " ";
    CHECK(bends == "480:50 1440:25 1680:0 ");
}

TEST_CASE("MusicXML: a metronome mark may say how long a note was before") {
    const auto mark = [](const std::string& content) {
        return "<direction><direction-type><metronome>" + content + "</metronome></direction-type></direction>";
    };
    const auto unit = [](const std::string& type) { return "<beat-unit>" + type + "</beat-unit>"; };
    const auto note = [](const std::string& type, const std::string& more = "") {
        return "<metronome-note><metronome-type>" + type + "</metronome-type>" + more + "</metronome-note>";
    };
    const auto tuplet = [](const std::string& type) {
        return "<metronome-tuplet type=\"" + type +
               "\"><actual-notes>3</actual-notes><normal-notes>2</normal-notes></metronome-tuplet>";
    };
    const std::string relation = "<metronome-relation>equals</metronome-relation>";
    const std::string twice = mark(unit("quarter") + unit("eighth")); // a quarter is now two of the old ones
    const Song song = Read(Score(
        Bar(Sound("tempo=\"120\"") + N("C4", 16)) + Bar(twice + twice + N("C4", 16)) +
        Bar(mark(unit("quarter") + unit("quarter") + "<beat-unit-dot/><beat-unit-dot/>") + N("C4", 16)) +
        Bar(mark(note("quarter") + relation + note("quarter", "<metronome-dot/>" + tuplet("start"))) + N("C4", 16)) +
        Bar(mark(note("eighth") + note("eighth") + relation + note("quarter", tuplet("start")) +
                 note("eighth", tuplet("stop"))) +
            N("C4", 16) + kBackward)));
    std::string tempos;
    for (const Tempo& tempo : song.tempos)
        tempos += std::to_string(tempo.tick / 1920) + ":" + std::to_string(tempo.microsecondsPerQuarter / 1000) + " ";
    CHECK(tempos == "0:500 1:1000 2:571 3:571 5:500 6:1000 7:571 8:571 ");
    CHECK(song.remarks.empty());
}

TEST_CASE("MusicXML: swing moves the second of two in all parts, but no triplets; slides go into the next note") {
    const auto swing = [](const std::string& ratio) { return "<sound><swing>" + ratio + "</swing></sound>"; };
    const std::string twoOne = swing("<first>2</first><second>1</second>");
    const std::string slide = "<notations><glissando type=\"start\"/></notations>";
    const std::string triplet = "<attributes><divisions>6</divisions></attributes>";
    const std::string back = "<backup><duration>6</duration></backup>";
    CHECK(NotesOf(Bar(twoOne + N("C4", 2), "implicit=\"yes\"") +
                  Bar(N("C4", 2, slide) + N("D4", 6) + N("E4", 3) + N("F4", 1)) +
                  Bar(triplet + N("C4", 2) + N("D4", 1) + N("E4", 3) + swing("<straight/>") + N("F4", 3) +
                      N("G4", 3))) == "80+160 60, 240+320 60~, 560+640 62, 1200+360 64, 1560+120 65, "
                                      "1680+160 60, 1840+80 62, 1920+240 64, 2160+240 65, 2400+240 67");
    const Song song = Read(
        Score(Bar(triplet + Words("Medium Swing") + N("C4", 3) + N("D4", 3) + back + N("C3", 6, "<voice>2</voice>"))));
    CHECK(NotesOf(song.parts.at(0)) == "0+320 60, 320+160 62");
    CHECK(NotesOf(song.parts.at(1)) == "0+480 48");
    CHECK(song.remarks ==
          std::vector<std::string>{"\"swing\" has no numbers: of two eighths the first is sung twice as long"});
}

TEST_CASE("MusicXML: fermatas over rests and barlines hold all parts, each time") {
    const std::string rest = "<note><rest/><duration>4</duration><notations><fermata/></notations></note>";
    const auto bar = [](const char* where) {
        return std::string("<barline location=\"") + where + "\"><fermata/></barline>";
    };
    const std::string under = "<backup><duration>16</duration></backup>" + N("C3", 16, "<voice>2</voice>");
    const Song song = Read(Score(Bar(rest + N("C4", 8) + N("C4", 4) + under) +
                                 Bar(bar("left") + N("D4", 8) + bar("right")) + Bar(N("E4", 4) + kBackward)));
    std::string holds;
    for (const Hold& hold : song.holds)
        holds += std::to_string(hold.tick) + "+" + std::to_string(hold.length) + " ";
    CHECK(holds == "0+480 1440+480 1920+960 3360+480 4800+480 5280+960 ");
}

TEST_CASE("MusicXML: repeats, endings and jumps are unfolded") {
    CHECK(OrderOf({"", kBackward, ""}) == "cdcde");
    CHECK(OrderOf({"", kForward, kBackward, ""}) == "cdedef");
    CHECK(OrderOf({kForward, kForward, kBackward, kBackward, ""}) == "cdedefdefg"); // as notation programs play it
    CHECK(OrderOf({"", kBackward, "", kBackward}) == "cdcdefef");
    CHECK(OrderOf({"", R"(<barline><repeat direction="backward" times="3"/></barline>)"}) == "cdcdcd");
    CHECK(OrderOf({"", Ending("1", true), Ending("2", false), ""}) == "cdcef");
    CHECK(OrderOf({"", Ending("1, 2", true), Ending("3", true), "", kBackward}) == "cdcdcefgfg");
    CHECK(OrderOf({"", Ending("1.-3.", true), Ending("4", false)}) == "cdcdcdce");
    CHECK(OrderOf({kForward, Ending("1", true), Ending("2", false), kForward, Ending("1", true), Ending("2", false)}) ==
          "cdcefgfa");
    CHECK(OrderOf({"", Sound("fine=\"yes\""), kBackward, Sound("dacapo=\"yes\"")}) == "cdecdefcd");
    CHECK(OrderOf({"", Sound("segno=\"s\""), Sound("tocoda=\"c\""), Sound("dalsegno=\"s\""), Sound("coda=\"c\"")}) ==
          "cdefdeg");
    CHECK(OrderOf({"", Words("Fine"), Words("D.C. al Fine")}) == "cdecd");
    const std::string coda = "<direction><direction-type><coda/></direction-type></direction>";
    const std::string segno = "<direction><direction-type><segno/></direction-type></direction>";
    CHECK(OrderOf({"", segno, coda, Words("D.S. al Coda"), coda}) == "cdefdeg");
    CHECK(OrderOf({"", "<barline><segno/></barline>", Words("To Coda"), Words("D.S. al Coda"),
                   "<barline><coda/></barline>"}) == "cdefdeg");
    CHECK(OrderOf({"", segno, Words("To Coda"), Words("D.S. al Coda"), Words("Coda")}) == "cdefdeg");
    CHECK(OrderOf({"", Ending("1", true), Ending("2", false), Words("D.C. al Fine")}) == "cdcefcef");
    const Song song = Read(Score(Bar(N("C4", 16)) + Bar(N("D4", 16) + Sound("dalsegno=\"x\""))));
    CHECK(song.remarks == std::vector<std::string>{"a jump to a segno that is not there is left out"});
    // Back at the beginning the tempo of the beginning holds again.
    const Song again = Read(Score(Bar(Sound("tempo=\"60\"") + N("C4", 16)) + Bar(kForward + N("D4", 16)) +
                                  Bar(Sound("tempo=\"90\"") + N("D4", 16) + kBackward)));
    REQUIRE(again.tempos.size() == 4);
    CHECK(again.tempos[2].tick == 3 * 1920);
    CHECK(again.tempos[2].microsecondsPerQuarter == 1000000);
}

TEST_CASE("MusicXML: the voices of a staff are parts of their own") {
    const auto voice = [](const std::string& number, const std::string& staff = "1") {
        return "<voice>" + number + "</voice><staff>" + staff + "</staff>";
    };
    const std::string measure = Bar(
        "<attributes><clef number=\"1\"><sign>G</sign></clef><clef number=\"2\"><sign>F</sign></clef></attributes>" +
        N("C5", 16, voice("1") + Lyric("ah")) + "<backup><duration>16</duration></backup>" + N("E4", 16, voice("2")) +
        "<backup><duration>16</duration></backup>" + N("C4", 16, voice("5", "2")) +
        "<backup><duration>8</duration></backup><forward><duration>4</duration></forward>" +
        N("C3", 4, voice("6", "2")));
    const Song song = Read(Score(measure, "S A T B"));
    REQUIRE(song.parts.size() == 4);
    const std::vector<std::string> names = {song.parts[0].name, song.parts[1].name, song.parts[2].name,
                                            song.parts[3].name};
    CHECK(names == std::vector<std::string>{"Soprano", "Alto", "Tenor", "Bass"});
    CHECK(NotesOf(song.parts[0]) == "0+1920 72 ah");
    CHECK(NotesOf(song.parts[3]) == "1440+480 48");
    CHECK(song.parts[0].clef == "treble");
    CHECK(song.parts[3].clef == "bass");
    CHECK(Read(Score(measure, "Choir")).parts.at(1).name == "Choir 2");
    // One that goes over to another staff is one; its chord goes with it.
    const Song crossing = Read(Score(Bar(N("A3", 4, "<tie type=\"start\"/>" + voice("1", "2") + Lyric("one")) +
                                         N("A3", 4, "<tie type=\"stop\"/>" + voice("1")) + N("C4", 8, voice("1")) +
                                         N("E4", 8, "<chord/>" + voice("1", "2")))));
    REQUIRE(crossing.parts.size() == 1);
    CHECK(NotesOf(crossing.parts[0]) == "0+960 57 one, 960+960 60, 960+960 64");
    CHECK(Read(Score(measure, "SATB")).parts.at(2).name == "Tenor");
}

TEST_CASE("MusicXML: by measures, in other encodings, with what is not sung") {
    const std::string note = N("C4", 4, Lyric("h\xC3\xA9"));
    const auto timewise = [](const std::string& first, const std::string& second) {
        return "<score-timewise><part-list><score-part id=\"A\"/><score-part id=\"B\"/></part-list><measure>"
               "<part id=\"B\">" +
               first + "</part></measure><measure><part id=\"A\">" + second + "</part><part id=\"B\">" + second +
               "</part></measure></score-timewise>";
    };
    const Song song = Read(timewise("<attributes><divisions>4</divisions></attributes>" + note, note));
    REQUIRE(song.parts.size() == 2);
    CHECK(NotesOf(song.parts[1]) == "0+480 60 h\xC3\xA9, 480+480 60 h\xC3\xA9");
    CHECK(song.parts[0].notes.at(0).tick == 480);

    const std::string ascii = Score(Bar(N("C4", 4, Lyric("ah"))));
    std::string wide = "\xFF\xFE";
    for (const char c : ascii)
        wide += {c, '\0'};
    CHECK(NotesOf(Read(wide).parts.at(0)) == "0+480 60 ah");
    std::string latin = Score(Bar(N("C4", 4, Lyric("h\xE9"))));
    latin.replace(latin.find("UTF-8"), 5, "latin-1");
    CHECK(NotesOf(Read(latin).parts.at(0)) == "0+480 60 h\xC3\xA9");

    std::string prefixed = Score(Bar(N("C4", 4, Lyric("ah"))));
    for (size_t at = 0; (at = prefixed.find('<', at)) != std::string::npos; ++at)
        if (const size_t name = at + (prefixed[at + 1] == '/' ? 2 : 1); std::isalpha(prefixed[name]))
            prefixed.insert(name, "m:");
    prefixed.insert(prefixed.find("<m:score"), "<!--" + std::string(5000, ' ') + "-->\n");
    CHECK(NotesOf(Read(prefixed).parts.at(0)) == "0+480 60 ah");

    const std::string clap = "<note><unpitched/><duration>4</duration></note>";
    CHECK(NotesOf(Bar(N("C4", 4) + clap + N("D4", 4))) == "0+480 60, 960+480 62");
    CHECK(Read(Score(Bar(clap))).parts.at(0).IsPercussion());
    const Song left = Read(
        Score(Bar(N("C4", 4) + N("D4", 4, "<cue/>") +
                  N("E4", 4, "<notations><ornaments><trill-mark/></ornaments></notations><lyric><laughing/></lyric>") +
                  Words("rit."))));
    CHECK(NotesOf(left.parts.at(0)) == "0+480 60, 960+480 64");
    CHECK(left.remarks.size() == 4);
}

#if !defined(_WIN32)
TEST_CASE("MusicXML: a notation program that reads a score and writes it anew changes nothing that is sung") {
    if (std::system("command -v mscore3 >/dev/null") != 0) {
        MESSAGE("SKIPPED: mscore3 (package musescore3) is not installed");
        return;
    }
    const auto typed = [](const std::string& pitch, int length, const std::string& tie, const std::string& more) {
        const std::string type = length == 2 ? "eighth" : length < 8 ? "quarter" : "half";
        return N(pitch, length,
                 tie + "<voice>1</voice><type>" + type + "</type>" + (length == 6 || length == 12 ? "<dot/>" : "") +
                     more);
    };
    const auto slur = [](const std::string& type) { return "<notations><slur type=\"" + type + "\"/></notations>"; };
    const std::string text = Score(
        Bar(kPickup + Sound("tempo=\"90\"") + typed("G4", 4, "", Lyric("A", "begin")), "implicit=\"yes\"") +
        Bar(kForward + typed("A4", 6, "", slur("start") + Lyric("men", "end")) +
            typed("F#4", 2, "<tie type=\"start\"/>", slur("stop") + "<notations><tied type=\"start\"/></notations>") +
            typed("F#4", 4, "<tie type=\"stop\"/>", "<notations><tied type=\"stop\"/></notations>")) +
        Bar(Ending("1", true) + typed("G4", 12, "", Lyric("one"))) +
        Bar(Ending("2", false) + typed("G4", 12, "", Lyric("two"))));
    const Song ours = Read(text);
    const TempFolder folder;
    const std::string source = folder.File("ours.musicxml", text);
    for (const std::string name : {"theirs.musicxml", "theirs.mxl"}) {
        REQUIRE(std::system(
                    ("QT_QPA_PLATFORM=offscreen mscore3 -o " + folder.Path(name) + " " + source + " >/dev/null 2>&1")
                        .c_str()) == 0);
        const Song theirs = ReadSongFile(folder.Path(name));
        CHECK(NotesOf(theirs.parts.at(0)) == NotesOf(ours.parts.at(0)));
        CHECK(theirs.tempos.at(0).microsecondsPerQuarter == ours.tempos.at(0).microsecondsPerQuarter);
        CHECK(theirs.measures.size() == ours.measures.size());
        CHECK(theirs.title == ours.title);
    }
}
#endif

TEST_CASE("MusicXML: compressed scores") {
    const std::string score = Score(Bar(N("C4", 4, Lyric("ah"))));
    const std::string list = "<container><rootfiles><rootfile full-path=\"in/s.xml\"/></rootfiles></container>";
    const std::string listed = Zip({{"a.xml", "<no/>"}, {"META-INF/container.xml", list}, {"in/s.xml", score}});
    CHECK(NotesOf(Read(listed).parts.at(0)) == "0+480 60 ah");
    CHECK(NotesOf(Read(Zip({{"META-INF/x.xml", "<no/>"}, {"s.musicxml", score}})).parts.at(0)) == "0+480 60 ah");
    CHECK(ErrorOf(Zip({{"readme.txt", "text"}})) == "s.musicxml: is an archive without a score in it");
    std::string bomb = Zip({{"s.xml", std::string(1000000, ' ')}});
    bomb.replace(bomb.rfind("PK\x01\x02") + 24, 4, Number(100 << 20, 4)); // says that it unpacks to 100 MB
    CHECK(ErrorOf(bomb) == "s.musicxml: is a damaged archive: save it anew, or uncompressed");
    for (size_t i = 0; i < listed.size(); ++i) {
        ErrorOf(listed.substr(0, i));
        std::string damaged = listed;
        damaged[i] = static_cast<char>(damaged[i] ^ (1 << i % 8));
        ErrorOf(damaged);
    }
}

TEST_CASE("MusicXML: what is no score, is cut, or would fill the memory is refused in one line") {
    CHECK(ErrorOf("<score-partwise><part>") == "s.musicxml: line 1: this is not XML as it should be (unexpected end of "
                                               "data): save it anew");
    CHECK(ErrorOf("<a b='<'>score-partwise</a>") == "s.musicxml: holds no score in MusicXML but \"a\": "
                                                    "have the program that wrote it export MusicXML or MIDI");
    CHECK(ErrorOf("<!DOCTYPE score-partwise [<!ENTITY a \"b\">]><score-partwise/>") ==
          "s.musicxml: line 1: a document type with declarations of its own is not read");
    std::string deep = "<score-partwise>\n";
    for (int i = 0; i < 100000; ++i)
        deep += "<a>";
    CHECK(ErrorOf(deep) == "s.musicxml: line 2: elements are nested deeper than 200, which no song's are");
    CHECK(ErrorOf(std::string(100, '\0')).find("neither") != std::string::npos);
    // Every measure leads back to the first: the song ends where a million notes are.
    std::string jumps;
    std::string chord;
    for (int i = 0; i < 500; ++i)
        chord += N("C4", 1);
    for (int i = 0; i < 400; ++i)
        jumps += Bar(chord + Sound("dacapo=\"yes\""));
    const Song song = Read(Score(jumps));
    CHECK(song.parts.at(0).notes.size() <= 1000000);
    CHECK(song.remarks.size() == 1);
}
