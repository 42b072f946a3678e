#include "torv/stream/stream_buffer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

using namespace torv;

namespace {

constexpr DWORD kHeaderSize = sizeof(tagEventEntryHdr);

bool IsReserved(DWORD tag) { return tag == kEndMarkTag || tag == kTopTag; }

tagEventEntryHdr HeaderOf(const void* entry) {
    tagEventEntryHdr header;
    std::memcpy(&header, entry, sizeof header);
    return header;
}

void SetDelta(void* entry, DWORD delta) { std::memcpy(entry, &delta, sizeof delta); }

/// The sizes of the library's own entries are known to the compiler, which then needs no call.
void CopyEntry(void* to, const void* from, DWORD size) {
    switch (size) {
    case 8:
        std::memcpy(to, from, 8);
        return;
    case 16:
        std::memcpy(to, from, 16);
        return;
    case 20:
        std::memcpy(to, from, 20);
        return;
    default:
        std::memcpy(to, from, size);
    }
}

} // namespace

/// Most calls ask for the end mark, which one block holds then; for the rest there is the way across blocks.
inline bool CStreamBuffer::EndMark(tagEventEntryHdr& mark) const {
    if (!m_pLast || m_pLast->m_dwUsed < kHeaderSize)
        return ReadEndMark(&mark);
    mark = HeaderOf(m_pLast->m_pData + m_pLast->m_dwUsed - kHeaderSize);
    return true;
}

int CStreamBuffer::Create(DWORD entrySize, DWORD blockSize, int flags) {
    if (entrySize < kHeaderSize || !CExtendBuffer::Create(blockSize / entrySize * entrySize, flags))
        return 0;
    m_dwEntrySize = entrySize;
    Empty();
    return 1;
}

void CStreamBuffer::Empty() {
    if (!IsCreated())
        return;
    const tagEventEntryHdr mark = {kMaxClock, kEndMarkTag};
    SeekTo(0);
    Remove(GetSize());
    Append(reinterpret_cast<const char*>(&mark), kHeaderSize);
    SeekToBegin();
}

void CStreamBuffer::SeekToBegin() {
    SeekTo(0);
    m_nState = kCursorAtTop;
    m_dwEntryEnd = m_dwClock = m_dwExtra = 0;
    m_header = {0, kTopTag};
}

void CStreamBuffer::SeekToEnd() {
    if (!IsCreated())
        return;
    m_nState = kCursorAtEnd;
    m_dwEntryEnd = SeekTo(GetSize());
    m_dwClock = GetStreamLength();
    m_dwExtra = 0;
    ReadEndMark(&m_header);
}

DWORD CStreamBuffer::GetStreamLength() const {
    tagEventEntryHdr mark;
    return IsCreated() && EndMark(mark) ? kMaxClock - mark.delta : 0;
}

int CStreamBuffer::GetPosition(tagClockPosition* position) const {
    if (!position)
        return 0;
    *position = {m_dwClock, m_dwExtra};
    return 1;
}

DWORD CStreamBuffer::MoveTo(DWORD clock) {
    if (!IsCreated())
        return 0;
    ResetPosition();
    m_dwExtra = 0;
    if (clock <= m_dwClock) {
        if (clock <= m_dwClock - clock)
            SeekToBegin();
        return MoveRelative(static_cast<LONG>(clock - m_dwClock));
    }
    const DWORD length = GetStreamLength();
    if (clock > length) {
        SeekToEnd();
        m_dwExtra = std::min(clock, kMaxClock) - length;
        return MoveRelative(0);
    }
    if (clock - m_dwClock > length - clock)
        SeekToEnd();
    return MoveRelative(static_cast<LONG>(clock - m_dwClock));
}

int CStreamBuffer::MoveBehind(DWORD clock) {
    if (!IsCreated())
        return 0;
    if (clock < GetStreamLength()) {
        MoveTo(clock + 1);
        if (m_nState == kCursorBetween) {
            if (--m_dwExtra)
                return 0;
            m_nState = m_dwEntryEnd ? kCursorOnEntry : kCursorAtTop;
            return m_dwEntryEnd != 0;
        }
    } else {
        SeekToEnd();
    }
    if (ReadPrevEntry(nullptr) && m_dwClock == clock)
        return 1;
    MoveTo(clock);
    return 0;
}

