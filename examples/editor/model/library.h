#pragma once

#include "document.h"

#include <torv/songs/databases.h>

#include <map>
#include <optional>

namespace editor {

/// What the library brings into the editor: its databases, open while this lives, and what it says meanwhile. A host
/// makes one of these at its start and keeps it: icons are encoded by the numbers that they have in open databases, and
/// opening loads the phoneme converters too.
class Library {
public:
    /// Throws torv::songs::SongError without databases.
    Library();

    torv::songs::Databases& Databases() { return m_databases; }
    const torv::songs::Databases& Databases() const { return m_databases; }
    /// In place of message boxes, which would stop the window: what the library had to say since the last time.
    std::vector<std::string> TakeMessages() { return m_messages.Take(); }
    const torv::songs::MessageCatcher& Messages() const { return m_messages; }

    /// The names of all that a palette shows.
    const std::vector<std::string>& Icons(IconSlot slot) const { return m_icons[slot]; }
    const std::vector<std::string>& Dynamics() const { return m_dynamics; }
    const std::vector<std::string>& Voices() const { return m_voices; }

    /// The id of what has this name; nothing for an unknown or an empty one: a song may come from another machine.
    std::optional<DWORD> FindIcon(IconSlot slot, const std::string& name) const;
    std::optional<DWORD> FindDynamics(const std::string& name) const;
    std::optional<DWORD> FindVoice(const std::string& name) const;

    /// What a new note gets: the usual attack and release.
    std::array<std::string, kIconSlots> UsualIcons() const;

private:
    using Names = std::map<std::string, DWORD>;
    std::vector<std::string> List(const torv::songs::IconKind& kind, Names& names) const;

    torv::songs::MessageCatcher m_messages; // first: opening the databases may say something already
    torv::songs::Databases m_databases;
    Names m_iconIds[kIconSlots];
    Names m_dynamicsIds;
    Names m_voiceIds;
    std::vector<std::string> m_icons[kIconSlots];
    std::vector<std::string> m_dynamics;
    std::vector<std::string> m_voices;
};

} // namespace editor
