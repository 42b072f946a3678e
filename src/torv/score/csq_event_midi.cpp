#include "torv/score/csq_event_midi.h"

CCsqEventMidi::~CCsqEventMidi() = default;

int CCsqEventMidi::Remove() { return RemoveCurrent(); }

tagCsqEventMidi* CCsqEventMidi::CreateMidiEvent() { return torv::NewEventRecord<tagCsqEventMidi>(); }

int CCsqEventMidi::GetMidiMessage(tagMidiChannelMessage* message) const {
    const tagCsqEventMidi* const event = Current();
    if (!message || !event)
        return 0;
    *message = {static_cast<BYTE>(event->header.status), event->data1, event->data2};
    return 1;
}

int CCsqEventMidi::SetMidiMessage(const tagMidiChannelMessage* message) {
    tagCsqEventMidi* const event = Current();
    if (!message || !event || !IsValidEvent(torv::kEventMidi, message->status))
        return 0;
    event->header.status = message->status;
    event->data1 = message->data1;
    event->data2 = message->data2;
    return 1;
}

int CCsqEventMidi::Insert(int after) {
    CStreamBuffer* const stream = Stream();
    const tagCsqEventMidi* const event = Current();
    if (!stream || !event)
        return 0;
    tagEventEntry entry{0, event->header.parameterSize};
    if (!stream->InsertEntry(&entry, after))
        return 0;
    m_pTrack->SetModify(1);
    return 1;
}
