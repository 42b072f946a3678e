#include "torv/score/csq_builder.h"

#include "torv/icons/icon_object.h"
#include "torv/score/sequence_object.h"
#include "torv/stream/event_pool.h"

#include <algorithm>

CCsqBuilder::~CCsqBuilder() = default;

tagCsqEventAnote* CCsqBuilder::CreateNoteEvent() { return torv::NewEventRecord<tagCsqEventAnote>(); }
tagCsqEventAicon* CCsqBuilder::CreateIconEvent() { return torv::NewEventRecord<tagCsqEventAicon>(); }
tagCsqEventSinger* CCsqBuilder::CreateSingerEvent() { return torv::NewEventRecord<tagCsqEventSinger>(); }

void* CCsqBuilder::RegisterIconObject(CIconObject* icon) {
    return m_pTrack ? m_pTrack->AttachIconObject(icon) : nullptr;
}

int CCsqBuilder::OpenBuffer(CSequenceObject* track) {
    if (!Attach(track))
        return 0;
    m_dwEndClock = 0;
    return 1;
}

int CCsqBuilder::SetEvent(DWORD delta, tagChartSeqEvent* record) {
    CStreamBuffer* const stream = Stream();
    if (!stream)
        return 0;
    const WORD type = record ? record->header.type : WORD{0};
    const DWORD id = torv::EventIdOf(record);
    const bool isTaken = type == torv::kEventAnote || type == torv::kEventAicon || type == torv::kEventSinger;
    if (record && (!isTaken || torv::EventRecordSize(id) < torv::EventSizeOf(type)))
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
