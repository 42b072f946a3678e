#include "torv/typed_file/section_map.h"

#include <memory>
#include <new>

CxSectionMap::~CxSectionMap() { RemoveAll(); }

torv::EntryPool& CxSectionMap::Pool() {
    if (!m_pool)
        m_pool = std::make_shared<torv::EntryPool>();
    return *m_pool;
}

CxEntryMap* CxSectionMap::AddNew(const char* name) {
    CxEntryMap* map = nullptr;
    if (Lookup(name, map))
        return map;
    try {
        Pool();
        std::unique_ptr<CxEntryMap> section(new CxEntryMap(name, m_pool));
        const POSITION place = m_order.AddTail(section.get());
        try {
            m_places.emplace(section->GetSectionName(), Named{place, section.get()});
        } catch (const std::bad_alloc&) {
            m_order.RemoveAt(place);
            return nullptr;
        }
        return section.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int CxSectionMap::Lookup(const char* name, CxEntryMap*& map) const {
    const auto found = m_places.find(torv::View(name));
    map = found == m_places.end() ? nullptr : found->second.map;
    return map != nullptr;
}

int CxSectionMap::WriteEntry(const char* section, const char* key, const char* value) {
    CxEntryMap* map = AddNew(section);
    return map ? map->SetAt(key, value) : 0;
}

int CxSectionMap::ReadEntry(CString& value, const char* section, const char* key) const {
    CxEntryMap* map = nullptr;
    if (!Lookup(section, map))
        return 0;
    try {
        value = map->ValueAt(key);
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int CxSectionMap::RemoveSection(const char* name) {
    const auto found = m_places.find(torv::View(name));
    if (found == m_places.end())
        return 0;
    const auto [place, map] = found->second;
    m_places.erase(found);
    m_order.RemoveAt(place);
    delete map;
    return 1;
}

int CxSectionMap::RemoveEntry(const char* section, const char* key) {
    CxEntryMap* map = nullptr;
    return Lookup(section, map) ? map->RemoveEntry(key) : 0;
}

void CxSectionMap::RemoveAll() {
    m_places.clear();
    while (!m_order.IsEmpty())
        delete m_order.RemoveHead();
    m_pool.reset();
}

void CxSectionMap::GetNextAssoc(POSITION& position, CString& name, CxEntryMap*& map) const {
    map = nullptr;
    if (!position)
        return;
    POSITION next = position;
    CxEntryMap* const section = m_order.GetNext(next);
    name = section->GetSectionName();
    map = section;
    position = next;
}
