#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "torv/platform/platform.h"

namespace torv {

inline std::string_view View(const char* text) { return text ? text : ""; }

} // namespace torv

/// One section of a typed file: its name, and its keys with their values in the order in which each key was first set.
/// Texts are compared byte by byte; a null text counts as an empty one.
class TORV_API CxEntryMap {
public:
    explicit CxEntryMap(const char* name);
    virtual ~CxEntryMap();
    CxEntryMap(const CxEntryMap&) = delete;
    CxEntryMap& operator=(const CxEntryMap&) = delete;

    /// A key that is there keeps its place and takes the new value. 0, and nothing has changed, only when memory runs
    /// out.
    int SetAt(const char* key, const char* value);
    /// 0, with `value` untouched, when there is no such key or no memory.
    int Lookup(const char* key, CString& value) const;
    /// Empty when there is no such key. Throws std::bad_alloc.
    CString ValueAt(const char* key) const;
    int RemoveEntry(const char* key);
    void RemoveAll();

    int GetCount() const { return m_count; }
    const char* GetSectionName() const { return m_name; }

    /// Null when there is no entry. GetNextAssoc yields one and moves on; after the last, `position` is null. Throws
    /// std::bad_alloc, without having moved on.
    POSITION GetStartPosition() const { return reinterpret_cast<POSITION>(m_first); }
    void GetNextAssoc(POSITION& position, CString& key, CString& value) const;

private:
    friend class CxTypedFile; // its lines are parts of a longer text
    /// A file has hundreds of thousands of entries, so each stands in a block of them and carries its own links.
    struct Entry {
        CString key;
        CString value;
        Entry* next = nullptr;
        Entry* previous = nullptr;
        Entry* sameBucket = nullptr; ///< of a free entry: the next free one
        std::size_t hash = 0;
    };

    void Set(std::string_view key, std::string_view value);
    Entry* Find(std::string_view key, std::size_t hash) const;
    Entry*& BucketOf(std::size_t hash) { return m_buckets[hash & (m_buckets.size() - 1)]; }
    void MakeFreeEntries();
    void MakeBuckets();

    CString m_name;
    int m_count = 0;
    Entry* m_first = nullptr;
    Entry* m_last = nullptr;
    Entry* m_free = nullptr;
    std::vector<Entry*> m_buckets; ///< a power of two of them, more than there are entries
    std::vector<std::unique_ptr<Entry[]>> m_blocks;
};
