#pragma once

#include "torv/songs/databases.h"
#include "torv/songs/export.h"

#include <string>

namespace torv::songs {

/// The expressions that notes get, by id; 0 for none.
struct Expressions {
    /// 0 for none.
    /// @{
    DWORD attack = 0;
    DWORD release = 0;
    /// @}
    DWORD transition = 0; ///< where a note goes on into the next
    DWORD vibrato = 0;    ///< 0 for none
};

/// What the user names for each: empty for the usual one, "none" for none.
struct ExpressionNames {
    /// Names as `torv icons` lists them.
    /// @{
    std::string attack;
    std::string release;
    std::string transition;
    std::string vibrato;
    /// @}
};

/// Finds them; throws SongError with the nearest names. The usual ones are the databases' first; without being asked
/// for, notes that go on into each other get no transition.
TORV_SONGS_API Expressions FindExpressions(const Databases& databases, const ExpressionNames& names);

/// The expressions as a track's icons. Notes share those that are the same for all.
class NoteIcons {
public:
    /// Makes the icons and puts them into the builder's track, which owns them. The databases must be open as long as
    /// this lives.
    NoteIcons(const Databases& databases, const Expressions& expressions, CCsqBuilder& builder);

    /// Handles in the track; 0 for none.
    /// @{
    DWORD Attack() const { return m_attack; }
    DWORD Release() const { return m_release; }
    DWORD Transition() const { return m_transition; }
    /// @}
    /// A vibrato that sets in late in a note of these ticks and milliseconds, with the ticks from the note's start to
    /// its own in `offset`; 0 for a note that is too short for it.
    DWORD Vibrato(DWORD ticks, DWORD milliseconds, DWORD& offset);

private:
    DWORD Attach(DWORD id);

    const Databases& m_databases;
    CCsqBuilder& m_builder;
    DWORD m_vibrato;
    DWORD m_attack;
    DWORD m_release;
    DWORD m_transition;
};

} // namespace torv::songs
