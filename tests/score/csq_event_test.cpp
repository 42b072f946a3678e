#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_singer.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/score/csq_builder.h"
#include "torv/score/csq_event_aicon.h"
#include "torv/score/csq_event_anote.h"
#include "torv/score/csq_event_midi.h"
#include "torv/score/csq_event_singer.h"
#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"
#include "torv/stream/event_pool.h"

#include <doctest/doctest.h>

#include <memory>
#include <vector>

namespace {

/// A track, and the records it was filled with.
struct Chart {
    std::unique_ptr<CSequenceObject> track{CSequence::CreateObject()};
    CCsqBuilder builder;
    Chart() { builder.OpenBuffer(track.get()); }
    tagCsqEventAnote* Note(DWORD delta, DWORD length, WORD number = 60) {
        tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
        note->noteLength = length;
        note->noteNumber = number;
        CHECK(builder.SetEvent(delta, reinterpret_cast<tagChartSeqEvent*>(note)) == 1);
        return note;
    }
    void Icon(DWORD delta, CIconObject* icon) {
        tagCsqEventAicon* const record = CCsqBuilder::CreateIconEvent();
        record->iconHandle = static_cast<DWORD>(reinterpret_cast<uintptr_t>(builder.RegisterIconObject(icon)));
        CHECK(builder.SetEvent(delta, reinterpret_cast<tagChartSeqEvent*>(record)) == 1);
    }
    void Singer(DWORD delta, DWORD length) {
        auto* const icon = new CIconSinger;
        icon->SetLength(length);
        tagCsqEventSinger* const record = CCsqBuilder::CreateSingerEvent();
        record->iconHandle = static_cast<DWORD>(reinterpret_cast<uintptr_t>(builder.RegisterIconObject(icon)));
        CHECK(builder.SetEvent(delta, reinterpret_cast<tagChartSeqEvent*>(record)) == 1);
    }
    DWORD Close() {
        builder.CloseBuffer();
        return track->GetLength();
    }
};

CIconDynamics* Dynamics(int articulation, DWORD length) {
    auto* const icon = new CIconDynamics(5, articulation, 1);
    icon->SetLength(length);
    return icon;
}

std::vector<int> Walk(CCsqEvent& cursor) {
    std::vector<int> types;
    cursor.SeekToBegin();
    do
        types.push_back(cursor.GetNext());
    while (types.back() != torv::kEventEnd && types.size() < 50);
    return types;
}

} // namespace

TEST_CASE("builder: the track ends with its last sound, but a singer change sets the end") {
    Chart chart;
    chart.Note(0, 1920);
    chart.Singer(480, 1);
    CHECK(chart.Close() == 480);
    Chart sounds;
    sounds.Note(0, 2000);
    sounds.Icon(480, Dynamics(1, 9000)); // a level has no span that counts
    sounds.Note(0, 100);
    CHECK(sounds.Close() == 2000);
    Chart swell;
    swell.Note(0, 100);
    swell.Icon(480, Dynamics(2, 900));
    CHECK(swell.Close() == 1380);
}

TEST_CASE("builder: what it refuses") {
    Chart chart;
    tagCsqEventMidi midi{{torv::kEventMidi, 0x90, 4}, 60, 100, {}}; // on the stack: never looked up in the pool
    CHECK(chart.builder.SetEvent(10, reinterpret_cast<tagChartSeqEvent*>(&midi)) == 0);
    tagCsqEventAnote stranger{};
    stranger.header.type = torv::kEventAnote;
    CHECK(chart.builder.SetEvent(10, reinterpret_cast<tagChartSeqEvent*>(&stranger)) == 0);
    CHECK(chart.track->GetEventBuffer()->GetStreamLength() == 0);
    CHECK(chart.builder.SetEvent(70, nullptr) == 1); // type 0
    CHECK(chart.Close() == 70);
    CCsqEvent cursor;
    cursor.Attach(chart.track.get());
    CHECK(Walk(cursor) == std::vector<int>{0, 242});         // names nothing, and the walk goes on
    CHECK(chart.builder.OpenBuffer(chart.track.get()) == 1); // detached by closing
    CHECK(chart.builder.OpenBuffer(chart.track.get()) == 0);
}

