#include "torv/typed_file/entry_map.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

namespace {

constexpr std::size_t kFewestSlots = 8;

/// Up to eight bytes as a number: the first four and the last four, which may be some of the first; of fewer each one.
std::uint64_t FewBytes(std::string_view text) {
    if (text.size() >= sizeof(std::uint32_t)) {
        std::uint32_t first;
        std::uint32_t last;
        std::memcpy(&first, text.data(), sizeof first);
        std::memcpy(&last, text.data() + text.size() - sizeof last, sizeof last);
        return std::uint64_t{first} << 32 | last;
    }
    std::uint64_t bytes = 0;
    for (const char c : text)
        bytes = bytes << 8 | static_cast<unsigned char>(c);
    return bytes;
}

/// Keys are a few bytes long, so that a general hash takes longer for its call than this does: eight bytes at a time
/// are multiplied by 2^64 over the golden ratio (Knuth, The Art of Computer Programming 3, 6.4) and folded, and at the
/// end once more, so that every bit reaches the lowest ones.
std::uint32_t HashOf(std::string_view key) {
    const auto mix = [](std::uint64_t bits) {
        bits *= 0x9E3779B97F4A7C15;
        return bits ^ bits >> 32;
    };
    std::uint64_t hash = key.size();
    for (; key.size() > sizeof hash; key.remove_prefix(sizeof hash))
        hash = mix(hash ^ FewBytes(key.substr(0, sizeof hash)));
    return static_cast<std::uint32_t>(mix(mix(hash ^ FewBytes(key))));
}

} // namespace

CxEntryMap::CxEntryMap(const char* name) : CxEntryMap(name, std::make_shared<torv::EntryPool>()) {}

CxEntryMap::CxEntryMap(const char* name, std::shared_ptr<torv::EntryPool> pool)
    : m_name(name), m_pool(std::move(pool)) {}

CxEntryMap::~CxEntryMap() { RemoveAll(); }

int CxEntryMap::SetAt(const char* key, const char* value) {
    try {
        Set(torv::View(key), torv::View(value), false);
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

void CxEntryMap::Set(std::string_view key, std::string_view value, bool areKept) {
    const std::uint32_t hash = HashOf(key);
    size_t slot = SlotOf(key, hash);
    if (slot < m_slots.size() && m_slots[slot].place != kNone) {
        m_pool->SetTexts(m_pool->At(m_slots[slot].place), key, value, areKept);
        return;
    }
    // All that can fail comes first.
    if (4 * (static_cast<size_t>(m_count) + 1) > 3 * m_slots.size()) {
        MakeSlots();
        slot = SlotOf(key, hash);
    }
    const Place place = m_pool->Add(key, value, areKept);
    m_slots[slot] = {hash, place};
    Entry& entry = m_pool->At(place);
    entry.previous = m_last;
    entry.next = kNone;
    (m_last == kNone ? m_first : m_pool->At(m_last).next) = place;
    m_last = place;
    ++m_count;
}

/// The key's, or the free one that it would take; of no slots their end.
size_t CxEntryMap::SlotOf(std::string_view key, std::uint32_t hash) const {
    if (m_slots.empty())
        return 0;
    size_t slot = hash & (m_slots.size() - 1);
    while (m_slots[slot].place != kNone &&
           !(m_slots[slot].hash == hash && m_pool->At(m_slots[slot].place).Key() == key))
        slot = SlotAfter(slot);
    return slot;
}

CxEntryMap::Place CxEntryMap::Find(std::string_view key) const {
    return m_slots.empty() ? kNone : m_slots[SlotOf(key, HashOf(key))].place;
}

void CxEntryMap::MakeSlots() {
    std::vector<Slot> before(std::max(kFewestSlots, 2 * m_slots.size()), Slot{0, kNone});
    m_slots.swap(before);
    for (const Slot& each : before) {
        size_t slot = each.hash & (m_slots.size() - 1);
        while (each.place != kNone && m_slots[slot].place != kNone)
            slot = SlotAfter(slot);
        if (each.place != kNone)
            m_slots[slot] = each;
    }
}

/// What would not be found behind a free slot moves up.
void CxEntryMap::FreeSlot(size_t slot) {
    const size_t mask = m_slots.size() - 1;
    for (size_t later = SlotAfter(slot); m_slots[later].place != kNone; later = SlotAfter(later)) {
        const size_t begin = m_slots[later].hash & mask;
        if (((later - begin) & mask) >= ((later - slot) & mask)) {
            m_slots[slot] = m_slots[later];
            slot = later;
        }
    }
    m_slots[slot].place = kNone;
}

int CxEntryMap::Lookup(const char* key, CString& value) const {
    const Place found = Find(torv::View(key));
    try {
        if (found != kNone)
            value = torv::Text(m_pool->At(found).Value());
        return found != kNone;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

CString CxEntryMap::ValueAt(const char* key) const {
    const Place found = Find(torv::View(key));
    return found == kNone ? CString() : torv::Text(m_pool->At(found).Value());
}

int CxEntryMap::RemoveEntry(const char* key) {
    const std::string_view text = torv::View(key);
    const size_t slot = SlotOf(text, HashOf(text));
    const Place found = slot < m_slots.size() ? m_slots[slot].place : kNone;
    if (found == kNone)
        return 0;
    FreeSlot(slot);
    const Entry& entry = m_pool->At(found);
    (entry.previous == kNone ? m_first : m_pool->At(entry.previous).next) = entry.next;
    (entry.next == kNone ? m_last : m_pool->At(entry.next).previous) = entry.previous;
    --m_count;
    m_pool->Remove(found, found);
    return 1;
}

void CxEntryMap::RemoveAll() {
    if (m_count)
        m_pool->Remove(m_first, m_last);
    m_slots.clear();
    m_first = m_last = kNone;
    m_count = 0;
}

void CxEntryMap::GetNextAssoc(POSITION& position, CString& key, CString& value) const {
    if (!position)
        return;
    const Entry& entry = m_pool->At(static_cast<Place>(reinterpret_cast<std::uintptr_t>(position) - 1));
    key = torv::Text(entry.Key());
    value = torv::Text(entry.Value());
    position = PositionOf(entry.next);
}
