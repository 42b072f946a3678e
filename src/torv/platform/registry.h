#pragma once

#include "torv/platform/export.h"

#include <optional>
#include <string>

namespace torv {

/// A string value of a key below HKEY_LOCAL_MACHINE, up to its first NUL. Nothing when there is no such key or value,
/// and for a value of another type.
TORV_API std::optional<std::string> ReadMachineString(const char* key, const char* value);

} // namespace torv
