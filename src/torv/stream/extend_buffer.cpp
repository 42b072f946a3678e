#include "torv/stream/extend_buffer.h"

#include <algorithm>
#include <cstdint>
#include <new>

CExtendBuffer::CExtendBuffer(DWORD blockSize, int flags) { CExtendBuffer::Create(blockSize, flags); }

CExtendBuffer::~CExtendBuffer() { RemoveAll(); }

int CExtendBuffer::Create(DWORD blockSize, int flags) {
    if (m_pFirst)
        return 0;
    m_dwBlockSize = blockSize;
    m_nAllocFlags = flags;
    m_dwPosition = 0;
    if (blockSize)
        m_pCurrent = AddBlock(nullptr);
    return m_pFirst != nullptr;
}

DWORD CExtendBuffer::Seek(LONG offset, int from) {
    int64_t target = offset;
    if (from == 1)
        target += m_dwPosition;
    else if (from == 2)
        target += m_dwSize;
    else if (from != 0)
        return m_dwPosition;
    return SeekTo(static_cast<DWORD>(std::clamp<int64_t>(target, 0, m_dwSize)));
}

DWORD CExtendBuffer::SeekTo(DWORD position) {
    if (!m_pCurrent)
        return 0;
    position = std::min(position, m_dwSize);
    if (position >= m_dwCurrentStart && position - m_dwCurrentStart < m_pCurrent->m_dwUsed) {
        m_dwPosition = position;
        return position;
    }

    const DWORD distance = position < m_dwPosition ? m_dwPosition - position : position - m_dwPosition;
    const DWORD way = std::min({distance, position, m_dwSize - position}) / m_dwBlockSize;
    if (way > kNearBlocks) {
        if (const torv::BlockTree::Place place = Tree().FindByte(position); place.block) {
            EnterBlock(place.block, place.start);
            m_dwPosition = position;
            return position;
        }
    }

    bool forward = true;
    if (position < m_dwPosition) {
        if (position < m_dwPosition / 2) {
            m_pCurrent = m_pFirst;
            m_dwCurrentStart = 0;
        } else {
            forward = false;
        }
    } else if (position - m_dwPosition > m_dwSize - position) {
        m_pCurrent = m_pLast;
        m_dwCurrentStart = m_dwSize - m_pLast->m_dwUsed;
        forward = position == m_dwSize;
    }

    // An empty block holds no position, so the search passes over it.
    const auto holds = [&] {
        return m_dwCurrentStart <= position && position - m_dwCurrentStart < m_pCurrent->m_dwUsed;
    };
    if (forward) {
        while (m_pCurrent->m_pNext && !holds())
            EnterNextBlock();
    } else {
        while (m_pCurrent->m_pPrev && !holds())
            EnterPrevBlock();
    }
    m_dwPosition = position;
    return position;
}

torv::BlockTree& CExtendBuffer::Tree() {
    if (m_tree.IsEmpty())
        m_tree.Build(m_pFirst);
    return m_tree;
}

void CExtendBuffer::EnterBlock(CxShortBuff* block, DWORD start) {
    m_pCurrent = block;
    m_dwCurrentStart = start;
}

DWORD CExtendBuffer::Read(char* destination, DWORD count) {
    if (!m_pCurrent || !destination)
        return 0;
    DWORD done = 0;
    for (;;) {
        const DWORD moved = m_pCurrent->Read(OffsetInBlock(), destination + done, count - done);
        done += moved;
        m_dwPosition += moved;
        if (done == count || !m_pCurrent->m_pNext)
            return done;
        EnterNextBlock();
    }
}

DWORD CExtendBuffer::Write(const char* source, DWORD count) {
    if (!m_pCurrent || !source)
        return 0;
    DWORD done = 0;
    for (;;) {
        const DWORD offset = OffsetInBlock();
        const DWORD used = m_pCurrent->m_dwUsed;
        const uint64_t room = uint64_t{used - offset} + RoomForGrowth();
        const DWORD moved =
            m_pCurrent->Write(offset, source + done, static_cast<DWORD>(std::min<uint64_t>(count - done, room)));
        m_dwSize += m_pCurrent->m_dwUsed - used;
        done += moved;
        m_dwPosition += moved;
        if (done == count || !EnterNextOrNewBlock())
            return done;
    }
}

DWORD CExtendBuffer::Append(const char* source, DWORD count) {
    if (!m_pCurrent || !source)
        return 0;
    SeekTo(m_dwSize);
    return Write(source, count); // the current block is the last one, so this fills it and goes on with new ones
}

DWORD CExtendBuffer::Insert(const char* source, DWORD count) {
    if (!m_pCurrent || !source)
        return 0;
    count = std::min(count, RoomForGrowth());
    if (m_dwPosition == m_dwCurrentStart && m_pCurrent->m_pPrev)
        EnterPrevBlock(); // free room at a block's end is used first

    DWORD left = count;
    while (left) {
        // Every round takes its bytes from the start of the source, so an insert that spills into a further block
        // repeats the first ones there. Callers insert one small entry at a time and never see it; those that insert
        // more have always got this, and stored data holds it.
        DWORD moved = m_pCurrent->Insert(OffsetInBlock(), source, left);
        if (!moved) {
            if (!SplitCurrentBlock(OffsetInBlock()))
                break;
            moved = m_pCurrent->Append(source, left);
        }
        m_dwSize += moved;
        m_dwPosition += moved;
        left -= moved;
        if (left && m_pCurrent->m_pNext)
            EnterNextBlock();
    }
    return count - left;
}

