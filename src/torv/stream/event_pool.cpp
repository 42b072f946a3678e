#include "torv/stream/event_pool.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <unordered_map>
#include <vector>

namespace torv {
namespace {

// An id is a slot number with a generation above it. A slot's generation moves on when its record is freed, so an old
// id stops naming anything; freed slots are reused in turn, oldest first, so that a generation comes round as late as
// it can.
constexpr DWORD kSlotBits = 22;
constexpr DWORD kMaxSlots = 1u << kSlotBits;
constexpr DWORD kLastGeneration = (1u << (32 - kSlotBits)) - 2; // the highest ids are a stream's reserved tags
constexpr DWORD kNoSlot = 0xFFFFFFFF;

// Chunks are aligned to their size, so that any pointer leads to the only chunk that could hold it.
constexpr DWORD kChunkSlots = 1024;
constexpr uintptr_t kChunkBytes = uintptr_t{kMaxEventRecord} * kChunkSlots;

struct Slot {
    DWORD generation = 1;
    DWORD nextFree = kNoSlot;
    BYTE size = 0; // 0 when free
};

class EventPool {
public:
    void* Allocate(DWORD bytes) {
        if (!bytes || bytes > kMaxEventRecord || (m_firstFree == kNoSlot && !Grow()))
            return nullptr;
        const DWORD slot = m_firstFree;
        m_firstFree = m_slots[slot].nextFree;
        m_slots[slot].size = static_cast<BYTE>(bytes);
        ++m_live;
        return std::memset(Memory(slot), 0, kMaxEventRecord);
    }

    DWORD IdOf(const void* record) const {
        const auto address = reinterpret_cast<uintptr_t>(record);
        const auto chunk = m_chunkAt.find(address / kChunkBytes);
        if (chunk == m_chunkAt.end() || address % kMaxEventRecord)
            return 0;
        const DWORD slot = chunk->second * kChunkSlots + static_cast<DWORD>(address % kChunkBytes / kMaxEventRecord);
        return m_slots[slot].size ? m_slots[slot].generation << kSlotBits | slot : 0;
    }

    /// The live slot that `id` names, else kNoSlot.
    DWORD SlotOf(DWORD id) const {
        const DWORD slot = id % kMaxSlots;
        const bool live = slot < m_slots.size() && m_slots[slot].size && m_slots[slot].generation == id >> kSlotBits;
        return live ? slot : kNoSlot;
    }

    BYTE* Memory(DWORD slot) const {
        return m_chunks[slot / kChunkSlots] + uintptr_t{slot % kChunkSlots} * kMaxEventRecord;
    }

    DWORD Size(DWORD slot) const { return m_slots[slot].size; }
    DWORD Live() const { return m_live; }

    void Free(DWORD slot) {
        Slot& freed = m_slots[slot];
        freed.size = 0;
        freed.generation = freed.generation == kLastGeneration ? 1 : freed.generation + 1;
        Enqueue(slot);
        --m_live;
    }

private:
    void Enqueue(DWORD slot) {
        m_slots[slot].nextFree = kNoSlot;
        if (m_firstFree == kNoSlot)
            m_firstFree = slot;
        else
            m_slots[m_lastFree].nextFree = slot;
        m_lastFree = slot;
    }

    bool Grow() {
        const auto first = static_cast<DWORD>(m_slots.size());
        if (first == kMaxSlots)
            return false;
        auto* chunk = static_cast<BYTE*>(::operator new (kChunkBytes, std::align_val_t{kChunkBytes}, std::nothrow));
        if (!chunk)
            return false;
        try {
            m_slots.resize(first + kChunkSlots);
            m_chunks.push_back(chunk);
            m_chunkAt.emplace(reinterpret_cast<uintptr_t>(chunk) / kChunkBytes, first / kChunkSlots);
        } catch (const std::bad_alloc&) {
            m_slots.resize(first);
            m_chunks.resize(first / kChunkSlots);
            ::operator delete (chunk, std::align_val_t{kChunkBytes});
            return false;
        }
        for (DWORD slot = first; slot < first + kChunkSlots; ++slot)
            Enqueue(slot);
        return true;
    }

    std::vector<BYTE*> m_chunks;
    std::vector<Slot> m_slots;
    std::unordered_map<uintptr_t, DWORD> m_chunkAt;
    DWORD m_firstFree = kNoSlot;
    DWORD m_lastFree = kNoSlot;
    DWORD m_live = 0;
};

/// Never destroyed: a host's own static songs may outlive the library's statics. In place, so that its making needs no
/// memory.
EventPool& Pool() {
    static union Kept {
        Kept() : pool() {}
        ~Kept() {}
        EventPool pool;
    } kept;
    return kept.pool;
}

} // namespace

void* AllocateEventRecord(DWORD bytes) { return Pool().Allocate(bytes); }

DWORD EventIdOf(const void* record) { return Pool().IdOf(record); }

tagEventHeader* EventRecordOf(DWORD id) {
    const DWORD slot = Pool().SlotOf(id);
    return slot == kNoSlot ? nullptr : reinterpret_cast<tagEventHeader*>(Pool().Memory(slot));
}

DWORD EventRecordSize(DWORD id) {
    const DWORD slot = Pool().SlotOf(id);
    return slot == kNoSlot ? 0 : Pool().Size(slot);
}

void FreeEventRecord(DWORD id) {
    const DWORD slot = Pool().SlotOf(id);
    if (slot != kNoSlot)
        Pool().Free(slot);
}

DWORD LiveEventRecords() { return Pool().Live(); }

} // namespace torv
