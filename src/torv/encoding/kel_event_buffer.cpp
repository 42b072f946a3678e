#include "torv/encoding/kel_event_buffer.h"

#include "torv/stream/chart_record.h"

namespace torv {

void ReleaseKelRecord(DWORD tag, void* record) {
    if (!record)
        return;
    if (tag == kEventAnote) {
        auto* note = static_cast<tagKelNoteEvent*>(record);
        ReleaseLyricRecord(&note->lyric);
        ReleaseIconRecord(note->noteIcon);
        delete note->noteIcon;
        ReleaseIconRecord(note->vibratoIcon);
        delete note->vibratoIcon;
        delete note;
    } else if (tag == kEventAicon) {
        auto* dynamics = static_cast<tagKelDynamicsEvent*>(record);
        ReleaseIconRecord(&dynamics->icon);
        delete dynamics;
    } else if (tag == kEventSinger) {
        auto* singer = static_cast<tagKelSingerEvent*>(record);
        ReleaseIconRecord(&singer->icon);
        delete singer;
    }
}

} // namespace torv

CKelEventBuffer::~CKelEventBuffer() { CKelEventBuffer::RemoveAll(); }

int CKelEventBuffer::Create() {
    return CStreamBuffer::Create(sizeof(tagKelEventEntry), torv::kStreamBlockSize, torv::kHeapBlocks);
}

DWORD CKelEventBuffer::SeekNext() { return ReadNextEntry(nullptr) ? m_header.tag : torv::kEventEnd; }
DWORD CKelEventBuffer::SeekPrev() { return ReadPrevEntry(nullptr) ? m_header.tag : torv::kEventTop; }

int CKelEventBuffer::RemoveEvent() {
    tagKelEventEntry entry;
    // Between two entries the one before can be read but is not the cursor's to remove: its record must stay.
    if (!ReadEvent(&entry) || !RemoveEntry())
        return 0;
    torv::ReleaseKelRecord(entry.tag, entry.record);
    return 1;
}

void CKelEventBuffer::RemoveAll() {
    tagKelEventEntry entry;
    SeekToBegin();
    while (ReadNextEntry(&entry))
        torv::ReleaseKelRecord(entry.tag, entry.record);
    Empty();
}
