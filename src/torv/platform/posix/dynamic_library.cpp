#include "torv/platform/posix/dynamic_library.h"

#include "torv/platform/library_module.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/resolve_path.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <memory>
#include <mutex>
#include <string>
#include <unistd.h>
#include <unordered_map>
#include <vector>

namespace {

/// How often each library was loaded. The loader counts too, but trusts every handle that it is given.
std::mutex g_mutex;
std::unordered_map<HMODULE, int> g_loads;

bool IsLoaded(HMODULE module) {
    const std::lock_guard lock(g_mutex);
    return g_loads.contains(module);
}

/// The file that holds this library's code. Asked for once, while a relative path still means what it meant at load.
const std::string& OwnPath() {
    static const std::string path = [] {
        char real[PATH_MAX];
        Dl_info info{};
        const bool isKnown = dladdr(reinterpret_cast<void*>(&torv::LibraryModule), &info) != 0 && info.dli_fname;
        // A program is known to the loader only by what it was called as, which need not be a path at all.
        if (isKnown && std::strcmp(info.dli_fname, program_invocation_name) != 0 && realpath(info.dli_fname, real))
            return std::string(real);
        const ssize_t length = readlink("/proc/self/exe", real, sizeof(real));
        return length > 0 ? std::string(real, static_cast<std::size_t>(length)) : std::string();
    }();
    return path;
}

/// The names that a Windows name stands for, best first.
std::vector<std::string> NamesOf(const std::string& name) {
    const std::size_t slash = name.find_last_of("/\\");
    const std::size_t dot = name.rfind('.');
    const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    std::vector<std::string> names{name};
    if (!hasExtension)
        names.push_back(name + ".so");
    else if (torv::SameName(name.substr(dot), ".dll"))
        names.push_back(name.substr(0, dot) + ".so");
    return names;
}

std::vector<std::string> SearchFolders() {
    std::vector<std::string> folders;
    const char* variable = std::getenv("TORV_LIBRARY_PATH");
    const std::string list = variable ? variable : "";
    for (std::size_t at = 0; at < list.size();) {
        const std::size_t end = std::min(list.find(':', at), list.size());
        if (end > at)
            folders.push_back(list.substr(at, end - at));
        at = end + 1;
    }
    if (!OwnPath().empty()) {
        const std::string own = torv::FolderOf(OwnPath());
        folders.push_back(own);
        folders.push_back(own + "/torv");
    }
    return folders;
}

struct CloseLibrary {
    void operator()(void* library) const { dlclose(library); }
};

void* Open(const std::string& path) { return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL); }

void* OpenByName(const std::string& name) {
    const std::vector<std::string> names = NamesOf(name);
    if (name.find_first_of("/\\") != std::string::npos) {
        for (const std::string& candidate : names) {
            const std::string path = torv::ResolvePath(candidate);
            if (void* library = path.empty() ? nullptr : Open(path))
                return library;
        }
        return nullptr;
    }
    for (const std::string& folder : SearchFolders()) {
        for (const std::string& candidate : names) {
            // With a slash in it the loader takes the path as it stands and searches nowhere.
            std::string path = folder;
            path.append("/").append(candidate);
            if (void* library = access(path.c_str(), F_OK) == 0 ? Open(path) : nullptr)
                return library;
        }
    }
    for (const std::string& candidate : names)
        if (void* library = Open(candidate))
            return library;
    return nullptr;
}

std::string PathOf(HMODULE module) {
    if (!module || module == torv::LibraryModule())
        return OwnPath();
    const link_map* map = nullptr;
    if (!IsLoaded(module) || dlinfo(module, RTLD_DI_LINKMAP, &map) != 0 || !map)
        return {};
    char real[PATH_MAX];
    return realpath(map->l_name, real) ? real : map->l_name;
}

} // namespace

HMODULE LoadLibraryA(LPCSTR name) {
    return torv::OrFail(HMODULE(), [&] {
        std::unique_ptr<void, CloseLibrary> library(name && *name ? OpenByName(name) : nullptr);
        if (!library) {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return HMODULE();
        }
        const std::lock_guard lock(g_mutex);
        ++g_loads[reinterpret_cast<HMODULE>(library.get())];
        return reinterpret_cast<HMODULE>(library.release());
    });
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    if (module != torv::LibraryModule() && !IsLoaded(module)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    void* entry = name && *name ? dlsym(module, name) : nullptr;
    if (!entry)
        SetLastError(ERROR_PROC_NOT_FOUND);
    return reinterpret_cast<FARPROC>(entry);
}

BOOL FreeLibrary(HMODULE module) {
    {
        const std::lock_guard lock(g_mutex);
        const auto found = g_loads.find(module);
        if (found == g_loads.end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        if (--found->second == 0)
            g_loads.erase(found);
    }
    dlclose(module); // outside the lock: a library may load or free others while it goes
    return TRUE;
}

DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
    SetLastError(ERROR_INVALID_HANDLE);
    const std::string text = torv::OrFail(std::string(), [&] { return PathOf(module); });
    if (text.empty())
        return 0;
    if (!path || size <= text.size()) {
        if (path && size > 0) {
            std::memcpy(path, text.data(), size - 1);
            path[size - 1] = '\0';
        }
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return path ? size : 0;
    }
    std::memcpy(path, text.c_str(), text.size() + 1);
    return static_cast<DWORD>(text.size());
}

namespace torv {

HMODULE LibraryModule() {
    return OrFail(HMODULE(), [] {
        static void* const self = [] {
            void* handle = OwnPath().empty() ? nullptr : dlopen(OwnPath().c_str(), RTLD_LAZY | RTLD_NOLOAD);
            if (!handle)
                handle = dlopen(nullptr, RTLD_LAZY); // the code is part of the program
            if (handle)
                dlclose(handle); // the handle stays good without being counted: this very code is loaded
            return handle;
        }();
        return reinterpret_cast<HMODULE>(self);
    });
}

} // namespace torv
