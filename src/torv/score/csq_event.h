#pragma once

#include "torv/stream/chart_record.h"
#include "torv/stream/stream_buffer.h"

class CIconObject;
class CSequenceObject;

/// A cursor over a track's chart. It attaches once, to a track that outlives it, and owns nothing. All cursors on one
/// track share the track's one position: who walks inside another's walk stores the location first and restores it.
///
/// The status is the type of the current event, 241 before the first, 242 after the last, 0 between events.
class TORV_API CCsqEvent : public CObject {
public:
    /// Detached.
    CCsqEvent();
    /// Attached where the other is, with its status, entry and cached record.
    CCsqEvent(const CCsqEvent& other);
    /// Attaches to the other's track when detached, and takes its status, entry and cached record.
    CCsqEvent& operator=(const CCsqEvent& other);
    ~CCsqEvent() override;

    /// Step and parse; the type of the event reached, or 242 / 241.
    virtual int GetNext();
    /// As GetNext, backwards.
    virtual int GetPrev();
    /// Inserts an entry for a record of the event pool at the cursor and sets the track's modify flag.
    virtual int Insert(DWORD id, int after);

    /// Rewinds the track. 0 when attached already, or for null.
    int Attach(CSequenceObject* track);
    /// The track attached to; null when detached.
    CSequenceObject* GetSequence() const { return m_pTrack; }
    /// The type of the current event: 241 before the first, 242 after the last, 0 between events.
    int GetStatus() const { return m_nStatus; }
    /// The current entry's id in the event pool, 0 when there is none, and the whole entry with its delta.
    /// @{
    DWORD GetEventID() const { return m_entry.eventId; }
    tagEventEntry GetEntry() const { return m_entry; }
    /// @}

    /// Before the first event (status 241), behind the last (242).
    /// @{
    void SeekToBegin();
    void SeekToEnd();
    /// @}
    /// Moves to a time and returns the time reached; on an event it is parsed.
    DWORD MoveTo(DWORD clock);
    /// To the first (last) of the events at the current clock; nothing between events and at the end. 1.
    int MoveToFront();
    /// As MoveToFront, to the last.
    int MoveToRear();
    /// Removes the current entry, but not its record, and sets the track's modify flag.
    int RemoveEntry();
    /// The cursor's clock in ticks.
    DWORD GetPosition() const;
    /// The current event's clock and the ticks after it. 0 when detached, and for null.
    int GetPosition(tagClockPosition* position) const;
    /// Keeps the place in the track; a null marker is left alone.
    void StoreLocation(tagLocateMarker* marker) const;
    /// Goes back there and forgets the cached record, which a non-zero `reread` reads anew.
    void RestoreLocation(const tagLocateMarker* marker, int reread);

    /// Whether the cached record has this type and, when it is not 0, this status word.
    int IsValidEvent(WORD type, WORD status) const;
    /// The cached record as one of its kind; null when the current event is another kind.
    tagCsqEventAnote* GetAnoteEventParam();
    /// As GetAnoteEventParam, for their kinds. The records are the cursor's, valid until it moves.
    /// @{
    tagCsqEventAicon* GetAiconEventParam();
    tagCsqEventSinger* GetSingerEventParam();
    tagCsqEventMidi* GetMidiEventParam();
    /// @}

    /// The track's stored length.
    DWORD GetSequenceLength() const;
    /// Stores it, in ticks, and returns it.
    DWORD SetSequenceLength(DWORD length);
    /// The latest end of any event in the chart: of notes with their lengths, of placements and singers with their
    /// icons'.
    DWORD MeasureSequenceLength();

protected:
    /// The track's event buffer; null when detached, and when the track has given its content up.
    CStreamBuffer* Stream() const;
    /// Copies a record into the cache, as much as its type has; returns its type, 0 for an id that names nothing.
    int ParseEvent(DWORD id);
    void InvalidateEvent();
    DWORD CalcTotalClock();
    int VerifyEventHeader(const tagEventHeader* header) const;
    void CsqCopy(const CCsqEvent& other);

    /// The track's icon under a handle, or null.
    CIconObject* IconOf(DWORD handle) const;
    DWORD IconLength(DWORD handle) const;

    union Record {
        tagEventHeader header;
        tagCsqEventAnote note;
        tagCsqEventAicon icon;
        tagCsqEventSinger singer;
        tagCsqEventMidi midi;
    };

    CSequenceObject* m_pTrack = nullptr;
    int m_nStatus = 0;
    tagEventEntry m_entry{};
    Record m_record;

private:
    int Step(int (CStreamBuffer::*read)(void*), int edge);
    void ParseCurrent();
};
