#include "torv/score/cross_reference_map.h"

#include <memory>
#include <new>
#include <utility>

namespace {

std::string_view View(const char* text) { return text ? text : ""; }

} // namespace

struct CCrossReferenceMap::Element {
    Element(DWORD ownId, const char* ownName) : id(ownId), name(ownName) {}
    int GiveName(CString& to) const {
        try {
            to = name;
        } catch (const std::bad_alloc&) {
            return 0;
        }
        return 1;
    }
    int Give(DWORD& toId, CString& toName) const {
        if (!GiveName(toName))
            return 0;
        toId = id;
        return 1;
    }

    DWORD id;
    CString name;
    POSITION position = nullptr;
    IdKeys::KeyList ids; ///< all that find this element, which after SetAt are more than its own
    NameKeys::KeyList names;
};

template <class Key, class Hash>
auto CCrossReferenceMap::Keys<Key, Hash>::Reserve(const Key& key) -> Place& {
    KeyList node(1); // before the table is touched: what follows it cannot fail
    const auto [at, isNew] = m_table.try_emplace(key);
    Place& place = at->second;
    if (isNew) {
        node.front() = &at->first;
        place.listed = node.begin();
        place.unlisted.swap(node);
    }
    return place;
}

template <class Key, class Hash>
void CCrossReferenceMap::Keys<Key, Hash>::Point(Place& place, Element* element, KeyList Element::*keys) noexcept {
    KeyList& from = place.element ? place.element->*keys : place.unlisted;
    KeyList& to = element->*keys;
    to.splice(to.end(), from, place.listed);
    place.element = element;
}

template <class Key, class Hash>
void CCrossReferenceMap::Keys<Key, Hash>::RemoveAll(KeyList& keys) {
    for (const Key* key : keys)
        m_table.erase(m_table.find(*key));
    keys.clear();
}

CCrossReferenceMap::CCrossReferenceMap() = default;
CCrossReferenceMap::~CCrossReferenceMap() { RemoveAll(); }

POSITION CCrossReferenceMap::PositionOf(const Element* element) { return element ? element->position : nullptr; }

auto CCrossReferenceMap::ReserveKeys(DWORD id, const char* name) {
    auto& byId = m_ids.Reserve(id);
    auto& byName = m_names.Reserve(std::string(View(name)));
    return [&byId, &byName](Element* element) noexcept {
        IdKeys::Point(byId, element, &Element::ids);
        NameKeys::Point(byName, element, &Element::names);
    };
}

template <class Link>
POSITION CCrossReferenceMap::Insert(DWORD id, const char* name, Link link) {
    try {
        auto element = std::make_unique<Element>(id, name);
        const auto enterKeys = ReserveKeys(id, name);
        const POSITION position = link(element.get());
        element->position = position;
        enterKeys(element.release()); // the list's from here on
        return position;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

POSITION CCrossReferenceMap::AddHead(DWORD id, const char* name) {
    return Insert(id, name, [this](Element* element) { return m_list.AddHead(element); });
}

POSITION CCrossReferenceMap::AddTail(DWORD id, const char* name) {
    return Insert(id, name, [this](Element* element) { return m_list.AddTail(element); });
}

POSITION CCrossReferenceMap::InsertBefore(POSITION position, DWORD id, const char* name) {
    if (!position)
        return nullptr;
    return Insert(id, name, [&](Element* element) { return m_list.InsertBefore(position, element); });
}

POSITION CCrossReferenceMap::InsertAfter(POSITION position, DWORD id, const char* name) {
    if (!position)
        return nullptr;
    return Insert(id, name, [&](Element* element) { return m_list.InsertAfter(position, element); });
}

void CCrossReferenceMap::SetAt(POSITION position, DWORD id, const char* name) {
    if (!position)
        return;
    CString newName(name);
    const auto enterKeys = ReserveKeys(id, name);
    Element* const element = ElementOf(m_list.GetAt(position));
    element->id = id;
    element->name = std::move(newName);
    enterKeys(element); // the old keys stay: hosts look renamed pairs up by the keys they knew
}

void CCrossReferenceMap::RemoveAt(POSITION position) {
    if (!position)
        return;
    RemoveElementMap(position);
    delete ElementOf(m_list.GetAt(position));
    m_list.RemoveAt(position);
}

int CCrossReferenceMap::RemoveHead() {
    const POSITION head = m_list.GetHeadPosition();
    RemoveAt(head);
    return head != nullptr;
}

int CCrossReferenceMap::RemoveTail() {
    const POSITION tail = m_list.GetTailPosition();
    RemoveAt(tail);
    return tail != nullptr;
}

void CCrossReferenceMap::RemoveAll() {
    m_ids.Clear();
    m_names.Clear();
    while (!m_list.IsEmpty())
        delete ElementOf(m_list.RemoveHead());
}

int CCrossReferenceMap::GetHead(DWORD& id, CString& name) const { return GetAt(m_list.GetHeadPosition(), id, name); }
int CCrossReferenceMap::GetTail(DWORD& id, CString& name) const { return GetAt(m_list.GetTailPosition(), id, name); }

int CCrossReferenceMap::GetAt(POSITION position, DWORD& id, CString& name) const {
    return position ? ElementOf(m_list.GetAt(position))->Give(id, name) : 0;
}

template <class Step>
int CCrossReferenceMap::Walk(POSITION& position, DWORD& id, CString& name, Step step) {
    POSITION next = position;
    if (!position || !ElementOf(step(next))->Give(id, name))
        return 0;
    position = next;
    return 1;
}

int CCrossReferenceMap::GetNext(POSITION& position, DWORD& id, CString& name) const {
    return Walk(position, id, name, [this](POSITION& at) { return m_list.GetNext(at); });
}

int CCrossReferenceMap::GetPrev(POSITION& position, DWORD& id, CString& name) const {
    return Walk(position, id, name, [this](POSITION& at) { return m_list.GetPrev(at); });
}

POSITION CCrossReferenceMap::Find(DWORD id) const { return PositionOf(m_ids.Find(id)); }
POSITION CCrossReferenceMap::Find(const char* name) const { return PositionOf(m_names.Find(View(name))); }

int CCrossReferenceMap::Lookup(DWORD id, CString& name) const {
    const Element* const found = m_ids.Find(id);
    return found ? found->GiveName(name) : 0;
}

int CCrossReferenceMap::Lookup(const char* name, DWORD& id) const {
    const Element* const found = m_names.Find(View(name));
    if (found)
        id = found->id;
    return found != nullptr;
}

void CCrossReferenceMap::AddElementMap(POSITION position, DWORD id, const char* name) {
    if (!position)
        return;
    ReserveKeys(id, name)(ElementOf(m_list.GetAt(position)));
}

void CCrossReferenceMap::RemoveElementMap(POSITION position) {
    if (!position)
        return;
    Element* const element = ElementOf(m_list.GetAt(position));
    m_ids.RemoveAll(element->ids);
    m_names.RemoveAll(element->names);
}
