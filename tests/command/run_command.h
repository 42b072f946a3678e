#pragma once

#include "midi_bytes.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

struct Run {
    int status;
    std::string said;
};

/// As a command line names the folder below.
inline const std::string kIn = "command_test_files/";

/// A folder for one test's files beside the program, whose user's own data are there too.
struct Folder {
    fs::path path = fs::current_path() / "command_test_files";
    Folder() {
        fs::remove_all(path);
        fs::create_directory(path);
#ifdef _WIN32
        _putenv_s("TORV_USER_DATA", "command_test_files\\user");
        _putenv_s("APPDATA", "command_test_files\\nowhere");
#else
        setenv("TORV_USER_DATA", "command_test_files/user", 1);
        setenv("XDG_CONFIG_HOME", "command_test_files/nowhere", 1);
#endif
    }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    std::string File(const std::string& name, const FileBytes& bytes) const {
        std::ofstream(path / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return kIn + name;
    }
    /// What it said stands in a file of its own meanwhile: two that run at once have two.
    Run Torv(const std::string& arguments, const std::string& saidName = "said.txt") const {
#ifdef _WIN32
        return Shell("torv.exe " + arguments, saidName);
#else
        return Shell("./torv " + arguments, saidName);
#endif
    }
    Run Shell(const std::string& line, const std::string& saidName = "said.txt") const {
        const std::string to = " > " + kIn + saidName + " 2>&1";
#ifdef _WIN32
        // Its shell heeds the last place that output is sent to, so a line with one of its own stays as it is.
        const int status = std::system((line.find('>') == std::string::npos ? line + to : line).c_str());
#else
        const int waited = std::system(("(" + line + ")" + to).c_str());
        const int status = WEXITSTATUS(waited);
#endif
        std::ifstream said(path / saidName); // as text: line ends are the system's
        const Run run{status, {std::istreambuf_iterator<char>(said), std::istreambuf_iterator<char>()}};
        said.close();
        fs::remove(path / saidName);
        return run;
    }
    std::string Content(const std::string& name) const {
        std::ifstream file(path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    size_t Count() const {
        return static_cast<size_t>(std::distance(fs::directory_iterator(path), fs::directory_iterator()));
    }
};

/// Frames of a 16-bit mono wave, -1..1.
inline std::vector<double> Wave(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::vector<double> sound;
    for (size_t i = 44; i + 1 < bytes.size(); i += 2)
        sound.push_back(static_cast<int16_t>(static_cast<unsigned char>(bytes[i]) | bytes[i + 1] << 8) / 32768.0);
    return sound;
}