TEST_CASE("cursor: walking, moving, statuses") {
    Chart chart;
    chart.Note(960, 480, 60);
    chart.Note(0, 480, 62);
    chart.Note(0, 480, 64);
    chart.Icon(480, Dynamics(2, 100));
    chart.Close();
    CCsqEvent cursor;
    CHECK(cursor.Attach(nullptr) == 0);
    CHECK(cursor.Attach(chart.track.get()) == 1);
    CHECK(cursor.Attach(chart.track.get()) == 0); // once
    CHECK(cursor.GetStatus() == 241);
    CHECK(Walk(cursor) == std::vector<int>{245, 245, 245, 244, 242});
    const auto number = [&] { return cursor.GetAnoteEventParam() ? cursor.GetAnoteEventParam()->noteNumber : -1; };
    CHECK((cursor.MoveTo(960) == 960 && number() == 60));
    CHECK((cursor.MoveToRear() == 1 && number() == 64));
    CHECK((cursor.MoveToFront() == 1 && number() == 60));
    CHECK((cursor.MoveTo(1000) == 1000 && cursor.GetStatus() == 0 && number() == -1));
    CHECK((cursor.MoveToRear() == 1 && cursor.GetStatus() == 0)); // between events: nothing
    CHECK((cursor.MoveTo(1440) == 1440 && cursor.GetStatus() == 244));
    CHECK(cursor.GetAnoteEventParam() == nullptr);
    CHECK((cursor.MoveToRear() == 1 && cursor.GetStatus() == 244)); // the last event of all
    CHECK((cursor.MoveTo(5000) == 5000 && cursor.GetStatus() == 242));
    CHECK(cursor.GetPrev() == 244);
    CHECK((cursor.MoveTo(0) == 0 && cursor.GetStatus() == 241));
    CHECK(cursor.GetPrev() == 241);
    cursor.MoveTo(960);
    CHECK(cursor.IsValidEvent(245, 0) == 1);
    CHECK(cursor.IsValidEvent(245, 144) == 0); // the builder gives status 0

    // All cursors on a track share its position.
    CCsqEvent other;
    other.Attach(chart.track.get());
    CHECK(cursor.GetPosition() == 0);
    tagLocateMarker marker;
    cursor.MoveTo(960);
    cursor.GetNext();
    cursor.StoreLocation(&marker);
    other.SeekToEnd();
    cursor.RestoreLocation(&marker, 1);
    CHECK((cursor.GetStatus() == 245 && number() == 62));
    CHECK(CCsqEvent().GetNext() == 242); // detached
}

TEST_CASE("cursor: the measured length counts notes, placements and singers with their icons") {
    Chart chart;
    chart.Note(0, 480);
    chart.Singer(960, 1);
    chart.Close();
    CCsqEvent cursor;
    cursor.Attach(chart.track.get());
    cursor.GetNext();
    CHECK(cursor.MeasureSequenceLength() == 961);
    CHECK((cursor.GetStatus() == 245 && cursor.GetAnoteEventParam() != nullptr &&
           cursor.GetPosition() == 0)); // untouched
    Chart longer;
    longer.Note(0, 2000);
    longer.Icon(960, Dynamics(1, 50));
    longer.Close();
    CCsqEvent second;
    second.Attach(longer.track.get());
    CHECK(second.MeasureSequenceLength() == 2000);
    CHECK(second.SetSequenceLength(77) == 77);
    CHECK(longer.track->GetLength() == 77);
}

