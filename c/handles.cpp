#include "handles.h"

#include <array>
#include <mutex>
#include <string>

namespace torv::c {

namespace {

// A handle: the use of its slot, the slot, and a 1, so that it is neither null nor an address of anything.
constexpr unsigned kIndexBits = 14;
constexpr unsigned kUseBits = sizeof(void*) * 8 - kIndexBits - 1 < 32 ? sizeof(void*) * 8 - kIndexBits - 1 : 32;
constexpr uint32_t kSlots = 1U << kIndexBits;
constexpr uint64_t kUses = uint64_t{1} << kUseBits;
constexpr uint32_t kChunk = 256;
constexpr uint32_t kNoSlot = kSlots;

// A slot's state: the number of its use, and three flags.
constexpr uint64_t kLive = 1;
constexpr uint64_t kControlled = 2;
constexpr uint64_t kRead = 4;
constexpr unsigned kFlagBits = 3;

struct Slot {
    std::atomic<uint64_t> state{0};
    std::atomic<Kind> kind = Kind::None; // as is the next, written while the slot is not live
    std::unique_ptr<Object> object;
    uint32_t nextFree = kNoSlot;
};

struct Table {
    std::array<std::atomic<Slot*>, kSlots / kChunk> chunks{};
    std::mutex mutex; // for what follows
    uint32_t made = 0;
    uint32_t firstFree = kNoSlot; // the one that is free for the longest time comes first
    uint32_t lastFree = kNoSlot;

    Slot& At(uint32_t index) { return chunks[index / kChunk].load(std::memory_order_acquire)[index % kChunk]; }
};

/// Never destroyed: hosts free their handles at any time.
Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

constexpr const char* kNames[] = {"nothing",      "a torv_song",  "a torv_databases",
                                  "a torv_score", "a torv_sound", "a torv_player"};
const char* NameOf(Kind kind) { return kNames[static_cast<size_t>(kind)]; }

struct Place {
    Slot* slot;
    uint32_t index;
    uint64_t use;
};

[[noreturn]] void ThrowBadHandle(const void* handle, Kind kind) {
    throw Failure{TORV_BAD_HANDLE, std::string(handle ? "the handle was freed, or is none" : "the handle is null") +
                                       ": " + NameOf(kind) + " is wanted"};
}

Place Find(const void* handle, Kind kind) {
    const auto value = reinterpret_cast<uintptr_t>(handle);
    const auto index = static_cast<uint32_t>(value >> 1) % kSlots;
    const uint64_t use = static_cast<uint64_t>(value) >> (kIndexBits + 1);
    Slot* const chunk = TheTable().chunks[index / kChunk].load(std::memory_order_acquire);
    if (value % 2 == 0 || !chunk)
        ThrowBadHandle(handle, kind);
    return {&chunk[index % kChunk], index, use};
}

/// Sets `flags` in a slot of this use where `clear` are not set; throws otherwise.
void Change(const Place& place, const void* handle, Kind kind, uint64_t clear, uint64_t flags) {
    uint64_t state = place.slot->state.load(std::memory_order_acquire);
    for (;;) {
        if (state >> kFlagBits != place.use || !(state & kLive))
            ThrowBadHandle(handle, kind);
        if (place.slot->kind != kind)
            throw Failure{TORV_BAD_HANDLE, std::string("the handle is of ") + NameOf(place.slot->kind) + ", and " +
                                               NameOf(kind) + " is wanted"};
        if (state & clear)
            throw Failure{TORV_BUSY, std::string("another call is using the handle of ") + NameOf(kind) +
                                         ": wait until it is over"};
        if (place.slot->state.compare_exchange_weak(state, state | flags, std::memory_order_acq_rel))
            return;
    }
}

} // namespace

Claim::Claim(const void* handle, Kind kind, Use use) : m_use(use) {
    const Place place = Find(handle, kind);
    const uint64_t flag = use == Use::Control ? kControlled : kRead;
    Change(place, handle, kind, flag, flag);
    m_slot = place.slot;
    m_object = place.slot->object.get();
}

Claim::~Claim() {
    static_cast<Slot*>(m_slot)->state.fetch_and(~(m_use == Use::Control ? kControlled : kRead),
                                                std::memory_order_release);
}

void* AddObject(std::unique_ptr<Object> object, Kind kind) {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    uint32_t index = table.firstFree;
    if (index != kNoSlot) {
        table.firstFree = table.At(index).nextFree;
        if (table.firstFree == kNoSlot)
            table.lastFree = kNoSlot;
    } else {
        if (table.made == kSlots)
            throw Failure{TORV_NO_MEMORY, "there are " + std::to_string(kSlots) + " objects: free some of them"};
        index = table.made;
        if (index % kChunk == 0)
            table.chunks[index / kChunk].store(new Slot[kChunk], std::memory_order_release);
        ++table.made;
    }
    Slot& slot = table.At(index);
    slot.kind = kind;
    slot.object = std::move(object);
    const uint64_t use = slot.state.load(std::memory_order_relaxed) >> kFlagBits;
    slot.state.store(use << kFlagBits | kLive, std::memory_order_release);
    return reinterpret_cast<void*>(static_cast<uintptr_t>(use << (kIndexBits + 1) | uint64_t{index} << 1 | 1));
}

std::unique_ptr<Object> TakeObject(const void* handle, Kind kind) {
    if (!handle)
        return nullptr;
    const Place place = Find(handle, kind);
    Change(place, handle, kind, kControlled | kRead, kControlled | kRead);
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    Slot& slot = *place.slot;
    std::unique_ptr<Object> object = std::move(slot.object);
    slot.state.store((place.use + 1) % kUses << kFlagBits, std::memory_order_release);
    slot.nextFree = kNoSlot;
    if (table.lastFree == kNoSlot)
        table.firstFree = place.index;
    else
        table.At(table.lastFree).nextFree = place.index;
    table.lastFree = place.index;
    return object;
}

} // namespace torv::c
