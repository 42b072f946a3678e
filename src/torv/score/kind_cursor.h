#pragma once

#include "torv/icons/icon_id.h"
#include "torv/icons/icon_object.h"
#include "torv/score/csq_event.h"
#include "torv/score/sequence_object.h"
#include "torv/stream/event_pool.h"

#include <cstring>

namespace torv {

/// What the cursors over one kind of event share. Steps pass over all other kinds. Accessors act on the cached record,
/// which Write stores; on an event of another kind they answer 0 and set nothing. Icons that events of the kind may
/// name have a status from `FirstStatus` to `LastStatus`.
template <class Event, int FirstStatus = 1, int LastStatus = 0>
class KindCursor : public CCsqEvent {
public:
    /// To the next event of the kind; its type, or 242 at the end.
    int GetNext() override {
        int status = 0;
        do
            status = CCsqEvent::GetNext();
        while (status != kEventTypeOf<Event> && status != kEventEnd);
        return status;
    }
    /// The same backwards; 241 at the top.
    int GetPrev() override {
        int status = 0;
        do
            status = CCsqEvent::GetPrev();
        while (status != kEventTypeOf<Event> && status != kEventTop);
        return status;
    }
    /// As CCsqEvent::Insert; 0 for a record that is too small for the kind.
    int Insert(DWORD id, int after) override {
        return EventRecordSize(id) >= sizeof(Event) ? CCsqEvent::Insert(id, after) : 0;
    }
    /// Copies the cached record over the stored one and sets the track's modify flag. 0 when they differ in type or
    /// status word.
    virtual int Write() {
        tagEventHeader* const stored = EventRecordOf(m_entry.eventId);
        const Event* const cached = Current();
        if (!stored || !cached || EventRecordSize(m_entry.eventId) < sizeof(Event) ||
            stored->type != cached->header.type || stored->status != cached->header.status)
            return 0;
        std::memcpy(stored, cached, sizeof(Event));
        m_pTrack->SetModify(1);
        return 1;
    }

    /// Whether events of the kind may name an icon of this status.
    static int IsValidIcon(int status) { return status >= FirstStatus && status <= LastStatus; }
    /// The same of the track's icon under a handle; 0 for one that names nothing.
    int IsValidIcon(void* handle) const {
        const CIconObject* const icon = IconOf(HandleOf(handle));
        return icon && IsValidIcon(static_cast<int>(StatusFromID(icon->GetIconID())));
    }

protected:
    /// The cached record; null on an event of another kind.
    Event* Current() { return IsValidEvent(kEventTypeOf<Event>, 0) ? reinterpret_cast<Event*>(&m_record) : nullptr; }
    const Event* Current() const { return const_cast<KindCursor*>(this)->Current(); }
    template <class Field>
    Field Get(Field Event::*field) const {
        const Event* const event = Current();
        return event ? event->*field : Field{};
    }
    template <class Field>
    int Set(Field Event::*field, Field value) {
        Event* const event = Current();
        if (!event)
            return 0;
        event->*field = value;
        return 1;
    }

    /// Inserts an entry for a new record, which goes when that fails. Null is none.
    int InsertNew(const Event* record, int after) {
        const DWORD id = EventIdOf(record);
        const int inserted = CCsqEvent::Insert(id, after);
        if (!inserted)
            FreeEventRecord(id);
        return inserted;
    }
    /// Frees the current record, removes its entry and sets the track's modify flag. 0, with nothing changed, on
    /// another kind and when the track's position has left that entry (another cursor moved it).
    int RemoveCurrent() {
        const DWORD id = m_entry.eventId;
        tagEventEntry there;
        if (!Current() || !Stream() || !Stream()->ReadEntry(&there) || there.eventId != id || !RemoveEntry())
            return 0;
        FreeEventRecord(id);
        return 1;
    }

    /// Of the kinds that place an icon: the event goes, and its icon when asked.
    int RemoveWithIcon(int deleteIcon) {
        const DWORD handle = Get(&Event::iconHandle);
        if (!RemoveCurrent())
            return 0;
        if (deleteIcon)
            m_pTrack->DetachIconObject(PointerOf(handle), 1);
        return 1;
    }

    /// Writes a handle of an icon (a lyric) into its field. With `deleteOld` the object under the old one goes, unless
    /// it is the same.
    int ReplaceIcon(DWORD Event::*field, void* handle, int deleteOld) {
        return Replace(field, handle, deleteOld, &CSequenceObject::DetachIconObject);
    }
    int ReplaceLyric(DWORD Event::*field, void* handle, int deleteOld) {
        return Replace(field, handle, deleteOld, &CSequenceObject::DetachLyricObject);
    }
    int SetIconLengthOf(DWORD handle, DWORD length) {
        CIconObject* const icon = IconOf(handle);
        return icon ? icon->SetLength(length) : 0;
    }

private:
    int Replace(DWORD Event::*field, void* handle, int deleteOld, int (CSequenceObject::*detach)(void*, int)) {
        const DWORD old = Get(field);
        if (Current() && deleteOld && m_pTrack && old && old != HandleOf(handle))
            (m_pTrack->*detach)(PointerOf(old), 1);
        return Set(field, DWORD{HandleOf(handle)});
    }
};

} // namespace torv
