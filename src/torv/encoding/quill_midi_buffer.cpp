#include "torv/encoding/quill_midi_buffer.h"

#include "torv/encoding/byte_store.h"
#include "torv/platform/or_zero.h"
#include "torv/stream/stream_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

namespace {

constexpr BYTE kNoteSegmentBlock = 0x50;

} // namespace

struct CQuillMidiBuffer::Store {
    CStreamBuffer index;
    torv::ByteStore data;
    std::vector<tagQuillMidiEntry>* together = nullptr; ///< messages, by their tick, that have no place yet
};

CQuillMidiBuffer::CQuillMidiBuffer() = default;
CQuillMidiBuffer::CQuillMidiBuffer(const CQuillMidiBuffer&) = default;
CQuillMidiBuffer& CQuillMidiBuffer::operator=(const CQuillMidiBuffer&) = default;
CQuillMidiBuffer::~CQuillMidiBuffer() = default;

int CQuillMidiBuffer::Create(int mode, DWORD presend, int interval) {
    std::shared_ptr<Store> store;
    try {
        store = std::make_shared<Store>();
    } catch (const std::bad_alloc&) {
        return 0;
    }
    if (!store->index.Create(sizeof(tagQuillMidiEntry), torv::kStreamBlockSize, torv::kHeapBlocks))
        return 0;
    m_pStore = std::move(store);
    m_nMode = mode;
    m_dwInterval = static_cast<DWORD>(interval);
    m_dwPresend = presend;
    return 1;
}

bool CQuillMidiBuffer::StoreBytes(const BYTE* bytes1, DWORD length1, const BYTE* bytes2, DWORD length2,
                                  tagQuillMidiEntry& entry) {
    if (!m_pStore || (!bytes1 && length1) || (!bytes2 && length2))
        return false;
    entry.offset = m_pStore->data.GetSize();
    entry.length = length1 + length2;
    return m_pStore->data.Append(bytes1, length1) && m_pStore->data.Append(bytes2, length2);
}

int CQuillMidiBuffer::AddEvent(DWORD delta, const BYTE* bytes, DWORD length, LONG time) {
    return AddEvent(delta, bytes, length, nullptr, 0, time);
}

int CQuillMidiBuffer::AddEvent(DWORD delta, const BYTE* bytes1, DWORD length1, const BYTE* bytes2, DWORD length2,
                               LONG time) {
    tagQuillMidiEntry entry{delta, 0, 0, time};
    if (!StoreBytes(bytes1, length1, bytes2, length2, entry))
        return 0;
    return m_pStore->index.AddEntry(&entry);
}

int CQuillMidiBuffer::InsertEvent(const BYTE* bytes, DWORD length, LONG time, int where) {
    return InsertEvent(bytes, length, nullptr, 0, time, where);
}

int CQuillMidiBuffer::InsertEvent(const BYTE* bytes1, DWORD length1, const BYTE* bytes2, DWORD length2, LONG time,
                                  int where) {
    tagQuillMidiEntry entry{0, 0, 0, time};
    if (!StoreBytes(bytes1, length1, bytes2, length2, entry))
        return 0;
    return m_pStore->index.InsertEntry(&entry, where);
}

int CQuillMidiBuffer::InsertEventAt(DWORD tick, const BYTE* bytes, DWORD length, LONG time, int where) {
    const DWORD last = m_pStore ? m_pStore->index.GetStreamLength() : 0;
    if (m_pStore && tick <= torv::kMaxClock && (tick > last || (tick == last && where)))
        return AddEvent(tick - last, bytes, length, time); // there is nothing behind it
    return MoveTo(tick) ? InsertEvent(bytes, length, time, where) : 0;
}

int CQuillMidiBuffer::InsertEventExAt(DWORD tick, LONG time, const BYTE* bytes, DWORD length) {
    if (!m_pStore)
        return 0;
    CStreamBuffer& index = m_pStore->index;
    tagQuillMidiEntry entry;
    bool isOnEntry = index.MoveBehind(tick) && index.ReadEntry(&entry);
    if (index.GetPosition() != tick)
        return 0;
    while (isOnEntry && entry.time > time) {
        tagLocateMarker here;
        index.StoreLocation(&here);
        isOnEntry = index.ReadPrevEntry(&entry) && index.GetPosition() == tick;
        if (!isOnEntry) {
            index.RestoreLocation(&here, 1);
            return InsertEvent(bytes, length, time, 0);
        }
    }
    return InsertEvent(bytes, length, time, 1);
}

int CQuillMidiBuffer::InsertMessagesAt(DWORD tick, DWORD interval, const BYTE* bytes, DWORD count) {
    constexpr DWORD kMessageBytes = 3;
    for (DWORD i = 0; i < count; ++i) {
        const BYTE* const message = bytes + i * kMessageBytes;
        if (!m_pStore || !m_pStore->together) {
            if (!InsertEventAt(tick + i * interval, message, kMessageBytes, 0, 1))
                return 0;
            continue;
        }
        tagQuillMidiEntry entry{tick + i * interval, 0, 0, 0};
        if (!StoreBytes(message, kMessageBytes, nullptr, 0, entry))
            return 0;
        m_pStore->together->push_back(entry);
    }
    return 1;
}

