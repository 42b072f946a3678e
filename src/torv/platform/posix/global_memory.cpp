#include "torv/platform/posix/global_memory.h"

#include "torv/platform/immortal.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/last_error.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace {

struct FreeBytes {
    void operator()(void* bytes) const { std::free(bytes); }
};

struct Block {
    std::unique_ptr<void, FreeBytes> bytes; // null for a moveable block of no bytes
    bool moveable = false;
    unsigned locks = 0;
};

/// Every live block by its handle.
class BlockTable {
public:
    /// Null, with the table as it was, when there is no memory for the entry.
    HGLOBAL Add(Block block) {
        const std::lock_guard lock(m_mutex);
        const HGLOBAL handle = block.moveable ? NextHandle() : block.bytes.get();
        return torv::OrFail(HGLOBAL(), [&] { return m_blocks.emplace(handle, std::move(block)).first->first; });
    }
    bool Remove(HGLOBAL handle) {
        const std::lock_guard lock(m_mutex);
        return m_blocks.erase(handle) > 0;
    }
    /// Calls `use` with the block, or sets the last error and answers an empty result.
    template <class Use>
    auto With(HGLOBAL handle, Use use) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_blocks.find(handle);
        if (found != m_blocks.end())
            return use(found->second);
        SetLastError(ERROR_INVALID_HANDLE);
        return decltype(use(found->second)){};
    }

private:
    /// Odd, as no allocation's address is, and never used twice: a freed handle names nothing for ever.
    HGLOBAL NextHandle() { return reinterpret_cast<HGLOBAL>(m_next += 2); }

    std::mutex m_mutex;
    std::unordered_map<HGLOBAL, Block> m_blocks;
    std::uintptr_t m_next = 0xFFFF;
};

BlockTable& TheBlocks() { return torv::Immortal<BlockTable>(); }

} // namespace

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes) {
    Block block;
    block.moveable = (flags & GMEM_MOVEABLE) != 0;
    if (bytes <= PTRDIFF_MAX && (bytes > 0 || !block.moveable)) {
        const SIZE_T room = bytes > 0 ? bytes : 1; // a fixed block always has an address
        block.bytes.reset(flags & GMEM_ZEROINIT ? std::calloc(room, 1) : std::malloc(room));
    }
    const bool isWhole = block.bytes || (bytes == 0 && block.moveable);
    const HGLOBAL handle = isWhole ? TheBlocks().Add(std::move(block)) : nullptr;
    if (!handle)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return handle;
}

LPVOID GlobalLock(HGLOBAL memory) {
    return TheBlocks().With(memory, [](Block& block) {
        if (block.moveable && block.bytes)
            ++block.locks;
        return block.bytes.get();
    });
}

BOOL GlobalUnlock(HGLOBAL memory) {
    return TheBlocks().With(memory, [](Block& block) {
        if (!block.moveable)
            return TRUE;
        SetLastError(block.locks ? NO_ERROR : ERROR_NOT_LOCKED);
        return block.locks && --block.locks ? TRUE : FALSE;
    });
}

HGLOBAL GlobalFree(HGLOBAL memory) {
    if (!memory || TheBlocks().Remove(memory))
        return nullptr;
    SetLastError(ERROR_INVALID_HANDLE);
    return memory;
}
