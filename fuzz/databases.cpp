// Everything that opening the databases reads: the definition of the presets, icon files, what an external library
// tells of voices and expressions, and the user's icons; and then a save, which must read back to the same bytes.
//
// The input has parts separated by a line "%%": definition, icon file, user file, expressions. An expression line is
// "kind high low value user id".
#include "torv/database/aicon_db.h"
#include "torv/database/expression_db.h"
#include "torv/database/external_library.h"
#include "torv/database/user_db.h"
#include "torv/database/voice_db.h"
#include "torv/icons/icon_dynamics.h"
#include "torv/platform/platform.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr size_t kLongestInput = 60000; // below the longest line of a file

struct Line {
    DBMExpression about;
    DBMExpItem item;
    std::string id;
};
std::vector<Line> g_lines;
std::string g_iconFile;
int g_listsOut = 0;

/// A folder for the process's files, with the presets' folder in it.
struct Folder {
    std::filesystem::path path;
    Folder() {
        path = std::filesystem::temp_directory_path() / ("torv_fuzz_" + std::to_string(timeGetTime()));
        std::filesystem::create_directories(path / "Set" / "Dynamics");
        g_iconFile = (path / "Set" / "Dynamics" / "a.aic").string();
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::string Write(const char* name, const std::string& content) const {
        std::ofstream(path / name, std::ios::binary) << content;
        return (path / name).string();
    }
    std::string Read(const char* name) const {
        std::ifstream file(path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

std::vector<std::string> PartsOf(const std::string& input) {
    std::vector<std::string> parts(4);
    size_t at = 0;
    for (std::string& part : parts) {
        const size_t end = std::min(input.find("\n%%\n", at), input.size());
        part = input.substr(at, end - at);
        at = std::min(end + 4, input.size());
    }
    return parts;
}

void ReadLines(const std::string& text) {
    g_lines.clear();
    std::istringstream lines(text);
    for (std::string row; std::getline(lines, row) && g_lines.size() < 64;) {
        Line line{};
        std::istringstream fields(row);
        fields >> line.about.kind >> line.about.high >> line.about.low >> line.item.value >> line.item.user;
        std::getline(fields >> std::ws, line.id);
        g_lines.push_back(line);
    }
    for (Line& line : g_lines) {
        line.item.idString = line.id.c_str();
        line.item.fileName = line.id.empty() ? nullptr : g_iconFile.c_str();
    }
}

DBMVoice g_voices[64];
DBMTextPair g_pairs[65];
int32_t DBM_CALL GetAllVoice(const DBMVoiceList** result) {
    static DBMVoiceList list;
    list = {static_cast<int32_t>(g_lines.size()), g_voices};
    for (size_t i = 0; i < g_lines.size(); ++i) {
        const Line& line = g_lines[i];
        g_voices[i] = {line.about.kind, line.about.high, 0, 0, line.item.user ? line.id.c_str() : nullptr};
        g_pairs[i] = {line.id.c_str(), line.item.user ? line.id.c_str() : nullptr};
    }
    g_pairs[g_lines.size()] = {};
    *result = &list;
    return DBM_OK;
}
int32_t DBM_CALL GetVirtualVoiceName(int32_t, int32_t program, char* buffer, int32_t size) {
    for (int32_t i = 0; i < size; ++i)
        buffer[i] = 'x'; // without an end
    return program & 1;
}
int32_t DBM_CALL GetVoice(int32_t, const DBMInstalledVoice** result) {
    static constexpr DBMInstalledVoice voice{};
    *result = &voice;
    return DBM_OK;
}
int32_t DBM_CALL GetVirtualVoiceParameters(int32_t, int32_t, const DBMVoiceParameters** result) {
    static const DBMVoiceParameters parameters{0, g_pairs};
    *result = &parameters;
    return DBM_OK;
}
int32_t DBM_CALL GetExpDB(const DBMExpDatabaseList** result) {
    static constexpr DBMExpDatabase database{1, 0, nullptr};
    static constexpr DBMExpDatabaseList list{1, &database};
    *result = &list;
    return DBM_OK;
}
int32_t DBM_CALL GetVirtualExpInfo(int32_t, const DBMExpInfo** result) {
    static std::vector<DBMExpression> expressions;
    static DBMExpInfo info;
    expressions.clear();
    for (const Line& line : g_lines)
        expressions.push_back(line.about);
    info = {static_cast<int32_t>(expressions.size()), expressions.data()};
    *result = &info;
    return DBM_OK;
}
int32_t DBM_CALL DeleteVirtualExpInfo(const DBMExpInfo*) { return DBM_OK; }
int32_t DBM_CALL GetVirtualExpItems(int32_t, int32_t high, int32_t low, const DBMExpItems** result) {
    static DBMExpItems items;
    for (const Line& line : g_lines)
        if (line.about.high == high && line.about.low == low) {
            items = {1, &line.item};
            *result = &items;
            if (++g_listsOut > 1)
                std::abort();
            return DBM_OK;
        }
    return DBM_NO_SUCH;
}
int32_t DBM_CALL DeleteVirtualExpItems(const DBMExpItems*) {
    --g_listsOut;
    return DBM_OK;
}

torv::DatabaseLibrary& Library() {
    static torv::DatabaseLibrary library;
    library.GetAllVoice = GetAllVoice;
    library.GetVirtualVoiceName = GetVirtualVoiceName;
    library.GetVirtualVoiceParameters = GetVirtualVoiceParameters;
    library.GetVoice = GetVoice;
    library.GetExpDB = GetExpDB;
    library.GetVirtualExpInfo = GetVirtualExpInfo;
    library.DeleteVirtualExpInfo = DeleteVirtualExpInfo;
    library.GetVirtualExpItems = GetVirtualExpItems;
    library.DeleteVirtualExpItems = DeleteVirtualExpItems;
    return library;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Folder folder;
    static const auto box = torv::SetMessageBoxHandler([](HWND, const char*, const char*, UINT) { return IDOK; });
    static const auto beep = torv::SetBeepHandler([](UINT) {});
    if (size > kLongestInput)
        return 0;
    const std::vector<std::string> parts = PartsOf({reinterpret_cast<const char*>(data), size});
    ReadLines(parts[3]);
    folder.Write("Set/Dynamics/a.aic", parts[1]);

    CVoiceDB voices;
    voices.OpenDatabase(&Library());
    voices.GetDefaultVariation(1);
    CExpressionDB expressions;
    expressions.OpenDatabase(&Library());
    CAiconDB presets;
    presets.LoadDatabase(folder.Write("Set.def", parts[0]).c_str());
    CUserDB users;
    const std::string path = folder.Write("User.def", parts[2]);
    users.LoadDatabase(path.c_str());
    presets.TakeUserIcons(users);
    expressions.TakeUserIcons(users);
    expressions.BindUserItems();
    std::unique_ptr<CIconObject> icon = std::make_unique<CIconDynamics>(5, 1, 0);
    icon->SetIDString(parts[1].c_str());
    presets.Register(icon);
    users.TakeUserIcons(expressions);
    users.TakeUserIcons(presets);
    folder.Write("User.def", parts[3]); // by another host
    if (!users.SaveDatabase())
        std::abort();
    const std::string first = folder.Read("User.def");
    if (!users.LoadDatabase(path.c_str()) || !users.SaveDatabase() || folder.Read("User.def") != first)
        std::abort();
    expressions.CloseDatabase();
    if (g_listsOut != 0)
        std::abort();
    return 0;
}
