#pragma once

#include <cstdio>
#include <string>
#include <utility>

/// A file of the command's own, which goes with its holder wherever it was not given another name.
class ScratchFile {
public:
    /// What stands there is removed.
    explicit ScratchFile(std::string path) : m_path(std::move(path)) { std::remove(m_path.c_str()); }
    ScratchFile(ScratchFile&& other) noexcept : m_path(std::exchange(other.m_path, {})) {}
    ScratchFile& operator=(ScratchFile&&) = delete;
    ~ScratchFile() {
        if (!m_path.empty())
            std::remove(m_path.c_str());
    }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path; ///< empty: moved to another holder
};
