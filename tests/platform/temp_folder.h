#pragma once

#include "torv/platform/platform.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

/// A folder of its own for each test, removed with everything in it.
class TempFolder {
public:
    TempFolder() {
        static int count = 0;
        char base[4096];
        GetTempPathA(sizeof(base), base);
        do
            m_path = std::filesystem::path(base) /
                     ("torv_platform_" + std::to_string(timeGetTime()) + "_" + std::to_string(++count));
        while (!std::filesystem::create_directory(m_path));
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string Path(const std::string& name) const { return (m_path / name).string(); }
    /// Creates a file with this content and returns its path.
    std::string File(const std::string& name, const std::string& content) const {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }
    std::string Folder(const std::string& name) const {
        std::filesystem::create_directory(Path(name));
        return Path(name);
    }
    std::string Content(const std::string& name) const {
        std::ifstream file(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Has(const std::string& name) const { return std::filesystem::exists(Path(name)); }
    /// What it holds, or the folder in it of this name.
    std::set<std::string> Names(const std::string& name = "") const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Path(name)))
            names.insert(entry.path().filename().string());
        return names;
    }

private:
    std::filesystem::path m_path;
};
