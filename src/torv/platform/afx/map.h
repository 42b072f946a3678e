#pragma once

#include "torv/platform/afx/object.h"
#include "torv/platform/afx/position.h"
#include "torv/platform/afx/string.h"
#include "torv/platform/system.h"

#include <unordered_map>

/// A map that is hashed by key and walked in the order in which its keys came, so that a walk is the same on every
/// system. Lookup, insertion and removal take constant time. Copying copies the associations. Throws std::bad_alloc,
/// and the map is then as it was.
template <class KEY, class ARG_KEY, class VALUE, class ARG_VALUE>
class CMap : public CObject {
public:
    /// The block size, in associations, is part of the interface; they are allocated one by one.
    explicit CMap([[maybe_unused]] int blockSize = 10) {}
    /// Copies the associations in their order.
    CMap(const CMap& other) : CMap() {
        for (const Association* at = other.m_first; at; at = at->second.next)
            (*this)[at->first] = at->second.value;
    }
    /// As copying.
    CMap& operator=(const CMap& other) {
        if (this != &other) {
            CMap copy(other);
            m_table.swap(copy.m_table);
            m_first = copy.m_first;
            m_last = copy.m_last;
        }
        return *this;
    }

    /// Associations.
    int GetCount() const { return static_cast<int>(m_table.size()); }
    int GetSize() const { return GetCount(); }       ///< as GetCount
    BOOL IsEmpty() const { return m_table.empty(); } ///< whether GetCount is 0

    /// FALSE, and the value is untouched, for a key that is not there.
    BOOL Lookup(ARG_KEY key, VALUE& value) const {
        const auto found = m_table.find(KEY(key));
        if (found == m_table.end())
            return FALSE;
        value = found->second.value;
        return TRUE;
    }
    /// Sets the key's value; a key that is there keeps its place in the walk.
    void SetAt(ARG_KEY key, ARG_VALUE value) { (*this)[key] = value; }
    /// The key's value; an empty one is put there first when it has none.
    VALUE& operator[](ARG_KEY key) {
        const auto [place, isNew] = m_table.try_emplace(KEY(key));
        if (isNew) {
            place->second.previous = m_last;
            (m_last ? m_last->second.next : m_first) = &*place;
            m_last = &*place;
        }
        return place->second.value;
    }
    /// FALSE for a key that is not there.
    BOOL RemoveKey(ARG_KEY key) {
        const auto found = m_table.find(KEY(key));
        if (found == m_table.end())
            return FALSE;
        const Links& links = found->second;
        (links.previous ? links.previous->second.next : m_first) = links.next;
        (links.next ? links.next->second.previous : m_last) = links.previous;
        m_table.erase(found);
        return TRUE;
    }
    /// No position is good afterwards.
    void RemoveAll() {
        m_table.clear();
        m_first = m_last = nullptr;
    }

    /// Null for an empty map.
    POSITION GetStartPosition() const { return reinterpret_cast<POSITION>(m_first); }
    /// The association at the position, which moves on (null after the last). A null position changes nothing.
    void GetNextAssoc(POSITION& position, KEY& key, VALUE& value) const {
        if (!position)
            return;
        const auto* association = reinterpret_cast<const Association*>(position);
        key = association->first;
        value = association->second.value;
        position = reinterpret_cast<POSITION>(association->second.next);
    }

private:
    struct Links;
    using Association = std::pair<const KEY, Links>;
    struct Links {
        VALUE value{};
        Association* previous = nullptr;
        Association* next = nullptr;
    };

    std::unordered_map<KEY, Links> m_table;
    Association* m_first = nullptr;
    Association* m_last = nullptr;
};

/// Objects by 16-bit number; does not own them.
class TORV_API CMapWordToOb : public CMap<WORD, WORD, CObject*, CObject*> {
public:
    using CMap::CMap;
    ~CMapWordToOb() override;
};