DWORD CStreamBuffer::MoveRelative(LONG delta) {
    m_dwExtra += static_cast<DWORD>(delta);
    const DWORD target = m_dwClock + m_dwExtra;
    if (static_cast<LONG>(target) <= 0) {
        SeekToBegin();
        return m_dwClock;
    }
    LeapTo(target);
    // Back past everything at or after the target first, and only then forward: so the first of several entries at one
    // clock is found from either side.
    while (m_dwClock >= target) {
        SkipBackward(target);
        if (!ReadPrevEntry(nullptr))
            break;
    }
    while (m_dwClock < target) {
        SkipForward(target);
        if (IsNextBehind(target) || !ReadNextEntry(nullptr))
            break;
    }
    if (m_dwClock > target)
        ReadPrevEntry(nullptr);
    m_dwExtra = target - m_dwClock;
    if (m_dwExtra && (m_nState == kCursorOnEntry || m_nState == kCursorAtTop))
        m_nState = kCursorBetween;
    return target;
}

int CStreamBuffer::ReadNextEntry(void* entry) {
    if (m_nState == kCursorAtEnd || !IsCreated())
        return 0;
    ResetPosition();
    m_dwExtra = 0;
    const BYTE* const bytes = m_pCurrent->m_pData + OffsetInBlock();
    if (m_dwEntrySize <= m_pCurrent->m_dwUsed - OffsetInBlock() && HeaderOf(bytes).tag != kEndMarkTag) {
        if (entry)
            CopyEntry(entry, bytes, m_dwEntrySize);
        m_header = HeaderOf(bytes);
        m_dwEntryEnd = m_dwPosition += m_dwEntrySize;
        m_nState = kCursorOnEntry;
        m_dwClock += m_header.delta;
        return 1;
    }
    const int isEntry = subReadEntry(entry);
    m_dwEntryEnd = m_dwPosition;
    m_nState = isEntry ? kCursorOnEntry : kCursorAtEnd;
    if (isEntry)
        m_dwClock += m_header.delta;
    return isEntry;
}

int CStreamBuffer::ReadPrevEntry(void* entry) {
    m_dwExtra = 0;
    if (m_nState == kCursorAtTop || !IsCreated())
        return 0;
    if (m_nState == kCursorOnEntry) {
        m_dwClock -= m_header.delta;
        m_dwEntryEnd -= std::min(m_dwEntryEnd, m_dwEntrySize);
    } else if (m_nState == kCursorAtEnd) {
        m_dwEntryEnd -= kHeaderSize;
    }
    if (m_dwEntryEnd >= m_dwEntrySize) {
        SeekTo(m_dwEntryEnd - m_dwEntrySize);
        if (subReadEntry(entry)) {
            m_nState = kCursorOnEntry;
            return 1;
        }
    }
    SeekToBegin();
    return 0;
}

int CStreamBuffer::ReadEntry(void* entry) {
    const bool onEntry = m_nState == kCursorOnEntry || m_nState == kCursorBetween;
    if (!onEntry || !entry || !IsCreated() || m_dwEntryEnd < m_dwEntrySize)
        return 0;
    SeekTo(m_dwEntryEnd - m_dwEntrySize);
    return subReadEntry(entry);
}

int CStreamBuffer::WriteEntry(void* entry) {
    if (m_nState != kCursorOnEntry || !entry || !IsCreated() || IsReserved(HeaderOf(entry).tag))
        return 0;
    SetDelta(entry, m_header.delta);
    SeekTo(m_dwEntryEnd - m_dwEntrySize);
    Overwrite(entry, m_dwEntrySize);
    m_header = HeaderOf(entry);
    return 1;
}

