#include "torv/score/master_track.h"

#include <doctest/doctest.h>

#include <vector>

namespace {

struct Master : CMasterTrack {
    Master() { Create(); }
    void Event(DWORD type, DWORD clock, DWORD value, DWORD auxiliary = 0) {
        tagMasterEventEntry entry{0, type, 0, value, auxiliary};
        MoveToEnd(clock);
        InsertEvent(&entry);
    }
    void Tempo(DWORD clock, DWORD tempo, DWORD auxiliary = 0) { Event(torv::kEventTempo, clock, tempo, auxiliary); }
    void Signature(DWORD clock, DWORD numerator, DWORD exponent) {
        Event(torv::kEventTimeSignature, clock, numerator | exponent << 8);
    }

private:
    /// After the last event at the clock, so that events stand in the order in which a test gives them.
    void MoveToEnd(DWORD clock) {
        SeekToEnd();
        if (GetPosition() != clock || GetLength() != clock)
            MoveTo(clock);
        else
            SeekPrev();
    }
};

using Rows = std::vector<std::vector<DWORD>>;

Rows TempoRows(CMasterTrack& master, bool second) {
    CArray<tagTempoMap> map;
    CHECK((second ? master.GetTempoMap2(map) : master.GetTempoMap(map)) == 1);
    Rows rows;
    for (int i = 0; i < map.GetSize(); ++i)
        rows.push_back({map[i].clock, map[i].auxiliary, map[i].tempo});
    return rows;
}

Rows TimeRows(CMasterTrack& master, bool second) {
    CArray<tagSequenceTimeMap> map;
    CHECK((second ? master.GetSequenceTimeMap2(map) : master.GetSequenceTimeMap(map)) == 1);
    Rows rows;
    for (int i = 0; i < map.GetSize(); ++i)
        rows.push_back({map[i].tempo, map[i].clock, map[i].time});
    return rows;
}

Rows SignatureRows(CMasterTrack& master, bool second) {
    CArray<tagTimeSignatureMap> map;
    CHECK((second ? master.GetTimeSignatureMap2(map) : master.GetTimeSignatureMap(map)) == 1);
    Rows rows;
    for (int i = 0; i < map.GetSize(); ++i)
        rows.push_back({map[i].measure, map[i].signature.numerator, map[i].signature.denominatorExponent});
    return rows;
}

} // namespace

TEST_CASE("conversions: what is rounded and what is cut") {
    CHECK(CMasterTrack::TicksToTime(480, 500000) == 500);
    CHECK(CMasterTrack::TicksToTime(1, 500000) == 1); // 1041.67 us
    CHECK(CMasterTrack::TicksToTime2(1, 500000) == 1);
    CHECK(CMasterTrack::TicksToTime(1, 479760) == 1);  // 999.5 us round to 1000
    CHECK(CMasterTrack::TicksToTime2(1, 479760) == 0); // cut to 999
    CHECK(CMasterTrack::TimeToTicks(1000, 500000) == 960);
    CHECK(CMasterTrack::TimeToTicks(1, 640000) == 1); // 0.75
    CHECK(CMasterTrack::TimeToTicks2(1, 640000) == 0);
    CHECK(CMasterTrack::TimeToTicks(1, 0) == 0);
    CHECK(CMasterTrack::TicksToTime(0x7FFFFFFF, 500000) == 2236962132); // beyond 32 bits on the way
}

TEST_CASE("maps: an empty track has one record, or none in the second form") {
    Master master;
    CHECK(TempoRows(master, false) == Rows{{0, 0, 500000}});
    CHECK(TimeRows(master, false) == Rows{{500000, 0, 0}});
    CHECK(SignatureRows(master, false) == Rows{{0, 4, 2}});
    CHECK(TempoRows(master, true).empty());
    CHECK(TimeRows(master, true).empty());
    CHECK(SignatureRows(master, true).empty());
    master.SetInitialTempo(250000); // stored, and no more
    CHECK(TempoRows(master, false) == Rows{{0, 0, 500000}});
    CArray<tagTempoMap> map;
    CHECK(CMasterTrack().GetTempoMap(map) == 0); // not created
}

