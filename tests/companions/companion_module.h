#pragma once

#include <doctest/doctest.h>

#include <filesystem>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

/// A companion as a host meets it: loaded from the program's own folder and bound by its entry points' names.
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