TEST_CASE("notes: inserted, changed, written, removed with what they own") {
    const DWORD before = torv::LiveEventRecords();
    {
        Chart chart;
        chart.Icon(0, Dynamics(1, 1));
        chart.Close();
        CSequenceObject& track = *chart.track;
        CCsqEventAnote notes;
        notes.Attach(&track);
        notes.MoveTo(480);
        CHECK(notes.Insert(240, 67, 90, 1) == 1);
        CHECK(track.GetModify() == 1);
        CHECK((notes.GetNoteNumber() == 67 && notes.GetNoteLength() == 240 && notes.GetPosition() == 480));
        CHECK(notes.IsValidEvent(245, 144) == 1); // a cursor's note has this status
        notes.SetNoteAttribute(0x12345);
        CHECK(notes.GetNoteAttribute() == 0x2345);
        void* const lyric = track.AttachLyricObject(new CLyricObject);
        void* const head = track.AttachIconObject(new CIconNoteAttack(1, 1, 1));
        CHECK(notes.IsValidIcon(head) == 1);
        CHECK(notes.IsValidIcon(reinterpret_cast<void*>(uintptr_t{1})) == 0); // the dynamics icon
        notes.SetLyricHandle(lyric, 1);
        notes.SetNoteHeadIconHandle(head, 1);
        CHECK(notes.SetNoteHeadIconLength(33) == 1);
        CHECK((notes.GetNoteHeadIconLength() == 33 && notes.GetNoteTailIconLength() == 0));
        CHECK(notes.SetNoteTailIconLength(5) == 0);
        CHECK(notes.Write() == 1);
        notes.SetNoteHeadIconHandle(head, 1); // the same again: it must not go
        CHECK(track.LookupIconObject(head) != nullptr);
        void* const other = track.AttachIconObject(new CIconNoteAttack(1, 1, 2));
        notes.SetNoteHeadIconHandle(other, 1);
        CHECK(track.LookupIconObject(head) == nullptr);
        CHECK(notes.Write() == 1);

        CCsqEventAnote again;
        again.Attach(&track);
        CHECK(again.GetNext() == 245); // past the placement
        CHECK((again.GetNoteAttribute() == 0x2345 && again.GetNoteHeadIconHandle() == other));
        CHECK(again.GetNext() == 242);
        CHECK(again.GetPrev() == 245);
        CHECK(again.Remove(1) == 1);
        CHECK((track.LookupLyricObject(lyric) == nullptr && track.LookupIconObject(other) == nullptr));
        CHECK(again.Remove(1) == 0);
        CHECK(again.GetPrev() == 241); // only the placement is left
    }
    CHECK(torv::LiveEventRecords() == before);
}

TEST_CASE("notes: a cursor without a track, or whose track moved on, touches nothing") {
    CCsqEventAnote detached;
    detached.SetNoteHeadIconHandle(reinterpret_cast<void*>(uintptr_t{3}), 0);
    detached.SetLyricHandle(reinterpret_cast<void*>(uintptr_t{3}), 0);
    CHECK((detached.GetNoteHeadIconLength() == 0 && detached.SetNoteHeadIconLength(5) == 0));
    CHECK((detached.Write() == 0 && detached.Insert(1, 60, 1, 1) == 0));

    const DWORD before = torv::LiveEventRecords();
    Chart chart;
    chart.Note(0, 10, 60);
    const DWORD second = torv::EventIdOf(chart.Note(100, 10, 62));
    chart.Close();
    CCsqEventAnote notes;
    CCsqEventAnote other;
    notes.Attach(chart.track.get());
    other.Attach(chart.track.get());
    notes.GetNext();
    other.MoveTo(100);
    CHECK((notes.GetNoteNumber() == 60 && notes.Remove(1) == 0)); // the track stands on the other note
    CHECK(Walk(other) == std::vector<int>{245, 245, 242});        // both are still there
    CHECK(torv::LiveEventRecords() == before + 2);
    notes.MoveTo(0);
    notes.GetNext();
    CHECK((notes.Remove(1) == 1 && torv::EventRecordOf(second) != nullptr));

    // The content went to another owner while a cursor stood in it.
    chart.track->ReleaseObject();
    CHECK((notes.GetNext() == 242 && notes.MoveTo(5) == 0 && notes.Insert(1, 60, 1, 1) == 0));
    CHECK((notes.MeasureSequenceLength() == 0 && notes.RemoveEntry() == 0 && notes.GetPosition() == 0));
    torv::FreeEventRecord(second);
    CHECK(torv::LiveEventRecords() == before);
}

TEST_CASE("notes: on another kind of event every accessor answers 0 and nothing is set") {
    Chart chart;
    chart.Icon(10, Dynamics(1, 50)); // its handle 1 stands where a note has its number
    chart.Close();
    void* const named = torv::PointerOf(1);
    CCsqEventAnote notes;
    notes.Attach(chart.track.get());
    notes.MoveTo(10);
    REQUIRE(notes.GetAiconEventParam());
    CHECK(notes.GetNoteNumber() == 0);
    CHECK(notes.GetNoteDynamics() == 0);
    CHECK(notes.SetNoteNumber(7) == 0);
    CHECK(notes.SetNoteDynamics(7) == 0);
    CHECK(notes.SetNoteHeadIconHandle(named, 1) == 0);
    CHECK(notes.SetLyricHandle(named, 1) == 0);
    CHECK(notes.GetAiconEventParam()->iconHandle == 1);
    CHECK(notes.Write() == 0);
}

