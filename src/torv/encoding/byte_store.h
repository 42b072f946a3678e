#pragma once

#include "torv/platform/platform.h"

#include <cstring>
#include <memory>
#include <vector>

namespace torv {

/// Bytes that are only ever added at the end, and read anywhere at one cost. Nothing moves when it grows.
class ByteStore {
public:
    DWORD GetSize() const { return m_size; }
    /// False when 32 bits of size or the memory run out; a part may then have been added.
    bool Append(const BYTE* bytes, DWORD count) {
        if (!count)
            return true; // and there may be none to look at
        const DWORD at = m_size % kBlock;
        if (at == 0 || count > kBlock - at)
            return AppendAcross(bytes, count);
        std::memcpy(m_blocks.back().get() + at, bytes, count);
        m_size += count;
        return true;
    }
    /// The count of bytes copied: what there is from `offset` on, at most `count`.
    DWORD Read(DWORD offset, void* destination, DWORD count) const {
        const DWORD at = offset % kBlock;
        if (offset >= m_size || count > m_size - offset || count > kBlock - at)
            return ReadAcross(offset, destination, count);
        std::memcpy(destination, m_blocks[offset / kBlock].get() + at, count);
        return count;
    }

private:
    bool AppendAcross(const BYTE* bytes, DWORD count);
    DWORD ReadAcross(DWORD offset, void* destination, DWORD count) const;

    static constexpr DWORD kBlock = 2048;

    std::vector<std::unique_ptr<BYTE[]>> m_blocks;
    DWORD m_size = 0;
};

} // namespace torv
