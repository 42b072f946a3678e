#pragma once

#include "torv/stream/stream_buffer.h"

/// One entry of a CKelControllerBuffer. The value is the host's own: nothing is owned or freed through it.
struct tagKelControllerEntry {
    DWORD delta; ///< ticks after the entry before
    DWORD tag;   ///< the host's own
    DWORD value; ///< the host's own
};
static_assert(sizeof(tagKelControllerEntry) == 12 && offsetof(tagKelControllerEntry, value) == 8);

/// The host's controller values in time order. An uncreated buffer answers as an empty one and stores nothing.
class TORV_API CKelControllerBuffer : public CStreamBuffer {
public:
    CKelControllerBuffer() = default;
    ~CKelControllerBuffer() override;

    /// 0 when memory is short, and on a buffer that was created, whose entries stay.
    int Create();

    /// The current entry, read or overwritten (its delta stays), and one more at the end. 0 when there is none, and for
    /// null.
    /// @{
    int ReadEvent(tagKelControllerEntry* entry) { return ReadEntry(entry); }
    int WriteEvent(tagKelControllerEntry* entry) { return WriteEntry(entry); }
    int AddEvent(tagKelControllerEntry* entry) { return AddEntry(entry); }
    /// @}
    /// At the cursor, after the current entry when on one.
    int InsertEvent(tagKelControllerEntry* entry) { return InsertEntry(entry, 1); }
    /// The tag of the entry reached, or torv::kEventEnd at the end and torv::kEventTop at the top.
    DWORD SeekNext();
    /// As SeekNext, backwards.
    DWORD SeekPrev();
    /// Removes the entry under the cursor (0 when there is none); removes all.
    /// @{
    int RemoveEvent() { return RemoveEntry(); }
    void RemoveAll() { Empty(); }
    /// @}
};
