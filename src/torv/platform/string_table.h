#pragma once

#include "torv/platform/system.h"

#include <optional>
#include <span>
#include <string>

namespace torv {

struct StringEntry {
    UINT id;
    const char* text;
};

/// String resources compiled in: as long as the object lives, its texts are found by FindStringResource. Meant as an
/// object with static storage beside its array of entries, which must outlive it.
class StringTable {
public:
    explicit StringTable(std::span<const StringEntry> entries);
    ~StringTable();
    StringTable(const StringTable&) = delete;
    StringTable& operator=(const StringTable&) = delete;

private:
    friend std::optional<std::string> FindStringResource(UINT id);

    std::span<const StringEntry> m_entries;
    StringTable* m_next = nullptr;
};

/// The text of a string resource: on Windows from the resources of this library's module first, then on both systems
/// from the tables that live, the latest first. Nothing when no one has it.
std::optional<std::string> FindStringResource(UINT id);

} // namespace torv
