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

#include "allocation_failure.h"
#include "values.h"

#include <doctest/doctest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

namespace {

using torv::HandleOf;
using torv::PointerOf;

CIconDynamics* Dynamics(int articulation, DWORD length) {
    auto* const icon = new CIconDynamics(5, articulation, 1);
    icon->SetLength(length);
    return icon;
}

/// A track that is filled through the builder.
struct Chart {
    std::unique_ptr<CSequenceObject> track{CSequence::CreateObject()};
    CCsqBuilder builder;
    Chart() { builder.OpenBuffer(track.get()); }
    template <class Record>
    int Set(DWORD delta, Record* record) {
        return builder.SetEvent(delta, reinterpret_cast<tagChartSeqEvent*>(record));
    }
    DWORD Note(DWORD delta, DWORD length, WORD number = 60) {
        tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
        note->noteLength = length;
        note->noteNumber = number;
        CHECK(Set(delta, note) == 1);
        return torv::EventIdOf(note);
    }
    void Icon(DWORD delta, CIconObject* icon) { Place(delta, CCsqBuilder::CreateIconEvent(), icon); }
    void Singer(DWORD delta, DWORD length) {
        auto* const icon = new CIconSinger;
        icon->SetLength(length);
        Place(delta, CCsqBuilder::CreateSingerEvent(), icon);
    }
    template <class Record>
    void Place(DWORD delta, Record* record, CIconObject* icon) {
        record->iconHandle = HandleOf(builder.RegisterIconObject(icon));
        CHECK(Set(delta, record) == 1);
    }
    DWORD Close() {
        CHECK(builder.CloseBuffer() == 1);
        return track->GetLength();
    }
};

/// "clock:type" of every event, from the top.
std::string Walk(CSequenceObject& track) {
    CCsqEvent cursor;
    cursor.Attach(&track);
    std::string text;
    while (cursor.GetNext() != torv::kEventEnd)
        text += Values(cursor.GetPosition()) + ':' + Values(cursor.GetStatus()) + ' ';
    return text;
}

} // namespace

TEST_CASE("builder: the track ends with its last sound, but a singer change sets the end") {
    Chart chart;
    chart.Note(0, 1920);
    chart.Singer(480, 1);
    CHECK(chart.builder.GetEndClock() == 480);
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
    CHECK(Values{swell.builder.CloseBuffer(), swell.builder.OpenBuffer(swell.track.get()),  // detached by closing
                 swell.builder.OpenBuffer(swell.track.get()), swell.Close()} == "0 1 0 0"); // the end is counted anew
}

TEST_CASE("builder: what it refuses") {
    Chart chart;
    tagCsqEventMidi midi{{torv::kEventMidi, 0x90, 4}, 60, 100, {}}; // on the stack: never looked up in the pool
    CHECK(chart.Set(10, &midi) == 0);
    tagCsqEventAnote stranger{};
    stranger.header.type = torv::kEventAnote;
    CHECK(chart.Set(10, &stranger) == 0);
    auto* const small = static_cast<tagCsqEventAnote*>(torv::AllocateEventRecord(39)); // a byte less than a note
    small->header.type = torv::kEventAnote;
    CHECK(chart.Set(10, small) == 0);
    torv::FreeEventRecord(torv::EventIdOf(small));
    tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
    CHECK(chart.Set(0x80000000, note) == 0); // beyond what a stream holds
    torv::FreeEventRecord(torv::EventIdOf(note));
    CHECK(chart.track->GetEventBuffer()->GetStreamLength() == 0);
    CHECK(chart.builder.SetEvent(70, nullptr) == 1); // type 0
    CHECK(chart.Close() == 70);
    CHECK(Walk(*chart.track) == "70:0 ");           // names nothing, and the walk goes on
    CHECK(chart.builder.SetEvent(1, nullptr) == 0); // closed
    CHECK(chart.builder.RegisterIconObject(nullptr) == nullptr);
}

TEST_CASE("records as they are made") {
    const auto show = [](auto* made) {
        const std::unique_ptr<tagEventHeader, void (*)(tagEventHeader*)> header(
            &made->header, [](tagEventHeader* record) { torv::FreeEventRecord(torv::EventIdOf(record)); });
        return Values(header->type, header->status, header->parameterSize);
    };
    CHECK(Values(show(CCsqBuilder::CreateNoteEvent()), show(CCsqBuilder::CreateIconEvent()),
                 show(CCsqBuilder::CreateSingerEvent()),
                 show(CCsqEventMidi::CreateMidiEvent())) == "245 0 32 244 0 8 249 0 8 243 0 4");
}

