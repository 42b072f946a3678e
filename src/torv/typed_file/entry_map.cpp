#include "torv/typed_file/entry_map.h"

#include <algorithm>
#include <functional>
#include <new>
#include <string>

namespace {

constexpr std::size_t kFewestBuckets = 8;

std::uint32_t HashOf(std::string_view key) { return static_cast<std::uint32_t>(std::hash<std::string_view>()(key)); }

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
    if (const Place found = Find(key, hash); found != kNone) {
        m_pool->SetTexts(m_pool->At(found), key, value, areKept);
        return;
    }
    // All that can fail comes first.
    if (static_cast<std::size_t>(m_count) >= m_buckets.size())
        MakeBuckets();
    const Place place = m_pool->Add(key, value, areKept);
    Entry& entry = m_pool->At(place);
    entry.hash = hash;
    Place& bucket = BucketOf(hash);
    entry.sameBucket = bucket;
    bucket = place;
    entry.previous = m_last;
    entry.next = kNone;
    (m_last == kNone ? m_first : m_pool->At(m_last).next) = place;
    m_last = place;
    ++m_count;
}

CxEntryMap::Place CxEntryMap::Find(std::string_view key, std::uint32_t hash) const {
    if (m_buckets.empty())
        return kNone;
    Place place = m_buckets[hash & (m_buckets.size() - 1)];
    while (place != kNone) {
        const Entry& entry = m_pool->At(place);
        if (entry.hash == hash && entry.Key() == key)
            break;
        place = entry.sameBucket;
    }
    return place;
}

void CxEntryMap::MakeBuckets() {
    m_buckets = std::vector<Place>(std::max(kFewestBuckets, 2 * m_buckets.size()), kNone);
    for (Place place = m_first; place != kNone;) {
        Entry& entry = m_pool->At(place);
        entry.sameBucket = std::exchange(BucketOf(entry.hash), place);
        place = entry.next;
    }
}

int CxEntryMap::Lookup(const char* key, CString& value) const {
    const std::string_view text = torv::View(key);
    const Place found = Find(text, HashOf(text));
    try {
        if (found != kNone)
            value = torv::Text(m_pool->At(found).Value());
        return found != kNone;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

CString CxEntryMap::ValueAt(const char* key) const {
    const std::string_view text = torv::View(key);
    const Place found = Find(text, HashOf(text));
    return found == kNone ? CString() : torv::Text(m_pool->At(found).Value());
}

int CxEntryMap::RemoveEntry(const char* key) {
    const std::string_view text = torv::View(key);
    const std::uint32_t hash = HashOf(text);
    const Place found = Find(text, hash);
    if (found == kNone)
        return 0;
    const Entry& entry = m_pool->At(found);
    Place* link = &BucketOf(hash);
    while (*link != found)
        link = &m_pool->At(*link).sameBucket;
    *link = entry.sameBucket;
    (entry.previous == kNone ? m_first : m_pool->At(entry.previous).next) = entry.next;
    (entry.next == kNone ? m_last : m_pool->At(entry.next).previous) = entry.previous;
    --m_count;
    m_pool->Remove(found, found);
    return 1;
}

void CxEntryMap::RemoveAll() {
    if (m_count)
        m_pool->Remove(m_first, m_last);
    m_buckets.clear();
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
