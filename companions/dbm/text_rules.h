/// What a host may pass as a text.
#pragma once

#include "failure.h"

#include <cstring>
#include <string>

namespace dbm {

constexpr size_t kLongestText = 1000;

/// A host's text, copied. Fails with DBM_BAD_ARGUMENT.
inline std::string Taken(const char* text) {
    Require(text && strnlen(text, kLongestText + 1) <= kLongestText, DBM_BAD_ARGUMENT);
    return text;
}

inline std::string TakenName(const char* text) {
    std::string name = Taken(text);
    Require(!name.empty(), DBM_BAD_ARGUMENT);
    return name;
}

/// A path, which may be longer than other texts.
inline std::string TakenPath(const char* path) {
    Require(path && *path, DBM_BAD_ARGUMENT);
    return path;
}

} // namespace dbm
