#pragma once

#include "torv/platform/platform.h"

#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>

/// An ordered list of (id, name) pairs that is found from either side. Pairs may repeat: a key finds the pair for which
/// it was entered last. Names are compared byte by byte, case counts, and a null name is an empty one. Positions are
/// those of the list; a null one is harmless: nothing happens and the answer is 0. So it is when memory is short, but
/// that SetAt throws std::bad_alloc, with nothing changed. Lookups, insertions and removals take constant time;
/// FindIndex walks from the head.
class TORV_API CCrossReferenceMap : public CObject {
public:
    /// Empty.
    CCrossReferenceMap();
    CCrossReferenceMap(const CCrossReferenceMap&) = delete;
    CCrossReferenceMap& operator=(const CCrossReferenceMap&) = delete;
    ~CCrossReferenceMap() override;

    /// Appends a pair at an end, or beside a position, and enters both keys. Its position; null when memory is short,
    /// and at a null position.
    /// @{
    POSITION AddHead(DWORD id, const char* name);
    POSITION AddTail(DWORD id, const char* name);
    POSITION InsertBefore(POSITION position, DWORD id, const char* name);
    POSITION InsertAfter(POSITION position, DWORD id, const char* name);
    /// @}
    /// Overwrites the pair and enters its new keys. The old id and name go on finding it until it is removed or they
    /// are entered for another.
    void SetAt(POSITION position, DWORD id, const char* name);

    /// Removes the pair with every key that finds it. An earlier pair with the same key is not found by it again.
    void RemoveAt(POSITION position);
    /// 0 when the list is empty.
    int RemoveHead();
    /// As RemoveHead.
    int RemoveTail();
    /// Removes every pair and key.
    void RemoveAll();

    /// 0, with the outputs untouched, when there is no such pair.
    int GetHead(DWORD& id, CString& name) const;
    /// As GetHead.
    /// @{
    int GetTail(DWORD& id, CString& name) const;
    int GetAt(POSITION position, DWORD& id, CString& name) const;
    /// @}
    /// The pair at the position, which moves on to its neighbour (null after the last).
    int GetNext(POSITION& position, DWORD& id, CString& name) const;
    /// As GetNext, backwards.
    int GetPrev(POSITION& position, DWORD& id, CString& name) const;

    /// Null when the list is empty.
    /// @{
    POSITION GetHeadPosition() const { return m_list.GetHeadPosition(); }
    POSITION GetTailPosition() const { return m_list.GetTailPosition(); }
    /// @}
    /// Null out of range.
    POSITION FindIndex(int index) const { return m_list.FindIndex(index); }
    /// Pairs, repeated ones counted each.
    /// @{
    int GetCount() const { return m_list.GetCount(); }
    BOOL IsEmpty() const { return m_list.IsEmpty(); }
    /// @}

    /// Null when the key is not there.
    POSITION Find(DWORD id) const;
    /// By name, as by id.
    POSITION Find(const char* name) const;
    /// The other half of the pair found; 0, with the output untouched, when the key is not there.
    int Lookup(DWORD id, CString& name) const;
    /// As by id.
    int Lookup(const char* name, DWORD& id) const;

protected:
    /// Enters both keys for the position; a key that is there finds this position from now on. Throws as SetAt.
    void AddElementMap(POSITION position, DWORD id, const char* name);
    /// Removes every key that finds the position; the pair stays in the list.
    void RemoveElementMap(POSITION position);

private:
    struct Element;

    struct IdHash {
        size_t operator()(DWORD id) const noexcept { return id >> 4; } // ids come in runs: 16 neighbours to a bucket
    };
    struct NameHash {
        using is_transparent = void;
        size_t operator()(std::string_view name) const noexcept { return std::hash<std::string_view>()(name); }
    };

    /// One side's table. Each element lists the keys that find it, so that they go with it in time that does not depend
    /// on the size of the table; a key that is re-pointed moves from list to list.
    template <class Key, class Hash>
    class Keys {
    public:
        using KeyList = std::list<const Key*>; // the table's own keys

        /// Where a key points.
        struct Place {
            Element* element = nullptr; // null: nowhere yet
            KeyList unlisted;           // the key's node as long as no element has it
            typename KeyList::iterator listed;
        };

        template <class Text>
        Element* Find(const Text& key) const {
            const auto found = m_table.find(key);
            return found == m_table.end() ? nullptr : found->second.element;
        }
        /// The key's place, made when it has none: the step that may throw. The place stays until the key is removed.
        Place& Reserve(const Key& key);
        static void Point(Place& place, Element* element, KeyList Element::*keys) noexcept;
        void RemoveAll(KeyList& keys);
        void Clear() { m_table.clear(); }

    private:
        // The bucket count is part of the interface as the one to begin with; the table grows.
        std::unordered_map<Key, Place, Hash, std::equal_to<>> m_table{17};
    };
    using IdKeys = Keys<DWORD, IdHash>;
    using NameKeys = Keys<std::string, NameHash>;

    static Element* ElementOf(void* data) { return static_cast<Element*>(data); }
    static POSITION PositionOf(const Element* element);
    /// Both keys' places, which may throw; what it answers enters them for an element, which does not.
    auto ReserveKeys(DWORD id, const char* name);
    /// Puts a new element into the list by `link`, which answers its position, and enters its keys.
    template <class Link>
    POSITION Insert(DWORD id, const char* name, Link link);

    template <class Step>
    static int Walk(POSITION& position, DWORD& id, CString& name, Step step);

    CPtrList m_list{10};
    IdKeys m_ids;
    NameKeys m_names;
};
