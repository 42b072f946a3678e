#include "torv/platform/string_table.h"

#include "torv/platform/immortal.h"
#include "torv/platform/system_default.h"

#include <mutex>

namespace torv {
namespace {

/// The tables that live, latest first. They are static objects of any source file.
struct Registry {
    std::mutex mutex;
    StringTable* first = nullptr;
};

Registry& TheRegistry() { return Immortal<Registry>(); }

} // namespace

StringTable::StringTable(std::span<const StringEntry> entries) : m_entries(entries) {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    m_next = registry.first;
    registry.first = this;
}

StringTable::~StringTable() {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    StringTable** at = &registry.first;
    while (*at != this)
        at = &(*at)->m_next;
    *at = m_next;
}

std::optional<std::string> FindStringResource(UINT id) {
    if (auto text = ModuleString(id))
        return text;
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    for (const StringTable* table = registry.first; table; table = table->m_next)
        for (const StringEntry& entry : table->m_entries)
            if (entry.id == id)
                return entry.text;
    return std::nullopt;
}

} // namespace torv
