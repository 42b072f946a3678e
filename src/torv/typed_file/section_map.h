#pragma once

#include <unordered_map>

#include "torv/typed_file/entry_map.h"

/// The sections of a typed file by name, in the order in which they were first added. Owns them: an entry map lives
/// until its section is removed or the section map is emptied. A null text counts as an empty one.
class TORV_API CxSectionMap {
public:
    CxSectionMap() = default;
    virtual ~CxSectionMap();
    CxSectionMap(const CxSectionMap&) = delete;
    CxSectionMap& operator=(const CxSectionMap&) = delete;

    /// The section of this name, made when it is missing; null when memory runs out.
    CxEntryMap* AddNew(const char* name);
    /// 0, with `map` null, when there is no such section.
    int Lookup(const char* name, CxEntryMap*& map) const;
    /// Makes the section when it is missing; 0 only when memory runs out.
    int WriteEntry(const char* section, const char* key, const char* value);
    /// 1 when the section exists, whether or not the key does: a missing key reads as an empty text, and that is how
    /// readers detect it. 0, with `value` untouched, when the section is missing or there is no memory.
    int ReadEntry(CString& value, const char* section, const char* key) const;
    /// 0 when there is no such section, or no such key in it.
    /// @{
    int RemoveSection(const char* name);
    int RemoveEntry(const char* section, const char* key);
    /// @}
    /// Every section with its entries.
    void RemoveAll();

    /// Sections.
    int GetCount() const { return static_cast<int>(m_order.GetCount()); }
    /// Null when there is none; GetNextAssoc yields one and moves on.
    POSITION GetStartPosition() const { return m_order.GetHeadPosition(); }
    /// Throws std::bad_alloc, without having moved on.
    void GetNextAssoc(POSITION& position, CString& name, CxEntryMap*& map) const;

private:
    friend class CxTypedFile; // the text that it reads stays in the pool

    torv::EntryPool& Pool();
    template <class Take>
    void ForEach(Take take) const {
        for (POSITION place = m_order.GetHeadPosition(); place;)
            take(*m_order.GetNext(place));
    }

    std::shared_ptr<torv::EntryPool> m_pool; ///< made with the first section
    CList<CxEntryMap*, CxEntryMap*> m_order{10};
    struct Named {
        POSITION place; ///< in the order
        CxEntryMap* map;
    };
    std::unordered_map<std::string_view, Named> m_places; // its keys are views of the entry maps' names
};