TEST_CASE("cursor: walking, moving, statuses") {
    Chart chart;
    for (const WORD number : {60, 62, 64}) // at 10, each in its place
        chart.Note(number == 60 ? 10 : 0, 480, number);
    chart.Note(950, 480, 65);
    chart.Note(0, 480, 67);
    chart.Icon(480, Dynamics(2, 100));
    chart.Close();
    CHECK(Walk(*chart.track) == "10:245 10:245 10:245 960:245 960:245 1440:244 ");
    struct : CCsqEvent {
        using CCsqEvent::CalcTotalClock;
        using CCsqEvent::VerifyEventHeader;
    } cursor;
    CHECK(Values{cursor.Attach(nullptr), cursor.Attach(chart.track.get()), cursor.Attach(chart.track.get()), // once
                 cursor.GetStatus()} == "0 1 0 241");
    const auto show = [&cursor] {
        const tagCsqEventAnote* const note = cursor.GetAnoteEventParam();
        CHECK(Values(cursor.GetAiconEventParam() != nullptr, cursor.GetSingerEventParam(),
                     cursor.GetMidiEventParam()) == Values(cursor.GetStatus() == 244, 0, 0));
        return Values(cursor.GetStatus(), note ? note->noteNumber : -1);
    };
    struct Row {
        DWORD clock;
        const char *there, *front, *rear; // status and note number after MoveTo, and then MoveToFront or MoveToRear
    };
    for (const Row& row : {Row{0, "241 -1", "241 -1", "241 -1"}, Row{10, "245 60", "245 60", "245 64"},
                           Row{960, "245 65", "245 65", "245 67"}, Row{1000, "0 -1", "0 -1", "0 -1"}, // between events
                           Row{1440, "244 -1", "244 -1", "244 -1"}, Row{5000, "242 -1", "242 -1", "242 -1"}}) {
        CAPTURE(row.clock);
        CHECK(Values{cursor.MoveTo(row.clock), show()} == Values(row.clock, row.there));
        tagLocateMarker marker;
        for (int i = 0; i < 2; ++i) { // also when it stands there already
            CHECK(Values{cursor.MoveToRear(), show()} == Values(1, row.rear));
            cursor.StoreLocation(&marker);
        }
        for (int i = 0; i < 2; ++i)
            CHECK(Values{cursor.MoveToFront(), show()} == Values(1, row.front));
        CCsqEvent other; // all cursors on a track share its position
        other.Attach(chart.track.get());
        CHECK(cursor.GetPosition() == 0);
        other.SeekToEnd();
        CHECK(other.GetStatus() == 242);
        cursor.RestoreLocation(&marker, 1);
        CHECK(Values{show(), cursor.GetPosition()} == Values(row.rear, row.clock));
        cursor.RestoreLocation(&marker, 0);
        CHECK(Values{show(), cursor.GetEventID()} == "0 -1 0"); // the cache is not filled again
    }
    tagClockPosition position{};
    CHECK(Values{cursor.GetPrev(), cursor.GetPosition(&position), position.clock} == "244 1 1440");
    cursor.MoveTo(960);
    CHECK(Values(cursor.IsValidEvent(245, 0), cursor.IsValidEvent(245, 144)) == "1 0"); // the builder gives status 0
    for (const tagEventHeader& header : {tagEventHeader{245, 0, 32}, {244, 0, 32}, {245, 1, 32}, {245, 0, 33}})
        CHECK(cursor.VerifyEventHeader(&header) == (header.type == 245 && header.parameterSize + header.status == 32));
    CHECK(cursor.CalcTotalClock() == 1440);
    cursor.SeekToBegin();
    CHECK(Values{show(), cursor.GetPrev()} == "241 -1 241");
    Chart atZero;
    atZero.Note(0, 1, 60);
    atZero.Note(0, 1, 62);
    atZero.builder.SeekToBegin();
    atZero.builder.MoveToRear(); // the top is at clock 0 as well
    CHECK(atZero.builder.GetAnoteEventParam()->noteNumber == 62);
    Chart empty;
    CHECK(Values{empty.builder.MoveToFront(), empty.builder.GetStatus(), empty.builder.MoveToRear(),
                 empty.builder.GetStatus()} == "1 241 1 242");
}

