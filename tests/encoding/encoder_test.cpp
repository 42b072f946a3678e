#include "encoding_fixture.h"

#include "allocation_failure.h"

#include <algorithm>

// 120 beats a minute unless a test says otherwise: 480 ticks are 500 ms, 1920 ticks are the presend of 2000 ms.

namespace {

/// The class from within, as those who derive from it have it.
struct Inside : CxQuillMidiEncoder {
    /// What its writers answer, for every event of a track that a run may be open for. Without `info` all is null.
    std::vector<int> Write(CSequenceObject* track, tagQuillMidiRealtimeInfo* info) {
        std::vector<int> results;
        CCsqEvent event;
        event.Attach(track);
        while (event.GetNext() != torv::kEventEnd) {
            results.push_back(WriteCsqSingerEvent(&event, info));
            results.push_back(WriteQsqDynamicsEvent(&event, info));
            results.push_back(WriteCsqAnoteEvent(&event, info));
        }
        CIconVibrato vibrato(4, 4, 1);
        CIconDynamics swell(5, 2, 1);
        track = info ? track : nullptr;
        results.push_back(InsertContinuousVibrato(3000, info ? &vibrato : nullptr, info));
        results.push_back(InsertContinuousDynamics(3000, info ? &swell : nullptr, info));
        results.push_back(InsertContinuousDynamics(track, info));
        results.push_back(InsertContinuousPitchBend(track, info));
        results.push_back(InsertContinuousVoiceControl(track, info));
        return results;
    }
    int WriteMessages() {
        const BYTE bytes[] = {0xB2, 1, 2, 0xB2, 3, 4};
        return WriteChMessage(0xC2, 1) + WriteChMessage(0xB2, 7, 8) + WriteQuillMidiMessage(5, 2, bytes, 2) +
               WriteEOVM(480, 2, 7);
    }
    using CxQuillMidiEncoder::CreateQuillNoteStruct;
    using CxQuillMidiEncoder::DeleteQuillNoteStruct;
    using CxQuillMidiEncoder::SetNoteSegmentParam;
    using CxQuillMidiEncoder::TrackRun;
    using CxQuillMidiEncoder::WriteNextNPRNEvents;
    using CxQuillMidiEncoder::WriteStartNPRNEvents;
};

const tagSequenceTimeMap kMap[] = {{500000, 0, 0}, {1000000, 1920, 2000}, {0, 0xFFFFFFFF, 0xFFFFFFFF}};
// What stands behind the end is not looked at.
const tagSequenceTimeMap kEmpty[] = {{0, 0xFFFFFFFF, 0xFFFFFFFF}, {1000000, 0, 7}, {0, 0xFFFFFFFF, 0xFFFFFFFF}};

/// One of everything that needs memory.
void Fill(Chart& chart) {
    chart.Tempo(2000, 400000);
    chart.Singer(0, 1, 3);
    auto* const swell = new CIconDynamics(5, 2, 1);
    swell->SetLength(200);
    chart.Place(2400, swell);
    auto* const vibrato = new CIconVibrato(4, 4, 1);
    vibrato->SetLength(300);
    AddPoint(vibrato->GetDepthBPList(), 5000, 70);
    chart.Note(2700, 480)->vibratoHandle = chart.Icon(vibrato);
    for (int i = 0; i < 300; ++i)
        AddPoint(chart.Track().GetPitchBendBreakPointList(), 2000 + 10 * i, i);
    AddPoint(chart.Track().CreateVoiceControlBreakPointList(4), 2700, 70);
}

} // namespace

