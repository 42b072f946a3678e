#include "platform/temp_folder.h"
#include "torv/platform/path.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>

namespace {

/// The names that a pattern finds, in the system's order, each followed by a blank.
std::string NamesOf(const std::string& pattern) {
    WIN32_FIND_DATAA found{};
    const HANDLE search = FindFirstFileA(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return "error " + std::to_string(GetLastError());
    std::string names;
    do
        names += std::string(found.cFileName) + " ";
    while (FindNextFileA(search, &found));
    CHECK(GetLastError() == ERROR_NO_MORE_FILES);
    CHECK(FindClose(search));
    return names;
}

} // namespace

TEST_CASE("search: patterns, in name order whatever the case of letters") {
    const TempFolder folder;
    for (const char* name : {"b.aic", "A.AIC", "c.txt", "plain", "note.aic.bak"})
        folder.File(name, "x");
    folder.Folder("sub");
    const std::pair<const char*, const char*> rows[] = {
        {"*", ". .. A.AIC b.aic c.txt note.aic.bak plain sub "},
        {"*.*", ". .. A.AIC b.aic c.txt note.aic.bak plain sub "}, // names without a dot too
        {"*.aic", "A.AIC b.aic "},
        {"?.aic", "A.AIC b.aic "},
        {"*.?ak", "note.aic.bak "},
        {"*a*c*", "A.AIC b.aic note.aic.bak "},
        {"PLAIN", "plain "},
        {"sub", "sub "},
        {"sub\\*", ". .. "},
        {"*.def", "error 2"},
        {"b.txt", "error 2"},
        {"none/*.txt", "error 3"},
        {"none/a.txt", "error 3"},
        {"", "error 2"}, // a path that ends in a separator names nothing
    };
    for (const auto& [pattern, names] : rows) {
        CAPTURE(pattern);
        CHECK(NamesOf(folder.Path(pattern)) == names);
    }
    WIN32_FIND_DATAA found{};
    CHECK_FALSE(FindNextFileA(INVALID_HANDLE_VALUE, &found));
    CHECK(GetLastError() == ERROR_INVALID_HANDLE);
}

TEST_CASE("search: attributes, sizes and times") {
    const TempFolder folder;
    const std::string path = folder.File("a.txt", "12345");
    WIN32_FIND_DATAA found{};
    const auto attributes = [&](const std::string& name) {
        const HANDLE search = FindFirstFileA(folder.Path(name).c_str(), &found);
        REQUIRE(search != INVALID_HANDLE_VALUE);
        FindClose(search);
        return found.dwFileAttributes;
    };
    CHECK(attributes("a.txt") == FILE_ATTRIBUTE_ARCHIVE);
    CHECK(found.nFileSizeHigh == 0);
    CHECK(found.nFileSizeLow == 5);
    // 2020-01-01 is 132223104000000000 units of 100 ns after 1601: 0x1D5C03669050000.
    CHECK(found.ftLastWriteTime.dwHighDateTime > 0x1D5C036u);
    folder.Folder("sub");
    CHECK(attributes("sub") == FILE_ATTRIBUTE_DIRECTORY);
    using std::filesystem::perms;
    std::filesystem::permissions(path, perms::owner_read);
    CHECK(attributes("a.txt") == (FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY));
    std::filesystem::permissions(path, perms::owner_read | perms::owner_write);
#if !defined(_WIN32)
    folder.File(".hidden", "x");
    CHECK(attributes(".hidden") == (FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN));
#endif
}

TEST_CASE("CFileFind: a match becomes current one step after it was found") {
    const TempFolder folder;
    folder.File("a.aic", "1");
    folder.Folder("b.aic");
    CFileFind find;
    CHECK_FALSE(find.FindNextFile());
    CHECK(find.GetFileName() == "");
    REQUIRE(find.FindFile(folder.Path("*.aic").c_str()));
    CHECK(find.FindNextFile()); // there is another
    CHECK(find.GetFileName() == "a.aic");
    CHECK_FALSE(find.IsDirectory());
    CHECK_FALSE(find.FindNextFile()); // the last one
    CHECK(find.GetFileName() == "b.aic");
    CHECK(find.IsDirectory());
    CHECK_FALSE(find.FindFile(folder.Path("*.txt").c_str()));
    CHECK(find.GetFileName() == "");
}

TEST_CASE("search: the folder of temporary files, or the room that its name takes") {
    char path[MAX_PATH + 1];
    const DWORD length = GetTempPathA(sizeof path, path);
    CHECK(length == std::strlen(path));
    CHECK(path[length - 1] == torv::kPathSeparator);
    CHECK(GetTempPathA(length, path) == length + 1);
}