TEST_CASE("cursor: a copy attaches to the track and takes what the other has cached") {
    Chart chart;
    chart.Note(10, 480, 62);
    chart.Close();
    CCsqEventAnote cursor;
    cursor.Attach(chart.track.get());
    cursor.MoveTo(10);
    CCsqEventAnote copy(cursor);
    CCsqEventAnote assigned;
    assigned = cursor;
    assigned = *&assigned;
    for (const CCsqEventAnote* const other : {&copy, &assigned}) {
        CHECK(Values(other->GetSequence(), other->GetStatus(), other->GetEventID(), other->GetEntry().deltaClock,
                     other->GetNoteNumber()) == Values(chart.track.get(), 245, cursor.GetEventID(), 10, 62));
    }
    CHECK(cursor.GetPosition() == 0); // attaching rewinds
}

TEST_CASE("cursor: the measured length counts notes, placements and singers with their icons") {
    const auto measure = [](Chart& chart) {
        chart.Close();
        CCsqEvent cursor;
        cursor.Attach(chart.track.get());
        cursor.GetNext();
        const std::string before = Values(cursor.GetStatus(), cursor.GetPosition(), cursor.GetAnoteEventParam());
        const DWORD length = cursor.MeasureSequenceLength();
        CHECK(Values(cursor.GetStatus(), cursor.GetPosition(), cursor.GetAnoteEventParam()) == before); // untouched
        CHECK(cursor.SetSequenceLength(length + 1) == length + 1);
        CHECK(cursor.GetSequenceLength() == length + 1);
        return length;
    };
    Chart charts[5];
    for (int i = 0; i < 4; ++i)
        charts[i].Note(0, i ? 480 : 2000);
    charts[0].Icon(960, Dynamics(1, 50));
    charts[1].Singer(960, 1);
    charts[2].Icon(400, Dynamics(1, 100));
    charts[3].builder.SetEvent(900, nullptr);
    CHECK(Values(measure(charts[0]), measure(charts[1]), measure(charts[2]), measure(charts[3]), measure(charts[4])) ==
          "2000 961 500 900 0");
}

TEST_CASE("kinds: every field is set, written, read back by another cursor, and 0 on another kind of event") {
    Chart chart;
    chart.Note(10, 480, 60);
    chart.Icon(10, Dynamics(1, 50)); // handle 1 stands where a note has its number
    chart.Singer(10, 1);             // handle 2
    chart.Close();
    CSequenceObject& track = *chart.track;
    for (int i = 0; i < 2; ++i)
        track.AttachIconObject(new CIconNoteAttack(1, 1, 1)); // 3 and 4
    const auto get = [](const CCsqEventAnote& notes) {
        return Values(notes.GetNoteNumber(), notes.GetNoteDynamics(), notes.GetNoteLength(), notes.GetNoteAttribute(),
                      notes.GetVibratoOffset(), HandleOf(notes.GetLyricHandle()),
                      HandleOf(notes.GetNoteHeadIconHandle()), HandleOf(notes.GetNoteTailIconHandle()),
                      HandleOf(notes.GetVibratoIconHandle()), notes.GetNoteHeadIconLength(),
                      notes.GetNoteTailIconLength(), notes.GetChannel());
    };
    const auto set = [](CCsqEventAnote& notes) {
        const Values fields(notes.SetNoteNumber(1), notes.SetNoteDynamics(2), notes.SetNoteLength(0x10003),
                            notes.SetNoteAttribute(0x12345), notes.SetVibratoOffset(-5));
        const Values handles(notes.SetLyricHandle(PointerOf(6), 0), notes.SetNoteHeadIconHandle(PointerOf(3), 0),
                             notes.SetNoteTailIconHandle(PointerOf(4), 0), notes.SetVibratoIconHandle(PointerOf(9), 0));
        const Values lengths(notes.SetNoteHeadIconLength(33), notes.SetNoteTailIconLength(44));
        return Values(fields, handles, lengths, notes.Write());
    };
    CCsqEventAnote notes, reader, detached;
    CCsqEventAicon placements;
    CCsqEventSinger singers;
    for (CCsqEvent* const cursor : std::initializer_list<CCsqEvent*>{&notes, &reader, &placements, &singers})
        cursor->Attach(&track);
    track.SetModify(0);
    notes.MoveTo(20); // onto the placement
    for (CCsqEventAnote* const other : {&detached, &notes}) {
        CHECK(set(*other) == "0 0 0 0 0 0 0 0 0 0 0 0");
        CHECK(get(*other) == "0 0 0 0 0 0 0 0 0 0 0 0");
    }
    CHECK(notes.GetAiconEventParam()->iconHandle == 1);
    CHECK(track.GetModify() == 0);
    notes.MoveTo(10);
    CHECK(get(notes) == "60 0 480 0 0 0 0 0 0 0 0 0");
    CHECK(set(notes) == "1 1 1 1 1 1 1 1 1 1 1 1");
    CHECK(track.GetModify() == 1);
    reader.MoveTo(10);
    CHECK(get(reader) == "1 2 65539 9029 -5 6 3 4 9 33 44 0"); // of the attribute 16 bits
    reader.GetAnoteEventParam()->header.status = 0x97;
    CHECK(reader.GetChannel() == 7);
    CHECK(reader.Write() == 0); // not the stored record's status

    const auto place = [&] {
        return Values{HandleOf(placements.GetIconHandle()), placements.GetIconLength(), placements.SetIconLength(9),
                      placements.SetIconHandle(PointerOf(2), 0), placements.Write()};
    };
    placements.MoveTo(10);
    singers.MoveTo(10);
    CHECK(place() == "0 0 0 0 0");
    CHECK(Values(singers.GetIconHandle(), singers.Remove(1)) == "0 0");
    placements.MoveTo(20);
    CHECK(place() == "1 50 1 1 1");
    CHECK(track.LookupIconObject(PointerOf(1))->GetLength() == 9);
    placements.MoveTo(20);
    CHECK(HandleOf(placements.GetIconHandle()) == 2);
}

