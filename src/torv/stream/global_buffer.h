#pragma once

#include "torv/platform/platform.h"

/// One contiguous piece of global memory, kept locked, used to hold a whole file. Copies are shallow: both objects name
/// the same memory, and the caller sees to it that only one of them frees it.
class TORV_API CxGlobalBuffer {
public:
    CxGlobalBuffer() = default;
    /// As the Create functions; GetBuffer is null when that fails.
    /// @{
    CxGlobalBuffer(DWORD size, int fixed, int zeroInit);
    CxGlobalBuffer(const char* path, int fixed);
    CxGlobalBuffer(CFile* file, int fixed);
    /// @}
    virtual ~CxGlobalBuffer();
    CxGlobalBuffer(const CxGlobalBuffer&) = default;
    CxGlobalBuffer& operator=(const CxGlobalBuffer&) = default;

    /// Each frees what was held and returns the data, null for size 0, no memory or an unreadable file.
    void* Create(DWORD size, int fixed, int zeroInit);
    /// The whole file at `path`; zeros where a read fails.
    void* Create(const char* path, int fixed);
    /// The whole file from its beginning, wherever its position is.
    void* Create(CFile* file, int fixed);

    /// Frees the memory; GetBuffer is null then.
    void Delete();
    /// The handle, unlocked and from now on the caller's to free; null when empty.
    HGLOBAL Detach();

    /// The locked memory and its bytes; null and 0 when empty.
    /// @{
    void* GetBuffer() const { return m_pData; }
    DWORD GetSize() const { return m_dwSize; }
    /// @}

private:
    HGLOBAL m_hMemory = nullptr;
    void* m_pData = nullptr;
    DWORD m_dwSize = 0;
};
