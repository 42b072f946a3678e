// What a host makes of what was sung: measured sound, and reports whose bytes others read.
#include "torv/songs/report_writers.h"
#include "torv/songs/song_clock.h"
#include "torv/songs/sound_keeper.h"
#include "torv/songs/sung_lines.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <iterator>
#include <numbers>
#include <set>

using namespace torv::songs;

namespace {

/// A tone with a few harmonics whose pitch in keys is `keyAt(seconds)`, full scale at `amplitude` 1.
template <class KeyAt>
std::vector<int16_t> Sung(double seconds, unsigned rate, double amplitude, KeyAt keyAt) {
    std::vector<int16_t> samples;
    double turn = 0;
    for (int i = 0; i < seconds * rate; ++i) {
        turn += 2 * std::numbers::pi * 440 * std::pow(2, (keyAt(i / double(rate)) - 69) / 12) / rate;
        const double wave = 0.5 * std::sin(turn) + 0.35 * std::sin(2 * turn + 1) + 0.15 * std::sin(3 * turn);
        samples.push_back(static_cast<int16_t>(32767 * amplitude * wave));
    }
    return samples;
}

PerformedNote Sings(double start, double end, int key, const std::string& text, bool hyphenAfter = false) {
    PerformedNote note{start, end, 0, 480, key, "", 80, false, {}};
    note.lyric.push_back({text, hyphenAfter, start, end, {{"a", 64}}});
    return note;
}

/// Two parts, each on one tone that is not the other's octave: A3 and then E4 above it, both silent before 1 s.
Performance Duet() {
    Performance song;
    song.title = "Duet </script><b> & \xFF";
    song.input = "duet.mid";
    song.seconds = 4;
    song.measures = {{1, 0, 2, {0, 0.5, 1, 1.5}}, {2, 2, 4, {2, 2.5, 3, 3.5}}};
    song.tempos = {{0, 120}, {2, 90}};
    for (const int key : {57, 64}) {
        PerformedPart part;
        part.name = key == 57 ? "Low" : "High";
        part.voices = {{0, "Alice"}};
        part.notes = {Sings(1, 2, key, "Al", true), Sings(2, 3, key, "to,"), Sings(3, 3.5, key, "")};
        KeptSound sound{22050, std::vector<int16_t>(22050), 1, 1};
        const std::vector<int16_t> tone = Sung(2.5, sound.rate, 0.3, [key](double) { return double(key); });
        sound.samples.insert(sound.samples.end(), tone.begin(), tone.end());
        AddSound(std::move(sound), part);
        song.parts.push_back(std::move(part));
    }
    return song;
}

/// Every field's name, of all that is inside too.
std::set<std::string> FieldsOf(const nlohmann::json& value) {
    std::set<std::string> fields;
    for (const auto& item : value.items()) {
        if (value.is_object())
            fields.insert(item.key());
        if (item.value().is_structured())
            fields.merge(FieldsOf(item.value()));
    }
    return fields;
}

nlohmann::json DataOf(const std::string& page) {
    const std::string begin = "<script type=\"application/json\" id=\"data\">";
    const size_t from = page.find(begin) + begin.size();
    return nlohmann::json::parse(page.substr(from, page.find("</script>", from) - from));
}

} // namespace

TEST_CASE("clock: the default tempo holds until the first change, each change from its tick on") {
    const SongClock clock({{480, 1000000}, {960, 250000}});
    CHECK(clock.SecondsAt(480) == doctest::Approx(0.5));
    CHECK(clock.SecondsAt(720) == doctest::Approx(1.0));
    CHECK(clock.SecondsAt(1440) == doctest::Approx(0.5 + 1 + 0.25));
}

TEST_CASE("measured sound: the pitch is the sound's, not the expected key's; silence has none") {
    const auto keyAt = [](double t) { return t < 1 ? 45.3 : 69 + 0.5 * std::sin(2 * std::numbers::pi * 5 * t); };
    std::vector<int16_t> sound = Sung(2, 22050, 0.5, keyAt);
    sound.resize(sound.size() + 22050);
    const SoundCurves curves = MeasureSound(sound, 22050, {{0, 1, 45}, {1, 3, 69}});
    REQUIRE(curves.pitch.size() == 151); // every 20 ms from 0 to 3 s
    for (size_t i = 5; i < 95; ++i)
        if (i < 45 || i > 55) // the leap; of a key, as the window of 40 ms flattens a vibrato a little
            CHECK(std::abs(curves.pitch[i] - keyAt(static_cast<double>(i) * kCurveStep)) < 0.1);
    // Harmonics of 0.5, 0.35 and 0.15 have an RMS of sqrt(0.395 / 2); at half of it -13.06 dB, give or take a period.
    CHECK(curves.level[25] == doctest::Approx(-13.06).epsilon(0.04));
    CHECK(std::isnan(curves.pitch[140]));
    CHECK(curves.level[140] == kSilence);
}

