#include "torv/icons/icon_singer.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/score/csq_builder.h"
#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"
#include "torv/stream/event_pool.h"

#include "allocation_failure.h"
#include "values.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>

namespace {

using torv::PointerOf;

std::unique_ptr<CSequenceObject> MakeTrack() { return std::unique_ptr<CSequenceObject>(CSequence::CreateObject()); }
int Attach(CSequenceObject& track) { return torv::HandleOf(track.AttachIconObject(new CIconSinger)); }

} // namespace

TEST_CASE("handles: freed ones come again, lowest first; after a given one comes the next that is free") {
    const auto track = MakeTrack();
    auto* const icon = new CIconSinger;
    CHECK(track->SetIconObjectAt(PointerOf(10), icon) == 1);
    for (const DWORD refused : {10U, 0U, 0xFFFFU}) // taken, none, never given out
        CHECK(track->SetIconObjectAt(PointerOf(refused), icon) == 0);
    CHECK(Values(track->SetIconObjectAt(PointerOf(7), nullptr), track->AttachIconObject(nullptr)) == "0 0");
    CHECK(track->LookupIconObject(PointerOf(10)) == icon);
    CHECK(Attach(*track) == 11); // though 1 to 9 are free
    CHECK(track->SetIconObjectAt(PointerOf(3), new CIconSinger) == 1);
    for (int i = 4; i <= 200; ++i)
        if (i != 10 && i != 11)
            REQUIRE(Attach(*track) == i);
    for (const DWORD freed : {128U, 63U, 64U, 199U})
        CHECK(track->DetachIconObject(PointerOf(freed), 1) == 1);
    CHECK(Values(track->DetachIconObject(PointerOf(63), 1), track->LookupIconObject(PointerOf(63))) == "0 0");
    for (const int expected : {63, 64, 128, 199, 201})
        CHECK(Attach(*track) == expected);

    auto* const lyric = new CLyricObject; // lyrics count for themselves
    CHECK(Values{track->AttachLyricObject(lyric), track->SetLyricObjectAt(PointerOf(1), lyric),
                 track->LookupLyricObject(PointerOf(1)), track->DetachLyricObject(PointerOf(1), 0),
                 track->SetLyricObjectAt(PointerOf(2), lyric),
                 track->LookupLyricObject(PointerOf(2))} == Values(PointerOf(1), 0, lyric, 1, 1, lyric));
}

TEST_CASE("handles: 65534 of them, then none until one is freed") {
    const auto track = MakeTrack();
    CHECK(track->SetIconObjectAt(PointerOf(65534), new CIconSinger) == 1);
    for (int i = 1; i < 65534; ++i)
        REQUIRE(Attach(*track) == i);
    CIconSinger spare;
    CHECK(track->AttachIconObject(&spare) == nullptr);
    CHECK(track->DetachIconObject(PointerOf(40000), 1) == 1);
    CHECK(Attach(*track) == 40000);
    track->RemoveAllEvent();
    CHECK(Attach(*track) == 1);
}

TEST_CASE("objects may take others off the track as they go") {
    struct Greedy : CIconSinger {
        CSequenceObject* track = nullptr;
        ~Greedy() override { track->DetachIconObject(PointerOf(2), 1); }
    };
    const auto track = MakeTrack();
    auto* const greedy = new Greedy;
    greedy->track = track.get();
    track->AttachIconObject(greedy);
    CHECK(Attach(*track) == 2); // the next in the walk
    track->RemoveAllEvent();
    CHECK(track->LookupIconObject(PointerOf(2)) == nullptr);
}

TEST_CASE("curves: ids, and what removing leaves") {
    const auto track = MakeTrack();
    CBreakPointList* const fixed[] = {track->GetDynamicsBreakPointList(), track->GetPitchBendSensBreakPointList(),
                                      track->GetPitchBendBreakPointList(), track->GetTremoloDepthBreakPointList()};
    CBreakPointList* lists[17] = {};
    for (int index = 0; index < 17; ++index) {
        CHECK(track->GetBreakPointList(index + 1) == nullptr);
        lists[index] = track->CreateVoiceControlBreakPointList(index);
        REQUIRE(lists[index]);
    }
    for (const int index : {-1, 0, 17}) // out of range, or there already
        CHECK(track->CreateVoiceControlBreakPointList(index) == nullptr);
    for (int id = -1; id <= 22; ++id) {
        CAPTURE(id);
        CHECK(track->GetBreakPointList(id) == (id < 1 || id > 21 ? nullptr : id < 18 ? lists[id - 1] : fixed[id - 18]));
    }
    tagBreakPoint point{1, 2, 0};
    for (CBreakPointList* const list : fixed)
        list->AddTail(point);
    track->Cleanup();
    for (int i = 0; i < 4; ++i) {
        CHECK(track->GetBreakPointList(18 + i) == fixed[i]);
        CHECK(fixed[i]->IsEmpty());
    }
    CHECK(track->GetBreakPointList(5) == nullptr);
}

