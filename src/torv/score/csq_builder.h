#pragma once

#include "torv/score/csq_event.h"

class CIconObject;

/// Any chart record; its first 16 bits are the type.
struct tagChartSeqEvent {
    tagEventHeader header; ///< of the record that follows
};

/// Fills an empty track in time order and keeps its length. Icons and lyrics are attached to the track first; events
/// then name them by their handles.
class TORV_API CCsqBuilder : public CCsqEvent {
public:
    ~CCsqBuilder() override;

    /// Attaches to the track, as Attach; the end clock is 0.
    int OpenBuffer(CSequenceObject* track);
    /// Appends an event `delta` ticks after the last one; the track owns the record then. Notes, icon placements and
    /// singer changes are taken, made by the functions below, and a null record; anything else gives 0.
    int SetEvent(DWORD delta, tagChartSeqEvent* record);
    /// Stores the end clock as the track's length and detaches.
    int CloseBuffer();

    /// Zeroed records of their kind; null when memory is short. They belong to the caller until they are set.
    static tagCsqEventAnote* CreateNoteEvent();
    /// As CreateNoteEvent.
    /// @{
    static tagCsqEventAicon* CreateIconEvent();
    static tagCsqEventSinger* CreateSingerEvent();
    /// @}
    /// Attaches an icon to the track and returns its handle.
    void* RegisterIconObject(CIconObject* icon);

    /// Ticks: the end of the longest note or lasting icon so far; a singer change or a null record sets it back to its
    /// own clock.
    DWORD GetEndClock() const { return m_dwEndClock; }

private:
    DWORD m_dwEndClock = 0;
};
