#pragma once

#include "torv/score/time_signature.h"
#include "torv/stream/chart_record.h"
#include "torv/stream/stream_buffer.h"

#include <memory>

/// One entry of the master track.
struct tagMasterEventEntry {
    DWORD delta;  ///< ticks after the entry before
    DWORD type;   ///< torv::kEventTempo or torv::kEventTimeSignature; other types are kept and passed over by the maps
    DWORD unused; ///< the host's own
    DWORD value;  ///< tempo, or a tagTimeSignature in the two low bytes, numerator lowest
    DWORD auxiliary; ///< of a tempo event: copied into the tempo map
};
static_assert(sizeof(tagMasterEventEntry) == 20 && offsetof(tagMasterEventEntry, value) == 12);

/// From a clock on this tempo holds.
struct tagTempoMap {
    DWORD clock;     ///< where it begins
    DWORD auxiliary; ///< of the event
    DWORD tempo;     ///< microseconds to a quarter note
};
/// From a measure on this signature holds.
struct tagTimeSignatureMap {
    WORD measure;               ///< where the signature starts, from 0
    tagTimeSignature signature; ///< in force from there on
};
/// From a clock on this tempo holds: what clocks are turned into milliseconds by.
struct tagSequenceTimeMap {
    DWORD tempo; ///< microseconds to a quarter note
    DWORD clock; ///< where it begins
    DWORD time;  ///< milliseconds at that clock
};
static_assert(sizeof(tagTempoMap) == 12 && sizeof(tagTimeSignatureMap) == 4 && sizeof(tagSequenceTimeMap) == 12 &&
              offsetof(tagTempoMap, tempo) == 8 && offsetof(tagTimeSignatureMap, signature) == 2 &&
              offsetof(tagSequenceTimeMap, time) == 8);

/// The song's tempo and time-signature changes in time order, and the maps made from them. Tempo is microseconds to a
/// quarter note. The initial tempo and key signature are stored only: a tempo that is to count must be an event.
/// Building a map moves the cursor. Before Create every list operation answers 0.
class TORV_API CMasterTrack : public CObject {
public:
    /// 500000 microseconds a quarter, 4/4; no event list before Create.
    CMasterTrack();
    CMasterTrack(const CMasterTrack&) = delete;
    CMasterTrack& operator=(const CMasterTrack&) = delete;
    ~CMasterTrack() override;

    /// Makes the event list. 0 when memory is short, and on a track that has one, whose events stay.
    int Create();
    /// Whether Create has made the event list.
    bool IsCreated() const { return m_pEvents != nullptr; }
    /// Removes every event; the cursor is at the top.
    void RemoveAll();

    /// The cursor before the first event, behind the last.
    /// @{
    void SeekToBegin();
    void SeekToEnd();
    /// @}
    /// The type of the event reached, or 0xFFFFFFFE at the end and 0xFFFFFFFF at the top.
    DWORD SeekNext();
    /// As SeekNext, backwards.
    DWORD SeekPrev();
    /// To a clock in ticks: onto the first event there, else between events. Returns the clock reached.
    DWORD MoveTo(DWORD clock);
    /// The cursor's clock in ticks.
    DWORD GetPosition();
    /// The clock of the last event; leaves the cursor at the end.
    DWORD GetLength();

    /// Appends; the entry's delta counts from the last event.
    int AddEvent(tagMasterEventEntry* entry);
    /// Inserts at the cursor, after the current event when on one.
    int InsertEvent(tagMasterEventEntry* entry);
    /// Of the event under the cursor: takes it out (later events keep their clocks), reads it, or overwrites type and
    /// values but not its delta. 0 when there is none, and for null.
    /// @{
    int RemoveEvent();
    int ReadEvent(tagMasterEventEntry* entry);
    int WriteEvent(tagMasterEventEntry* entry);
    /// @}
    /// Keeps the cursor's place and goes back to it; a null marker is left alone.
    /// @{
    void StoreLocation(tagLocateMarker* marker);
    void RestoreLocation(const tagLocateMarker* marker);
    /// @}

    /// Stored for the host; no map looks at them.
    /// @{
    DWORD GetInitialTempo() const { return m_dwInitialTempo; }
    void SetInitialTempo(DWORD tempo) { m_dwInitialTempo = tempo; }
    DWORD GetInitialKeySig() const { return m_dwInitialKeySig; }
    void SetInitialKeySig(DWORD key) { m_dwInitialKeySig = key; }
    /// @}
    /// What holds before the first signature event; the time-signature map begins with it.
    /// @{
    tagTimeSignature GetInitialTimeSig() const { return m_initialTimeSig; }
    void SetInitialTimeSig(tagTimeSignature signature) { m_initialTimeSig = signature; }
    /// @}
    /// The host's own mark that the track was changed: nothing in the library sets it.
    /// @{
    int GetModify() const { return m_nModify; }
    void SetModify(int modify) { m_nModify = modify; }
    /// @}

    /// Maps with at least one record, the first at clock (measure) 0. Of events at one clock the last counts. 0 without
    /// an event list, and when memory is short: the map then holds what was built so far.
    int GetTempoMap(CArray<tagTempoMap>& map);
    /// As GetTempoMap. Measures count from 0 by whole measures of the signature before; times add up in whole
    /// milliseconds.
    /// @{
    int GetTimeSignatureMap(CArray<tagTimeSignatureMap>& map);
    int GetSequenceTimeMap(CArray<tagSequenceTimeMap>& map);
    /// @}
    /// A record for each event and none besides.
    int GetTempoMap2(CArray<tagTempoMap>& map);
    /// As GetTempoMap2.
    /// @{
    int GetTimeSignatureMap2(CArray<tagTimeSignatureMap>& map);
    int GetSequenceTimeMap2(CArray<tagSequenceTimeMap>& map);
    /// @}

    /// Microseconds are rounded to whole ones, milliseconds cut; ticks are rounded. 64-bit arithmetic; a tempo of 0
    /// gives 0 ticks.
    static DWORD TicksToTime(DWORD ticks, DWORD tempo);
    /// The reverse; see TicksToTime.
    static DWORD TimeToTicks(DWORD milliseconds, DWORD tempo);
    /// The same, cut throughout.
    static DWORD TicksToTime2(DWORD ticks, DWORD tempo);
    /// The reverse, cut.
    static DWORD TimeToTicks2(DWORD milliseconds, DWORD tempo);

    /// Ticks to milliseconds and back through a map. The walk starts at `index`, which is left at the record used; it
    /// steps back by one record at most, so start at 0 and pass it on for ascending positions. An empty map counts as
    /// 500000 from 0.
    static DWORD SearchTimePosition(DWORD tick, CArray<tagSequenceTimeMap>& map, int& index);
    /// The reverse of SearchTimePosition; see there.
    static DWORD SearchTickPosition(DWORD milliseconds, CArray<tagSequenceTimeMap>& map, int& index);

private:
    template <class Record, class Visit>
    int BuildMap(CArray<Record>& map, DWORD type, const Record* last, Visit visit);

    int m_nModify = 0;
    DWORD m_dwInitialTempo = torv::kDefaultTempo;
    DWORD m_dwInitialKeySig = 0;
    tagTimeSignature m_initialTimeSig;
    std::unique_ptr<CStreamBuffer> m_pEvents;
};