BYTE* CExtendBuffer::InsertRoom(DWORD count) {
    if (!m_pCurrent || count > RoomForGrowth() || !MakeRoom(count))
        return nullptr;
    BYTE* const room = m_pCurrent->InsertRoom(OffsetInBlock(), count);
    m_dwSize += count;
    m_dwPosition += count;
    return room;
}

BYTE* CExtendBuffer::InsertRoomWithin(DWORD count) {
    if (count > m_pCurrent->m_dwCapacity - m_pCurrent->m_dwUsed || count > RoomForGrowth())
        return nullptr;
    BYTE* const room = m_pCurrent->InsertRoomWithin(OffsetInBlock(), count);
    m_dwSize += count;
    m_dwPosition += count;
    return room;
}

BYTE* CExtendBuffer::GrowLastBlock(DWORD count) {
    if (!m_pLast || count > m_pLast->m_dwCapacity - m_pLast->m_dwUsed || count > RoomForGrowth())
        return nullptr;
    BYTE* const room = m_pLast->m_pData + m_pLast->m_dwUsed;
    m_pLast->m_dwUsed += count;
    m_pLast->Touch();
    m_dwSize += count;
    m_dwPosition = m_dwSize;
    EnterBlock(m_pLast, m_dwSize - m_pLast->m_dwUsed);
    return room;
}

/// A new block takes the current one's bytes from `keep` on; a position at its end moves onto the new block.
bool CExtendBuffer::SplitCurrentBlock(DWORD keep) {
    CxShortBuff* const later = InsertBlock(m_pCurrent, nullptr, 1);
    if (!later)
        return false;
    const bool isAtEnd = OffsetInBlock() == m_pCurrent->m_dwUsed;
    const DWORD moved = m_pCurrent->m_dwUsed - keep;
    later->Append(reinterpret_cast<const char*>(m_pCurrent->m_pData) + keep, moved);
    m_pCurrent->Delete(keep, moved);
    if (isAtEnd)
        EnterNextBlock();
    return true;
}

DWORD CExtendBuffer::Overwrite(const void* source, DWORD count) {
    if (!m_pCurrent || !source)
        return 0;
    DWORD done = 0;
    while (done < count) {
        LeaveBlockEnd();
        const DWORD held = m_pCurrent->m_dwUsed - OffsetInBlock(); // 0 only at the end of the data
        const DWORD piece = held ? std::min(count - done, held) : count - done;
        const DWORD moved = Write(static_cast<const char*>(source) + done, piece);
        done += moved;
        if (moved < piece)
            break;
    }
    return done;
}

DWORD CExtendBuffer::InsertInOrder(const void* source, DWORD count, DWORD unit) {
    if (!m_pCurrent || !source)
        return 0;
    count = std::min(count, RoomForGrowth()) / unit * unit;
    DWORD done = 0;
    while (done < count && MakeRoom(unit)) {
        const DWORD room = (m_pCurrent->m_dwCapacity - m_pCurrent->m_dwUsed) / unit * unit;
        const DWORD moved =
            m_pCurrent->Insert(OffsetInBlock(), static_cast<const char*>(source) + done, std::min(count - done, room));
        m_dwSize += moved;
        m_dwPosition += moved;
        done += moved;
    }
    return done;
}

/// Makes a block with room for a unit at the position the current one.
bool CExtendBuffer::MakeRoom(DWORD unit) {
    const auto hasRoom = [unit](const CxShortBuff* block) { return block->m_dwCapacity - block->m_dwUsed >= unit; };
    LeaveBlockEnd();
    if (OffsetInBlock() == 0 && m_pCurrent->m_pPrev && hasRoom(m_pCurrent->m_pPrev))
        EnterPrevBlock();
    while (!hasRoom(m_pCurrent)) { // a second time where the block holds no whole units
        const DWORD half = m_pCurrent->m_dwUsed / 2 / unit * unit;
        if (unit > m_dwBlockSize || !SplitCurrentBlock(std::max(half, OffsetInBlock())))
            return false;
    }
    return true;
}

DWORD CExtendBuffer::Remove(DWORD count) {
    if (!m_pCurrent)
        return 0;
    count = std::min(count, m_dwSize);
    DWORD left = count;
    for (;;) {
        const DWORD moved = m_pCurrent->Delete(OffsetInBlock(), left);
        left -= moved;
        m_dwSize -= moved;
        if (!m_pCurrent->m_dwUsed) {
            CxShortBuff* next = RemoveBlock(m_pCurrent);
            if (!next)
                break; // the last block has gone, or it is the only one and stays
            m_pCurrent = next;
        } else if (left && m_pCurrent->m_pNext) {
            EnterNextBlock();
        } else {
            return count - left;
        }
        if (!left)
            return count;
    }
    m_pCurrent = m_pLast;
    m_dwCurrentStart = m_dwSize - m_pLast->m_dwUsed;
    return count - left;
}

