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

    /// MIDI key; 60 is C4, 69 is A4 with 440 Hz.
    /// @{
    int GetNoteNumber() const { return Get(&Note::noteNumber); }
    int SetNoteNumber(int number) { return Set(&Note::noteNumber, static_cast<WORD>(number)); }
    /// @}
    /// Velocity, 0 to 127.
    /// @{
    int GetNoteDynamics() const { return Get(&Note::noteDynamics); }
    int SetNoteDynamics(int dynamics) { return Set(&Note::noteDynamics, static_cast<WORD>(dynamics)); }
    /// @}
    /// Ticks.
    /// @{
    DWORD GetNoteLength() const { return Get(&Note::noteLength); }
    int SetNoteLength(DWORD length) { return Set(&Note::noteLength, length); }
    /// @}
    /// 16 bits.
    UINT GetNoteAttribute() const { return Get(&Note::noteAttribute) & 0xFFFF; }
    /// Bit 0: joined to the note before, bit 1: to the next one. Joined notes are sung without a break.
    int SetNoteAttribute(UINT attribute) { return Set(&Note::noteAttribute, DWORD{attribute & 0xFFFF}); }
    /// The low four bits of the record's status word.
    int GetChannel() const { return Get(&tagCsqEventAnote::header).status & 0x0F; }
    /// Ticks from the note's start to where its vibrato begins.
    /// @{
    int GetVibratoOffset() const { return Get(&Note::vibratoOffset); }
    int SetVibratoOffset(int ticks) { return Set(&Note::vibratoOffset, LONG{ticks}); }
    /// @}

    /// Handles of the track's lyric and icons; null for none.
    /// @{
    void* GetLyricHandle() const { return torv::PointerOf(Get(&Note::lyricHandle)); }
    void* GetNoteHeadIconHandle() const { return torv::PointerOf(Get(&Note::noteHeadHandle)); }
    void* GetNoteTailIconHandle() const { return torv::PointerOf(Get(&Note::noteTailHandle)); }
    void* GetVibratoIconHandle() const { return torv::PointerOf(Get(&Note::vibratoHandle)); }
    /// @}
    /// With `deleteOld` the object under the old handle is deleted, unless it is the new one.
    int SetLyricHandle(void* handle, int deleteOld);
    /// As SetLyricHandle.
    /// @{
    int SetNoteHeadIconHandle(void* handle, int deleteOld);
    int SetNoteTailIconHandle(void* handle, int deleteOld);
    int SetVibratoIconHandle(void* handle, int deleteOld);
    /// @}
    /// Ticks; 0 without such an icon.
    /// @{
    DWORD GetNoteHeadIconLength() const { return IconLength(Get(&Note::noteHeadHandle)); }
    DWORD GetNoteTailIconLength() const { return IconLength(Get(&Note::noteTailHandle)); }
    /// @}
    /// Sets the icon's own length, in ticks; 0 without such an icon, and for a length of 0.
    /// @{
    int SetNoteHeadIconLength(DWORD length) { return SetIconLengthOf(Get(&Note::noteHeadHandle), length); }
    int SetNoteTailIconLength(DWORD length) { return SetIconLengthOf(Get(&Note::noteTailHandle), length); }
    /// @}
};
