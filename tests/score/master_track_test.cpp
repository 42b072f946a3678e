#include "torv/score/master_track.h"

#include "allocation_failure.h"
#include "values.h"

#include <doctest/doctest.h>

#include <string>

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

/// The records of a map, each its fields and a comma.
std::string Show(const tagTempoMap& record) { return Values(record.clock, record.auxiliary, record.tempo); }
std::string Show(const tagSequenceTimeMap& record) { return Values(record.tempo, record.clock, record.time); }
std::string Show(const tagTimeSignatureMap& record) {
    return Values(record.measure, int{record.signature.numerator}, int{record.signature.denominatorExponent});
}
template <class Record>
std::string Rows(CMasterTrack& master, int (CMasterTrack::*build)(CArray<Record>&), int done = 1) {
    CArray<Record> map;
    map.Add({}); // must go
    CHECK((master.*build)(map) == done);
    std::string rows;
    for (int i = 0; i < map.GetSize(); ++i)
        rows += (i ? ", " : "") + Show(map[i]);
    return rows;
}

constexpr auto kTempo = &CMasterTrack::GetTempoMap;
constexpr auto kTempo2 = &CMasterTrack::GetTempoMap2;
constexpr auto kTime = &CMasterTrack::GetSequenceTimeMap;
constexpr auto kTime2 = &CMasterTrack::GetSequenceTimeMap2;
constexpr auto kSignature = &CMasterTrack::GetTimeSignatureMap;
constexpr auto kSignature2 = &CMasterTrack::GetTimeSignatureMap2;

} // namespace

TEST_CASE("conversions: what is rounded and what is cut") {
    using Master = CMasterTrack;
    CHECK(Values(Master::TicksToTime(480, 500000), Master::TicksToTime2(480, 500000)) == "500 500");
    CHECK(Values(Master::TicksToTime(1, 500000), Master::TicksToTime2(1, 500000)) == "1 1"); // 1041.67 us
    CHECK(Values(Master::TicksToTime(1, 479760), Master::TicksToTime2(1, 479760)) == "1 0"); // 999.5 us
    CHECK(Values(Master::TimeToTicks(1000, 500000), Master::TimeToTicks2(1000, 500000)) == "960 960");
    CHECK(Values(Master::TimeToTicks(1, 640000), Master::TimeToTicks2(1, 640000)) == "1 0"); // 0.75
    CHECK(Values(Master::TimeToTicks(1, 0), Master::TimeToTicks2(1, 0)) == "0 0");
    CHECK(Values(Master::TimeToTicks(1, 1), Master::TimeToTicks2(1, 1)) == "480000 480000");
    // Beyond 32 bits on the way.
    CHECK(Values(Master::TicksToTime(0x7FFFFFFF, 500000), Master::TicksToTime2(0x7FFFFFFF, 500000)) ==
          "2236962132 2236962132");
}

TEST_CASE("maps: an empty track has one record, or none in the second form; without a list there is none") {
    Master master;
    master.SetInitialTempo(250000); // stored, and no more
    CHECK(Rows(master, kTempo) == "0 0 500000");
    CHECK(Rows(master, kTime) == "500000 0 0");
    CHECK(Rows(master, kSignature) == "0 4 2");
    CHECK(Rows(master, kTempo2) + Rows(master, kTime2) + Rows(master, kSignature2) == "");
    CMasterTrack uncreated;
    tagMasterEventEntry entry{};
    uncreated.RemoveAll();
    uncreated.SeekToBegin();
    uncreated.RestoreLocation(nullptr);
    uncreated.StoreLocation(nullptr);
    CHECK(Rows(uncreated, kTempo, 0) + Rows(uncreated, kTime, 0) + Rows(uncreated, kSignature, 0) == "");
    CHECK(Values(uncreated.AddEvent(&entry), uncreated.InsertEvent(&entry), uncreated.ReadEvent(&entry),
                 uncreated.WriteEvent(&entry), uncreated.RemoveEvent(), uncreated.MoveTo(5), uncreated.GetLength(),
                 uncreated.SeekNext(), uncreated.SeekPrev()) == "0 0 0 0 0 0 0 4294967294 4294967295");
}

TEST_CASE("maps: of tempos at one clock the last counts, with the first one's auxiliary word") {
    Master master;
    master.Tempo(0, 600000, 5);
    master.Event(0x33, 480, 1); // a type of the host's
    master.Tempo(960, 1000000, 7);
    master.Tempo(960, 250000, 8);
    master.Tempo(1440, 400000, 9);
    CHECK(Rows(master, kTempo) == "0 0 600000, 960 7 250000, 1440 9 400000");
    CHECK(Rows(master, kTempo2) == "0 5 600000, 960 7 1000000, 960 8 250000, 1440 9 400000");
    // 960 ticks at 600000 are 1200 ms; 480 at 250000 are 250.
    CHECK(Rows(master, kTime) == "600000 0 0, 250000 960 1200, 400000 1440 1450");
    CHECK(Rows(master, kTime2) == "600000 0 0, 1000000 960 1200, 250000 960 1200, 400000 1440 1450");
}

