#pragma once

#include <string_view>
#include <unordered_map>

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

    /// A key that is there keeps its place and takes the new value. Always 1.
    int SetAt(const char* key, const char* value);
    /// 0, with `value` untouched, when there is no such key.
    int Lookup(const char* key, CString& value) const;
    int RemoveEntry(const char* key);
    void RemoveAll();

    int GetCount() const { return static_cast<int>(m_order.GetCount()); }
    const char* GetSectionName() const { return m_name; }

    /// Null when there is no entry. GetNextAssoc yields one and moves on; after the last, `position` is null.
    POSITION GetStartPosition() const { return m_order.GetHeadPosition(); }
    void GetNextAssoc(POSITION& position, CString& key, CString& value) const;

private:
    struct Entry {
        CString key;
        CString value;
    };

    CString m_name;
    CList<Entry, const Entry&> m_order{10};
    std::unordered_map<std::string_view, POSITION> m_places; // its keys are views of those in the list
};