int CStreamBuffer::AddEntry(const void* entry) {
    tagEventEntryHdr mark;
    if (!IsCreated() || !entry || !EndMark(mark))
        return 0;
    const tagEventEntryHdr header = HeaderOf(entry);
    if (IsReserved(header.tag) || header.delta > mark.delta)
        return 0;
    mark.delta -= header.delta;
    if (BYTE* const room = m_pLast->m_dwUsed >= kHeaderSize ? GrowLastBlock(m_dwEntrySize) : nullptr) {
        CopyEntry(room - kHeaderSize, entry, m_dwEntrySize);
        std::memcpy(room + m_dwEntrySize - kHeaderSize, &mark, kHeaderSize);
        m_dwPosition -= kHeaderSize;
    } else if (InsertBytes(EntryBytes(), entry)) {
        WriteEndMark(&mark);
    } else {
        return 0;
    }
    m_header = header;
    m_nState = kCursorOnEntry;
    m_dwEntryEnd = m_dwPosition;
    m_dwClock = kMaxClock - mark.delta;
    m_dwExtra = 0;
    return 1;
}

int CStreamBuffer::InsertEntry(void* entry, int after) {
    tagEventEntryHdr mark;
    if (!IsCreated() || !entry || IsReserved(HeaderOf(entry).tag) || !EndMark(mark))
        return 0;

    const bool before = m_nState == kCursorOnEntry && !after;
    const bool between = m_nState == kCursorBetween;
    const DWORD delta = before ? m_header.delta : m_dwExtra;
    DWORD position = m_dwEntryEnd;
    if (before)
        position -= m_dwEntrySize;
    else if (m_nState == kCursorAtEnd)
        position = EntryBytes();

    // The time that the new entry takes comes off the entry after it, except at the top and at the end: there it
    // lengthens the stream, also when entries follow (a rest at the top is left by removing the first entry, and who
    // goes on to insert there keeps the distances after it).
    tagEventEntryHdr following{};
    SeekTo(position);
    const bool fromFollowing = before || between;
    if (fromFollowing ? !ReadHeader(&following, 1) || delta > following.delta : delta > mark.delta) {
        ResetPosition();
        return 0;
    }

    const DWORD given = HeaderOf(entry).delta;
    SetDelta(entry, delta);
    following.delta -= delta;
    const bool isWithin = fromFollowing && InsertWithinBlock(entry, following);
    if (!isWithin && !InsertBytes(position, entry)) {
        SetDelta(entry, given);
        return 0;
    }
    m_dwEntryEnd = m_dwPosition;
    if (fromFollowing && !isWithin)
        WriteHeader(&following, 1);
    else if (!fromFollowing && delta)
        OffsetEndDelta(-static_cast<LONG>(delta));
    m_header = HeaderOf(entry);
    m_dwClock += m_dwExtra;
    m_dwExtra = 0;
    m_nState = kCursorOnEntry;
    return 1;
}

int CStreamBuffer::RemoveEntry() {
    if (m_nState != kCursorOnEntry || !IsCreated())
        return 0;
    const DWORD delta = m_header.delta;
    m_dwEntryEnd -= m_dwEntrySize;
    SeekTo(m_dwEntryEnd);
    Remove(m_dwEntrySize);
    tagEventEntryHdr following;
    if (delta && ReadHeader(&following, 1)) {
        following.delta += delta;
        WriteHeader(&following, 1);
        m_dwClock -= delta;
        m_dwExtra = delta;
    }
    m_nState = m_dwEntryEnd ? kCursorBetween : kCursorAtTop;
    RestoreEntry();
    return 1;
}

int CStreamBuffer::StoreLocation(tagLocateMarker* marker) const {
    if (!marker)
        return 0;
    *marker = {m_nState, m_dwEntryEnd, m_dwClock, m_dwExtra};
    return 1;
}