TEST_CASE("maps: a signature at the clock of the one before shows, but measures are counted by the old length") {
    Master atZero;
    atZero.Signature(0, 3, 2);
    atZero.Signature(2880, 4, 2);
    CHECK(Rows(atZero, kSignature) == "0 3 2, 1 4 2"); // 2880 / 1920
    CHECK(Rows(atZero, kSignature2) == "0 3 2, 1 4 2");

    Master initial;
    initial.SetInitialTimeSig({3, 2});
    initial.Signature(2880, 4, 2);
    initial.Signature(8640, 6, 3);
    initial.Signature(8640, 5, 3);
    CHECK(Rows(initial, kSignature) == "0 3 2, 2 4 2, 5 5 3"); // 2880 / 1440, then 5760 / 1920
    CHECK(Rows(initial, kSignature2) == "2 4 2, 5 6 3, 5 5 3");

    Master broken;
    broken.Signature(1920, 0, 2); // no length: the one in force stays
    broken.Signature(3840, 4, 9);
    broken.Signature(5760, 4, 2);
    CHECK(Rows(broken, kSignature) == "0 4 2, 1 0 2, 2 4 9, 3 4 2");
}

TEST_CASE("maps: memory that cannot be had ends them") {
    Master master;
    for (DWORD i = 1; i < 5; ++i) {
        master.Tempo(i * 10, i);
        master.Signature(i * 10 + 1, 3, 2);
    }
    const auto fail = [&]<class Record>(int (CMasterTrack::*build)(CArray<Record>&)) {
        FailEachAllocation([&](AllocationFailure& failure) {
            CArray<Record> map;
            const int done = failure.During([&] { return (master.*build)(map); });
            CHECK(done == !failure.HasHappened());
        });
    };
    fail(kTempo);
    fail(kTempo2);
    fail(kTime);
    fail(kTime2);
    fail(kSignature);
    fail(kSignature2);
    FailEachAllocation([&](AllocationFailure& failure) {
        CMasterTrack other;
        const int done = failure.During([&] { return other.Create(); });
        CHECK(done == !failure.HasHappened());
        CHECK(other.IsCreated() == (done == 1));
    });
}

TEST_CASE("searches: the record at or before, from a hint that ascends") {
    Master master;
    master.Tempo(480, 1000000);
    master.Tempo(960, 250000);
    CArray<tagSequenceTimeMap> map, late, none;
    master.GetSequenceTimeMap(map); // 0: 500000; 480 at 500 ms: 1000000; 960 at 1500 ms: 250000
    master.RemoveAll();
    master.Tempo(480, 1000000);
    master.GetSequenceTimeMap2(late); // begins at 480
    struct Row {
        DWORD tick;
        int hint;
        DWORD time;
        int index;
    };
    const auto both = [](CArray<tagSequenceTimeMap>& searched, const Row& row) {
        CAPTURE(row.tick);
        CAPTURE(row.hint);
        int index = row.hint;
        const DWORD time = CMasterTrack::SearchTimePosition(row.tick, searched, index);
        CHECK(Values(time, index) == Values(row.time, row.index));
        index = row.hint;
        const DWORD tick = CMasterTrack::SearchTickPosition(row.time, searched, index);
        CHECK(Values(tick, index) == Values(row.tick, row.index));
    };
    for (const Row& row :
         {Row{0, 0, 0, 0}, Row{240, 0, 250, 0}, Row{480, 0, 500, 1}, Row{720, 1, 1000, 1}, Row{960, 1, 1500, 2},
          Row{1440, 2, 1750, 2}, Row{1440, 0, 1750, 2}, Row{720, 2, 1000, 1}, // one record back
          Row{1440, 99, 1750, 2}, Row{240, -5, 250, 0}})
        both(map, row);
    both(none, {480, 0, 500, -1});
    both(late, {240, 0, 250, 0}); // before the first record as without a map
    int index = 2;                // two records too far: as if the record before began here
    CHECK(CMasterTrack::SearchTimePosition(240, map, index) == 500);
}

TEST_CASE("master track: cursor, lengths, rewriting") {
    Master master;
    CHECK(Values{master.GetLength(), master.SeekNext(), master.SeekPrev()} == "0 4294967294 4294967295");
    master.Tempo(100, 1);
    master.Signature(200, 4, 2);
    master.SeekToBegin();
    tagLocateMarker marker;
    CHECK(Values{master.SeekNext(), (master.StoreLocation(&marker), master.SeekNext()), master.SeekPrev()} ==
          "247 246 247");
    CHECK(Values{master.Create(), master.GetLength()} == "0 200"); // created once: the events stay
    master.RestoreLocation(&marker);
    CHECK(master.GetPosition() == 100);
    tagMasterEventEntry entry{};
    CHECK(Values{master.ReadEvent(&entry), entry.value} == "1 1");
    entry.value = 7;
    entry.delta = 999;
    CHECK(Values{master.WriteEvent(&entry), Rows(master, kTempo2)} == "1 100 0 7");
    CHECK(Values{master.MoveTo(100), master.RemoveEvent(), Rows(master, kTempo2), master.GetLength()} == "100 1  200");
    CHECK(Values(master.GetModify(), master.GetInitialTempo(), master.GetInitialKeySig()) == "0 500000 0");
}
