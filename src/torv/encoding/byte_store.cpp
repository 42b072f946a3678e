#include "torv/encoding/byte_store.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace torv {

bool ByteStore::AppendAcross(const BYTE* bytes, DWORD count) {
    if (count > 0xFFFFFFFF - m_size)
        return false;
    while (count) {
        const DWORD at = m_size % kBlock;
        if (m_size / kBlock == m_blocks.size()) {
            try {
                m_blocks.push_back(std::make_unique_for_overwrite<BYTE[]>(kBlock));
            } catch (const std::bad_alloc&) {
                return false;
            }
        }
        const DWORD piece = std::min(count, kBlock - at);
        std::memcpy(m_blocks.back().get() + at, bytes, piece);
        bytes += piece;
        count -= piece;
        m_size += piece;
    }
    return true;
}

DWORD ByteStore::ReadAcross(DWORD offset, void* destination, DWORD count) const {
    count = std::min(count, m_size - std::min(offset, m_size));
    auto* to = static_cast<BYTE*>(destination);
    for (DWORD left = count; left;) {
        const DWORD at = offset % kBlock;
        const DWORD piece = std::min(left, kBlock - at);
        std::memcpy(to, m_blocks[offset / kBlock].get() + at, piece);
        to += piece;
        offset += piece;
        left -= piece;
    }
    return count;
}

} // namespace torv
