#include "library.h"

namespace editor {

namespace songs = torv::songs;

namespace {

constexpr songs::IconKind kKinds[kIconSlots] = {songs::kAttacks, songs::kReleases, songs::kTransitions,
                                                songs::kVibratos};

std::optional<DWORD> Find(const std::map<std::string, DWORD>& names, const std::string& name) {
    const auto found = names.find(name);
    return found == names.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

Library::Library()
    : m_databases(m_messages), m_dynamics(List(songs::kDynamics, m_dynamicsIds)),
      m_voices(List(songs::kVoices, m_voiceIds)) {
    for (size_t slot = 0; slot < kIconSlots; ++slot)
        m_icons[slot] = List(kKinds[slot], m_iconIds[slot]);
}

std::vector<std::string> Library::List(const songs::IconKind& kind, Names& names) const {
    std::vector<std::string> list;
    for (const songs::Databases::Entry& entry : m_databases.List(kind))
        if (names.emplace(entry.name, entry.id).second)
            list.push_back(entry.name);
    return list;
}

std::optional<DWORD> Library::FindIcon(IconSlot slot, const std::string& name) const {
    return Find(m_iconIds[slot], name);
}
std::optional<DWORD> Library::FindDynamics(const std::string& name) const { return Find(m_dynamicsIds, name); }
std::optional<DWORD> Library::FindVoice(const std::string& name) const { return Find(m_voiceIds, name); }

std::array<std::string, kIconSlots> Library::UsualIcons() const {
    std::array<std::string, kIconSlots> icons;
    for (const IconSlot slot : {kAttack, kRelease})
        icons[slot] = m_icons[slot].empty() ? "" : m_icons[slot].front();
    return icons;
}

} // namespace editor
