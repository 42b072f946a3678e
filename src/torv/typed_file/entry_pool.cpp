#include "torv/typed_file/entry_pool.h"

#include <new>

namespace {

constexpr std::size_t kMostBytes = 0x7FFFFFFF; // of a text

} // namespace

namespace torv {

std::string_view EntryPool::Keep(std::unique_ptr<char[]> text, std::size_t size) {
    return {m_kept.emplace_back(std::move(text)).get(), size};
}

EntryPool::Place EntryPool::Add(std::string_view key, std::string_view value, bool areKept) {
    if (m_free == kNone)
        MakeFree();
    const Place place = m_free;
    Entry& entry = At(place);
    SetTexts(entry, key, value, areKept);
    m_free = entry.next;
    return place;
}

void EntryPool::MakeFree() {
    const std::size_t made = m_blocks.size() * kInBlock;
    if (made + kInBlock > kNone)
        throw std::bad_alloc();
    m_blocks.push_back(std::make_unique_for_overwrite<Entry[]>(kInBlock));
    for (std::size_t i = kInBlock; i-- > 0; m_free = static_cast<Place>(made + i)) {
        Entry& entry = m_blocks.back()[i];
        entry.hasOwnText = false;
        entry.next = m_free;
    }
}

void EntryPool::SetTexts(Entry& entry, std::string_view key, std::string_view value, bool areKept) {
    const char* text = key.data();
    std::size_t valueAt = static_cast<std::size_t>(value.data() - key.data());
    if (!areKept) {
        if (key.size() > kMostBytes || value.size() > kMostBytes)
            throw std::bad_alloc();
        char* const own = new char[key.size() + value.size()];
        key.copy(own, key.size());
        value.copy(own + key.size(), value.size());
        text = own;
        valueAt = key.size();
        ++m_ownTexts;
    }
    DeleteOwnText(entry);
    entry.text = text;
    entry.keySize = static_cast<std::uint32_t>(key.size());
    entry.valueAt = static_cast<std::uint32_t>(valueAt);
    entry.valueSize = static_cast<std::uint32_t>(value.size()) & kMostBytes;
    entry.hasOwnText = !areKept;
}

void EntryPool::DeleteOwnText(Entry& entry) {
    if (!entry.hasOwnText)
        return;
    delete[] entry.text;
    entry.hasOwnText = false;
    --m_ownTexts;
}

void EntryPool::Remove(Place first, Place last) {
    for (Place place = first; m_ownTexts && place != kNone; place = place == last ? kNone : At(place).next)
        DeleteOwnText(At(place));
    At(last).next = m_free;
    m_free = first;
}

} // namespace torv