TEST_CASE("note lengths and measures") {
    struct Row {
        int index, dotted, triplet, ticks;
    };
    for (const Row& row :
         {Row{0, 0, 0, 1920}, Row{1, 0, 0, 960}, Row{2, 0, 0, 480}, Row{3, 0, 0, 240}, Row{4, 0, 0, 120},
          Row{5, 0, 0, 60}, Row{6, 0, 0, 30}, Row{7, 0, 0, 15}, Row{2, 1, 0, 720}, Row{2, 0, 1, 320}, Row{3, 1, 1, 240},
          Row{2, 1, 1, 480}, Row{7, 1, 0, 22}, Row{7, 1, 1, 14}, Row{8, 0, 0, 0}, Row{-1, 1, 1, 0}})
        CHECK(CSequenceObject::CalcNoteLength(row.index, row.dotted, row.triplet) == row.ticks);
    CHECK(CSequenceObject::CalcMeasureClock(4, 2) == 1920);
    CHECK(CSequenceObject::CalcMeasureClock(6, 3) == 1440);
    CHECK(CSequenceObject::CalcMeasureClock(4, 8) == 0);
    CHECK(CSequenceObject::CalcMeasureClock(0x7FFFFFFF, 0) == 0); // beyond 32 bits
}

TEST_CASE("content given up stays alive for its new owner; content removed is gone") {
    const DWORD before = torv::LiveEventRecords();
    const auto track = MakeTrack();
    CIconSinger icon;
    CLyricObject lyric;
    const auto fill = [&] {
        CCsqBuilder builder;
        builder.OpenBuffer(track.get());
        tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
        builder.SetEvent(0, reinterpret_cast<tagChartSeqEvent*>(note));
        return torv::EventIdOf(note);
    };
    fill();
    track->GetEventBuffer()->SeekToEnd(); // wherever its cursor stands
    track->RemoveAllEvent();
    CHECK(torv::LiveEventRecords() == before);
    const DWORD id = fill();
    track->AttachIconObject(&icon);
    track->AttachLyricObject(&lyric);
    CHECK(track->ReleaseObject() == 1);
    CHECK(torv::LiveEventRecords() == before + 1);
    CHECK(CSequenceObject::QueryEventID(id) != nullptr);
    CHECK(track->GetEventBuffer() == nullptr);
    CHECK(track->LookupIconObject(PointerOf(1)) == nullptr);
    track->Cleanup(); // nothing left to touch
    torv::FreeEventRecord(id);
    CHECK(torv::LiveEventRecords() == before);
}

TEST_CASE("settings travel as a record, with the modify flag; setters set no flag") {
    const auto track = MakeTrack();
    const auto show = [](const CSequenceObject& shown) {
        tagSequenceObject record{};
        CHECK(shown.GetParameter(&record) == 1);
        const std::string own = Values(shown.GetModify(), shown.GetColor(), shown.GetChannel(), shown.GetTranspose(),
                                       shown.GetInitialLanguage(), shown.GetDynamicsMode(), record.name);
        CHECK(Values(record.modify, record.color, record.channel, record.transpose, record.initialLanguage,
                     record.dynamicsMode, shown.GetName()) == own);
        return own;
    };
    CHECK(show(*track) == "0 12632256 0 0 0 0 ");
    tagSequenceObject record{7, "Alto", 1, 2, -3, 4, 5};
    CHECK(track->SetParameter(&record) == 1);
    CHECK(show(*track) == "7 1 2 -3 4 5 Alto");
    track->SetModify(0);
    std::fill(std::begin(record.name), std::end(record.name), 'n'); // unterminated
    FailEachAllocation([&](AllocationFailure& failure) {
        const auto other = MakeTrack();
        const int done = failure.During([&] { return other->SetParameter(&record); });
        CHECK(done == !failure.HasHappened());
        CHECK(other->GetModify() == (done ? 7 : 0));
        CHECK(other->GetName().GetLength() == (done ? 260 : 0));
        tagSequenceObject out{};
        CHECK(other->GetParameter(&out) == 1);
        CHECK(std::strlen(out.name) == (done ? 259 : 0));
    });
    track->SetMute(1);
    track->SetLength(99);
    CHECK(Values(track->GetMute(), track->GetLength(), track->GetModify()) == "1 99 0");
    CHECK(Values(track->SetParameter(nullptr), track->GetParameter(nullptr), track->Create()) == "0 0 0");
    CSequenceObject bare; // not created
    CIconSinger icon;
    CLyricObject lyric;
    void* const handle = PointerOf(1);
    bare.Cleanup();
    CHECK(Values(bare.AttachIconObject(&icon), bare.AttachLyricObject(&lyric), bare.SetIconObjectAt(handle, &icon),
                 bare.SetLyricObjectAt(handle, &lyric), bare.LookupIconObject(handle), bare.LookupLyricObject(handle),
                 bare.DetachIconObject(handle, 1), bare.DetachLyricObject(handle, 1)) == "0 0 0 0 0 0 0 0");
}

TEST_CASE("track: memory that cannot be had") {
    FailEachAllocation([](AllocationFailure& failure) {
        const std::unique_ptr<CSequenceObject> track(failure.During([] { return CSequence::CreateObject(); }));
        CHECK((track != nullptr) == !failure.HasHappened());
    });
    FailEachAllocation([](AllocationFailure& failure) {
        const auto track = MakeTrack();
        CIconSinger icon;
        CLyricObject lyric;
        const auto [attached, set, list] = failure.During([&] {
            return std::tuple(track->AttachIconObject(&icon) != nullptr, track->SetLyricObjectAt(PointerOf(5), &lyric),
                              track->CreateVoiceControlBreakPointList(3) != nullptr);
        });
        CHECK((attached && set && list) == !failure.HasHappened());
        CHECK(track->DetachIconObject(PointerOf(1), 0) == attached);
        CHECK(track->DetachLyricObject(PointerOf(5), 0) == set);
        CHECK(Attach(*track) == 1); // the handle was not lost
    });
}
