#include "torv/platform/posix/find_file.h"

#include "torv/platform/or_fail.h"
#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/resolve_path.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unordered_map>
#include <vector>

namespace {

/// `*` any bytes, `?` one byte, letters in any case. Goes back only to the last star, so it stays quadratic at worst.
bool Matches(const char* pattern, const char* name) {
    const char* afterStar = nullptr;
    const char* retry = nullptr;
    while (*name) {
        if (*pattern == '*') {
            afterStar = ++pattern;
            retry = name;
        } else if (*pattern && (*pattern == '?' || torv::LowerLetter(*pattern) == torv::LowerLetter(*name))) {
            ++pattern;
            ++name;
        } else if (afterStar) {
            pattern = afterStar;
            name = ++retry;
        } else {
            return false;
        }
    }
    while (*pattern == '*')
        ++pattern;
    return *pattern == '\0';
}

FILETIME FileTime(const timespec& time) {
    // 100 ns units since 1601, which lies 11644473600 seconds before 1970.
    const auto units = (static_cast<LONGLONG>(time.tv_sec) + 11644473600LL) * 10000000LL + time.tv_nsec / 100;
    return {static_cast<DWORD>(units), static_cast<DWORD>(static_cast<ULONGLONG>(units) >> 32)};
}

/// One match, kept small until it is asked for.
struct Match {
    std::string path;
    std::string name;
};

/// FALSE for a file that has gone meanwhile.
BOOL Describe(const Match& match, WIN32_FIND_DATAA& found) {
    struct stat status {};
    if (stat(match.path.c_str(), &status) != 0 && lstat(match.path.c_str(), &status) != 0)
        return FALSE;
    const bool isDots = match.name == "." || match.name == "..";
    found = {};
    found.dwFileAttributes = S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    if (match.name[0] == '.' && !isDots)
        found.dwFileAttributes |= FILE_ATTRIBUTE_HIDDEN;
    if (!(status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)))
        found.dwFileAttributes |= FILE_ATTRIBUTE_READONLY;
    found.ftCreationTime = FileTime(status.st_ctim);
    found.ftLastAccessTime = FileTime(status.st_atim);
    found.ftLastWriteTime = FileTime(status.st_mtim);
    const auto size = S_ISDIR(status.st_mode) ? 0 : static_cast<ULONGLONG>(status.st_size);
    found.nFileSizeHigh = static_cast<DWORD>(size >> 32);
    found.nFileSizeLow = static_cast<DWORD>(size);
    std::strncpy(found.cFileName, match.name.c_str(), sizeof(found.cFileName) - 1);
    return TRUE;
}

struct Search {
    std::vector<Match> matches;
    std::size_t next = 0;

    BOOL Next(WIN32_FIND_DATAA& found) {
        while (next < matches.size())
            if (Describe(matches[next++], found))
                return TRUE;
        return FALSE;
    }
};

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

/// Letters compare as lower case ones; names that differ only there, by their bytes.
bool NameBefore(const std::string& a, const std::string& b) {
    if (torv::SameName(a, b))
        return a < b;
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return static_cast<unsigned char>(torv::LowerLetter(x)) < static_cast<unsigned char>(torv::LowerLetter(y));
    });
}

/// The matches of a wildcard pattern in name order, as Windows file systems list them.
DWORD ListFolder(const std::string& folder, const std::string& pattern, Search& search) {
    const std::unique_ptr<DIR, CloseFolder> stream(folder.empty() ? nullptr : opendir(folder.c_str()));
    if (!stream)
        return ERROR_PATH_NOT_FOUND;
    const char* mask = pattern == "*.*" ? "*" : pattern.c_str(); // every name, with a dot or without
    while (const dirent* entry = readdir(stream.get()))
        if (Matches(mask, entry->d_name))
            search.matches.push_back({folder + "/" + entry->d_name, entry->d_name});
    std::sort(search.matches.begin(), search.matches.end(),
              [](const Match& a, const Match& b) { return NameBefore(a.name, b.name); });
    return NO_ERROR;
}

DWORD StartSearch(const std::string& pattern, Search& search) {
    const std::string slashed = torv::WithSlashes(pattern);
    const std::size_t slash = slashed.rfind('/');
    const std::string last = slash == std::string::npos ? slashed : slashed.substr(slash + 1);
    if (last.find_first_of("*?") != std::string::npos)
        return ListFolder(torv::ResolvePath(torv::FolderOf(slashed)), last, search);

    const std::string path = last.empty() ? std::string() : torv::ResolvePath(pattern);
    if (path.empty())
        return torv::ResolvePath(torv::FolderOf(slashed)).empty() ? ERROR_PATH_NOT_FOUND : ERROR_FILE_NOT_FOUND;
    search.matches.push_back({path, path.substr(path.rfind('/') + 1)}); // npos + 1 is the beginning
    return NO_ERROR;
}

/// The searches that are open, by handle; handles are never used twice.
std::mutex g_mutex;
std::unordered_map<HANDLE, Search> g_searches;
ULONG_PTR g_lastHandle = 0;

} // namespace

HANDLE FindFirstFileA(LPCSTR pattern, LPWIN32_FIND_DATAA found) {
    return torv::OrFail(INVALID_HANDLE_VALUE, [&] {
        Search search;
        DWORD error = pattern && found ? StartSearch(pattern, search) : ERROR_PATH_NOT_FOUND;
        if (!error && !search.Next(*found))
            error = ERROR_FILE_NOT_FOUND;
        if (error) {
            SetLastError(error);
            return INVALID_HANDLE_VALUE;
        }
        const std::lock_guard lock(g_mutex);
        const auto handle = reinterpret_cast<HANDLE>(++g_lastHandle);
        g_searches.emplace(handle, std::move(search));
        return handle;
    });
}

BOOL FindNextFileA(HANDLE search, LPWIN32_FIND_DATAA found) {
    const std::lock_guard lock(g_mutex);
    const auto place = g_searches.find(search);
    if (place == g_searches.end()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (found && place->second.Next(*found))
        return TRUE;
    SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
}

BOOL FindClose(HANDLE search) {
    const std::lock_guard lock(g_mutex);
    if (g_searches.erase(search))
        return TRUE;
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

DWORD GetTempPathA(DWORD size, LPSTR path) {
    const char* const named = std::getenv("TMPDIR");
    const std::string_view folder = named && *named ? named : "/tmp";
    const std::size_t length = folder.size() + (folder.back() != '/');
    if (!path || size <= length)
        return static_cast<DWORD>(length + 1);
    folder.copy(path, folder.size());
    path[length - 1] = '/';
    path[length] = '\0';
    return static_cast<DWORD>(length);
}
