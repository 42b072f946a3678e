#include "platform/temp_folder.h"
#include "torv/platform/new_file.h"

#include <doctest/doctest.h>

// Characters of code page 932 whose second byte is that of a backslash or of a capital letter.
#define HYOU "\x95\x5C"
#define SO "\x83\x5C"

namespace {

const std::string kSeparator(1, torv::kPathSeparator);

} // namespace

TEST_CASE("path: folder and name, by characters") {
    struct Row {
        std::string folder;
        std::string name;
    };
    const Row rows[] = {
        {"", ""},
        {"", "z.aic"},
        {"x/", ""},
        {"x\\y/", "z.aic"},
        {"x/y\\", "z"},
        {"/", "z"},
#if defined(_WIN32)
        {"C:", "z"},
        {"C:\\", "z"},
#else
        {"", HYOU SO},
        {HYOU "/", SO},
        {HYOU "\\", SO ".aic"},
        {"\xE3\x81\x82/", "z"}, // UTF-8, whose last byte would be a lead byte
#endif
    };
    for (const Row& row : rows) {
        const std::string path = row.folder + row.name;
        CAPTURE(path);
        CHECK(torv::FolderPart(path.c_str()) == row.folder.c_str());
        CHECK(torv::FileNamePart(path.c_str()) == row.name);
        if (!row.folder.empty() && row.folder != "C:")
            CHECK(torv::JoinPath(row.folder.c_str(), row.name.c_str()) == path.c_str()); // no second separator
    }
    CHECK(torv::FolderPart(nullptr) == "");
    CHECK(*torv::FileNamePart(nullptr) == '\0');
    for (const std::string folder : {"x", "x/y", "C:"})
        CHECK(torv::JoinPath(folder.c_str(), "z") == (folder + kSeparator + "z").c_str());
    CHECK(torv::JoinPath("", "z") == "z");
    CHECK(torv::JoinPath(nullptr, nullptr) == "");
}

#if !defined(_WIN32) // where the machine's own code page decides

TEST_CASE("path: files and folders whose names end as a backslash does are found, whatever the case of the rest") {
    CHECK(torv::JoinPath(HYOU, SO) == HYOU "/" SO);
    const TempFolder folder;
    folder.Folder(HYOU);
    folder.File(HYOU "/" SO ".AIC", "x");
    for (const char* path : {HYOU "/" SO ".AIC", HYOU "\\" SO ".aic"})
        CHECK(CFile(folder.Path(path).c_str(), CFile::modeRead).GetLength() == 1);
    CFileFind find;
    REQUIRE(find.FindFile(folder.Path(HYOU "\\*.aic").c_str()));
    find.FindNextFile();
    CHECK(find.GetFileName() == SO ".AIC");
    CHECK(torv::NewFilePath(folder.Path(HYOU "\\" SO ".aic").c_str()) == folder.Path(HYOU "/" SO ".AIC").c_str());
    CHECK(torv::NewFilePath(folder.Path(HYOU "\\new.aic").c_str()) == folder.Path(HYOU "/new.aic").c_str());
}

#endif
