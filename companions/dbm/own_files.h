/// Whole files, read and written at once.
#pragma once

#include <optional>
#include <string>

namespace dbm {

bool Exists(const std::string& path);
/// Nothing when it cannot be read or is larger than anything of ours.
std::optional<std::string> ReadFile(const std::string& path);
/// Replaces a file, with its folders when they are missing. A reader finds the old content or the new, nothing between;
/// a write that fails leaves the old. Fails with DBM_FILE_ERROR.
void WriteFile(const std::string& path, const std::string& content);
bool Rename(const std::string& from, const std::string& to);
void Remove(const std::string& path);

} // namespace dbm
