#pragma once

#include <string>

namespace companion {

/// A variable of the process's own environment; empty when it is not set. A host's C runtime, which may be another one,
/// is not asked.
std::string Environment(const char* name);

} // namespace companion
