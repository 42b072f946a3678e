#include "torv/stream/short_buff.h"

#include <algorithm>
#include <cstring>
#include <new>

CxShortBuff::~CxShortBuff() {
    if (m_hMemory) {
        GlobalUnlock(m_hMemory);
        GlobalFree(m_hMemory);
    } else {
        delete[] m_pData;
    }
}

bool CxShortBuff::Allocate(DWORD capacity, LONG flags) {
    if (m_pData)
        return false;
    if (flags == -1) {
        m_pData = new (std::nothrow) BYTE[capacity];
    } else if (HGLOBAL memory = GlobalAlloc(static_cast<UINT>(flags), capacity)) {
        m_pData = static_cast<BYTE*>(GlobalLock(memory));
        if (m_pData)
            m_hMemory = memory;
        else
            GlobalFree(memory);
    }
    if (!m_pData)
        return false;
    m_dwCapacity = capacity;
    return true;
}

DWORD CxShortBuff::Read(DWORD offset, char* destination, DWORD count) const {
    count = std::min(m_dwUsed - offset, count);
    std::memcpy(destination, m_pData + offset, count);
    return count;
}

DWORD CxShortBuff::Write(DWORD offset, const char* source, DWORD count) {
    count = std::min(m_dwCapacity - offset, count);
    std::memcpy(m_pData + offset, source, count);
    m_dwUsed = std::max(m_dwUsed, offset + count);
    Touch();
    return count;
}

DWORD CxShortBuff::Append(const char* source, DWORD count) { return Write(m_dwUsed, source, count); }

DWORD CxShortBuff::Insert(DWORD offset, const char* source, DWORD count) {
    if (count > m_dwCapacity - m_dwUsed)
        return 0;
    std::memcpy(InsertRoom(offset, count), source, count);
    return count;
}

BYTE* CxShortBuff::InsertRoom(DWORD offset, DWORD count) {
    Touch();
    return InsertRoomWithin(offset, count);
}

BYTE* CxShortBuff::InsertRoomWithin(DWORD offset, DWORD count) {
    BYTE* const room = m_pData + offset;
    std::memmove(room + count, room, m_dwUsed - offset);
    m_dwUsed += count;
    if (m_pLeaf && !m_isOldInTree)
        torv::BlockTree::Grow(*this, count);
    return room;
}

DWORD CxShortBuff::Delete(DWORD offset, DWORD count) {
    count = std::min(m_dwUsed - offset, count);
    std::memmove(m_pData + offset, m_pData + offset + count, m_dwUsed - offset - count);
    m_dwUsed -= count;
    Touch();
    return count;
}