TEST_CASE("kinds: replacing a handle deletes the old object when asked, unless it is the same") {
    Chart chart;
    chart.Note(10, 480);
    chart.Icon(10, Dynamics(1, 1));
    chart.Close();
    CSequenceObject& track = *chart.track;
    CCsqEventAnote notes;
    CCsqEventAicon placements;
    notes.Attach(&track);
    placements.Attach(&track);
    notes.MoveTo(10);
    placements.MoveTo(20);
    const std::function<int(void*, int)> setters[] = {
        [&](void* handle, int deleteOld) { return notes.SetNoteHeadIconHandle(handle, deleteOld); },
        [&](void* handle, int deleteOld) { return notes.SetNoteTailIconHandle(handle, deleteOld); },
        [&](void* handle, int deleteOld) { return notes.SetVibratoIconHandle(handle, deleteOld); },
        [&](void* handle, int deleteOld) { return placements.SetIconHandle(handle, deleteOld); },
        [&](void* handle, int deleteOld) { return notes.SetLyricHandle(handle, deleteOld); }};
    const auto left = [&] {
        std::string text;
        for (const DWORD handle : {11, 12, 13})
            text += std::string(track.LookupIconObject(PointerOf(handle)) ? "i" : "-") +
                    (track.LookupLyricObject(PointerOf(handle)) ? "l," : "-,");
        return text;
    };
    for (const auto& set : setters) {
        for (DWORD handle = 11; handle <= 13; ++handle) {
            track.DetachIconObject(PointerOf(handle), 1);
            track.DetachLyricObject(PointerOf(handle), 1);
            track.SetIconObjectAt(PointerOf(handle), new CIconSinger);
            track.SetLyricObjectAt(PointerOf(handle), new CLyricObject);
        }
        const bool isLyric = &set == std::end(setters) - 1;
        struct Step {
            DWORD handle;
            int deleteOld;
            const char *icons, *lyrics; // that are left by a setter of icons, and by one of lyrics
        };
        for (const Step& step : {Step{11, 0, "il,il,il,", "il,il,il,"}, Step{12, 0, "il,il,il,", "il,il,il,"},
                                 Step{13, 1, "il,-l,il,", "il,i-,il,"}, Step{13, 1, "il,-l,il,", "il,i-,il,"},
                                 Step{0, 1, "il,-l,-l,", "il,i-,i-,"}}) {
            CHECK(set(PointerOf(step.handle), step.deleteOld) == 1);
            CHECK(left() == (isLyric ? step.lyrics : step.icons));
        }
    }
}

