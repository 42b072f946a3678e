#include "torv/platform/save_turn.h"

#include "torv/platform/windows/full_path.h"

#include <cstdio>

namespace torv {
namespace {

constexpr DWORD kLongestWait = 10000;

/// A name for the file's folder that every process makes alike; two folders that share one only wait for each other.
bool NameTurn(const char* path, char (&name)[32]) {
    char full[4096];
    char* file = nullptr;
    const DWORD length = FullPathName(path, sizeof(full), full, &file);
    if (length == 0 || length >= sizeof(full) || !file)
        return false;
    *file = 0;
    CharUpperA(full);
    unsigned long long sum = 14695981039346656037u; // FNV-1a
    for (const char* at = full; *at; ++at)
        sum = (sum ^ static_cast<unsigned char>(*at)) * 1099511628211u;
    return std::snprintf(name, sizeof(name), "torv-save-%016llx", sum) > 0;
}

} // namespace

SaveTurn::SaveTurn(const char* path) noexcept {
    char name[32];
    if (!NameTurn(path, name))
        return;
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, name);
    if (!mutex)
        return;
    const DWORD result = WaitForSingleObject(mutex, kLongestWait);
    if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED)
        m_handle = reinterpret_cast<std::intptr_t>(mutex);
    else
        CloseHandle(mutex);
}

SaveTurn::~SaveTurn() {
    if (!IsHeld())
        return;
    const HANDLE mutex = reinterpret_cast<HANDLE>(m_handle);
    ReleaseMutex(mutex);
    CloseHandle(mutex);
}

} // namespace torv