TEST_CASE("encoder: what is valid, what is not") {
    CxQuillMidiEncoder encoder;
    for (const DWORD presend : {0U, 499U, 500U, 5000U, 5001U}) {
        CAPTURE(presend);
        const DWORD expected = presend == 500 || presend == 5000 ? presend : 2000;
        encoder.SetPresendTime(presend);
        Chart chart;
        CHECK(Values{Encode(chart, encoder)->GetPresendTime(), encoder.GetPresendTime()} == Values(expected, expected));
    }
    CHECK(encoder.GetOutMode() == CxQuillMidiEncoder::kRealTimeMode); // which the encoding set
    CHECK(Values(encoder.IsValidEventInterval(255), encoder.IsValidEventInterval(256)) == "1 0");
    for (const int mode : {-1, 0, 1, 2})
        CHECK(CxQuillMidiEncoder::IsValidOutMode(mode) == (mode == 0 || mode == 1));
    const int resolutions[] = {-1, 1, 2, 4, 8, 16, 30, 60, 90, 120, 240, 480, -1};
    for (int i = -1; i < 12; ++i) {
        CHECK(CxQuillMidiEncoder::GetExtractResolution(i) == resolutions[i + 1]);
        CHECK(Values{encoder.SetExtractResolutionAt(2, resolutions[i + 1]), encoder.GetExtractResolutionAt(2)} ==
              Values(1, resolutions[i + 1]));
    }
    CHECK(Values{encoder.SetExtractResolutionAt(2, 31), encoder.GetExtractResolutionAt(0)} == "0 30");
    for (const int slot : {-1, 3})
        CHECK(Values{encoder.SetExtractResolutionAt(slot, 30), encoder.GetExtractResolutionAt(slot)} == "0 -1");
}

TEST_CASE("encoder: a note whose handles name nothing, or another kind, sings nothing; the others do") {
    Chart chart;
    const DWORD level = chart.Icon(new CIconDynamics(5, 1, 1));
    chart.Note(1920, 480)->noteHeadHandle = 999;
    chart.Note(2400, 480)->noteTailHandle = level;
    chart.Note(2880, 480)->vibratoHandle = level;
    chart.Note(3360, 480)->lyricHandle = 500;
    chart.Note(3840, 480)->lyricHandle = 0;
    chart.Note(4320, 480, 71);
    CxQuillMidiEncoder encoder;
    const auto entries = EntriesOf(*Encode(chart, encoder));
    REQUIRE(entries.size() == 1);
    CHECK(entries[0].bytes[32] == 71);
    tagQuillMidiEncodeStruct none{nullptr, nullptr};
    CHECK(Values{encoder.EncodeSequenceTrack(&none), encoder.EncodeSequenceTrack(nullptr)} == "0 0");
    none.track = &chart.Track();
    CHECK(encoder.EncodeSequenceTrack(&none) == nullptr);
}

TEST_CASE("encoder: places in a map, from any hint, in no map and in one of nothing but its end") {
    using E = CxQuillMidiEncoder;
    for (const DWORD hint : {0U, 1U, 2U, 1000000U}) {
        CAPTURE(hint);
        CHECK(E::SearchTimePosition(1919, kMap, hint) == 1998); // 1998.96
        CHECK(E::SearchTimePosition(2400, kMap, hint) == 3000);
        CHECK(E::SearchTickPosition(1999, kMap, hint) == 1919);
        CHECK(E::SearchTickPosition(2000, kMap, hint) == 1920); // the change's own tick
        for (const tagSequenceTimeMap* const map : {kEmpty, static_cast<const tagSequenceTimeMap*>(nullptr)}) {
            CHECK(E::SearchTimePosition(2400, map, hint) == 0);
            CHECK(E::SearchTickPosition(2400, map, hint) == 0);
        }
        tagQuillMidiRealtimeInfo info{hint, kMap, 100, 7, 1, 2, 3};
        CHECK(E::UpdateRealTimeInfo(&info, 99) == 0); // behind where it stands
        CHECK(E::UpdateRealTimeInfo(&info, 2400) == 1);
        CHECK(Values(info.index, info.tick, info.time) == "1 2400 3000");
        info.map = kEmpty;
        CHECK(Values{E::UpdateRealTimeInfo(&info, 2400), info.index, info.time} == "1 0 0");
        info.map = nullptr;
        CHECK(E::UpdateRealTimeInfo(&info, 2400) == 0);
    }
    E::ResetRealTimeInfo(nullptr);
    CHECK(E::UpdateRealTimeInfo(nullptr, 0) == 0);
    CHECK(E::CreateSequenceTimeMap(nullptr) == nullptr);
    CMasterTrack uncreated;
    tagSequenceTimeMap* const map = E::CreateSequenceTimeMap(&uncreated);
    CHECK(E::SearchTimePosition(960, map, 0) == 1000); // the tempo that applies without any
    torv::ReleaseSequenceTimeMap(map);
    DWORD start = 0;
    DWORD end = 0;
    CHECK(Values{E::IntersectTime(&start, &end, 10, 20, 15, 30), start, end} == "1 15 20");
    CHECK(E::IntersectTime(nullptr, nullptr, 10, 20, 20, 30) == 0); // touching
}

