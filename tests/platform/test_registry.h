#pragma once

#include "platform/temp_folder.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A machine's registry of the test's own: empty at first, and gone with the object, which brings the machine's back.
/// Keys are named from below HKEY_LOCAL_MACHINE on.
#if defined(_WIN32)
class TestRegistry {
public:
    TestRegistry() : m_name("Software\\torv_test_" + std::to_string(GetCurrentProcessId())) {
        RegDeleteTreeA(HKEY_CURRENT_USER, m_name.c_str()); // a run that was broken off may have left one
        REQUIRE(RegCreateKeyExA(HKEY_CURRENT_USER, m_name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_root,
                                nullptr) == 0);
        REQUIRE(RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_root) == 0);
    }
    ~TestRegistry() {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegCloseKey(m_root);
        RegDeleteTreeA(HKEY_CURRENT_USER, m_name.c_str());
    }
    TestRegistry(const TestRegistry&) = delete;
    TestRegistry& operator=(const TestRegistry&) = delete;

    void Set(const char* key, const char* value, const std::string& text) {
        HKEY handle = nullptr;
        REQUIRE(RegCreateKeyExA(HKEY_LOCAL_MACHINE, key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &handle, nullptr) ==
                0);
        CHECK(RegSetValueExA(handle, value, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>(text.size() + 1)) == 0);
        RegCloseKey(handle);
    }
    void Remove(const char* key) { CHECK(RegDeleteTreeA(HKEY_LOCAL_MACHINE, key) == 0); }

private:
    std::string m_name;
    HKEY m_root = nullptr;
};
#else
class TestRegistry {
public:
    TestRegistry() {
        if (const char* before = std::getenv("TORV_REGISTRY"))
            m_before = before;
        Write();
        setenv("TORV_REGISTRY", m_folder.Path("registry").c_str(), 1);
    }
    ~TestRegistry() {
        if (m_before)
            setenv("TORV_REGISTRY", m_before->c_str(), 1);
        else
            unsetenv("TORV_REGISTRY");
    }
    TestRegistry(const TestRegistry&) = delete;
    TestRegistry& operator=(const TestRegistry&) = delete;

    void Set(const char* key, const char* value, const std::string& text) {
        // Latest first: the first of equal names counts.
        m_lines.insert(m_lines.begin(), {key, std::string(value) + " = \"" + text + "\"\n"});
        Write();
    }
    /// With the keys below it. Named as it was when it was set.
    void Remove(const char* key) {
        const std::string below = std::string(key) + "\\";
        CHECK(std::erase_if(
                  m_lines, [&](const auto& line) { return line.first == key || line.first.rfind(below, 0) == 0; }) > 0);
        Write();
    }

private:
    void Write() const {
        std::string content;
        for (const auto& [key, line] : m_lines)
            content.append("[HKEY_LOCAL_MACHINE\\").append(key).append("]\n").append(line);
        m_folder.File("registry", content);
    }

    TempFolder m_folder;
    std::vector<std::pair<std::string, std::string>> m_lines;
    std::optional<std::string> m_before;
};
#endif
