#include "sound_font.h"

#include "errors.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::string VariableOr(const char* name, const std::string& otherwise) {
    const char* const value = std::getenv(name);
    return value && *value ? value : otherwise;
}

std::vector<fs::path> Folders() {
    std::stringstream shared(VariableOr("XDG_DATA_HOME", VariableOr("HOME", "") + "/.local/share") + ":" +
                             VariableOr("XDG_DATA_DIRS", "/usr/local/share:/usr/share"));
    std::vector<fs::path> folders;
    for (std::string folder; std::getline(shared, folder, ':');)
        for (const char* const name : {"sounds/sf2", "sounds/sf3", "soundfonts"})
            folders.push_back(fs::path(folder) / name);
    return folders;
}

/// 0 for the system's default, 1 for one that says that it has all instruments, 2 for any other file.
int RankOf(const fs::path& path) {
    std::string name = path.filename().string();
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const bool isSoundFont = path.extension() == ".sf2" || path.extension() == ".sf3";
    if (isSoundFont && name.starts_with("default-gm"))
        return 0;
    return isSoundFont && (name.find("gm") != std::string::npos || name.find("general") != std::string::npos) ? 1 : 2;
}

} // namespace

std::string FindSoundFont() {
    std::pair<int, fs::path> best{2, {}};
    std::error_code error;
    for (const fs::path& folder : Folders())
        for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
            if (entry.is_regular_file(error))
                best = std::min(best, {RankOf(entry.path()), entry.path()});
    if (best.first == 2)
        throw InputError{
            "--band: there is no General MIDI sound font here: install fluid-soundfont-gm, or name a file with "
            "--soundfont"};
    return best.second.string();
}