TEST_CASE("kept sound: in time and as loud as it came, without what its rate cannot hold") {
    for (const unsigned rate : {44100U, 96000U}) {
        SoundKeeper keeper(rate);
        for (unsigned i = 0; i < rate; ++i)
            keeper.Add(i == rate / 2 ? 1.0F : 0.0F);
        const KeptSound click = keeper.Take();
        CHECK(click.rate == (rate == 44100 ? 22050 : 24000));
        REQUIRE(click.samples.size() == click.rate);
        CHECK(std::max_element(click.samples.begin(), click.samples.end()) - click.samples.begin() == click.rate / 2);

        const auto loudest = [&](double hz) {
            for (unsigned i = 0; i < rate; ++i)
                keeper.Add(static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * hz * i / rate)));
            const std::vector<int16_t> tone = keeper.Take().samples;
            return *std::max_element(tone.begin() + 1000, tone.end() - 1000) / 16384.0;
        };
        CHECK(loudest(3000) == doctest::Approx(1).epsilon(0.02));
        CHECK(loudest(15000) < 0.01);
    }
}

TEST_CASE("lines: a rest, a phrase's end or a line's length ends one; no word is cut") {
    PerformedPart part;
    double time = 0;
    const auto sing = [&](const std::string& text, bool hyphen = false, double rest = 0) {
        part.notes.push_back(Sings(time, time + 0.5, 60, text, hyphen));
        time += 0.5 + rest;
    };
    const auto texts = [&part] {
        std::string all;
        for (const SungLine& line : SungLinesOf(part))
            all += TextOf(line) + '|';
        return all;
    };
    sing("Hal", true);
    sing(""); // the vowel goes on
    sing("le", true);
    sing("lu,");
    sing("sing", false, 0.6);
    sing("さ");
    sing("く", false, 0.6);
    sing("Twinkle");
    sing("little");
    sing("star,");
    sing("a");
    CHECK(texts() == "Halle"
                     "lu, sing|さく|Twinkle little star,|a|");
    part.notes.clear();
    for (int i = 0; i < 12; ++i)
        sing("ever", i % 2 == 0);
    CHECK(texts() == "everever everever everever everever|everever everever|"); // 35 bytes; a fifth would be 44
}

TEST_CASE("label tracks and karaoke lines, to the byte") {
    Performance song = Duet();
    song.title = "A [b]\nc";
    CHECK(ToLabelTrack(song) == "1.000000\t2.000000\tLow: Al\n1.000000\t2.000000\tHigh: Al\n"
                                "2.000000\t3.500000\tLow: to,\n2.000000\t3.500000\tHigh: to,\n");
    CHECK(ToKaraokeLines(song) == "[ti:A  b  c]\n[length:00:04]\n[00:01.00]<00:01.00>Alto,<00:03.50>\n");
    song.parts.pop_back();
    song.parts[0].notes[0].lyric[0].text = "a\tb\n";
    song.parts[0].notes[0].start = song.parts[0].notes[0].lyric[0].start = 75.678;
    CHECK(ToLabelTrack(song).substr(0, 4) == "2.00");
    CHECK(ToLabelTrack(song).find("75.678000\t2.000000\ta b \n") != std::string::npos);
}

TEST_CASE("page: its data are the report's and its sound, whatever the texts; too much sound is left out") {
    const Performance song = Duet();
    const std::string page = ToPage(song);
    const nlohmann::json data = DataOf(page);
    CHECK(data["title"] == "Duet </script><b> & \xEF\xBF\xBD");
    CHECK(page.find("{{") == std::string::npos); // no place left empty
    const nlohmann::json report = nlohmann::json::parse(ToJsonReport(song));
    CHECK(data["parts"][1]["pitch"] == report["parts"][1]["pitch"]);
    CHECK(report["parts"][1]["pitch"][100].get<double>() == doctest::Approx(64).epsilon(0.001));
    CHECK(report["parts"][0]["pitch"][20].is_null());
    CHECK(report["parts"][0]["lines"][0]["text"] == "Alto,");
    std::ifstream guide(TORV_EXAMPLES "../docs/report.md");
    const std::string described{std::istreambuf_iterator<char>(guide), {}};
    for (const std::string& field : FieldsOf(report))
        CHECK_MESSAGE((described.find('`' + field + '`') != std::string::npos ||
                       described.find('`' + field + "[]`") != std::string::npos),
                      field);
    // 3.5 s of 22,050 samples of two bytes and a header of 44, four digits for three bytes.
    CHECK(data["parts"][0]["sound"]["wave"].get<std::string>().size() == (77175 * 2 + 44 + 2) / 3 * 4);
    CHECK(data["parts"][0]["sound"]["wave"].get<std::string>().substr(0, 8) == "UklGRhJb");

    // Of two parts the mix, with two channels, is as much as they are.
    const nlohmann::json none = DataOf(ToPage(song, 4 * 77175 - 1));
    CHECK(none["soundLeftOut"] == true);
    CHECK_FALSE(none["parts"][0].contains("sound"));
    Performance trio = song;
    trio.parts.push_back(trio.parts[0]);
    const nlohmann::json mixed = DataOf(ToPage(trio, 4 * 77175));
    CHECK(mixed["soundLeftOut"] == false);
    CHECK(mixed["mix"].get<std::string>().size() == (77175 * 4 + 44 + 2) / 3 * 4);
    CHECK_FALSE(mixed["parts"][0].contains("sound"));

    std::ofstream("report_page_test.html", std::ios::binary) << page; // for the browser's test
}