int CStreamBuffer::RestoreLocation(const tagLocateMarker* marker, int) {
    if (!marker || !IsCreated())
        return 0;
    if (marker->state == kCursorAtEnd) {
        SeekToEnd();
        if (m_dwClock == marker->clock)
            m_dwExtra = marker->extra;
        return 1;
    }
    // Only the fields: the bytes are sought once, from where they stand, so that a walk that comes back stays cheap.
    m_nState = kCursorAtTop;
    m_dwClock = m_dwExtra = 0;
    m_dwEntryEnd = std::min(marker->entryEnd, EntryBytes()) / m_dwEntrySize * m_dwEntrySize;
    if (marker->state == kCursorBetween) {
        m_nState = kCursorBetween;
    } else if (marker->state == kCursorOnEntry && m_dwEntryEnd) {
        m_nState = kCursorOnEntry;
    } else {
        m_dwEntryEnd = 0;
    }
    if (m_dwEntryEnd)
        m_dwClock = marker->entryEnd > EntryBytes() ? GetStreamLength() : marker->clock;
    if (m_nState != kCursorOnEntry)
        m_dwExtra = marker->extra;
    RestoreEntry();
    return 1;
}

int CStreamBuffer::InsertTime(DWORD) { return 1; }

int CStreamBuffer::RemoveTime(DWORD ticks) { return InsertTime(ticks); }

int CStreamBuffer::ReadHeader(tagEventEntryHdr* header, int stay) {
    if (const BYTE* const bytes = BytesHere(kHeaderSize)) {
        *header = HeaderOf(bytes);
        m_dwPosition += stay ? 0 : kHeaderSize;
        return 1;
    }
    const DWORD position = m_dwPosition;
    const DWORD count = ReadBytes(header, kHeaderSize);
    if (stay)
        SeekTo(position);
    return count == kHeaderSize;
}

int CStreamBuffer::WriteHeader(const tagEventEntryHdr* header, int stay) {
    if (BYTE* const bytes = BytesHere(kHeaderSize)) {
        std::memcpy(bytes, header, kHeaderSize);
        m_pCurrent->Touch();
        m_dwPosition += stay ? 0 : kHeaderSize;
        return 1;
    }
    const DWORD position = m_dwPosition;
    const DWORD count = Overwrite(header, kHeaderSize);
    if (stay)
        SeekTo(position);
    return count == kHeaderSize;
}

int CStreamBuffer::ReadEndMark(tagEventEntryHdr* mark) const {
    auto* bytes = reinterpret_cast<char*>(mark);
    DWORD left = kHeaderSize;
    for (const CxShortBuff* block = m_pLast; block && left; block = block->m_pPrev) {
        const DWORD count = std::min(left, block->m_dwUsed);
        left -= count;
        block->Read(block->m_dwUsed - count, bytes + left, count);
    }
    return left == 0;
}

int CStreamBuffer::WriteEndMark(const tagEventEntryHdr* mark) {
    const auto* bytes = reinterpret_cast<const char*>(mark);
    DWORD left = kHeaderSize;
    for (CxShortBuff* block = m_pLast; block && left; block = block->m_pPrev) {
        const DWORD count = std::min(left, block->m_dwUsed);
        left -= count;
        block->Write(block->m_dwUsed - count, bytes + left, count);
    }
    return left == 0;
}

void CStreamBuffer::OffsetEndDelta(LONG delta) {
    tagEventEntryHdr mark;
    if (!EndMark(mark))
        return;
    mark.delta += static_cast<DWORD>(delta);
    WriteEndMark(&mark);
}

void CStreamBuffer::ResetPosition() {
    if (m_dwPosition != m_dwEntryEnd)
        SeekTo(m_dwEntryEnd);
}

void CStreamBuffer::RestoreEntry() {
    if (m_nState == kCursorAtEnd) {
        ReadEndMark(&m_header);
    } else if (m_nState == kCursorAtTop || m_dwEntryEnd < m_dwEntrySize) {
        m_header = {0, kTopTag};
    } else {
        SeekTo(m_dwEntryEnd - m_dwEntrySize);
        ReadHeader(&m_header, 0);
    }
    ResetPosition();
}

int CStreamBuffer::subReadEntry(void* entry) {
    if (ReadBytes(&m_header, kHeaderSize) != kHeaderSize)
        m_header = {0, kEndMarkTag};
    if (m_header.tag == kEndMarkTag)
        return 0;
    const DWORD payload = m_dwEntrySize - kHeaderSize;
    if (!entry) {
        if (payload <= m_pCurrent->m_dwUsed - OffsetInBlock())
            m_dwPosition += payload;
        else
            SeekTo(m_dwPosition + payload);
        return 1;
    }
    std::memcpy(entry, &m_header, kHeaderSize);
    char* rest = static_cast<char*>(entry) + kHeaderSize;
    const DWORD count = ReadBytes(rest, payload);
    std::memset(rest + count, 0, payload - count);
    return 1;
}