TEST_CASE("maps: of tempos at one clock the last counts, with the first one's auxiliary word") {
    Master master;
    master.Tempo(0, 600000, 5);
    master.Event(0x33, 480, 1); // a type of the host's
    master.Tempo(960, 1000000, 7);
    master.Tempo(960, 250000, 8);
    master.Tempo(1440, 400000, 9);
    CHECK(TempoRows(master, false) == Rows{{0, 0, 600000}, {960, 7, 250000}, {1440, 9, 400000}});
    CHECK(TempoRows(master, true) == Rows{{0, 5, 600000}, {960, 7, 1000000}, {960, 8, 250000}, {1440, 9, 400000}});
    // 960 ticks at 600000 are 1200 ms; 480 at 250000 are 250.
    CHECK(TimeRows(master, false) == Rows{{600000, 0, 0}, {250000, 960, 1200}, {400000, 1440, 1450}});
    CHECK(TimeRows(master, true) ==
          Rows{{600000, 0, 0}, {1000000, 960, 1200}, {250000, 960, 1200}, {400000, 1440, 1450}});
}

TEST_CASE("maps: a signature at the clock of the one before shows, but measures are counted by the old length") {
    Master atZero;
    atZero.Signature(0, 3, 2);
    atZero.Signature(2880, 4, 2);
    CHECK(SignatureRows(atZero, false) == Rows{{0, 3, 2}, {1, 4, 2}}); // 2880 / 1920
    CHECK(SignatureRows(atZero, true) == Rows{{0, 3, 2}, {1, 4, 2}});

    Master initial;
    initial.SetInitialTimeSig({3, 2});
    initial.Signature(2880, 4, 2);
    initial.Signature(6720, 6, 3);
    CHECK(SignatureRows(initial, false) == Rows{{0, 3, 2}, {2, 4, 2}, {4, 6, 3}}); // 2880 / 1440, then 3840 / 1920

    Master broken;
    broken.Signature(1920, 0, 2); // no length: the one in force stays
    broken.Signature(3840, 4, 9);
    broken.Signature(5760, 4, 2);
    CHECK(SignatureRows(broken, false) == Rows{{0, 4, 2}, {1, 0, 2}, {2, 4, 9}, {3, 4, 2}});
}

TEST_CASE("searches: the record at or before, from a hint that ascends") {
    Master master;
    master.Tempo(480, 1000000);
    master.Tempo(960, 250000);
    CArray<tagSequenceTimeMap> map;
    master.GetSequenceTimeMap(map); // 0: 500000; 480 at 500 ms: 1000000; 960 at 1500 ms: 250000
    int index = 0;
    std::vector<DWORD> times;
    for (const DWORD tick : {0U, 240U, 480U, 720U, 960U, 1440U})
        times.push_back(CMasterTrack::SearchTimePosition(tick, map, index));
    CHECK(times == std::vector<DWORD>{0, 250, 500, 1000, 1500, 1750});
    CHECK(index == 2);
    CHECK(CMasterTrack::SearchTimePosition(720, map, index) == 1000); // one record back
    CHECK(index == 1);
    index = 0;
    std::vector<DWORD> ticks;
    for (const DWORD time : {0U, 499U, 500U, 1000U, 1500U, 1750U})
        ticks.push_back(CMasterTrack::SearchTickPosition(time, map, index));
    CHECK(ticks == std::vector<DWORD>{0, 479, 480, 720, 960, 1440});
    index = 99;
    CHECK(CMasterTrack::SearchTimePosition(1440, map, index) == 1750);
    CHECK(index == 2);
    index = -5;
    CHECK(CMasterTrack::SearchTimePosition(240, map, index) == 250);
    CArray<tagSequenceTimeMap> none;
    index = 0;
    CHECK(CMasterTrack::SearchTimePosition(480, none, index) == 500);
    master.RemoveAll();
    master.Tempo(480, 1000000);
    master.GetSequenceTimeMap2(map); // begins at 480
    index = 0;
    CHECK(CMasterTrack::SearchTimePosition(240, map, index) == 250);
    CHECK(index == 0);
}

TEST_CASE("cursor: types at the ends, lengths, rewriting") {
    Master master;
    CHECK(master.GetLength() == 0);
    CHECK(master.SeekNext() == 0xFFFFFFFE);
    CHECK(master.SeekPrev() == 0xFFFFFFFF);
    master.Tempo(100, 1);
    master.Signature(200, 4, 2);
    master.SeekToBegin();
    CHECK(master.SeekNext() == 247);
    CHECK(master.SeekNext() == 246);
    CHECK(master.Create() == 0); // once: the events stay
    CHECK(master.GetLength() == 200);
    tagMasterEventEntry entry{};
    master.MoveTo(100);
    CHECK((master.ReadEvent(&entry) == 1 && entry.value == 1));
    entry.value = 7;
    entry.delta = 999;
    CHECK(master.WriteEvent(&entry) == 1);
    CHECK(TempoRows(master, true) == Rows{{100, 0, 7}});
    master.MoveTo(100);
    CHECK(master.RemoveEvent() == 1);
    CHECK(master.GetLength() == 200);
}
