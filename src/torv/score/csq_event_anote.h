#pragma once

#include "torv/score/csq_event.h"

/// The cursor over a track's notes. Accessors act on the cached record, which Write stores.
class TORV_API CCsqEventAnote : public CCsqEvent {
public:
    ~CCsqEventAnote() override;
    int GetNext() override;
    int GetPrev() override;
    int Insert(DWORD id, int after) override;
    virtual int Write();
    /// Removes the note, and its icons and lyric when asked.
    virtual int Remove(int deleteObjects);

    /// Inserts a new note at the cursor (after or before the current event).
    int Insert(DWORD length, int noteNumber, int dynamics, int after);
    static int IsValidIcon(int status); ///< attack, release, transit, vibrato
    int IsValidIcon(void* handle) const;

    int GetNoteNumber() const { return m_record.note.noteNumber; }
    int SetNoteNumber(int number);
    int GetNoteDynamics() const { return m_record.note.noteDynamics; }
    int SetNoteDynamics(int dynamics);
    DWORD GetNoteLength() const { return m_record.note.noteLength; }
    int SetNoteLength(DWORD length);
    /// 16 bits.
    UINT GetNoteAttribute() const { return m_record.note.noteAttribute & 0xFFFF; }
    int SetNoteAttribute(UINT attribute);
    int GetChannel() const { return m_record.header.status & 0x0F; }
    int GetVibratoOffset() const { return m_record.note.vibratoOffset; }
    int SetVibratoOffset(int ticks);

    void* GetLyricHandle() const { return Handle(m_record.note.lyricHandle); }
    void* GetNoteHeadIconHandle() const { return Handle(m_record.note.noteHeadHandle); }
    void* GetNoteTailIconHandle() const { return Handle(m_record.note.noteTailHandle); }
    void* GetVibratoIconHandle() const { return Handle(m_record.note.vibratoHandle); }
    /// With `deleteOld` the object under the old handle is deleted, unless it is the new one.
    int SetLyricHandle(void* handle, int deleteOld);
    int SetNoteHeadIconHandle(void* handle, int deleteOld);
    int SetNoteTailIconHandle(void* handle, int deleteOld);
    int SetVibratoIconHandle(void* handle, int deleteOld);
    DWORD GetNoteHeadIconLength() const { return IconLength(m_record.note.noteHeadHandle); }
    DWORD GetNoteTailIconLength() const { return IconLength(m_record.note.noteTailHandle); }
    int SetNoteHeadIconLength(DWORD length) { return SetIconLengthOf(m_record.note.noteHeadHandle, length); }
    int SetNoteTailIconLength(DWORD length) { return SetIconLengthOf(m_record.note.noteTailHandle, length); }

private:
    static void* Handle(DWORD handle) { return reinterpret_cast<void*>(static_cast<uintptr_t>(handle)); }
};
