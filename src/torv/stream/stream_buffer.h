#pragma once

#include <cstddef>

#include "torv/stream/extend_buffer.h"

/// What every stream entry begins with.
struct tagEventEntryHdr {
    DWORD delta; ///< ticks after the previous entry, after clock 0 for the first
    DWORD tag;   ///< the stream's user's, but for the two reserved values below
};
static_assert(sizeof(tagEventEntryHdr) == 8 && offsetof(tagEventEntryHdr, tag) == 4);

/// A saved cursor.
struct tagLocateMarker {
    /// The cursor's own fields; a host keeps them and gives them back as they are.
    /// @{
    LONG state;
    DWORD entryEnd;
    DWORD clock;
    DWORD extra;
    /// @}
};
static_assert(sizeof(tagLocateMarker) == 16 && offsetof(tagLocateMarker, entryEnd) == 4 &&
              offsetof(tagLocateMarker, clock) == 8 && offsetof(tagLocateMarker, extra) == 12);

/// A clock as the cursor has it.
struct tagClockPosition {
    DWORD clock; ///< of the current entry
    DWORD extra; ///< ticks from there to the cursor
};
static_assert(sizeof(tagClockPosition) == 8 && offsetof(tagClockPosition, extra) == 4);

namespace torv {

inline constexpr DWORD kEndMarkTag = 0xFFFFFFFE; ///< closes every stream; no entry may carry it
inline constexpr DWORD kTopTag = 0xFFFFFFFF;     ///< the cursor's place before the first entry; no entry may carry it
inline constexpr DWORD kMaxClock = 0x7FFFFFFF;   ///< what all deltas and the end mark's add up to
inline constexpr DWORD kStreamBlockSize = 2048;  ///< bytes asked for by every stream of the library
inline constexpr int kHeapBlocks = -1;           ///< flag of CExtendBuffer::Create: blocks from the heap

/// A cursor's state.
/// @{
inline constexpr LONG kCursorAtTop = -1;
inline constexpr LONG kCursorOnEntry = 0;
inline constexpr LONG kCursorBetween = 1;
inline constexpr LONG kCursorAtEnd = -2;
/// @}

} // namespace torv

/// A time-ordered list of entries of one size, each a tagEventEntryHdr and a payload, closed by an end mark
/// {0x7FFFFFFF - sum of the deltas, kEndMarkTag}, with a cursor that moves by clock. Times are deltas, so inserting or
/// removing touches only the neighbour. Entry pointers are whole entries, header included; results are 1 and 0. An
/// uncreated stream answers 0 to everything. One thread at a time.
class TORV_API CStreamBuffer : public CExtendBuffer {
public:
    CStreamBuffer() = default;

    /// Entries of `entrySize` bytes (8 or more) in blocks of `blockSize` rounded down to whole entries.
    int Create(DWORD entrySize, DWORD blockSize, int flags);
    /// Removes every entry; the cursor is at the top.
    void Empty();

    /// Before the first entry, at the end mark.
    /// @{
    void SeekToBegin();
    void SeekToEnd();
    /// @}
    /// Moves to a time and returns it, at most 0x7FFFFFFF. Lands on the first entry at that clock, between two entries
    /// (state 1) when there is none, or at the end with a rest. Clock 0 is always the top, before an entry at 0.
    DWORD MoveTo(DWORD clock);
    /// Onto the last of the entries at a time: what is written at one time comes in its order, so that its place is
    /// found at once however many stand there. 0, and the cursor is where MoveTo leads, when there is none.
    int MoveBehind(DWORD clock);

    /// The clock of the last entry.
    DWORD GetStreamLength() const;
    /// The cursor's time: the current entry's clock, and the ticks after it.
    DWORD GetPosition() const { return m_dwClock + m_dwExtra; }
    /// The same in two numbers. 0 for null.
    int GetPosition(tagClockPosition* position) const;

