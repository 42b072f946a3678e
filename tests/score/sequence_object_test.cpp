#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_singer.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/score/csq_builder.h"
#include "torv/score/master_track.h"
#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"
#include "torv/stream/event_pool.h"

#include <doctest/doctest.h>

#include <memory>
#include <string>

namespace {

std::unique_ptr<CSequenceObject> MakeTrack() { return std::unique_ptr<CSequenceObject>(CSequence::CreateObject()); }
uintptr_t Attach(CSequenceObject& track) {
    return reinterpret_cast<uintptr_t>(track.AttachIconObject(new CIconSinger));
}
void* Handle(uintptr_t handle) { return reinterpret_cast<void*>(handle); }

} // namespace

TEST_CASE("handles: freed ones come again, lowest first") {
    const auto track = MakeTrack();
    for (const uintptr_t expected : {1U, 2U, 3U})
        CHECK(Attach(*track) == expected);
    CHECK(track->DetachIconObject(Handle(2), 1) == 1);
    CHECK(track->DetachIconObject(Handle(2), 1) == 0);
    for (const uintptr_t expected : {2U, 4U})
        CHECK(Attach(*track) == expected);
    CHECK(track->LookupIconObject(Handle(5)) == nullptr);
    CHECK(track->LookupIconObject(nullptr) == nullptr);
}

TEST_CASE("handles: after a given handle the next one follows it") {
    const auto track = MakeTrack();
    auto* const icon = new CIconSinger;
    CHECK(track->SetIconObjectAt(Handle(10), icon) == 1);
    CHECK(track->SetIconObjectAt(Handle(10), icon) == 0); // taken
    CHECK(track->SetIconObjectAt(Handle(0), icon) == 0);
    CHECK(track->SetIconObjectAt(Handle(0xFFFF), icon) == 0);
    CHECK(track->SetIconObjectAt(Handle(7), nullptr) == 0);
    CHECK(track->LookupIconObject(Handle(10)) == icon);
    CHECK(Attach(*track) == 11); // though 1 to 9 are free
    CHECK(track->SetIconObjectAt(Handle(3), new CIconSinger) == 1);
    CHECK(Attach(*track) == 4);
    CHECK(reinterpret_cast<uintptr_t>(track->AttachLyricObject(new CLyricObject)) == 1); // lyrics count for themselves
    CHECK(track->AttachIconObject(nullptr) == nullptr);
}

TEST_CASE("handles: several freed ones, and the turn at the end") {
    const auto track = MakeTrack();
    for (uintptr_t i = 1; i <= 200; ++i)
        REQUIRE(Attach(*track) == i);
    for (const uintptr_t freed : {128U, 63U, 64U, 199U})
        track->DetachIconObject(Handle(freed), 1);
    for (const uintptr_t expected : {63U, 64U, 128U, 199U, 201U})
        CHECK(Attach(*track) == expected);
    CHECK(track->SetIconObjectAt(Handle(65534), new CIconSinger) == 1);
    track->DetachIconObject(Handle(150), 1);
    for (const uintptr_t expected : {150U, 202U})
        CHECK(Attach(*track) == expected);
    const auto turning = MakeTrack();
    CHECK(turning->SetIconObjectAt(Handle(65534), new CIconSinger) == 1);
    CHECK(Attach(*turning) == 1); // 65535 is never given out
}

TEST_CASE("objects may take others off the track as they go") {
    struct Greedy : CIconSinger {
        CSequenceObject* track = nullptr;
        void* prey = nullptr;
        ~Greedy() override { track->DetachIconObject(prey, 1); }
    };
    const auto track = MakeTrack();
    auto* const greedy = new Greedy;
    greedy->track = track.get();
    track->AttachIconObject(greedy);
    greedy->prey = Handle(Attach(*track)); // the next in the walk
    track->RemoveAllEvent();
    CHECK(track->LookupIconObject(Handle(2)) == nullptr);
    CHECK(Attach(*track) == 1);
}

TEST_CASE("handles: 65534 of them, then none until one is freed") {
    const auto track = MakeTrack();
    for (int i = 1; i <= 65534; ++i)
        REQUIRE(Attach(*track) == static_cast<uintptr_t>(i));
    CIconSinger spare;
    CHECK(track->AttachIconObject(&spare) == nullptr);
    CHECK(track->DetachIconObject(Handle(40000), 1) == 1);
    CHECK(Attach(*track) == 40000);
    track->RemoveAllEvent();
    CHECK(Attach(*track) == 1);
}

TEST_CASE("curves: ids, and what removing leaves") {
    const auto track = MakeTrack();
    CHECK(track->GetBreakPointList(18) == track->GetDynamicsBreakPointList());
    CHECK(track->GetBreakPointList(19) == track->GetPitchBendSensBreakPointList());
    CHECK(track->GetBreakPointList(20) == track->GetPitchBendBreakPointList());
    CHECK(track->GetBreakPointList(21) == track->GetTremoloDepthBreakPointList());
    for (const int id : {-1, 0, 5, 22})
        CHECK(track->GetBreakPointList(id) == nullptr);
    CBreakPointList* const list = track->CreateVoiceControlBreakPointList(4);
    CHECK((list && track->GetBreakPointList(5) == list));
    CHECK(track->CreateVoiceControlBreakPointList(4) == nullptr); // exists
    CHECK(track->CreateVoiceControlBreakPointList(17) == nullptr);
    CHECK(track->CreateVoiceControlBreakPointList(-1) == nullptr);
    CBreakPointList* const dynamics = track->GetDynamicsBreakPointList();
    tagBreakPoint point{1, 2, 0};
    dynamics->AddTail(point);
    track->RemoveAllController();
    CHECK(track->GetDynamicsBreakPointList() == dynamics);
    CHECK(dynamics->IsEmpty());
    CHECK(track->GetBreakPointList(5) == nullptr);
}