int CStreamBuffer::IsValidLocation() const {
    if (m_dwPosition != m_dwEntryEnd)
        return 0;
    switch (m_nState) {
    case kCursorAtTop:
        return m_header.tag == kTopTag && m_dwEntryEnd == 0;
    case kCursorAtEnd:
        return m_header.tag == kEndMarkTag && m_dwEntryEnd == GetSize();
    case kCursorOnEntry:
        return m_dwExtra == 0;
    default:
        return m_nState == kCursorBetween; // its rest is 0 after removing one of several entries at one clock
    }
}

BYTE* CStreamBuffer::BytesHere(DWORD count) {
    if (!m_pCurrent)
        return nullptr;
    LeaveBlockEnd();
    return count <= m_pCurrent->m_dwUsed - OffsetInBlock() ? m_pCurrent->m_pData + OffsetInBlock() : nullptr;
}

DWORD CStreamBuffer::ReadBytes(void* destination, DWORD count) {
    if (const BYTE* const bytes = BytesHere(count)) {
        std::memcpy(destination, bytes, count);
        m_dwPosition += count;
        return count;
    }
    return Read(static_cast<char*>(destination), count);
}

bool CStreamBuffer::InsertBytes(DWORD position, const void* entry) {
    SeekTo(position);
    if (BYTE* const room = InsertRoom(m_dwEntrySize)) {
        CopyEntry(room, entry, m_dwEntrySize);
        return true;
    }
    ResetPosition();
    return false;
}

/// At the position, where the block has room and holds the following entry's header too: then it spans the same ticks
/// as before.
bool CStreamBuffer::InsertWithinBlock(const void* entry, const tagEventEntryHdr& following) {
    const bool isWithin = BytesHere(kHeaderSize) && OffsetInBlock() != 0; // or the block before takes it
    BYTE* const room = isWithin ? InsertRoomWithin(m_dwEntrySize) : nullptr;
    if (!room)
        return false;
    CopyEntry(room, entry, m_dwEntrySize);
    std::memcpy(room + m_dwEntrySize, &following, kHeaderSize);
    return true;
}

DWORD CStreamBuffer::BlockTicks(CxShortBuff& block, DWORD entrySize) {
    if (!block.m_pNext)
        return BlockTree::kNoWeight;
    if (block.m_dwDigest == CxShortBuff::kNoDigest) {
        if (block.m_dwUsed % entrySize)
            return BlockTree::kNoWeight;
        uint64_t sum = 0;
        for (DWORD offset = 0; offset < block.m_dwUsed; offset += entrySize) {
            const tagEventEntryHdr header = HeaderOf(block.m_pData + offset);
            if (header.tag == kEndMarkTag)
                return BlockTree::kNoWeight;
            sum += header.delta;
        }
        if (sum > kMaxClock)
            return BlockTree::kNoWeight;
        block.m_dwDigest = static_cast<DWORD>(sum);
    }
    return block.m_dwDigest;
}

/// Straight to a far block, before everything at the target. How far it is can be told by the ticks, as if they were
/// spread evenly; where they are not, the walk that follows finds it.
void CStreamBuffer::LeapTo(DWORD target) {
    if (m_nState == kCursorAtEnd && target >= m_dwClock)
        return;
    const uint64_t distance = target > m_dwClock ? target - m_dwClock : m_dwClock - target;
    if (distance * GetSize() <= uint64_t{kNearBlocks} * m_dwBlockSize * GetStreamLength() || !SkipByTree(target))
        return;
    const DWORD from = m_dwEntryEnd;
    SkipEntriesForward(target);
    if (m_dwEntryEnd == from)
        RestoreEntry();
}