TEST_CASE("encoder: the writers of who derives from it, which need an open run and something to write") {
    Inside encoder;
    Chart chart;
    Fill(chart);
    chart.Close();
    CSequenceObject* const track = &chart.Track();
    tagQuillMidiRealtimeInfo info{0, kMap, 2880, 4000, 0, 0, 72};
    CQuillMidiBuffer buffer;
    buffer.Create(1, 2000, 0);
    const std::vector<int> nothing(14, 0);
    CHECK(encoder.Write(track, &info) == nothing);
    CHECK(encoder.WriteMessages() == 0);
    {
        const Inside::TrackRun run(encoder, buffer, track);
        CHECK(encoder.Write(track, &info) == std::vector<int>{1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 1, 1, 1});
        CHECK(encoder.WriteMessages() == 4);
        CHECK(encoder.Write(track, nullptr) == nothing);
    }
    CHECK(encoder.WriteMessages() == 0);
    const auto entries = EntriesOf(buffer);
    for (const StreamEntry& entry : {StreamEntry{5, 0, {0xB2, 1, 2}}, StreamEntry{7, 0, {0xB2, 3, 4}}})
        CHECK(std::count(entries.begin(), entries.end(), entry) == 1);
    CHECK(entries.back().time == 7);
    CHECK(entries.back().bytes == Bytes{0xB2, 99, 0x52, 0xB2, 98, 0, 0xB2, 6, 0, 0xB2, 38, 0, 0, 0, 0, 0});

    Bytes out(33);
    tagQuillNPRNBlock block;
    CHECK(Inside::WriteStartNPRNEvents(out.data(), 0x12, 0x63, &block) == 12);
    CHECK(Inside::WriteStartNPRNEvents(out.data(), 0x12, 0x63, 0x4000 + 130, &block) == 24);
    CHECK(Inside::WriteNextNPRNEvents(out.data() + 24, 200, 0x80, &block) == 9);
    CHECK(out == Bytes{0xB2, 99, 0x63, 0xB2, 98, 0, 0xB2, 6, 0,  0xB2, 38, 0, //
                       0xB2, 99, 0x63, 0xB2, 98, 1, 0xB2, 6, 1,  0xB2, 38, 2, // 130, in 14 bits
                       0xB2, 99, 0x63, 0xB2, 98, 2, 0xB2, 6, 200});           // what seven bits do not hold is no LSB

    tagQuillMidiOutNoteParam note{};
    CCsqEvent event;
    event.Attach(track);
    while (event.GetNext() != torv::kEventAnote)
        continue;
    REQUIRE(encoder.CreateQuillNoteStruct(&note, &event, &info) == 1);
    encoder.SetNoteSegmentParam(&note, &info, 1, nullptr); // there is one segment
    encoder.SetNoteSegmentParam(nullptr, &info, 0, nullptr);
    encoder.DeleteQuillNoteStruct(&note, &info);
    CHECK(note.segments == nullptr);
    CHECK(info.lastSegmentTick == 2700);
    CHECK(encoder.CreateQuillNoteStruct(&note, nullptr, &info) == 0);
}

TEST_CASE("encoder: a stream for which memory does not suffice is no stream") {
    Chart chart;
    Fill(chart);
    chart.Close();
    CxQuillMidiEncoder whole;
    const auto expected = EntriesOf(*Encode(chart, whole));
    FailEachAllocation([&](AllocationFailure& failure) {
        CxQuillMidiEncoder encoder;
        const auto stream = failure.During([&] { return Encode(chart, encoder); });
        CHECK((stream == nullptr) == failure.HasHappened());
        if (stream)
            CHECK(EntriesOf(*stream) == expected);
    });
}