TEST_CASE("note lengths and measures") {
    struct Row {
        int index, dotted, triplet, ticks;
    };
    for (const Row& row :
         {Row{0, 0, 0, 1920}, Row{2, 0, 0, 480}, Row{7, 0, 0, 15}, Row{2, 1, 0, 720}, Row{2, 0, 1, 320},
          Row{3, 1, 1, 240}, Row{2, 1, 1, 480}, Row{7, 1, 0, 22}, Row{7, 1, 1, 14}, Row{8, 0, 0, 0}, Row{-1, 1, 1, 0}})
        CHECK(CSequenceObject::CalcNoteLength(row.index, row.dotted, row.triplet) == row.ticks);
    CHECK(CSequenceObject::CalcMeasureClock(4, 2) == 1920);
    CHECK(CSequenceObject::CalcMeasureClock(6, 3) == 1440);
    CHECK(CSequenceObject::CalcMeasureClock(4, 8) == 0);
    CHECK(CSequenceObject::CalcMeasureClock(0x7FFFFFFF, 0) == 0); // beyond 32 bits
}

TEST_CASE("content given up stays alive for its new owner") {
    const DWORD before = torv::LiveEventRecords();
    const auto track = MakeTrack();
    CIconSinger icon;
    track->AttachIconObject(&icon);
    CCsqBuilder builder;
    builder.OpenBuffer(track.get());
    tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
    builder.SetEvent(0, reinterpret_cast<tagChartSeqEvent*>(note));
    builder.CloseBuffer();
    CHECK(track->ReleaseObject() == 1);
    CHECK(torv::LiveEventRecords() == before + 1);
    CHECK(CSequenceObject::QueryEventID(torv::EventIdOf(note)) == &note->header);
    CHECK(track->GetEventBuffer() == nullptr);
    track->Cleanup(); // nothing left to touch
    torv::FreeEventRecord(torv::EventIdOf(note));
    CHECK(torv::LiveEventRecords() == before);
}

TEST_CASE("settings travel as a record, with the modify flag") {
    const auto track = MakeTrack();
    CHECK((track->GetColor() == 0xC0C0C0 && track->GetModify() == 0));
    tagSequenceObject record{};
    record.modify = 1;
    record.channel = 3;
    record.transpose = -2;
    record.dynamicsMode = 1;
    std::fill(std::begin(record.name), std::end(record.name), 'n'); // unterminated
    CHECK(track->SetParameter(&record) == 1);
    CHECK((track->GetModify() == 1 && track->GetChannel() == 3 && track->GetTranspose() == -2));
    CHECK(track->GetName().GetLength() == 260);
    tagSequenceObject out{};
    CHECK(track->GetParameter(&out) == 1);
    CHECK(std::string(out.name).size() == 259);
    CHECK(track->Create() == 0); // once
}

TEST_CASE("song: tracks in order, lengths, flags and who owns the master track") {
    CMasterTrack master;
    master.Create();
    {
        CSequence song;
        CHECK(song.GetObjectLength(nullptr) == 0); // no master track yet
        CHECK(song.Create(&master) == 1);
        tagMasterEventEntry entry{700, torv::kEventTempo, 0, 500000, 0};
        master.AddEvent(&entry);
        CHECK(song.GetObjectLength(nullptr) == 700);
        CSequenceObject* const a = CSequence::CreateObject();
        CSequenceObject* const b = CSequence::CreateObject();
        CSequenceObject* const c = CSequence::CreateObject();
        const POSITION at = song.AddObject(a);
        song.InsertObject(at, b, 0);
        song.InsertObject(at, c, 1);
        CHECK((song.GetHeadObject() == b && song.GetTailObject() == c && song.GetObjectCount() == 3));
        POSITION walk = song.GetHeadObjectPosition();
        CHECK(
            (song.GetNextObject(walk) == b && song.GetNextObject(walk) == a && song.GetNextObject(walk) == c && !walk));
        c->SetLength(900);
        c->SetModify(1);
        CHECK(song.GetObjectLength(nullptr) == 900);
        CHECK(song.GetObjectLength(song.FindObject(a)) == 0);
        CHECK(song.IsObjectModified() == 1);
        song.SetModify(1);
        master.SetModify(1);
        song.ClearAllModified();
        CHECK((song.IsObjectModified() == 0 && song.GetModify() == 0 && master.GetModify() == 1));
        song.RemoveObjectAt(song.FindObject(b), 0);
        CHECK(song.FindObject(b) == nullptr);
        delete b;
        song.RemoveObjectAt(nullptr, 1);
        song.SetName(std::string(300, 'x').c_str());
        CHECK(std::string(song.GetName()).size() == 259);
        song.SetInitialTimeSig(3, 6); // exponent, then numerator
        CHECK((song.GetInitialTimeSig().numerator == 6 && song.GetInitialTimeSig().denominatorExponent == 3));
        CHECK((song.GetTimeDivision() == 480 && song.GetInitialTempo() == 500000));
    }
    CHECK(master.GetLength() == 700); // survived the song
}

TEST_CASE("song: its own master track handed back to it stays, and stays its own") {
    CSequence song;
    REQUIRE(song.Create(nullptr) == 1);
    CMasterTrack* const own = song.GetMasterTrack();
    tagMasterEventEntry entry{700, torv::kEventTempo, 0, 500000, 0};
    own->AddEvent(&entry);
    CHECK(song.Create(own) == 1);
    CHECK(song.GetMasterTrack() == own);
    CHECK(own->GetLength() == 700);
}
