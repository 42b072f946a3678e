#include "folders.h"

#include "environment.h"
#include "failure.h"

#include <cstdlib>
#include <string_view>
#include <vector>

#if defined(_WIN32)
#include <torv/platform/windows/full_path.h>
#else
#include <dlfcn.h>
#include <unistd.h>
#endif

namespace dbm {

using companion::Environment;

namespace {

#if defined(_WIN32)
bool IsLeadByte(unsigned char byte) { return IsDBCSLeadByte(byte) != 0; }
#else
bool IsLeadByte(unsigned char byte) { return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC); }
#endif

/// The last place of one of these, all of them one byte, as a character of its own: a trail byte of a two-byte
/// character can look like one.
size_t FindLast(const std::string& path, std::string_view characters) {
    size_t last = std::string::npos;
    for (size_t i = 0; i < path.size(); ++i) {
        if (IsLeadByte(static_cast<unsigned char>(path[i])))
            ++i;
        else if (characters.find(path[i]) != std::string_view::npos)
            last = i;
    }
    return last;
}

#if defined(_WIN32)

size_t LastSeparator(const std::string& path) { return FindLast(path, "/\\"); }

/// A text that a system call writes; the call answers how long it is, or would be.
template <typename Call>
std::string Written(Call call) {
    std::vector<char> buffer(MAX_PATH);
    for (;;) {
        const DWORD length = call(buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length < buffer.size())
            return {buffer.data(), length};
        buffer.resize(buffer.size() * 2);
    }
}

std::string Absolute(const std::string& path) {
    return Written([&](char* text, DWORD size) { return torv::FullPathName(path.c_str(), size, text, nullptr); });
}

std::string OwnFile() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const char*>(&OwnFolder), &module);
    return Written([&](char* text, DWORD size) { return torv::ModuleFileName(module, text, size); });
}

std::string DefaultUserFolder() {
    const std::string data = Environment("APPDATA");
    return Join(data.empty() ? "NUL" : data, "torv"); // a user without a folder can use all and keep nothing
}

#else

size_t LastSeparator(const std::string& path) { return path.rfind('/'); }

std::string Absolute(const std::string& path) {
    if (path.starts_with('/'))
        return path;
    std::vector<char> folder(65536);
    Require(getcwd(folder.data(), folder.size()), DBM_FILE_ERROR);
    return Join(folder.data(), path);
}

std::string OwnFile() {
    Dl_info info{};
    Require(dladdr(reinterpret_cast<void*>(&OwnFolder), &info) && info.dli_fname, DBM_FILE_ERROR);
    return info.dli_fname;
}

std::string DefaultUserFolder() {
    const std::string data = Environment("XDG_DATA_HOME"), home = Environment("HOME");
    if (data.empty() && home.empty())
        return "/dev/null/torv"; // a user without a folder can use all and keep nothing
    return Join(data.empty() ? Join(home, ".local/share") : data, "torv");
}

#endif

} // namespace

std::string Join(const std::string& folder, const std::string& name) {
    std::string path = folder + '/' + name;
#if defined(_WIN32)
    // Only what is added: the folder is the system's or the user's own way of writing it.
    for (size_t i = folder.size(); i < path.size(); ++i)
        path[i] = path[i] == '/' ? '\\' : path[i];
#endif
    return path;
}

std::string FolderOf(const std::string& path) {
    const size_t end = LastSeparator(path);
    return end == std::string::npos ? "." : path.substr(0, end);
}

bool HasBackslash(const std::string& path) { return FindLast(path, "\\") != std::string::npos; }

std::string OwnFolder() { return Join(FolderOf(Absolute(OwnFile())), "dbm"); }

std::string UserFolder() {
    const std::string named = Environment("TORV_USER_DATA");
    return Absolute(named.empty() ? DefaultUserFolder() : named);
}

} // namespace dbm
