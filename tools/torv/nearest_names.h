#pragma once

#include <optional>
#include <string>
#include <vector>

/// The index of a name, whatever the case of its (ASCII) letters, or of the only one that begins so. One of just that
/// spelling comes first.
std::optional<size_t> FindName(const std::vector<std::string>& names, const std::string& wanted);

/// "did you mean A, B or C?" with the names that take the fewest changes to get to; all of them when there are few.
std::string SuggestNames(const std::vector<std::string>& names, const std::string& wanted);
