#include "torv/stream/global_buffer.h"

#include <cstring>

CxGlobalBuffer::CxGlobalBuffer(DWORD size, int fixed, int zeroInit) { Create(size, fixed, zeroInit); }

CxGlobalBuffer::CxGlobalBuffer(const char* path, int fixed) { Create(path, fixed); }

CxGlobalBuffer::CxGlobalBuffer(CFile* file, int fixed) { Create(file, fixed); }

CxGlobalBuffer::~CxGlobalBuffer() { Delete(); }

void* CxGlobalBuffer::Create(DWORD size, int fixed, int zeroInit) {
    Delete();
    if (!size)
        return nullptr;
    const UINT flags = (fixed ? GMEM_FIXED : GMEM_MOVEABLE) | (zeroInit ? GMEM_ZEROINIT : 0u);
    m_hMemory = GlobalAlloc(flags, size);
    m_pData = m_hMemory ? GlobalLock(m_hMemory) : nullptr;
    if (m_pData)
        m_dwSize = size;
    else
        Delete();
    return m_pData;
}

void* CxGlobalBuffer::Create(const char* path, int fixed) {
    Delete();
    CFile file;
    if (!path || !file.Open(path, CFile::modeRead | CFile::shareDenyWrite))
        return nullptr;
    return Create(&file, fixed);
}

void* CxGlobalBuffer::Create(CFile* file, int fixed) {
    Delete();
    if (!file)
        return nullptr;
    DWORD done = 0;
    try {
        const ULONGLONG length = file->GetLength();
        if (!length || length > 0xFFFFFFFF || !Create(static_cast<DWORD>(length), fixed, 0))
            return nullptr;
        file->SeekToBegin();
        done = file->Read(m_pData, m_dwSize);
    } catch (const CFileException&) {
        done = 0; // what could be read stays, as far as it can be told: nothing
    }
    if (m_pData)
        std::memset(static_cast<char*>(m_pData) + done, 0, m_dwSize - done);
    return m_pData;
}

void CxGlobalBuffer::Delete() {
    if (HGLOBAL memory = Detach())
        GlobalFree(memory);
}

HGLOBAL CxGlobalBuffer::Detach() {
    HGLOBAL memory = m_hMemory;
    if (m_pData)
        GlobalUnlock(memory);
    m_hMemory = nullptr;
    m_pData = nullptr;
    m_dwSize = 0;
    return memory;
}
