#include "encoding_fixture.h"

#include <doctest/doctest.h>

#include <algorithm>

namespace {

/// Tick, sending time and value of every block of one parameter.
std::vector<std::vector<long>> ValuesOf(CQuillMidiBuffer& stream, int number, int parameter = 2) {
    std::vector<std::vector<long>> rows;
    for (const StreamEntry& entry : EntriesOf(stream, number))
        rows.push_back({static_cast<long>(entry.tick), entry.time, entry.Block().At(parameter)});
    return rows;
}

CIconDynamics* Dynamics(int articulation, int start, int end, DWORD length) {
    auto* const icon = new CIconDynamics(5, articulation, 1);
    icon->SetStartDynamics(start);
    icon->SetEndDynamics(end);
    icon->SetLength(length);
    return icon;
}

} // namespace

using Rows = std::vector<std::vector<long>>;

TEST_CASE("singer: two blocks in one entry, early ones with a shorter delay") {
    Chart chart;
    chart.Singer(0, 1, 3);
    chart.Singer(960, 0, 2);   // 1000 ms
    chart.Singer(2880, 1, 44); // 3000 ms
    const auto entries = EntriesOf(*chart.Encode());
    REQUIRE(entries.size() == 3);
    const auto both = Decode(entries[0].bytes);
    REQUIRE(both.size() == 2);
    CHECK(entries[0].bytes.size() == 66);
    CHECK((both[0].number == 0x60 && both[0].At(2) == 1 && both[0].Delay() == 0));
    CHECK((both[1].number == 0x53 && both[1].At(2) == 3 && both[1].Delay() == 0));
    CHECK((entries[1].time == 0 && entries[1].Block().Delay() == 1000));
    CHECK((entries[2].time == 1000 && entries[2].tick == 960 && entries[2].Block().Delay() == 2000));
}

TEST_CASE("dynamics by icons: levels at once, changes as samples from the level in force") {
    Chart chart;
    chart.Place(1000, Dynamics(1, 20, 20, 1)); // within the presend: left out, and the level stays 72
    chart.Place(1920, Dynamics(2, 0, 20, 120));
    chart.Place(2400, Dynamics(1, 100, 100, 1));
    chart.Place(2880, Dynamics(3, 0, -50, 60));
    chart.Note(3000, 480);
    SUBCASE("in icon mode") {
        const auto stream = chart.Encode();
        // Every 30 ticks of a ramp from 72 to 92 over 120; then the level; then 100 down to 50 over 60.
        // 30 ticks are 31.25 ms; 1950 ticks 2031, 1980 2062, 2010 2093, 2040 2125 ms.
        CHECK(ValuesOf(*stream, 0x63) == Rows{{0, 0, 72},
                                              {30, 31, 77},
                                              {60, 62, 82},
                                              {89, 93, 87},
                                              {120, 125, 92},
                                              {480, 500, 100},
                                              {960, 1000, 100},
                                              {990, 1031, 75},
                                              {1020, 1062, 50}});
    }
    SUBCASE("in list mode the icons are not looked at") {
        chart.Track().SetDynamicsMode(1);
        AddPoint(chart.Track().GetDynamicsBreakPointList(), 0, 10); // within the presend
        AddPoint(chart.Track().GetDynamicsBreakPointList(), 2400, 90);
        CHECK(ValuesOf(*chart.Encode(), 0x63) == Rows{{480, 500, 90}});
    }
}

TEST_CASE("a change after a change starts from the level the first one left") {
    Chart chart;
    chart.Place(1920, Dynamics(2, 0, 40, 30)); // 72 -> 112
    chart.Place(2400, Dynamics(2, 0, 40, 30)); // 112 -> 127, clamped
    const auto rows = ValuesOf(*chart.Encode(), 0x63);
    REQUIRE(rows.size() == 4);
    CHECK((rows[0][2] == 72 && rows[1][2] == 112 && rows[2][2] == 112 && rows[3][2] == 127));
}

