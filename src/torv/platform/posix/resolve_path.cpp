#include "torv/platform/posix/resolve_path.h"

#include "torv/platform/path.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <unistd.h>

namespace torv {
namespace {

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

/// The name in the folder that is the same but for case; empty when there is none.
std::string NameIn(const std::string& folder, const std::string& name) {
    const std::unique_ptr<DIR, CloseFolder> stream(opendir(folder.empty() ? "." : folder.c_str()));
    std::string found;
    while (const dirent* entry = stream ? readdir(stream.get()) : nullptr) {
        if (SameName(entry->d_name, name) && (found.empty() || entry->d_name < found))
            found = entry->d_name;
    }
    return found;
}

std::string ResolveByComponent(const std::string& path) {
    std::string resolved;
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        std::string name = path.substr(at, end - at);
        if (!name.empty() && !Exists(resolved + name)) {
            name = NameIn(resolved, name);
            if (name.empty())
                return {};
        }
        resolved += name;
        if (end < path.size())
            resolved += '/';
        at = end + 1;
    }
    return Exists(resolved) ? resolved : std::string();
}

} // namespace

char LowerLetter(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool SameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerLetter(x) == LowerLetter(y); });
}

std::string WithSlashes(std::string path) {
    for (std::size_t at = 0;
         (at = static_cast<std::size_t>(NextSeparator(path.c_str() + at) - path.c_str())) < path.size();)
        path[at++] = '/';
    return path;
}

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string ResolvePath(const std::string& path) {
    if (path.empty() || Exists(path))
        return path;
    const std::string slashed = WithSlashes(path);
    return Exists(slashed) ? slashed : ResolveByComponent(slashed);
}

std::string ResolveNewPath(const std::string& path) {
    const std::string existing = ResolvePath(path);
    return existing.empty() ? NewNamePath(path) : existing;
}

std::string NewNamePath(const std::string& path) {
    const std::string slashed = WithSlashes(path);
    const std::string folder = path.empty() ? std::string() : ResolvePath(FolderOf(slashed));
    if (folder.empty())
        return {};
    const std::size_t slash = slashed.rfind('/');
    return slash == std::string::npos ? slashed : folder + slashed.substr(slash);
}

} // namespace torv
