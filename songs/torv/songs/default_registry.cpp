#include "torv/songs/default_registry.h"

#include <torv/platform/platform.h>

namespace torv::songs {

#if defined(_WIN32)

namespace {

constexpr const char* kDatabase = "SOFTWARE\\CANTORIS\\COMMON\\DBMANAGER";
constexpr const char* kEditor = "SOFTWARE\\CANTORIS\\COMMON\\VOICEEDITOR";
constexpr const char* kPath = "PATH";

void Name(HKEY root, const char* key, const char* library) {
    HKEY handle = nullptr;
    if (RegCreateKeyExA(root, key, 0, nullptr, REG_OPTION_VOLATILE, KEY_WRITE, nullptr, &handle, nullptr) != 0)
        return;
    RegSetValueExA(handle, kPath, 0, REG_SZ, reinterpret_cast<const BYTE*>(library),
                   static_cast<DWORD>(lstrlenA(library) + 1));
    RegCloseKey(handle);
}

} // namespace

// A user may not write to the machine's registry, so that the process sees a key of the user's in its place.
DefaultRegistry::DefaultRegistry() {
    if (torv::ReadMachineString(kDatabase, kPath))
        return;
    HKEY root = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\torv\\machine", 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                        nullptr, &root, nullptr) != 0)
        return;
    Name(root, kDatabase, "DBM.dll");
    Name(root, kEditor, "VEDIT.dll");
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, root);
    m_key = root;
}

DefaultRegistry::~DefaultRegistry() {
    if (!m_key)
        return;
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegCloseKey(static_cast<HKEY>(m_key));
}

#endif

} // namespace torv::songs
