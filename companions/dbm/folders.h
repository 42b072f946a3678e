/// Where things are. Paths stay bytes as the system's narrow calls take them: a user's folder can have any name.
#pragma once

#include <string>

namespace dbm {

/// `name` in `folder`, its slashes made the system's.
std::string Join(const std::string& folder, const std::string& name);
/// All before the last separator.
std::string FolderOf(const std::string& path);
/// Whether a backslash stands in it as a character, and not as the second byte of one in code page 932.
bool HasBackslash(const std::string& path);
/// The folder with what came with the library.
std::string OwnFolder();
/// The folder with what the user made; it need not exist.
std::string UserFolder();

} // namespace dbm