int CQuillMidiBuffer::InsertTogether(const std::function<int()>& write) {
    if (!m_pStore || m_pStore->together)
        return write();
    std::vector<tagQuillMidiEntry> messages;
    m_pStore->together = &messages;
    const int written = torv::OrZero(write);
    m_pStore->together = nullptr;
    // At one tick in the order in which they were written, which their bytes have kept.
    std::sort(messages.begin(), messages.end(), [](const tagQuillMidiEntry& a, const tagQuillMidiEntry& b) {
        return a.position != b.position ? a.position < b.position : a.offset < b.offset;
    });
    return written && std::all_of(messages.begin(), messages.end(), [this](tagQuillMidiEntry entry) {
               return MoveTo(std::exchange(entry.position, 0)) && m_pStore->index.InsertEntry(&entry, 1);
           });
}

int CQuillMidiBuffer::MoveTo(DWORD tick) {
    return m_pStore && (m_pStore->index.MoveBehind(tick) || m_pStore->index.GetPosition() == tick);
}

int CQuillMidiBuffer::ReadEntry(tagQuillMidiEntry* entry) { return m_pStore ? m_pStore->index.ReadEntry(entry) : 0; }
int CQuillMidiBuffer::ReadNextEntry(tagQuillMidiEntry* entry) {
    return m_pStore ? m_pStore->index.ReadNextEntry(entry) : 0;
}
int CQuillMidiBuffer::ReadPrevEntry(tagQuillMidiEntry* entry) {
    return m_pStore ? m_pStore->index.ReadPrevEntry(entry) : 0;
}
int CQuillMidiBuffer::WriteEntry(tagQuillMidiEntry* entry) { return m_pStore ? m_pStore->index.WriteEntry(entry) : 0; }

void CQuillMidiBuffer::SeekToBegin() {
    if (m_pStore)
        m_pStore->index.SeekToBegin();
}

void CQuillMidiBuffer::SeekToEnd() {
    if (m_pStore)
        m_pStore->index.SeekToEnd();
}

DWORD CQuillMidiBuffer::GetPosition() { return m_pStore ? m_pStore->index.GetPosition() : 0; }

DWORD CQuillMidiBuffer::GetDataSize() { return m_pStore ? m_pStore->data.GetSize() : 0; }

DWORD CQuillMidiBuffer::ReadEvent(DWORD offset, void* destination, DWORD length) {
    return m_pStore && destination ? m_pStore->data.Read(offset, destination, length) : 0;
}

template <class View>
DWORD CQuillMidiBuffer::ReadView(const tagQuillMidiEntry& entry, View& view) {
    std::memset(&view, 0, sizeof view);
    const DWORD length = entry.length < sizeof view ? entry.length : static_cast<DWORD>(sizeof view);
    return ReadEvent(entry.offset, &view, length);
}

DWORD CQuillMidiBuffer::SeekToTimePosition(DWORD time) {
    SeekToBegin();
    DWORD previous = 0;
    tagQuillMidiEntry entry;
    while (ReadNextEntry(&entry)) {
        tagQuillMidiMessageHead head;
        if (ReadView(entry, head) < sizeof head)
            continue; // a message without a delay sounds nowhere
        const LONG sounding = entry.time + static_cast<LONG>(GetDelay(&head));
        const DWORD start = sounding < 0 ? 0 : static_cast<DWORD>(sounding);
        if (start > time) {
            ReadPrevEntry(&entry);
            return previous;
        }
        previous = start;
        if (start == time)
            return start;
    }
    ReadPrevEntry(&entry);
    return previous;
}

int CQuillMidiBuffer::SetLoopEndState(DWORD time) {
    SeekToTimePosition(time);
    m_nLoopEndState = 0;
    tagQuillMidiEntry entry;
    for (bool more = ReadEntry(&entry) || ReadNextEntry(&entry); more; more = ReadNextEntry(&entry)) {
        tagQuillNoteMidiMessage message;
        if (ReadView(entry, message) < 54 || message.bytes[2] != kNoteSegmentBlock)
            continue; // byte 53 is the last that the duration needs
        tagQuillMidiMessageHead head;
        std::memcpy(&head, &message, sizeof head);
        const long long start = static_cast<long long>(entry.time) + GetDelay(&head);
        if (time < start)
            break;
        if (time < start + GetNoteDuration(&message)) {
            m_nLoopEndState = 1;
            break;
        }
    }
    return 1;
}

int CQuillMidiBuffer::CreateChaseTable(CPtrArray& table, DWORD /*time*/) {
    table.SetSize(0);
    return 0;
}

DWORD CQuillMidiBuffer::GetDelay(const tagQuillMidiMessageHead* head) {
    return head ? head->bytes[20] * 128u + head->bytes[23] : 0;
}

void CQuillMidiBuffer::SetDelay(tagQuillMidiMessageHead* head, DWORD delay) {
    if (!head)
        return;
    head->bytes[20] = (delay >> 7) & 0x7F;
    head->bytes[23] = delay & 0x7F;
}

DWORD CQuillMidiBuffer::GetNoteDuration(const tagQuillNoteMidiMessage* message) {
    return message ? message->bytes[50] * 128u + message->bytes[53] : 0;
}

void CQuillMidiBuffer::SetLast(DWORD tick, DWORD time) {
    m_dwLastTick = tick;
    m_dwLastTime = time;
}

void CQuillMidiBuffer::RaiseLast(DWORD tick, DWORD time) {
    if (tick > m_dwLastTick)
        SetLast(tick, time);
}
