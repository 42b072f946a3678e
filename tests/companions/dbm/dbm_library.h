/// The database library as a host meets it: loaded from the program's own folder and bound by its entry points' names.
#pragma once

#include <dbm_abi.h>
#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace dbm_test {

inline void SetEnvironment(const char* name, const std::string& value) {
#if defined(_WIN32)
    _putenv_s(name, value.c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}

/// Stays loaded to the program's end: a leak report can then name the function that leaked.
class CompanionModule {
public:
    explicit CompanionModule(const std::string& name) {
#if defined(_WIN32)
        m_module = LoadLibraryA((name + ".DLL").c_str());
#else
        const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
        m_module = dlopen((folder / (name + ".so")).c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
        REQUIRE(m_module != nullptr);
    }

    template <typename Entry>
    void Bind(Entry& entry, const char* name) {
#if defined(_WIN32)
        entry = reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(m_module, name)));
#else
        entry = reinterpret_cast<Entry>(dlsym(m_module, name));
#endif
        const bool bound = entry != nullptr;
        REQUIRE_MESSAGE(bound, name);
    }

private:
#if defined(_WIN32)
    HMODULE m_module = nullptr;
#else
    void* m_module = nullptr;
#endif
};

#define DBM_ENTRIES(ENTRY)                                                                                             \
    ENTRY(Init)                                                                                                        \
    ENTRY(Delete)                                                                                                      \
    ENTRY(AddVoice)                                                                                                    \
    ENTRY(DeleteVoice)                                                                                                 \
    ENTRY(ActivateDialog)                                                                                              \
    ENTRY(GetVersionString)                                                                                            \
    ENTRY(CreateVirtualVoice)                                                                                          \
    ENTRY(GetVirtualVoiceName)                                                                                         \
    ENTRY(DeleteVirtualVoice)                                                                                          \
    ENTRY(CopyVirtualVoice)                                                                                            \
    ENTRY(GetVirtualVoiceParameters)                                                                                   \
    ENTRY(SetVirtualVoiceParameters)                                                                                   \
    ENTRY(MoveVirtualVoice)                                                                                            \
    ENTRY(SetVirtualVoiceName)                                                                                         \
    ENTRY(GetVoice)                                                                                                    \
    ENTRY(GetVoiceParameters)                                                                                          \
    ENTRY(GetAllVoice)                                                                                                 \
    ENTRY(AddExp)                                                                                                      \
    ENTRY(DeleteExp)                                                                                                   \
    ENTRY(GetExpDB)                                                                                                    \
    ENTRY(GetVirtualExpInfo)                                                                                           \
    ENTRY(DeleteVirtualExpInfo)                                                                                        \
    ENTRY(GetVirtualExpItems)                                                                                          \
    ENTRY(DeleteVirtualExpItems)                                                                                       \
    ENTRY(SetVirtualExpItemCaption)                                                                                    \
    ENTRY(CreateVirtualExpItem)                                                                                        \
    ENTRY(DeleteVirtualExpItem)

struct DbmLibrary {
    DbmLibrary() {
#define DBM_BIND(name) module.Bind(name, "DBM_" #name);
        DBM_ENTRIES(DBM_BIND)
#undef DBM_BIND
    }

    CompanionModule module{"DBM"};
#define DBM_MEMBER(name) DBM##name##Proc name = nullptr;
    DBM_ENTRIES(DBM_MEMBER)
#undef DBM_MEMBER
};

inline const DbmLibrary& Library() {
    static const DbmLibrary library;
    return library;
}

} // namespace dbm_test
