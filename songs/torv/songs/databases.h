#pragma once

#include "torv/songs/export.h"
#include "torv/songs/message_catcher.h"

#include <torv/torv.h>

#include <string>
#include <vector>

namespace torv::songs {

/// A kind of icon by what a singer does: the library's number for releases makes a transition and the other way round,
/// and here each has the number that makes it heard.
struct IconKind {
    const char* name; ///< as `torv icons --kind` has it
    int status;       ///< the library's number
};
/// The kinds of icon, by what is heard; voices last.
/// @{
constexpr IconKind kAttacks{"attack", torv::kStatusAttack};
constexpr IconKind kTransitions{"transition", torv::kStatusRelease};
constexpr IconKind kReleases{"release", torv::kStatusTransit};
constexpr IconKind kVibratos{"vibrato", torv::kStatusVibrato};
constexpr IconKind kDynamics{"dynamics", torv::kStatusDynamics};
constexpr IconKind kVoices{"voice", torv::kStatusSinger};
/// @}
constexpr IconKind kIconKinds[] = {kAttacks, kTransitions, kReleases, kVibratos,
                                   kDynamics}; ///< those that notes and dynamics have: all but voices

/// The library's databases, open while the object lives.
class TORV_SONGS_API Databases {
public:
    /// One icon or voice.
    struct Entry {
        DWORD id;         ///< of the icon; a voice's is its singer icon's
        std::string name; ///< UTF-8
    };

    /// Throws SongError when they cannot be opened. What opening told the user otherwise is in the catcher.
    explicit Databases(const MessageCatcher& messages);
    ~Databases();
    Databases(const Databases&) = delete;
    Databases& operator=(const Databases&) = delete;

    /// What this object opened; its own.
    /// @{
    const CQuillDBManager& Manager() const { return m_manager; }
    CVoiceDB& Voices() { return *m_manager.GetVoiceDB(); }
    /// @}

    /// Everything of a kind, presets before users' own.
    std::vector<Entry> List(const IconKind& kind) const;
    /// The id of what has this name, whatever the case of its letters. Throws NameError with the nearest names.
    DWORD Find(const IconKind& kind, const std::string& name) const;
    /// The name of what has this id; empty when there is none.
    std::string NameOf(DWORD id) const;

private:
    CQuillDBManager m_manager;
};

/// Of a singer icon's id: torv::kJapanese or torv::kEnglish.
TORV_SONGS_API int LanguageOfSinger(DWORD id);
/// "Japanese" or "English".
TORV_SONGS_API const char* LanguageName(int language);

} // namespace torv::songs
