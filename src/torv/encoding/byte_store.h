#pragma once

#include "torv/platform/platform.h"

#include <memory>
#include <vector>

namespace torv {

/// Bytes that are only ever added at the end, and read anywhere at one cost. Nothing moves when it grows.
class ByteStore {
public:
    DWORD GetSize() const { return m_size; }
    /// False when 32 bits of size or the memory run out; a part may then have been added.
    bool Append(const BYTE* bytes, DWORD count);
    /// The count of bytes copied: what there is from `offset` on, at most `count`.
    DWORD Read(DWORD offset, void* destination, DWORD count) const;

private:
    static constexpr DWORD kBlock = 2048;

    std::vector<std::unique_ptr<BYTE[]>> m_blocks;
    DWORD m_size = 0;
};

} // namespace torv
