#pragma once

#include <string>
#include <utility>
#include <vector>

/// Throws WrongUse when a file would be written over one of the inputs or over another output, however the paths are
/// spelled. Outputs are named by their options. Devices and pipes may stand several times.
void RefuseOverwriting(const std::vector<std::string>& inputs,
                       const std::vector<std::pair<const char*, std::string>>& outputs);

/// Whether the path leads to what standard output is.
bool IsStandardOutput(const std::string& path);
