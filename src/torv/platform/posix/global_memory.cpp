#include "torv/platform/posix/global_memory.h"

#include "torv/platform/immortal.h"
#include "torv/platform/posix/last_error.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

namespace {

struct FreeBytes {
    void operator()(void* bytes) const { std::free(bytes); }
};

struct Block {
    std::unique_ptr<void, FreeBytes> bytes; // null for a moveable block of no bytes
    SIZE_T size = 0;
    bool moveable = false;
    unsigned locks = 0;
};

/// Every live block by its handle, and the handle of every moveable block by its address.
class Table {
public:
    /// Null, with the table as it was, when there is no memory for the entry.
    HGLOBAL Add(Block block) {
        const std::lock_guard lock(m_mutex);
        void* address = block.bytes.get();
        const HGLOBAL handle = block.moveable ? NextHandle() : address;
        const bool hasAddress = block.moveable && address;
        try {
            m_blocks.emplace(handle, std::move(block));
            if (hasAddress)
                m_handles.emplace(address, handle);
            return handle;
        } catch (const std::bad_alloc&) {
            m_blocks.erase(handle);
            return nullptr;
        }
    }
    bool Remove(HGLOBAL handle) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_blocks.find(handle);
        if (found == m_blocks.end())
            return false;
        m_handles.erase(found->second.bytes.get());
        m_blocks.erase(found);
        return true;
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
    HGLOBAL HandleOf(void* address) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_handles.find(address);
        if (found != m_handles.end())
            return found->second;
        return m_blocks.contains(address) ? address : nullptr;
    }

private:
    /// Odd, as no allocation's address is, and never used twice: a freed handle names nothing for ever.
    HGLOBAL NextHandle() { return reinterpret_cast<HGLOBAL>(m_next += 2); }

    std::mutex m_mutex;
    std::unordered_map<HGLOBAL, Block> m_blocks;
    std::unordered_map<void*, HGLOBAL> m_handles;
    std::uintptr_t m_next = 0xFFFF;
};

Table& TheTable() { return torv::Immortal<Table>(); }

} // namespace

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes) {
    Block block;
    block.moveable = (flags & GMEM_MOVEABLE) != 0;
    block.size = bytes;
    if (bytes <= PTRDIFF_MAX && (bytes > 0 || !block.moveable)) {
        const SIZE_T room = bytes > 0 ? bytes : 1; // a fixed block always has an address
        block.bytes.reset(flags & GMEM_ZEROINIT ? std::calloc(room, 1) : std::malloc(room));
    }
    const bool isWhole = block.bytes || (bytes == 0 && block.moveable);
    const HGLOBAL handle = isWhole ? TheTable().Add(std::move(block)) : nullptr;
    if (!handle)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return handle;
}

LPVOID GlobalLock(HGLOBAL memory) {
    return TheTable().With(memory, [](Block& block) {
        if (block.moveable && block.bytes)
            ++block.locks;
        return block.bytes.get();
    });
}

BOOL GlobalUnlock(HGLOBAL memory) {
    return TheTable().With(memory, [](Block& block) {
        if (!block.moveable)
            return TRUE;
        SetLastError(block.locks ? NO_ERROR : ERROR_NOT_LOCKED);
        return block.locks && --block.locks ? TRUE : FALSE;
    });
}

HGLOBAL GlobalFree(HGLOBAL memory) {
    if (!memory || TheTable().Remove(memory))
        return nullptr;
    SetLastError(ERROR_INVALID_HANDLE);
    return memory;
}

SIZE_T GlobalSize(HGLOBAL memory) {
    return TheTable().With(memory, [](Block& block) { return block.size; });
}

HGLOBAL GlobalHandle(LPCVOID address) {
    const HGLOBAL handle = address ? TheTable().HandleOf(const_cast<LPVOID>(address)) : nullptr;
    if (!handle)
        SetLastError(ERROR_INVALID_HANDLE);
    return handle;
}