void CStreamBuffer::SkipForward(DWORD target) {
    if (m_nState == kCursorAtEnd)
        return;
    ResetPosition();
    SkipEntriesForward(target);
    LeaveBlockEnd();
    const DWORD from = m_dwEntryEnd;
    DWORD passed = 0;
    // What has no weight is never less.
    while (m_dwPosition == m_dwCurrentStart && BlockTicks(*m_pCurrent, m_dwEntrySize) < target - m_dwClock) {
        if (++passed > kNearBlocks && SkipByTree(target))
            break;
        m_dwClock += m_pCurrent->m_dwDigest;
        m_dwEntryEnd = m_dwPosition += m_pCurrent->m_dwUsed;
        EnterNextBlock();
    }
    if (m_dwEntryEnd != from) {
        m_nState = kCursorOnEntry;
        RestoreEntry();
        SkipEntriesForward(target);
    }
}

void CStreamBuffer::SkipBackward(DWORD target) {
    if (m_nState != kCursorOnEntry)
        return;
    ResetPosition();
    if (m_pCurrent->m_pPrev && m_dwPosition == m_dwCurrentStart)
        EnterPrevBlock();
    const DWORD from = m_dwEntryEnd;
    DWORD passed = 0;
    while (m_pCurrent->m_pPrev && OffsetInBlock() == m_pCurrent->m_dwUsed) {
        const DWORD ticks = BlockTicks(*m_pCurrent, m_dwEntrySize);
        if (ticks > m_dwClock - target || (++passed > kNearBlocks && SkipByTree(target)))
            break;
        m_dwClock -= ticks;
        m_dwEntryEnd = m_dwPosition -= m_pCurrent->m_dwUsed;
        EnterPrevBlock();
    }
    if (m_dwEntryEnd != from)
        RestoreEntry();
    SkipEntriesBackward(target);
}

/// To the last block's beginning before which everything lies before the target. False without a tree.
bool CStreamBuffer::SkipByTree(DWORD target) {
    const BlockTree::Place place = Tree().FindWeight(target, &BlockTicks, m_dwEntrySize);
    if (!place.block)
        return false;
    EnterBlock(place.block, place.start);
    m_dwEntryEnd = m_dwPosition = place.start;
    m_dwClock = place.weight;
    m_nState = place.start ? kCursorOnEntry : kCursorAtTop;
    return true;
}

void CStreamBuffer::SkipEntriesForward(DWORD target) {
    LeaveBlockEnd();
    const BYTE* const first = m_pCurrent->m_pData + OffsetInBlock();
    const DWORD size = m_dwEntrySize;
    const DWORD whole = (m_pCurrent->m_dwUsed - OffsetInBlock()) / size * size;
    DWORD passed = 0;
    DWORD left = target - m_dwClock; // ticks
    while (passed < whole) {
        const tagEventEntryHdr header = HeaderOf(first + passed);
        if (header.delta >= left || header.tag == kEndMarkTag)
            break;
        left -= header.delta;
        passed += size;
    }
    if (!passed)
        return;
    m_header = HeaderOf(first + passed - size);
    m_dwClock = target - left;
    m_dwEntryEnd = m_dwPosition += passed;
    m_nState = kCursorOnEntry;
}

/// Whether the entry after the cursor is known to lie behind the target, so that there is no need to go there and back.
bool CStreamBuffer::IsNextBehind(DWORD target) {
    ResetPosition();
    const BYTE* const next = BytesHere(kHeaderSize);
    return next && HeaderOf(next).tag != kEndMarkTag && HeaderOf(next).delta > target - m_dwClock;
}

void CStreamBuffer::SkipEntriesBackward(DWORD target) {
    if (m_nState != kCursorOnEntry)
        return;
    const DWORD size = m_dwEntrySize;
    const BYTE* const end = m_pCurrent->m_pData + OffsetInBlock(); // of the current entry
    DWORD passed = 0;
    DWORD clock = m_dwClock;
    while (OffsetInBlock() - passed >= 2 * size && clock >= target) {
        passed += size;
        clock -= HeaderOf(end - passed).delta;
    }
    if (!passed)
        return;
    m_header = HeaderOf(end - passed - size);
    m_dwClock = clock;
    m_dwEntryEnd = m_dwPosition -= passed;
}
