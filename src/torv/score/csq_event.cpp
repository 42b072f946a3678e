#include "torv/score/csq_event.h"

#include "torv/icons/icon_object.h"
#include "torv/score/sequence_object.h"
#include "torv/stream/event_pool.h"

#include <algorithm>
#include <cstring>

CCsqEvent::CCsqEvent() { InvalidateEvent(); }
CCsqEvent::CCsqEvent(const CCsqEvent& other) : CObject(other) {
    InvalidateEvent();
    CsqCopy(other);
}
CCsqEvent& CCsqEvent::operator=(const CCsqEvent& other) {
    if (this != &other)
        CsqCopy(other);
    return *this;
}
CCsqEvent::~CCsqEvent() = default;

void CCsqEvent::CsqCopy(const CCsqEvent& other) {
    Attach(other.m_pTrack);
    m_nStatus = other.m_nStatus;
    m_entry = other.m_entry;
    m_record = other.m_record;
}

int CCsqEvent::Attach(CSequenceObject* track) {
    if (m_pTrack || !track)
        return 0;
    m_pTrack = track;
    SeekToBegin();
    return 1;
}

CStreamBuffer* CCsqEvent::Stream() const { return m_pTrack ? m_pTrack->GetEventBuffer() : nullptr; }

void CCsqEvent::InvalidateEvent() {
    std::memset(&m_record, 0, sizeof m_record);
    m_entry = {};
    m_nStatus = 0;
}

int CCsqEvent::ParseEvent(DWORD id) {
    std::memset(&m_record, 0, sizeof m_record);
    const tagEventHeader* const record = torv::EventRecordOf(id);
    if (!record)
        return 0;
    std::memcpy(&m_record, record, std::min(torv::EventSizeOf(record->type), torv::EventRecordSize(id)));
    return record->type;
}

int CCsqEvent::Step(int (CStreamBuffer::*read)(void*), int edge) {
    CStreamBuffer* const stream = Stream();
    if (!stream || !(stream->*read)(&m_entry)) {
        InvalidateEvent();
        return m_nStatus = edge;
    }
    return m_nStatus = ParseEvent(m_entry.eventId);
}

int CCsqEvent::GetNext() { return Step(&CStreamBuffer::ReadNextEntry, torv::kEventEnd); }
int CCsqEvent::GetPrev() { return Step(&CStreamBuffer::ReadPrevEntry, torv::kEventTop); }

int CCsqEvent::Insert(DWORD id, int after) {
    CStreamBuffer* const stream = Stream();
    if (!stream || !torv::EventRecordOf(id))
        return 0;
    tagEventEntry entry{0, id};
    if (!stream->InsertEntry(&entry, after))
        return 0;
    m_entry = entry;
    m_nStatus = ParseEvent(id);
    m_pTrack->SetModify(1);
    return 1;
}

void CCsqEvent::SeekToBegin() {
    InvalidateEvent();
    if (CStreamBuffer* const stream = Stream())
        stream->SeekToBegin();
    m_nStatus = torv::kEventTop;
}

void CCsqEvent::SeekToEnd() {
    InvalidateEvent();
    if (CStreamBuffer* const stream = Stream())
        stream->SeekToEnd();
    m_nStatus = torv::kEventEnd;
}

void CCsqEvent::ParseCurrent() {
    InvalidateEvent();
    CStreamBuffer* const stream = Stream();
    if (!stream)
        return;
    tagLocateMarker here;
    stream->StoreLocation(&here);
    if (here.state == torv::kCursorAtTop)
        m_nStatus = torv::kEventTop;
    else if (here.state == torv::kCursorAtEnd)
        m_nStatus = torv::kEventEnd;
    else if (here.state == torv::kCursorOnEntry && stream->ReadEntry(&m_entry))
        m_nStatus = ParseEvent(m_entry.eventId);
}

DWORD CCsqEvent::MoveTo(DWORD clock) {
    CStreamBuffer* const stream = Stream();
    if (!stream)
        return 0;
    const DWORD reached = stream->MoveTo(clock);
    ParseCurrent();
    return reached;
}

int CCsqEvent::MoveToFront() {
    CStreamBuffer* const stream = Stream();
    tagLocateMarker here;
    if (!stream ||
        (stream->StoreLocation(&here), here.state == torv::kCursorBetween || here.state == torv::kCursorAtEnd))
        return 1;
    tagEventEntry entry;
    while (stream->ReadPrevEntry(&entry))
        if (stream->GetPosition() < here.clock) {
            stream->ReadNextEntry(&entry);
            ParseCurrent();
            return 1;
        }
    // Back at the top: the first event is the one in front, when it stands at this clock.
    if (here.state == torv::kCursorOnEntry)
        stream->ReadNextEntry(&entry);
    ParseCurrent();
    return 1;
}

