#include "torv/database/entry_map.h"

CxEntryMap::CxEntryMap(const char* name) : m_name(name) {}

CxEntryMap::~CxEntryMap() = default;

int CxEntryMap::SetAt(const char* key, const char* value) {
    const auto found = m_places.find(torv::View(key));
    if (found != m_places.end()) {
        m_order.GetAt(found->second).value = value;
        return 1;
    }
    const POSITION place = m_order.AddTail({key, value});
    m_places.emplace(m_order.GetAt(place).key.GetStdString(), place);
    return 1;
}

int CxEntryMap::Lookup(const char* key, CString& value) const {
    const auto found = m_places.find(torv::View(key));
    if (found == m_places.end())
        return 0;
    value = m_order.GetAt(found->second).value;
    return 1;
}

int CxEntryMap::RemoveEntry(const char* key) {
    const auto found = m_places.find(torv::View(key));
    if (found == m_places.end())
        return 0;
    const POSITION place = found->second;
    m_places.erase(found);
    m_order.RemoveAt(place);
    return 1;
}

void CxEntryMap::RemoveAll() {
    m_places.clear();
    m_order.RemoveAll();
}

void CxEntryMap::GetNextAssoc(POSITION& position, CString& key, CString& value) const {
    if (!position)
        return;
    const Entry& entry = m_order.GetNext(position);
    key = entry.key;
    value = entry.value;
}
