#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "torv/platform/platform.h"
#include "torv/typed_file/entry_pool.h"

namespace torv {

/// A text that may be null as a view.
inline std::string_view View(const char* text) { return text ? text : ""; }
/// A view as a text of its own.
inline CString Text(std::string_view text) { return {text.data(), static_cast<int>(text.size())}; }

} // namespace torv

/// One section of a typed file: its name, and its keys with their values in the order in which each key was first set.
/// Texts are compared byte by byte; a null text counts as an empty one.
class TORV_API CxEntryMap {
public:
    /// A section of this name without entries. Throws std::bad_alloc.
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
    /// 0 when there is no such key.
    int RemoveEntry(const char* key);
    /// Every entry; the name stays.
    void RemoveAll();

    /// Entries; the section's name, valid as long as the map.
    /// @{
    int GetCount() const { return m_count; }
    const char* GetSectionName() const { return m_name; }
    /// @}

    /// Null when there is no entry. GetNextAssoc yields one and moves on; after the last, `position` is null. Throws
    /// std::bad_alloc, without having moved on.
    POSITION GetStartPosition() const { return PositionOf(m_first); }
    /// See GetStartPosition.
    void GetNextAssoc(POSITION& position, CString& key, CString& value) const;

private:
    friend class CxSectionMap; // its sections share a pool
    friend class CxTypedFile;  // its lines are parts of a text that is kept
    using Place = torv::EntryPool::Place;
    using Entry = torv::EntryPool::Entry;
    static constexpr Place kNone = torv::EntryPool::kNone;

    CxEntryMap(const char* name, std::shared_ptr<torv::EntryPool> pool);

    void Set(std::string_view key, std::string_view value, bool areKept);
    /// Where an entry is found, by its key's hash. Two whose way begins at one slot stand one after the other, and what
    /// lies between a slot and its beginning is never free.
    struct Slot {
        std::uint32_t hash;
        Place place; ///< kNone: free
    };

    size_t SlotAfter(size_t slot) const { return (slot + 1) & (m_slots.size() - 1); }
    size_t SlotOf(std::string_view key, std::uint32_t hash) const;
    Place Find(std::string_view key) const;
    void MakeSlots();
    void FreeSlot(size_t slot);
    /// Views of each key and value in turn.
    template <class Take>
    void ForEach(Take take) const {
        for (Place place = m_first; place != kNone;) {
            const Entry& entry = m_pool->At(place);
            take(entry.Key(), entry.Value());
            place = entry.next;
        }
    }
    static POSITION PositionOf(Place place) {
        return place == kNone ? nullptr : reinterpret_cast<POSITION>(static_cast<std::uintptr_t>(place) + 1);
    }

    CString m_name;
    std::shared_ptr<torv::EntryPool> m_pool;
    int m_count = 0;
    Place m_first = kNone;
    Place m_last = kNone;
    std::vector<Slot> m_slots; ///< none, or a power of two of them, a quarter of them free
};
