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
    DWORD slide = 0;      ///< where it glides slowly into the next
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

} // namespace torv::songs