    /// Step and copy the entry out (`entry` may be null). At the end the clock stays at the last entry's.
    int ReadNextEntry(void* entry);
    /// As ReadNextEntry, backwards; 0 at the top.
    int ReadPrevEntry(void* entry);
    /// The current entry, without moving; between two entries it is the one before the cursor.
    int ReadEntry(void* entry);
    /// Overwrites the payload and tag of the entry under the cursor; the delta word of `entry` becomes the stored one.
    int WriteEntry(void* entry);
    /// Appends; the entry's delta is its distance after the last one. The cursor is then on it.
    int AddEntry(const void* entry);
    /// Inserts at the cursor and moves onto the new entry, whose delta word receives what was stored. `after` only
    /// matters on an entry: directly after it (non-zero) or before it, at the same clock. 0, with nothing changed, for
    /// a reserved tag or a time past 0x7FFFFFFF.
    int InsertEntry(void* entry, int after);
    /// Removes the entry under the cursor; the cursor keeps its time and later entries theirs.
    int RemoveEntry();

    /// Keeps the cursor; 0 for null.
    int StoreLocation(tagLocateMarker* marker) const;
    /// A location that no longer fits is moved to the nearest place that does. The header under the cursor is reloaded
    /// in any case, as a step back from a stale one would lose the clock.
    int RestoreLocation(const tagLocateMarker* marker, int reread);

    /// Both do nothing and return 1.
    int InsertTime(DWORD ticks);
    /// See InsertTime.
    int RemoveTime(DWORD ticks);

protected:
    /// At the byte position; with `stay` non-zero the byte position is the old one afterwards.
    int ReadHeader(tagEventEntryHdr* header, int stay);
    int WriteHeader(const tagEventEntryHdr* header, int stay);
    int ReadEndMark(tagEventEntryHdr* mark) const;
    int WriteEndMark(const tagEventEntryHdr* mark);
    void OffsetEndDelta(LONG delta);
    /// The byte position back to just after the current entry.
    void ResetPosition();
    /// The cached header as the stream has it, and ResetPosition.
    void RestoreEntry();
    DWORD MoveRelative(LONG delta);
    /// Reads the entry at the byte position, or just the end mark there, into the cached header and `entry` (may be
    /// null). 0 for the end mark.
    int subReadEntry(void* entry);
    int IsValidLocation() const;

    tagEventEntryHdr m_header = {0, torv::kTopTag}; ///< of the entry, or end mark, at the cursor
    DWORD m_dwEntrySize = 0;
    LONG m_nState = torv::kCursorAtTop;
    DWORD m_dwEntryEnd = 0; ///< byte position just after the current entry
    DWORD m_dwClock = 0;    ///< of the current entry; at the end of the last one
    DWORD m_dwExtra = 0;    ///< ticks after it

private:
    using CExtendBuffer::Create;

    bool IsCreated() const { return m_dwEntrySize && m_pCurrent; }
    DWORD EntryBytes() const { return GetSize() - sizeof(tagEventEntryHdr); }
    /// The bytes at the position, where so many lie in one block; null otherwise.
    BYTE* BytesHere(DWORD count);
    DWORD ReadBytes(void* destination, DWORD count);
    bool InsertBytes(DWORD position, const void* entry);
    bool InsertWithinBlock(const void* entry, const tagEventEntryHdr& following);

    bool EndMark(tagEventEntryHdr& mark) const;

    static DWORD BlockTicks(CxShortBuff& block, DWORD entrySize);

    void LeapTo(DWORD target);
    // On the way to a time as far as the next step may still lead there: whole blocks by the ticks that they span, a
    // far place through the tree, and at last entry by entry within a block. The last block, which holds the end mark,
    // is never passed over.
    void SkipForward(DWORD target);
    void SkipBackward(DWORD target);
    bool SkipByTree(DWORD target);
    void SkipEntriesForward(DWORD target);
    bool IsNextBehind(DWORD target);
    void SkipEntriesBackward(DWORD target);
};
