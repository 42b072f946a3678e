#include "torv/typed_file/entry_map.h"

#include <algorithm>
#include <functional>
#include <new>
#include <string>

namespace {

constexpr std::size_t kFewestBuckets = 8;
constexpr std::size_t kFewestEntries = 4; // in a block; each further block doubles them
constexpr std::size_t kMostDoublings = 6;

std::size_t HashOf(std::string_view key) { return std::hash<std::string_view>()(key); }

CString Text(std::string_view text) { return CString(std::string(text)); }

} // namespace

CxEntryMap::CxEntryMap(const char* name) : m_name(name) {}

CxEntryMap::~CxEntryMap() = default;

int CxEntryMap::SetAt(const char* key, const char* value) {
    try {
        Set(torv::View(key), torv::View(value));
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

void CxEntryMap::Set(std::string_view key, std::string_view value) {
    const std::size_t hash = HashOf(key);
    if (Entry* const found = Find(key, hash)) {
        found->value = Text(value);
        return;
    }
    // All that can fail comes first.
    if (static_cast<std::size_t>(m_count) >= m_buckets.size())
        MakeBuckets();
    if (!m_free)
        MakeFreeEntries();
    Entry& entry = *m_free;
    entry.key = Text(key);
    entry.value = Text(value);
    m_free = entry.sameBucket;
    entry.hash = hash;
    Entry*& bucket = BucketOf(hash);
    entry.sameBucket = bucket;
    bucket = &entry;
    entry.previous = m_last;
    entry.next = nullptr;
    (m_last ? m_last->next : m_first) = &entry;
    m_last = &entry;
    ++m_count;
}

CxEntryMap::Entry* CxEntryMap::Find(std::string_view key, std::size_t hash) const {
    if (m_buckets.empty())
        return nullptr;
    Entry* entry = m_buckets[hash & (m_buckets.size() - 1)];
    while (entry && (entry->hash != hash || entry->key.GetStdString() != key))
        entry = entry->sameBucket;
    return entry;
}

void CxEntryMap::MakeFreeEntries() {
    const std::size_t count = kFewestEntries << std::min(m_blocks.size(), kMostDoublings);
    Entry* const block = m_blocks.emplace_back(std::make_unique<Entry[]>(count)).get();
    for (std::size_t i = count; i-- > 0; m_free = &block[i])
        block[i].sameBucket = m_free;
}

void CxEntryMap::MakeBuckets() {
    m_buckets = std::vector<Entry*>(std::max(kFewestBuckets, 2 * m_buckets.size()));
    for (Entry* entry = m_first; entry; entry = entry->next) {
        Entry*& bucket = BucketOf(entry->hash);
        entry->sameBucket = bucket;
        bucket = entry;
    }
}

int CxEntryMap::Lookup(const char* key, CString& value) const {
    const std::string_view text = torv::View(key);
    const Entry* const found = Find(text, HashOf(text));
    try {
        if (found)
            value = found->value;
        return found != nullptr;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

CString CxEntryMap::ValueAt(const char* key) const {
    const std::string_view text = torv::View(key);
    const Entry* const found = Find(text, HashOf(text));
    return found ? found->value : CString();
}

int CxEntryMap::RemoveEntry(const char* key) {
    const std::string_view text = torv::View(key);
    const std::size_t hash = HashOf(text);
    Entry* const found = Find(text, hash);
    if (!found)
        return 0;
    Entry** link = &BucketOf(hash);
    while (*link != found)
        link = &(*link)->sameBucket;
    *link = found->sameBucket;
    (found->previous ? found->previous->next : m_first) = found->next;
    (found->next ? found->next->previous : m_last) = found->previous;
    --m_count;
    found->key = CString(); // its memory goes now, not with the section
    found->value = CString();
    found->sameBucket = m_free;
    m_free = found;
    return 1;
}

void CxEntryMap::RemoveAll() {
    m_buckets.clear();
    m_first = m_last = m_free = nullptr;
    m_count = 0;
    m_blocks.clear();
}

void CxEntryMap::GetNextAssoc(POSITION& position, CString& key, CString& value) const {
    if (!position)
        return;
    const Entry* const entry = reinterpret_cast<const Entry*>(position);
    key = entry->key;
    value = entry->value;
    position = reinterpret_cast<POSITION>(entry->next);
}
