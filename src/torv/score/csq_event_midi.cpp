#include "torv/score/csq_event_midi.h"

#include "torv/score/sequence_object.h"

CCsqEventMidi::~CCsqEventMidi() = default;

int CCsqEventMidi::GetNext() { return GetNextOf(torv::kEventMidi); }
int CCsqEventMidi::GetPrev() { return GetPrevOf(torv::kEventMidi); }
int CCsqEventMidi::Insert(DWORD id, int after) { return InsertRecord(id, sizeof(tagCsqEventMidi), after); }
int CCsqEventMidi::Write() { return WriteRecord(torv::kEventMidi, sizeof(tagCsqEventMidi)); }
int CCsqEventMidi::Remove() { return IsValidEvent(torv::kEventMidi, 0) ? RemoveRecord() : 0; }

int CCsqEventMidi::GetMidiMessage(tagMidiChannelMessage* message) const {
    if (!message || !IsValidEvent(torv::kEventMidi, 0))
        return 0;
    *message = {static_cast<BYTE>(m_record.header.status), m_record.midi.data1, m_record.midi.data2};
    return 1;
}

int CCsqEventMidi::SetMidiMessage(const tagMidiChannelMessage* message) {
    if (!message || !IsValidEvent(torv::kEventMidi, message->status))
        return 0;
    m_record.header.status = message->status;
    m_record.midi.data1 = message->data1;
    m_record.midi.data2 = message->data2;
    return 1;
}

int CCsqEventMidi::Insert(int after) {
    CStreamBuffer* const stream = Stream();
    if (!stream || !IsValidEvent(torv::kEventMidi, 0))
        return 0;
    tagEventEntry entry{0, m_record.header.parameterSize};
    if (!stream->InsertEntry(&entry, after))
        return 0;
    m_pTrack->SetModify(1);
    return 1;
}