TEST_CASE("curves of the track: each in its own block and its own form") {
    Chart chart;
    chart.Note(1920, 960);
    CSequenceObject& track = chart.Track();
    AddPoint(track.GetPitchBendBreakPointList(), 1920, -8192);
    AddPoint(track.GetPitchBendBreakPointList(), 2400, 0);
    AddPoint(track.GetPitchBendBreakPointList(), 2880, 8191);
    AddPoint(track.GetPitchBendSensBreakPointList(), 1920, 12);
    AddPoint(track.GetTremoloDepthBreakPointList(), 2400, 33);
    AddPoint(track.CreateVoiceControlBreakPointList(4), 1920, 70);
    AddPoint(track.CreateVoiceControlBreakPointList(16), 2400, 71);
    const auto stream = chart.Encode();

    const auto bends = EntriesOf(*stream, 0x54);
    REQUIRE(bends.size() == 3);
    CHECK((bends[0].Block().At(2) == 0 && bends[0].Block().LsbAt(2) == 0));
    CHECK((bends[1].Block().At(2) == 64 && bends[1].Block().LsbAt(2) == 0));
    CHECK((bends[2].Block().At(2) == 127 && bends[2].Block().LsbAt(2) == 127));
    CHECK((bends[1].time == 500 && bends[1].Block().Delay() == 2000));

    const auto sensitivity = EntriesOf(*stream, 0x67);
    REQUIRE(sensitivity.size() == 1);
    CHECK((sensitivity[0].Block().At(2) == 12 && sensitivity[0].Block().LsbAt(2) == 0));
    CHECK(ValuesOf(*stream, 0x66) == Rows{{480, 500, 33}});
    CHECK(ValuesOf(*stream, 0x55) == Rows{{0, 0, 0x40}, {480, 500, 0x70}}); // selectors
    CHECK(ValuesOf(*stream, 0x55, 3) == Rows{{0, 0, 70}, {480, 500, 71}});

    // Everything was appended after the notes, list by list, and still stands in time order.
    const auto all = EntriesOf(*stream);
    CHECK(std::is_sorted(all.begin(), all.end(), [](const StreamEntry& a, const StreamEntry& b) {
        return a.tick != b.tick ? a.tick < b.tick : a.time < b.time;
    }));
}

TEST_CASE("vibrato: depth and rate curves over the note, at their own resolutions") {
    const auto encode = [](int depthResolution, int rateResolution) {
        Chart chart;
        tagCsqEventAnote* const note = chart.Note(1920, 480);
        auto* const icon = new CIconVibrato(4, 4, 1);
        icon->SetLength(120);
        icon->SetStartDepth(10);
        icon->SetStartRate(50);
        AddPoint(icon->GetDepthBPList(), 5000, 40); // at 60 ticks
        note->vibratoHandle = chart.Icon(icon);
        CxQuillMidiEncoder encoder;
        encoder.SetExtractResolutionAt(CxQuillMidiEncoder::kVibratoDepthSlot, depthResolution);
        encoder.SetExtractResolutionAt(CxQuillMidiEncoder::kVibratoRateSlot, rateResolution);
        return chart.Encode(encoder);
    };
    const auto sampled = encode(30, 480);
    CHECK(ValuesOf(*sampled, 0x65) == Rows{{0, 0, 10}, {30, 31, 25}, {60, 62, 40}});
    CHECK(ValuesOf(*sampled, 0x64) == Rows{{0, 0, 50}}); // one point: as the closing value
    const auto stepwise = encode(-1, -1);
    CHECK(ValuesOf(*stepwise, 0x65) == Rows{{0, 0, 10}, {60, 62, 40}});
}

