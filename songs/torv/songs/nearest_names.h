#pragma once

#include "torv/songs/export.h"

#include <optional>
#include <string>
#include <vector>

namespace torv::songs {

/// The index of a name, whatever the case of its (ASCII) letters, or of the only one that begins so. One of just that
/// spelling comes first.
TORV_SONGS_API std::optional<size_t> FindName(const std::vector<std::string>& names, const std::string& wanted);

/// "did you mean A, B or C?" with the names that take the fewest changes to get to; all of them when there are few.
TORV_SONGS_API std::string SuggestNames(const std::vector<std::string>& names, const std::string& wanted);

} // namespace torv::songs
