// What a song says beside its notes and words, as it is sung.
#include "torv/songs/curves.h"
#include "torv/songs/fermatas.h"

#include <doctest/doctest.h>

using namespace torv::songs;

namespace {

Part QuartersOf(const std::vector<int>& velocities) {
    Part part;
    for (const int velocity : velocities)
        part.notes.push_back({static_cast<uint32_t>(480 * part.notes.size()), 480, 60, velocity, {}});
    return part;
}

std::string Shown(const std::vector<CurvePoint>& points) {
    std::string text;
    for (const CurvePoint& point : points)
        text += (text.empty() ? "" : " ") + std::to_string(point.tick) + ":" + std::to_string(point.value);
    return text;
}

} // namespace

TEST_CASE("curves: marks, hairpins, velocities and controllers add up in dynamics") {
    using enum Dynamic::Kind;
    const MessageCatcher messages;
    const Databases databases(messages);
    // The icons' levels: pp 28, p 44, mf 76, f 89, fff 120; 0.6 a unit of velocity around 80, or around the median.
    const struct {
        std::vector<int> velocities;
        std::vector<Dynamic> dynamics;
        std::vector<Controller> controllers;
        const char* curve;
    } rows[] = {
        {{80, 80}, {}, {}, ""},
        {{80, 33, 112}, {}, {}, "0:72 480:44 960:91"},
        {{60, 60, 70}, {{0, Level, "p", 0}, {480, Level, "ffff", 0}}, {}, "0:44 480:120 960:126"},
        {{80, 80}, {{0, Level, "sfp", 0}}, {}, "0:62 480:44"}, // an accent of 18 on its note
        {{80, 80}, {{0, Level, "x", 0}, {480, Level, "sfz", 0}}, {}, "0:72 480:90"},
        {{80}, {{0, Level, "pp", 0}, {60, Crescendo, "mf", 90}}, {}, "0:28 90:44 120:60 150:76"},
        {{80}, {{0, Diminuendo, "", 60}, {60, Crescendo, "", 0}}, {}, "0:72 30:64 60:56"},
        {{80},
         {},
         {{0, 7, 100}, {0, 11, 127}, {240, 11, 90}, {300, 7, 48}, {360, 7, 0}, {400, 10, 0}},
         "0:72 240:42 300:6 360:0"}, // 200 lg(90/127) = -29.9; 63.8 less: -21.7, and 6 - 100 lg 2 = -24.1; silence
    };
    for (const auto& row : rows) {
        CAPTURE(row.curve);
        Part part = QuartersOf(row.velocities);
        part.dynamics = row.dynamics;
        part.controllers = row.controllers;
        CHECK(Shown(MakeCurves(part, MakeVoiceLine(part), databases).dynamics) == row.curve);
    }
    Part bent = QuartersOf({80});
    bent.bends = {{0, 0}, {100, 3.5}, {200, -4}, {300, 0}};
    const Curves curves = MakeCurves(bent, MakeVoiceLine(bent), databases);
    CHECK(curves.bendRange == 4);
    CHECK(Shown(curves.bends) == "0:0 100:7168 200:-8192 300:0");
}

TEST_CASE("voice: slurs and lines lead on, staccato under a slur is longer, accents are louder; plain leaves it out") {
    Part part = QuartersOf({80, 80, 120, 80, 80});
    for (Note& note : part.notes)
        note.length = 300; // a gap of 180
    part.notes[0].slurred = true;
    part.notes[1].tenuto = true;
    part.notes[1].breathAfter = true;
    part.notes[2].staccato = part.notes[2].slurred = true;
    part.notes[2].accent = part.notes[3].accent = true;
    const auto shown = [&part](bool isPlain) {
        std::string text;
        for (const SungNote& note : MakeVoiceLine(part, 1, isPlain).notes)
            text += std::to_string(note.length) + (note.joined ? "j " : " ") + std::to_string(note.velocity) + ", ";
        return text;
    };
    CHECK(shown(false) == "480 80, 480j 80, 225j 127, 300 92, 300 80, ");
    CHECK(shown(true) == "300 80, 300 80, 300 80, 300 80, 300 80, ");
}

TEST_CASE("fermatas: held by the tempo, which is as before behind them") {
    Song song;
    song.parts = {QuartersOf({80, 80, 80, 80}), QuartersOf({80, 80, 80, 80})};
    song.tempos = {{0, 600000}, {700, 400000}};
    song.parts[0].notes[1].fermata = true; // 480 to 960, with the other part's to 1200
    song.parts[1].notes[1] = {480, 720, 60, 80, {}};
    song.parts[1].notes[1].fermata = true;
    song.parts[1].notes[3] = {1440, 1920, 60, 80, {}};
    song.parts[1].notes[3].fermata = true; // its last half note
    song.holds = {{3840, 480}};
    HoldFermatas(song);
    std::string tempos;
    for (const Tempo& tempo : song.tempos)
        tempos += std::to_string(tempo.tick) + ":" + std::to_string(tempo.microsecondsPerQuarter) + " ";
    CHECK(tempos == "0:600000 480:900000 700:600000 1200:400000 2400:600000 3360:400000 3840:600000 4320:400000 ");
}
