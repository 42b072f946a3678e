#pragma once

#include <string>
#include <string_view>

/// Names written for a system that reads both separators and any case of letters, found on one that does not.
namespace torv {

/// The path under which an existing file or folder is found: the path itself, then with "/" for "\", then with each
/// component that does not exist taken for the one that differs only in the case of ASCII letters (the first such in
/// byte order). Empty when there is none.
std::string ResolvePath(const std::string& path);

/// Where a file of that name is to be created: in place of the one that ResolvePath finds, as on a system that would
/// not keep two names which differ only in case; else where NewNamePath says.
std::string ResolveNewPath(const std::string& path);

/// The name just as it is spelled in its folder, which is resolved. Empty when that folder does not exist.
std::string NewNamePath(const std::string& path);

/// "/" for "\".
std::string WithSlashes(std::string path);

/// The folder of a path with slashes, ready to be opened: "." for a bare name, "/" for a name in the root.
std::string FolderOf(const std::string& path);

/// Whether two names are the same but for the case of ASCII letters.
bool SameName(std::string_view a, std::string_view b);
char LowerLetter(char c);

} // namespace torv