TEST_CASE("placements and singers: on another kind of event there is no icon") {
    Chart chart;
    for (int i = 0; i < 3; ++i)
        chart.track->AttachIconObject(new CIconSinger);
    chart.Note(10, 480, 2); // its number stands where a placement has its handle
    chart.Close();
    void* const named = reinterpret_cast<void*>(uintptr_t{2});
    CCsqEventAicon placements;
    placements.Attach(chart.track.get());
    placements.MoveTo(10);
    CHECK((placements.GetStatus() == 245 && placements.GetIconHandle() == nullptr));
    CHECK((placements.SetIconHandle(nullptr, 1) == 0 && placements.SetIconLength(9) == 0));
    CHECK(chart.track->LookupIconObject(named) != nullptr);
    CCsqEventSinger singers;
    singers.Attach(chart.track.get());
    singers.MoveTo(10);
    CHECK((singers.GetIconHandle() == nullptr && singers.Remove(1) == 0));
}

TEST_CASE("placements and singers") {
    Chart chart;
    chart.Close();
    CSequenceObject& track = *chart.track;
    void* const icon = track.AttachIconObject(Dynamics(2, 10));
    CCsqEventAicon placements;
    placements.Attach(&track);
    placements.MoveTo(100);
    CHECK(placements.Insert(icon, 77, 1) == 1);
    CHECK(track.LookupIconObject(icon)->GetLength() == 77);
    CHECK(placements.GetAiconEventParam() == nullptr); // the cache is not refreshed
    placements.SeekToBegin();
    CHECK(placements.GetNext() == 244);
    CHECK((placements.GetIconHandle() == icon && placements.GetIconLength() == 77));
    CHECK(placements.Remove(0) == 1);
    CHECK(track.LookupIconObject(icon) != nullptr);

    void* const singer = track.AttachIconObject(new CIconSinger);
    CCsqEventSinger singers;
    singers.Attach(&track);
    CHECK(singers.Insert(singer, 0x12345, 1) == 1);
    CHECK((singers.GetSingerEventParam()->value == 0x2345 && singers.GetIconHandle() == singer));
    CHECK((CCsqEventSinger::IsValidIcon(7) && !CCsqEventSinger::IsValidIcon(5) && CCsqEventAicon::IsValidIcon(5)));
    CHECK((CCsqEventAnote::IsValidIcon(4) && !CCsqEventAnote::IsValidIcon(5) && !CCsqEventAnote::IsValidIcon(0)));
    CHECK(singers.Remove(1) == 1);
    CHECK(track.LookupIconObject(singer) == nullptr);
}

TEST_CASE("plain MIDI events: messages keep their status, and an inserted entry names nothing") {
    Chart chart;
    chart.Close();
    auto* const record = static_cast<tagCsqEventMidi*>(torv::AllocateEventRecord(sizeof(tagCsqEventMidi)));
    *record = {{torv::kEventMidi, 0x90, 4}, 60, 100, {}};
    CCsqEventMidi midi;
    midi.Attach(chart.track.get());
    CHECK(midi.Insert(torv::EventIdOf(record), 1) == 1);
    CHECK(midi.Insert(torv::EventIdOf(record) + 1, 1) == 0); // names nothing
    tagMidiChannelMessage message{};
    CHECK(
        (midi.GetMidiMessage(&message) == 1 && message.status == 0x90 && message.data1 == 60 && message.data2 == 100));
    message = {0x80, 1, 2};
    CHECK(midi.SetMidiMessage(&message) == 0); // another status
    message = {0x90, 61, 99};
    CHECK((midi.SetMidiMessage(&message) == 1 && midi.Write() == 1 && record->data1 == 61));
    message = {0, 5, 6};
    CHECK(midi.SetMidiMessage(&message) == 1); // 0 is not tested, and is stored...
    CHECK(midi.Write() == 0);                  // ...so that it cannot be written
    midi.SeekToBegin();
    midi.GetNext();
    CHECK(midi.Insert(1) == 1);
    CCsqEvent cursor;
    cursor.Attach(chart.track.get());
    CHECK(Walk(cursor) == std::vector<int>{243, 0, 242});
    CHECK(torv::EventRecordOf(4) == nullptr);
    midi.SeekToBegin();
    CHECK((midi.GetNext() == 243 && midi.Remove() == 1 && midi.Remove() == 0));
    CHECK(CSequenceObject::QueryEventID(torv::EventIdOf(record)) == nullptr);
}
