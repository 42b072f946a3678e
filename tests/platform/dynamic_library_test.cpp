#include "platform/temp_folder.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <cstring>

namespace {

#if defined(_WIN32)
constexpr const char* kSystemLibrary = "winmm.dll";
constexpr const char* kSystemEntry = "timeGetTime";
#else
constexpr const char* kSystemLibrary = "libm.so.6";
constexpr const char* kSystemEntry = "cos";
#endif

bool HasEntry(HMODULE module, const char* name) { return torv::EntryPoint<void (*)()>(module, name) != nullptr; }

} // namespace

TEST_CASE("library: what is not there is null, with the reason") {
    CHECK(LoadLibraryA("torv_no_such_library.dll") == nullptr);
    CHECK(GetLastError() == ERROR_MOD_NOT_FOUND);
    CHECK(LoadLibraryA("no_such_folder/torv_no_such_library.dll") == nullptr);
    CHECK_FALSE(FreeLibrary(nullptr));

    const HMODULE library = LoadLibraryA(kSystemLibrary);
    REQUIRE(library != nullptr);
    CHECK(HasEntry(library, kSystemEntry));
    CHECK_FALSE(HasEntry(library, "torv_no_such_entry"));
    CHECK(GetLastError() == ERROR_PROC_NOT_FOUND);
    CHECK(LoadLibraryA(kSystemLibrary) == library); // counted: two loads, two frees
    CHECK(FreeLibrary(library));
    CHECK(HasEntry(library, kSystemEntry));
    CHECK(FreeLibrary(library));
}

TEST_CASE("library: the module that holds this code knows its own file") {
    const HMODULE own = torv::LibraryModule();
    char path[4096] = {};
    const DWORD length = GetModuleFileNameA(own, path, sizeof(path));
    CHECK(length == std::strlen(path));
    CHECK(std::string(torv::FileNamePart(path)).rfind("test_platform", 0) == 0);
    CHECK(std::filesystem::equivalent(std::string(torv::LibraryFolder()), std::filesystem::path(path).parent_path()));
    CHECK_FALSE(HasEntry(own, "torv_no_such_entry"));
    char cut[9] = {};
    CHECK(GetModuleFileNameA(own, cut, 8) == 8); // cut; whether the eighth byte is a NUL differs between systems
    CHECK(std::string(path, 7) == std::string(cut, 7));
    CHECK(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
}

#if !defined(_WIN32)
TEST_CASE("library: NAME.DLL is found as NAME.so in the folders of TORV_LIBRARY_PATH") {
    const TempFolder folder;
    const HMODULE system = LoadLibraryA(kSystemLibrary);
    char source[4096];
    REQUIRE(GetModuleFileNameA(system, source, sizeof(source)) > 0);
    std::filesystem::copy_file(source, folder.Path("TORV_COPY.so")); // any library that asks for nothing else
    folder.File("TORV_COPY.DLL", "a program of another system, which is passed over");
    const std::string list = "/nowhere::" + folder.Path("");
    setenv("TORV_LIBRARY_PATH", list.c_str(), 1);
    const std::string byPath = folder.Path("") + "\\TORV_COPY.DLL";
    for (const char* name :
         {"TORV_COPY.DLL", "TORV_COPY.dll", "TORV_COPY.Dll", "TORV_COPY", "TORV_COPY.so", byPath.c_str()}) {
        CAPTURE(name);
        const HMODULE copy = LoadLibraryA(name);
        REQUIRE(copy != nullptr);
        char path[4096];
        REQUIRE(GetModuleFileNameA(copy, path, sizeof(path)) > 0);
        CHECK(std::filesystem::equivalent(path, folder.Path("TORV_COPY.so")));
        CHECK(FreeLibrary(copy));
        CHECK_FALSE(FreeLibrary(copy));
    }
    unsetenv("TORV_LIBRARY_PATH");
    CHECK(LoadLibraryA("TORV_COPY.DLL") == nullptr);
    CHECK(FreeLibrary(system));
}
#endif