DWORD CExtendBuffer::Load(CFile* file, DWORD count, int* error) {
    if (error)
        *error = 0;
    if (!m_pCurrent || !file)
        return 0;
    const DWORD start = m_dwPosition;
    try {
        if (count > 0x7FFFFFFF) {
            const uint64_t length = file->GetLength();
            const uint64_t position = file->GetPosition();
            count = static_cast<DWORD>(std::min<uint64_t>(length > position ? length - position : 0, 0xFFFFFFFF));
        }
        while (count) {
            const DWORD offset = OffsetInBlock();
            const DWORD used = m_pCurrent->m_dwUsed;
            const uint64_t room =
                std::min<uint64_t>(m_pCurrent->m_dwCapacity - offset, uint64_t{used - offset} + RoomForGrowth());
            if (!room) {
                if (!EnterNextOrNewBlock())
                    break;
                continue;
            }
            const auto chunk = static_cast<DWORD>(std::min<uint64_t>(count, room));
            m_pCurrent->Touch();
            const DWORD moved = file->Read(m_pCurrent->m_pData + offset, chunk);
            if (!moved)
                break;
            m_pCurrent->m_dwUsed = std::max(used, offset + moved);
            m_dwSize += m_pCurrent->m_dwUsed - used;
            m_dwPosition += moved;
            count -= moved;
        }
    } catch (const CFileException& exception) {
        if (error)
            *error = exception.m_cause;
    }
    return m_dwPosition - start;
}

DWORD CExtendBuffer::Save(CFile* file, int* error) {
    if (error)
        *error = 0;
    if (!file)
        return 0;
    DWORD written = 0;
    try {
        for (const CxShortBuff* block = m_pFirst; block; block = block->m_pNext) {
            file->Write(block->m_pData, block->m_dwUsed);
            written += block->m_dwUsed;
        }
    } catch (const CFileException& exception) {
        if (error)
            *error = exception.m_cause;
    }
    return written;
}

CxShortBuff* CExtendBuffer::CreateBlock() {
    auto* block = new (std::nothrow) CxShortBuff;
    if (block && !block->Allocate(m_dwBlockSize, m_nAllocFlags)) {
        delete block;
        return nullptr;
    }
    return block;
}

CxShortBuff* CExtendBuffer::AddBlock(CxShortBuff* block) { return InsertBlock(m_pLast, block, 1); }

CxShortBuff* CExtendBuffer::InsertBlock(CxShortBuff* at, CxShortBuff* block, int after) {
    if (!block)
        block = CreateBlock();
    if (!block)
        return nullptr;
    if (at && after) {
        ChainBlock(block, at->m_pNext);
        ChainBlock(at, block);
        m_tree.InsertAfter(at, block);
    } else if (at) {
        m_tree.Clear(); // nothing in the library inserts before a block
        ChainBlock(at->m_pPrev, block);
        ChainBlock(block, at);
    }
    if (!block->m_pPrev)
        m_pFirst = block;
    if (!block->m_pNext)
        m_pLast = block;
    return block;
}

CxShortBuff* CExtendBuffer::RemoveBlock(CxShortBuff* block) {
    if (!block || (!block->m_pPrev && !block->m_pNext))
        return nullptr;
    m_tree.Remove(block);
    CxShortBuff* next = block->m_pNext;
    if (block == m_pFirst)
        m_pFirst = next;
    if (block == m_pLast)
        m_pLast = block->m_pPrev;
    ChainBlock(block->m_pPrev, next);
    delete block;
    return next;
}

void CExtendBuffer::ChainBlock(CxShortBuff* a, CxShortBuff* b) {
    if (a)
        a->m_pNext = b;
    if (b)
        b->m_pPrev = a;
}

void CExtendBuffer::RemoveAll() {
    m_tree.Clear();
    while (m_pLast) {
        CxShortBuff* previous = m_pLast->m_pPrev;
        delete m_pLast;
        m_pLast = previous;
    }
    m_pFirst = m_pCurrent = nullptr;
    m_dwPosition = m_dwBlockSize = m_dwCurrentStart = m_dwSize = 0;
}

void CExtendBuffer::TraceBuffChain(CString&) {}

void CExtendBuffer::EnterNextBlock() {
    m_dwCurrentStart += m_pCurrent->m_dwUsed;
    m_pCurrent = m_pCurrent->m_pNext;
}

void CExtendBuffer::EnterPrevBlock() {
    m_pCurrent = m_pCurrent->m_pPrev;
    m_dwCurrentStart -= m_pCurrent->m_dwUsed;
}

void CExtendBuffer::LeaveBlockEnd() {
    while (OffsetInBlock() == m_pCurrent->m_dwUsed && m_pCurrent->m_pNext)
        EnterNextBlock();
}

bool CExtendBuffer::EnterNextOrNewBlock() {
    if (!m_pCurrent->m_pNext && (!RoomForGrowth() || !AddBlock(nullptr)))
        return false;
    EnterNextBlock();
    return true;
}
