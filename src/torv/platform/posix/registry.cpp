#include "torv/platform/posix/registry.h"

#include "torv/platform/afx/file.h"
#include "torv/platform/library_module.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/resolve_path.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

struct Value {
    std::string name;
    std::string text;
};

struct Key {
    std::string path; // from the root's name on, without a separator at its end
    std::vector<Value> values;
};

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// The files that may have a key, the first that has it counts.
std::vector<std::string> RegistryFiles() {
    if (const std::string only = Variable("TORV_REGISTRY"); !only.empty())
        return {only};
    std::vector<std::string> files;
    if (const std::string config = Variable("XDG_CONFIG_HOME"); !config.empty())
        files.push_back(config + "/torv/registry");
    else if (const std::string home = Variable("HOME"); !home.empty())
        files.push_back(home + "/.config/torv/registry");
    if (const std::string own = torv::LibraryFolder().GetStdString(); !own.empty()) {
        files.push_back(own + "/torv.registry");
        files.push_back(own + "/../share/torv/torv.registry");
    }
    return files;
}

std::string Trimmed(const std::string& text) {
    constexpr const char* kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string Unquoted(const std::string& text) {
    const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return isQuoted ? text.substr(1, text.size() - 2) : text;
}

std::string WithoutEndSeparators(std::string path) {
    while (!path.empty() && path.back() == '\\')
        path.pop_back();
    return path;
}

enum class Presence { None, Implied, Written };

/// Empty when it cannot be read. No stream: where memory runs out, one would answer a part.
std::string ContentOf(const std::string& file) {
    CFile open;
    if (!open.Open(file.c_str(), CFile::modeRead | CFile::shareDenyWrite))
        return {};
    std::string content(static_cast<std::size_t>(open.GetLength()), '\0');
    content.resize(open.Read(content.data(), static_cast<UINT>(content.size())));
    return content;
}

/// Adds the key's values that the file has. A key is implied by those below it.
Presence ReadKey(const std::string& file, Key& key) {
    Presence presence = Presence::None;
    bool isInKey = false;
    const std::string content = ContentOf(file);
    for (std::size_t at = 0; at < content.size();) {
        const std::size_t lineEnd = std::min(content.find('\n', at), content.size());
        const std::string line = Trimmed(content.substr(at, lineEnd - at));
        at = lineEnd + 1;
        if (line.empty() || line[0] == ';' || line[0] == '#')
            continue;
        const std::size_t equals = line.find('=');
        if (line[0] == '[') {
            // The last bracket: the byte may also be the second of a double-byte character.
            const std::size_t end = line.rfind(']');
            const std::string path =
                end == std::string::npos ? std::string() : WithoutEndSeparators(Trimmed(line.substr(1, end - 1)));
            isInKey = torv::SameName(path, key.path);
            if (isInKey)
                presence = Presence::Written;
            else if (presence == Presence::None && path.size() > key.path.size() && path[key.path.size()] == '\\' &&
                     torv::SameName(path.substr(0, key.path.size()), key.path))
                presence = Presence::Implied;
        } else if (isInKey && equals != std::string::npos) {
            key.values.push_back({Trimmed(line.substr(0, equals)), Unquoted(Trimmed(line.substr(equals + 1)))});
        }
    }
    return presence;
}

bool FindKey(Key& key) {
    bool isThere = false;
    for (const std::string& file : RegistryFiles()) {
        const Presence presence = ReadKey(file, key);
        isThere = isThere || presence != Presence::None;
        if (presence == Presence::Written)
            break;
    }
    return isThere;
}

/// The keys that are open, by handle; handles are never used twice.
std::mutex g_mutex;
std::unordered_map<HKEY, Key> g_keys;
ULONG_PTR g_lastHandle = 0;

/// Empty for a handle that names nothing.
std::string PathOf(HKEY key) {
    if (key == HKEY_LOCAL_MACHINE)
        return "HKEY_LOCAL_MACHINE";
    const std::lock_guard lock(g_mutex);
    const auto found = g_keys.find(key);
    return found == g_keys.end() ? std::string() : found->second.path;
}

LSTATUS Give(const std::string& text, LPDWORD type, LPBYTE data, LPDWORD size) {
    const auto needed = static_cast<DWORD>(text.size() + 1);
    const DWORD room = size ? *size : 0;
    if (type)
        *type = REG_SZ;
    if (size)
        *size = needed;
    if (data && room < needed)
        return ERROR_MORE_DATA;
    if (data)
        std::memcpy(data, text.c_str(), needed);
    return ERROR_SUCCESS;
}

LSTATUS Open(HKEY key, LPCSTR subKey, REGSAM access, HKEY& result) {
    Key opened;
    opened.path = PathOf(key);
    if (opened.path.empty())
        return ERROR_INVALID_HANDLE;
    if (access & ~KEY_READ)
        return ERROR_ACCESS_DENIED;
    const std::string below = WithoutEndSeparators(subKey ? subKey : "");
    if (!below.empty())
        opened.path += "\\" + below;
    if (!FindKey(opened) && !below.empty())
        return ERROR_FILE_NOT_FOUND;
    const std::lock_guard lock(g_mutex);
    const auto handle = reinterpret_cast<HKEY>(++g_lastHandle);
    g_keys.emplace(handle, std::move(opened));
    result = handle;
    return ERROR_SUCCESS;
}

} // namespace

LSTATUS RegOpenKeyExA(HKEY key, LPCSTR subKey, [[maybe_unused]] DWORD options, REGSAM access, HKEY* result) {
    if (!result)
        return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    return torv::OrFail(static_cast<LSTATUS>(ERROR_NOT_ENOUGH_MEMORY),
                        [&] { return Open(key, subKey, access, *result); });
}

LSTATUS RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size) {
    if (reserved || (data && !size))
        return ERROR_INVALID_PARAMETER;
    if (key == HKEY_LOCAL_MACHINE)
        return ERROR_FILE_NOT_FOUND; // the root has keys alone
    const std::lock_guard lock(g_mutex);
    const auto found = g_keys.find(key);
    if (found == g_keys.end())
        return ERROR_INVALID_HANDLE;
    for (const Value& value : found->second.values)
        if (torv::SameName(value.name, name ? name : ""))
            return Give(value.text, type, data, size);
    return ERROR_FILE_NOT_FOUND;
}

LSTATUS RegCloseKey(HKEY key) {
    if (key == HKEY_LOCAL_MACHINE)
        return ERROR_SUCCESS; // always open
    const std::lock_guard lock(g_mutex);
    return g_keys.erase(key) ? ERROR_SUCCESS : static_cast<LSTATUS>(ERROR_INVALID_HANDLE);
}