TEST_CASE("settings: what is valid, what is not") {
    CHECK(CxQuillMidiEncoder::IsValidPresendTime(500));
    CHECK(CxQuillMidiEncoder::IsValidPresendTime(5000));
    CHECK_FALSE(CxQuillMidiEncoder::IsValidPresendTime(499));
    CHECK_FALSE(CxQuillMidiEncoder::IsValidPresendTime(5001));
    CHECK(CxQuillMidiEncoder::IsValidEventInterval(255));
    CHECK_FALSE(CxQuillMidiEncoder::IsValidEventInterval(256));
    CHECK_FALSE(CxQuillMidiEncoder::IsValidOutMode(2));
    CHECK(CxQuillMidiEncoder::GetExtractResolution(5) == 30);
    CHECK(CxQuillMidiEncoder::GetExtractResolution(10) == 480);
    CHECK(CxQuillMidiEncoder::GetExtractResolution(11) == -1);
    CHECK(CxQuillMidiEncoder::GetExtractResolution(-1) == -1);
    CxQuillMidiEncoder encoder;
    CHECK(encoder.SetExtractResolutionAt(0, 31) == 0);
    CHECK(encoder.GetExtractResolutionAt(0) == 30);
    CHECK(encoder.EncodeSequenceTrack(nullptr) == nullptr);
}

TEST_CASE("a master track without events counts at the tempo that applies without any") {
    CMasterTrack master; // never created
    tagSequenceTimeMap* const map = CxQuillMidiEncoder::CreateSequenceTimeMap(&master);
    REQUIRE(map);
    CHECK(torv::SearchTimePosition(960, map, 0) == 1000);
    torv::ReleaseSequenceTimeMap(map);
    // A map of nothing but its end, as a host may make it, is not read past.
    const tagSequenceTimeMap empty[] = {{0, 0xFFFFFFFF, 0xFFFFFFFF}};
    CHECK(CxQuillMidiEncoder::SearchTickPosition(960, empty, 7) == 0);
}

TEST_CASE("file mode: every message is an event of its own, an interval apart") {
    struct FileModeEncoder : CxQuillMidiEncoder {
        using CxQuillMidiEncoder::WriteChMessage;
        using CxQuillMidiEncoder::WriteEOVM;
        using CxQuillMidiEncoder::WriteQuillMidiMessage;
        explicit FileModeEncoder(CQuillMidiBuffer* buffer) { m_pBuffer = buffer; }
    };
    for (const DWORD interval : {0U, 2U}) {
        CQuillMidiBuffer buffer;
        buffer.Create(0, 2000, static_cast<int>(interval));
        FileModeEncoder encoder(&buffer);
        const Bytes first{0xB0, 99, 1, 0xB0, 98, 2, 0xB0, 6, 3};
        const Bytes second{0xB0, 99, 4, 0xB0, 98, 5};
        encoder.WriteQuillMidiMessage(100, interval, first.data(), 3);
        encoder.WriteQuillMidiMessage(100, interval, second.data(), 2);
        encoder.WriteQuillMidiMessage(0, interval, second.data(), 1);
        std::vector<std::vector<long>> rows;
        for (const StreamEntry& entry : EntriesOf(buffer)) {
            CHECK((entry.time == 0 && entry.bytes.size() == 3));
            rows.push_back({static_cast<long>(entry.tick), entry.bytes[2]});
        }
        if (interval == 0)
            CHECK(rows == Rows{{0, 4}, {100, 1}, {100, 2}, {100, 3}, {100, 4}, {100, 5}});
        else
            CHECK(rows == Rows{{0, 4}, {100, 1}, {100, 4}, {102, 2}, {102, 5}, {104, 3}});
    }
    CQuillMidiBuffer buffer;
    buffer.Create(1, 2000, 0);
    FileModeEncoder encoder(&buffer);
    encoder.WriteEOVM(480, 2, 7);
    const auto entries = EntriesOf(buffer);
    REQUIRE(entries.size() == 1);
    CHECK((entries[0].tick == 480 && entries[0].time == 7));
    CHECK(entries[0].bytes == Bytes{0xB2, 99, 0x52, 0xB2, 98, 0, 0xB2, 6, 0, 0xB2, 38, 0, 0, 0, 0, 0});
}
