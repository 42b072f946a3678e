#include "torv/score/csq_builder.h"

#include "torv/icons/icon_object.h"
#include "torv/score/sequence_object.h"
#include "torv/stream/event_pool.h"

#include <algorithm>

namespace {

template <class Record>
Record* CreateRecord(WORD type) {
    auto* const record = static_cast<Record*>(torv::AllocateEventRecord(sizeof(Record)));
    if (record)
        record->header = {type, 0, sizeof(Record) - sizeof(tagEventHeader)};
    return record;
}

/// Bytes that a record of a type that can be set must have.
DWORD SizeOf(WORD type) {
    return type == torv::kEventAnote                                 ? sizeof(tagCsqEventAnote)
           : type == torv::kEventAicon || type == torv::kEventSinger ? sizeof(tagCsqEventAicon)
                                                                     : 0;
}

} // namespace

CCsqBuilder::~CCsqBuilder() = default;

tagCsqEventAnote* CCsqBuilder::CreateNoteEvent() { return CreateRecord<tagCsqEventAnote>(torv::kEventAnote); }
tagCsqEventAicon* CCsqBuilder::CreateIconEvent() { return CreateRecord<tagCsqEventAicon>(torv::kEventAicon); }
tagCsqEventSinger* CCsqBuilder::CreateSingerEvent() { return CreateRecord<tagCsqEventSinger>(torv::kEventSinger); }

void* CCsqBuilder::RegisterIconObject(CIconObject* icon) {
    return m_pTrack ? m_pTrack->AttachIconObject(icon) : nullptr;
}

int CCsqBuilder::OpenBuffer(CSequenceObject* track) {
    if (!Attach(track))
        return 0;
    m_dwEndClock = 0;
    m_dwTempo = torv::kDefaultTempo;
    m_dwReserved = 0;
    m_timeSignature = {};
    return 1;
}

int CCsqBuilder::SetEvent(DWORD delta, tagChartSeqEvent* record) {
    CStreamBuffer* const stream = Stream();
    if (!stream)
        return 0;
    const WORD type = record ? record->header.type : WORD{0};
    const DWORD id = torv::EventIdOf(record);
    if (record && (SizeOf(type) == 0 || torv::EventRecordSize(id) < SizeOf(type)))
        return 0;
    const tagEventEntry entry{delta, id};
    if (!stream->AddEntry(&entry))
        return 0;
    const DWORD clock = stream->GetPosition();
    if (type == torv::kEventAnote) {
        const auto* const note = reinterpret_cast<const tagCsqEventAnote*>(record);
        m_dwEndClock = std::max(m_dwEndClock, clock + note->noteLength);
    } else if (type == torv::kEventAicon) {
        const auto* const placement = reinterpret_cast<const tagCsqEventAicon*>(record);
        CIconObject* const icon = IconOf(placement->iconHandle);
        if (icon && icon->IsContinuance())
            m_dwEndClock = std::max(m_dwEndClock, clock + icon->GetLength());
    } else {
        // A singer change sets the end even when it was later: readers of songs rely on the track ending there.
        m_dwEndClock = clock;
    }
    return 1;
}

int CCsqBuilder::CloseBuffer() {
    if (!m_pTrack)
        return 0;
    m_pTrack->SetLength(m_dwEndClock);
    m_pTrack = nullptr;
    InvalidateEvent();
    return 1;
}