int CCsqEvent::MoveToRear() {
    CStreamBuffer* const stream = Stream();
    tagLocateMarker here;
    if (!stream ||
        (stream->StoreLocation(&here), here.state == torv::kCursorBetween || here.state == torv::kCursorAtEnd))
        return 1;
    tagEventEntry entry;
    bool isOnEvent = here.state == torv::kCursorOnEntry;
    while (stream->ReadNextEntry(&entry) && stream->GetPosition() == here.clock)
        isOnEvent = true;
    // One step too far, onto a later event or the end; without any event at this clock that is where it stays.
    tagLocateMarker beyond;
    stream->StoreLocation(&beyond);
    if (isOnEvent || beyond.state == torv::kCursorOnEntry)
        stream->ReadPrevEntry(&entry);
    ParseCurrent();
    return 1;
}

int CCsqEvent::RemoveEntry() {
    CStreamBuffer* const stream = Stream();
    if (!stream || !stream->RemoveEntry())
        return 0;
    InvalidateEvent();
    m_pTrack->SetModify(1);
    return 1;
}

DWORD CCsqEvent::GetPosition() const {
    const CStreamBuffer* const stream = Stream();
    return stream ? stream->GetPosition() : 0;
}
int CCsqEvent::GetPosition(tagClockPosition* position) const {
    const CStreamBuffer* const stream = Stream();
    return stream ? stream->GetPosition(position) : 0;
}

void CCsqEvent::StoreLocation(tagLocateMarker* marker) const {
    if (const CStreamBuffer* const stream = Stream())
        stream->StoreLocation(marker);
}

void CCsqEvent::RestoreLocation(const tagLocateMarker* marker, int reread) {
    CStreamBuffer* const stream = Stream();
    if (!stream)
        return;
    stream->RestoreLocation(marker, reread);
    InvalidateEvent();
    if (reread)
        ParseCurrent();
}

int CCsqEvent::IsValidEvent(WORD type, WORD status) const {
    return m_record.header.type == type && (status == 0 || m_record.header.status == status);
}

tagCsqEventAnote* CCsqEvent::GetAnoteEventParam() {
    return IsValidEvent(torv::kEventAnote, 0) ? &m_record.note : nullptr;
}
tagCsqEventAicon* CCsqEvent::GetAiconEventParam() {
    return IsValidEvent(torv::kEventAicon, 0) ? &m_record.icon : nullptr;
}
tagCsqEventSinger* CCsqEvent::GetSingerEventParam() {
    return IsValidEvent(torv::kEventSinger, 0) ? &m_record.singer : nullptr;
}
tagCsqEventMidi* CCsqEvent::GetMidiEventParam() { return IsValidEvent(torv::kEventMidi, 0) ? &m_record.midi : nullptr; }

DWORD CCsqEvent::GetSequenceLength() const { return m_pTrack ? m_pTrack->GetLength() : 0; }

DWORD CCsqEvent::SetSequenceLength(DWORD length) {
    if (!m_pTrack)
        return 0;
    m_pTrack->SetLength(length);
    return m_pTrack->GetLength();
}

DWORD CCsqEvent::CalcTotalClock() {
    const CStreamBuffer* const stream = Stream();
    return stream ? stream->GetStreamLength() : 0;
}

DWORD CCsqEvent::MeasureSequenceLength() {
    CStreamBuffer* const stream = Stream();
    if (!stream)
        return 0;
    tagLocateMarker here;
    stream->StoreLocation(&here);
    const Record cached = m_record;
    DWORD longest = CalcTotalClock();
    stream->SeekToBegin();
    tagEventEntry entry;
    while (stream->ReadNextEntry(&entry)) {
        DWORD length = 0;
        switch (ParseEvent(entry.eventId)) {
        case torv::kEventAnote:
            length = m_record.note.noteLength;
            break;
        case torv::kEventAicon:
            length = IconLength(m_record.icon.iconHandle);
            break;
        case torv::kEventSinger:
            length = IconLength(m_record.singer.iconHandle);
            break;
        default:
            break;
        }
        longest = std::max(longest, stream->GetPosition() + length);
    }
    m_record = cached;
    stream->RestoreLocation(&here, 1);
    return longest;
}

int CCsqEvent::VerifyEventHeader(const tagEventHeader* header) const {
    const tagEventHeader* const record = torv::EventRecordOf(m_entry.eventId);
    return record && header && record->type == header->type && record->status == header->status &&
           record->parameterSize == header->parameterSize;
}

CIconObject* CCsqEvent::IconOf(DWORD handle) const {
    return handle && m_pTrack ? m_pTrack->LookupIconObject(torv::PointerOf(handle)) : nullptr;
}

DWORD CCsqEvent::IconLength(DWORD handle) const {
    const CIconObject* const icon = IconOf(handle);
    return icon ? icon->GetLength() : 0;
}
