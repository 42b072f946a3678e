#pragma once

#include "torv/platform/platform.h"

#include <functional>
#include <memory>

/// One entry of the engine stream's index, 16 bytes. The first two words are the index's own entry header: ticks from
/// the entry before, and the place of the event's bytes in the data buffer.
struct tagQuillMidiEntry {
    DWORD position; ///< ticks from the entry before (reading: as stored; adding: as given)
    DWORD offset;   ///< first byte in the data buffer
    DWORD length;   ///< bytes
    LONG time;      ///< real time mode: when the block is sent, in milliseconds: sounding time minus the block's delay
};
static_assert(sizeof(tagQuillMidiEntry) == 16);

/// The first 24 bytes of a block that carries a delay.
struct tagQuillMidiMessageHead {
    BYTE bytes[24]; ///< control changes of three bytes
};
/// The first 60 bytes of a note segment's block, as far as its duration and beyond.
struct tagQuillNoteMidiMessage {
    BYTE bytes[60]; ///< control changes of three bytes
};

/// The encoded engine stream of one track: an index of entries ordered by tick over a store of event bytes that only
/// grows. The encoders fill it, then it is read; there is no lock. Copies share the stored entries and bytes, which go
/// with the last of them; the scalar members are each copy's own.
class TORV_API CQuillMidiBuffer {
public:
    /// Without stores before Create.
    CQuillMidiBuffer();
    /// Shares the other's entries and bytes, which go with the last copy; the scalar members are its own.
    /// @{
    CQuillMidiBuffer(const CQuillMidiBuffer&);
    CQuillMidiBuffer& operator=(const CQuillMidiBuffer&);
    /// @}
    virtual ~CQuillMidiBuffer();

    /// `mode` 1: real time, one entry a block, with a time; 0: file, one entry a message. `presend` in milliseconds,
    /// `interval` in ticks. Returns 1, or 0 when the stores cannot be made.
    int Create(int mode, DWORD presend, int interval);

    /// Appends an event `delta` ticks after the last entry. Returns 0, with no entry added, when the bytes cannot be
    /// stored. The second form stores two runs back to back as one event.
    int AddEvent(DWORD delta, const BYTE* bytes, DWORD length, LONG time);
    /// As the other AddEvent, from two runs of bytes as one event.
    int AddEvent(DWORD delta, const BYTE* bytes1, DWORD length1, const BYTE* bytes2, DWORD length2, LONG time);
    /// Inserts an event at the index's position: after the current entry (`where` 1) or before it (0).
    int InsertEvent(const BYTE* bytes, DWORD length, LONG time, int where);
    /// The same from two runs, as one event.
    int InsertEvent(const BYTE* bytes1, DWORD length1, const BYTE* bytes2, DWORD length2, LONG time, int where);
    /// MoveTo(tick), then InsertEvent.
    int InsertEventAt(DWORD tick, const BYTE* bytes, DWORD length, LONG time, int where);
    /// Inserts so that the entries of one tick ascend by time; equal times keep the order of insertion. Returns 0 when
    /// the index cannot stand at `tick`.
    int InsertEventExAt(DWORD tick, LONG time, const BYTE* bytes, DWORD length);

    /// Inserts `count` three-byte messages as events of their own, `interval` ticks apart from `tick` on, with no time.
    int InsertMessagesAt(DWORD tick, DWORD interval, const BYTE* bytes, DWORD count);
    /// Runs `write`, whose messages get their places when it has ended, all in one walk: of a curve with an interval
    /// each value goes back to before the messages of the last. Answers what `write` answers, 0 when a message is
    /// refused.
    int InsertTogether(const std::function<int()>& write);

    /// Places the index so that a following insert lands after every entry at or before `tick`. Returns 0 when it
    /// cannot stand exactly there.
    int MoveTo(DWORD tick);
    /// The entry at the index, the next and the one before. 1; 0 when there is none, and for null.
    /// @{
    int ReadEntry(tagQuillMidiEntry* entry);
    int ReadNextEntry(tagQuillMidiEntry* entry);
    int ReadPrevEntry(tagQuillMidiEntry* entry);
    /// @}
    /// The index before the first entry, behind the last.
    /// @{
    void SeekToBegin();
    void SeekToEnd();
    /// @}
    /// Ticks.
    DWORD GetPosition();

    /// Copies up to `length` event bytes from `offset`; returns the count, 0 beyond the data.
    DWORD ReadEvent(DWORD offset, void* destination, DWORD length);

    /// Moves to the last entry that sounds at or before `time` (milliseconds) and returns its sounding time; 0 when
    /// there is none. Entries are looked at from the beginning.
    DWORD SeekToTimePosition(DWORD time);
    /// Looks whether `time` falls inside a sounding note segment, from the last entry at or before it on, and keeps the
    /// answer as the loop-end state. Returns 1.
    int SetLoopEndState(DWORD time);
    /// 1 when that time falls inside a sounding note, else 0.
    int GetLoopEndState() const { return m_nLoopEndState; }
    /// Empties `table` and returns 0: the state at a position is restored by the synthesis driver's own chasing, so no
    /// caller may rely on an output here.
    int CreateChaseTable(CPtrArray& table, DWORD time);

    /// A block's delay in milliseconds, 14 bits.
    static DWORD GetDelay(const tagQuillMidiMessageHead* head);
    /// Writes it; the low 14 bits count.
    static void SetDelay(tagQuillMidiMessageHead* head, DWORD delay);
    /// A note segment's duration in milliseconds, 14 bits.
    static DWORD GetNoteDuration(const tagQuillNoteMidiMessage* message);

    /// As given to Create: mode, ticks between a block's messages in a file, milliseconds.
    /// @{
    int GetMode() const { return m_nMode; }
    DWORD GetEventInterval() const { return m_dwInterval; }
    DWORD GetPresendTime() const { return m_dwPresend; }
    /// @}
    /// The end of the latest sounding content, in ticks and in milliseconds; kept by the encoders.
    DWORD GetLastTick() const { return m_dwLastTick; }
    /// See GetLastTick.
    DWORD GetLastTime() const { return m_dwLastTime; }
    /// Sets both ends, tick and milliseconds.
    void SetLast(DWORD tick, DWORD time);
    /// SetLast, but only when `tick` is later than the last tick.
    void RaiseLast(DWORD tick, DWORD time);

    /// Bytes of events held, for those who measure.
    DWORD GetDataSize();

protected:
    int WriteEntry(tagQuillMidiEntry* entry);

private:
    struct Store;

    bool StoreBytes(const BYTE* bytes1, DWORD length1, const BYTE* bytes2, DWORD length2, tagQuillMidiEntry& entry);
    /// The first bytes of an entry's event; what the event is too short for reads as 0. Returns the bytes it has.
    template <class View>
    DWORD ReadView(const tagQuillMidiEntry& entry, View& view);

    int m_nMode = 0;
    DWORD m_dwInterval = 0;
    DWORD m_dwPresend = 0;
    int m_nLoopEndState = 0;
    std::shared_ptr<Store> m_pStore;
    DWORD m_dwLastTick = 0;
    DWORD m_dwLastTime = 0;
};
