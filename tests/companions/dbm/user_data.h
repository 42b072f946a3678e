/// A user of the database with an empty folder of its own, and all that the database says as texts to compare.
#pragma once

#include "companions/companion_module.h"
#include "environment.h"
#include "platform/temp_folder.h"
#include "torv/abi/dbm.h"
#include "values.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace dbm_test {

using Texts = std::vector<std::string>;

/// The database library as a host meets it: loaded from the program's own folder and bound by its entry points' names.
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

inline std::string Parameters(const DBMVoiceParameters& parameters) {
    std::string text;
    for (int32_t i = 0; i < parameters.count; ++i)
        text += std::string(parameters.pairs[i].name) + "=" + parameters.pairs[i].value + ";";
    CHECK(parameters.pairs[parameters.count].name == nullptr);
    return text;
}

class UserData {
public:
    UserData() {
        SetEnvironment("TORV_USER_DATA", folder.Path("user"));
        REQUIRE(library.Init() == DBM_OK);
    }
    ~UserData() {
        while (library.Delete() == DBM_OK)
            ;
    }

    void Restart() const {
        REQUIRE(library.Delete() == DBM_OK);
        REQUIRE(library.Init() == DBM_OK);
    }
    std::string Path(const std::string& file) const { return folder.Path("user") + "/" + file; }
    void Write(const std::string& file, const std::string& content) const {
        std::filesystem::create_directories(folder.Path("user"));
        folder.File("user/" + file, content);
    }
    std::string Content(const std::string& file) const { return folder.Content("user/" + file); }
    /// Names of all files below the user's folder.
    Texts Files() const {
        Texts files;
        if (folder.Has("user"))
            for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path("user")))
                if (entry.is_regular_file())
                    files.push_back(entry.path().filename().string());
        std::sort(files.begin(), files.end());
        return files;
    }

    std::string ParametersOf(int32_t language, int32_t program) const {
        const DBMVoiceParameters* parameters = nullptr;
        REQUIRE(library.GetVirtualVoiceParameters(language, program, &parameters) == DBM_OK);
        return Parameters(*parameters);
    }
    /// "language program voice user: parameters" of every singer, in order.
    Texts Singers() const {
        const DBMVoiceList* list = nullptr;
        REQUIRE(library.GetAllVoice(&list) == DBM_OK);
        Texts singers;
        for (int32_t i = 0; i < list->count; ++i) {
            const DBMVoice& each = list->voices[i];
            singers.push_back(std::to_string(each.language) + " " + std::to_string(each.program) + " " +
                              std::to_string(each.voice) + (each.user ? " user: " : " own: ") +
                              ParametersOf(each.language, each.program));
        }
        return singers;
    }
    /// "value user id|caption|singer|developer|content of the icon file" of every item of an expression.
    Texts Items(int32_t database, int32_t high, int32_t low) const {
        const DBMExpItems* list = nullptr;
        REQUIRE(library.GetVirtualExpItems(database, high, low, &list) == DBM_OK);
        Texts items;
        for (int32_t i = 0; i < list->count; ++i) {
            const DBMExpItem& each = list->items[i];
            std::ifstream file(each.fileName, std::ios::binary);
            items.push_back(std::to_string(each.value) + (each.user ? " user " : " own ") + each.idString + "|" +
                            each.caption + "|" + each.singerName + "|" + each.developerName + "|" +
                            std::string(std::istreambuf_iterator<char>(file), {}));
        }
        CHECK(library.DeleteVirtualExpItems(list) == DBM_OK);
        return items;
    }

    const DbmLibrary& library = Library();
    const TempFolder folder;
};

} // namespace dbm_test
