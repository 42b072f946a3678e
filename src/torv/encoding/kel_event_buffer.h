#pragma once

#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_singer.h"
#include "torv/icons/icon_vibrato.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/stream/stream_buffer.h"

// The host's records: made with new, as are the two icons of a note; their parts are made as the lyric and the icons
// make them when they describe themselves. Any pointer may be null.

/// Tag torv::kEventAnote.
struct tagKelNoteEvent {
    tagLyricObject lyric; ///< with its syllables
    /// With their texts and curves; null for none.
    /// @{
    tagNoteIconObject* noteIcon;
    tagVibratoIconObject* vibratoIcon;
    /// @}
};
static_assert(sizeof(void*) != 4 || (sizeof(tagKelNoteEvent) == 16 && offsetof(tagKelNoteEvent, noteIcon) == 8 &&
                                     offsetof(tagKelNoteEvent, vibratoIcon) == 12));

/// Tag torv::kEventAicon.
struct tagKelDynamicsEvent {
    tagDynamicsIconObject icon; ///< with its texts and points
};

/// Tag torv::kEventSinger.
struct tagKelSingerEvent {
    tagSingerIconObject icon; ///< with its caption
};

/// One entry of a CKelEventBuffer.
struct tagKelEventEntry {
    DWORD delta;  ///< ticks after the entry before
    DWORD tag;    ///< which kind of record
    void* record; ///< may be null
};
static_assert(offsetof(tagKelEventEntry, record) == 8);
static_assert(sizeof(tagKelEventEntry) == 8 + sizeof(void*));

namespace torv {

/// Frees a host record and all it owns, by its tag; any other tag, and null, free nothing.
TORV_API void ReleaseKelRecord(DWORD tag, void* record);

} // namespace torv

/// The host's event records in time order. A record belongs to the buffer from the call that stored it, so it must
/// stand in one entry only; when that call gives 0 it is still the caller's. What leaves by WriteEvent (the record that
/// stood there), or by the base's RemoveEntry and Empty, is the caller's again. An uncreated buffer answers as an empty
/// one and stores nothing.
class TORV_API CKelEventBuffer : public CStreamBuffer {
public:
    CKelEventBuffer() = default;
    ~CKelEventBuffer() override;

    /// 0 when memory is short, and on a buffer that was created, whose events stay.
    int Create();

    /// The current entry; the buffer's record comes along and stays the buffer's.
    int ReadEvent(tagKelEventEntry* entry) { return ReadEntry(entry); }
    /// Overwrites the current entry but for its delta; appends. The record is the buffer's when 1 comes back.
    /// @{
    int WriteEvent(tagKelEventEntry* entry) { return WriteEntry(entry); }
    int AddEvent(tagKelEventEntry* entry) { return AddEntry(entry); }
    /// @}
    /// At the cursor, after the current entry when on one.
    int InsertEvent(tagKelEventEntry* entry) { return InsertEntry(entry, 1); }
    /// The tag of the entry reached, or torv::kEventEnd at the end and torv::kEventTop at the top.
    DWORD SeekNext();
    /// As SeekNext, backwards.
    DWORD SeekPrev();
    /// Removes the entry under the cursor and frees its record.
    int RemoveEvent();
    /// Removes every entry and frees every record.
    void RemoveAll();
};