TEST_CASE("kinds: inserted events, and what goes when they are removed") {
    const DWORD before = torv::LiveEventRecords();
    for (const int deleteObjects : {0, 1}) {
        CAPTURE(deleteObjects);
        const auto track = std::unique_ptr<CSequenceObject>(CSequence::CreateObject());
        for (int i = 1; i <= 5; ++i)
            track->AttachIconObject(i < 4 ? static_cast<CIconObject*>(new CIconNoteAttack(1, 1, 1)) : Dynamics(2, 10));
        track->AttachLyricObject(new CLyricObject);
        CCsqEventAnote notes;
        CCsqEventAicon placements;
        CCsqEventSinger singers;
        notes.Attach(track.get());
        placements.Attach(track.get());
        singers.Attach(track.get());
        notes.MoveTo(480);
        CHECK(Values{notes.Insert(240, 67, 90, 1), track->GetModify()} == "1 1");
        CHECK(Values(notes.GetNoteLength(), notes.GetNoteNumber(), notes.GetNoteDynamics(), notes.GetPosition(),
                     notes.IsValidEvent(245, 144)) == "240 67 90 480 1"); // a cursor's note has this status
        CHECK(Values{notes.SetNoteHeadIconHandle(PointerOf(1), 0), notes.SetNoteTailIconHandle(PointerOf(2), 0),
                     notes.SetVibratoIconHandle(PointerOf(3), 0), notes.SetLyricHandle(PointerOf(1), 0),
                     notes.Write()} == "1 1 1 1 1");
        track->SetModify(0);
        CHECK(Values{placements.Insert(PointerOf(4), 77, 1), track->GetModify(), placements.GetAiconEventParam()} ==
              "1 1 0"); // the cache is not refreshed
        CHECK(track->LookupIconObject(PointerOf(4))->GetLength() == 77);
        track->SetModify(0);
        CHECK(Values{singers.Insert(PointerOf(5), 0x12345, 1), track->GetModify(), singers.GetSingerEventParam()->value,
                     HandleOf(singers.GetIconHandle())} == "1 1 9029 5");
        CHECK(Walk(*track) == "480:245 480:244 480:249 ");
        for (int status = 0; status < 9; ++status)
            CHECK(Values(CCsqEventAnote::IsValidIcon(status), CCsqEventAicon::IsValidIcon(status),
                         CCsqEventSinger::IsValidIcon(status), CCsqEventMidi::IsValidIcon(status)) ==
                  Values(status >= 1 && status <= 4, status == 5, status == 7, 0));
        CHECK(Values(notes.IsValidIcon(PointerOf(1)), notes.IsValidIcon(PointerOf(4)), notes.IsValidIcon(PointerOf(9)),
                     placements.IsValidIcon(PointerOf(4)), singers.IsValidIcon(PointerOf(4))) == "1 0 0 1 0");

        const auto remove = [&](auto& cursor) {
            track->SetModify(0);
            return Values{cursor.Remove(deleteObjects), track->GetModify(), cursor.Remove(deleteObjects)};
        };
        notes.SeekToEnd();
        CHECK(Values{notes.GetPrev(), notes.GetPrev(), singers.GetNext(), singers.GetNext(), singers.GetPrev()} ==
              "245 241 249 242 249"); // past the others
        CHECK(remove(singers) == "1 1 0");
        CHECK(placements.GetPrev() == 244);
        CHECK(remove(placements) == "1 1 0");
        CHECK(notes.GetPrev() == 245);
        CHECK(remove(notes) == "1 1 0");
        for (DWORD handle = 1; handle <= 5; ++handle)
            CHECK((track->LookupIconObject(PointerOf(handle)) == nullptr) == (deleteObjects != 0));
        CHECK((track->LookupLyricObject(PointerOf(1)) == nullptr) == (deleteObjects != 0));
        CHECK(Walk(*track).empty());
        CHECK(torv::LiveEventRecords() == before);
    }
}

