#pragma once

#include "torv/score/kind_cursor.h"

/// The cursor over a track's notes.
class TORV_API CCsqEventAnote : public torv::KindCursor<tagCsqEventAnote, torv::kStatusAttack, torv::kStatusVibrato> {
    using Note = tagCsqEventAnote;

public:
    ~CCsqEventAnote() override;
    /// Removes the note, and its icons and lyric when asked.
    virtual int Remove(int deleteObjects);

    using KindCursor::Insert;
    /// Inserts a new note at the cursor (after or before the current event).
    int Insert(DWORD length, int noteNumber, int dynamics, int after);

    int GetNoteNumber() const { return Get(&Note::noteNumber); }
    int SetNoteNumber(int number) { return Set(&Note::noteNumber, static_cast<WORD>(number)); }
    int GetNoteDynamics() const { return Get(&Note::noteDynamics); }
    int SetNoteDynamics(int dynamics) { return Set(&Note::noteDynamics, static_cast<WORD>(dynamics)); }
    DWORD GetNoteLength() const { return Get(&Note::noteLength); }
    int SetNoteLength(DWORD length) { return Set(&Note::noteLength, length); }
    /// 16 bits.
    UINT GetNoteAttribute() const { return Get(&Note::noteAttribute) & 0xFFFF; }
    int SetNoteAttribute(UINT attribute) { return Set(&Note::noteAttribute, DWORD{attribute & 0xFFFF}); }
    int GetChannel() const { return Get(&tagCsqEventAnote::header).status & 0x0F; }
    int GetVibratoOffset() const { return Get(&Note::vibratoOffset); }
    int SetVibratoOffset(int ticks) { return Set(&Note::vibratoOffset, LONG{ticks}); }

    void* GetLyricHandle() const { return torv::PointerOf(Get(&Note::lyricHandle)); }
    void* GetNoteHeadIconHandle() const { return torv::PointerOf(Get(&Note::noteHeadHandle)); }
    void* GetNoteTailIconHandle() const { return torv::PointerOf(Get(&Note::noteTailHandle)); }
    void* GetVibratoIconHandle() const { return torv::PointerOf(Get(&Note::vibratoHandle)); }
    /// With `deleteOld` the object under the old handle is deleted, unless it is the new one.
    int SetLyricHandle(void* handle, int deleteOld);
    int SetNoteHeadIconHandle(void* handle, int deleteOld);
    int SetNoteTailIconHandle(void* handle, int deleteOld);
    int SetVibratoIconHandle(void* handle, int deleteOld);
    DWORD GetNoteHeadIconLength() const { return IconLength(Get(&Note::noteHeadHandle)); }
    DWORD GetNoteTailIconLength() const { return IconLength(Get(&Note::noteTailHandle)); }
    int SetNoteHeadIconLength(DWORD length) { return SetIconLengthOf(Get(&Note::noteHeadHandle), length); }
    int SetNoteTailIconLength(DWORD length) { return SetIconLengthOf(Get(&Note::noteTailHandle), length); }
};
