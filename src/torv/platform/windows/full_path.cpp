#include "torv/platform/windows/full_path.h"

#include <cwchar>

namespace torv {
namespace {

constexpr DWORD kLongest = 4096;

bool IsSpeakable(const wchar_t* path) {
    BOOL isLossy = FALSE;
    if (GetACP() != CP_UTF8) // which has every letter, and takes no such question
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path, -1, nullptr, 0, nullptr, &isLossy);
    return !isLossy;
}

/// The path by its folder's short form; how long that is, or 0. The name of the file itself stays.
DWORD ByShortFolder(wchar_t* path, DWORD size, char* narrow, char** name) {
    wchar_t* const separator = std::wcsrchr(path, L'\\');
    if (!separator)
        return 0;
    wchar_t file[kLongest];
    std::wcscpy(file, separator + 1);
    separator[1] = 0;
    wchar_t folder[kLongest];
    const DWORD length = GetShortPathNameW(path, folder, kLongest);
    if (length == 0 || length + std::wcslen(file) >= kLongest)
        return 0;
    std::wcscpy(folder + length, file);
    const int bytes = WideCharToMultiByte(CP_ACP, 0, folder, -1, narrow, static_cast<int>(size), nullptr, nullptr);
    if (bytes > 0 && name)
        *name = narrow + (bytes - WideCharToMultiByte(CP_ACP, 0, file, -1, nullptr, 0, nullptr, nullptr));
    return bytes > 0 ? static_cast<DWORD>(bytes) - 1 : 0;
}

} // namespace

DWORD ModuleFileName(HMODULE module, char* path, DWORD size) {
    wchar_t whole[kLongest];
    const DWORD length = GetModuleFileNameW(module, whole, kLongest);
    if (length > 0 && length < kLongest && !IsSpeakable(whole))
        if (const DWORD spoken = ByShortFolder(whole, size, path, nullptr))
            return spoken;
    return GetModuleFileNameA(module, path, size);
}

DWORD FullPathName(const char* path, DWORD size, char* full, char** name) {
    wchar_t wide[kLongest];
    wchar_t whole[kLongest];
    const bool isWide = MultiByteToWideChar(CP_ACP, 0, path, -1, wide, kLongest) > 0;
    const DWORD length = isWide ? GetFullPathNameW(wide, kLongest, whole, nullptr) : 0;
    if (length > 0 && length < kLongest && !IsSpeakable(whole))
        if (const DWORD spoken = ByShortFolder(whole, size, full, name)) {
            if (name && !**name) // a folder
                *name = nullptr;
            return spoken;
        }
    return GetFullPathNameA(path, size, full, name);
}

} // namespace torv