TEST_CASE("kinds: a cursor without a track, or whose track moved on, touches nothing") {
    CHECK(Values(CCsqEventAnote().Insert(1, 60, 1, 1), CCsqEventAnote().Write(), CCsqEvent().GetNext(),
                 CCsqEventAicon().Insert(PointerOf(1), 1, 1), CCsqEvent().MeasureSequenceLength(),
                 CCsqEvent().GetSequenceLength(), CCsqEvent().SetSequenceLength(1)) == "0 0 242 0 0 0 0");
    const DWORD before = torv::LiveEventRecords();
    Chart chart;
    chart.Note(0, 10, 60);
    const DWORD second = chart.Note(100, 10, 62);
    chart.Close();
    CCsqEventAnote notes, other;
    notes.Attach(chart.track.get());
    other.Attach(chart.track.get());
    notes.GetNext();
    other.MoveTo(100);
    CHECK(Values(notes.GetNoteNumber(), notes.Remove(1)) == "60 0"); // the track stands on the other note
    CHECK(Walk(*chart.track) == "0:245 100:245 ");
    CHECK(torv::LiveEventRecords() == before + 2);
    notes.MoveTo(0);
    CHECK(Values{notes.GetNext(), notes.Remove(1)} == "245 1");
    notes.MoveTo(100);
    chart.track->SetModify(0);
    CHECK(Values{notes.RemoveEntry(), chart.track->GetModify(), notes.Insert(second, 1), // the record stayed
                 notes.Insert(second + 1, 1)} == "1 1 1 0");                             // names nothing

    chart.track->ReleaseObject(); // the content went to another owner while a cursor stood in it
    CHECK(Values(notes.GetNext(), notes.MoveTo(5), notes.Insert(1, 60, 1, 1), notes.MeasureSequenceLength(),
                 notes.RemoveEntry(), notes.GetPosition(), notes.MoveToFront(),
                 notes.MoveToRear()) == "242 0 0 0 0 0 1 1");
    torv::FreeEventRecord(second);
    CHECK(torv::LiveEventRecords() == before);
}

TEST_CASE("kinds: a record for which there is no place goes, and nothing has changed") {
    const DWORD before = torv::LiveEventRecords();
    FailEachAllocation([&](AllocationFailure& failure) {
        Chart chart;
        chart.Icon(0, Dynamics(2, 10));
        while (chart.track->GetEventBuffer()->GetSize() < 2048) // the next entry needs a block
            chart.builder.SetEvent(0, nullptr);
        CCsqEventAicon placements;
        placements.Attach(chart.track.get());
        placements.SeekToEnd();
        const int done = failure.During([&] { return placements.Insert(PointerOf(1), 99, 1); });
        CHECK(done == !failure.HasHappened());
        CHECK(chart.track->GetModify() == done);
        CHECK(chart.track->LookupIconObject(PointerOf(1))->GetLength() == (done ? 99 : 10));
        CHECK(torv::LiveEventRecords() == before + 1 + static_cast<DWORD>(done));
    });
    CHECK(torv::LiveEventRecords() == before);
}

TEST_CASE("plain MIDI events: messages keep their status, and an inserted entry names nothing") {
    Chart chart;
    chart.Close();
    tagCsqEventMidi* const record = CCsqEventMidi::CreateMidiEvent();
    record->header.status = 0x90;
    record->data1 = 60;
    record->data2 = 100;
    CCsqEventMidi midi;
    midi.Attach(chart.track.get());
    tagMidiChannelMessage message{0x90, 1, 1};
    CHECK(Values(midi.GetMidiMessage(&message), midi.SetMidiMessage(&message), midi.Insert(1), midi.Remove()) ==
          "0 0 0 0");
    CHECK(midi.Insert(torv::EventIdOf(record), 1) == 1);
    const auto show = [&] {
        CHECK(midi.GetMidiMessage(&message) == 1);
        return Values(int{message.status}, int{message.data1}, int{message.data2});
    };
    CHECK(show() == "144 60 100");
    message = {0x80, 1, 2};
    CHECK(midi.SetMidiMessage(&message) == 0); // another status
    message = {0x90, 61, 99};
    CHECK(Values{midi.SetMidiMessage(&message), midi.Write(), int{record->data1}, int{record->data2}} == "1 1 61 99");
    message = {0, 5, 6};
    CHECK(Values{midi.SetMidiMessage(&message), show(), midi.Write()} == "1 0 5 6 0"); // not tested, not written
    midi.SeekToBegin();
    chart.track->SetModify(0);
    CHECK(Values{midi.GetNext(), midi.Insert(1), chart.track->GetModify(), Walk(*chart.track)} == "243 1 1 0:243 0:0 ");
    midi.SeekToBegin();
    CHECK(Values{midi.GetNext(), midi.Remove(), midi.Remove()} == "243 1 0");
    CHECK(CSequenceObject::QueryEventID(torv::EventIdOf(record)) == nullptr);
}
