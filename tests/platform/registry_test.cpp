#include "platform/test_registry.h"

#include <cstring>
#include <utility>

#include "values.h"

using torv::ReadMachineString;

namespace {

constexpr const char* kKey = "SOFTWARE\\TORV_TEST\\COMMON\\DATA";

} // namespace

TEST_CASE("registry: a string is found by key and name, in any case of letters, as it is at the moment") {
    TestRegistry registry;
    CHECK_FALSE(ReadMachineString(kKey, "PATH"));
    registry.Set(kKey, "PATH", "C:\\data; and=more ");
    registry.Set(kKey, "EMPTY", "");
    registry.Set("SOFTWARE\\TORV_TEST\\COMMON", "PATH", "the parent's");
    CHECK(ReadMachineString(kKey, "PATH") == "C:\\data; and=more ");
    CHECK(ReadMachineString("software\\Torv_Test\\common\\data", "Path") == "C:\\data; and=more ");
    CHECK(ReadMachineString(kKey, "EMPTY") == "");
    CHECK_FALSE(ReadMachineString(kKey, "PAT"));
    CHECK_FALSE(ReadMachineString("SOFTWARE\\TORV_TEST\\COMMON\\DAT", "PATH"));
    CHECK_FALSE(ReadMachineString("SOFTWARE\\TORV_TEST", "PATH"));
    CHECK(ReadMachineString("SOFTWARE\\TORV_TEST\\COMMON", "PATH") == "the parent's");

    const std::string big(5000, 'x'); // longer than any buffer one would guess
    registry.Set(kKey, "path", big);
    CHECK(ReadMachineString(kKey, "PATH") == big);
    registry.Remove(kKey);
    CHECK_FALSE(ReadMachineString(kKey, "PATH"));
    CHECK(ReadMachineString("SOFTWARE\\TORV_TEST\\COMMON", "PATH") == "the parent's");
}

TEST_CASE("registry: sizes are told, and never more is written than there is room for") {
    TestRegistry registry;
    registry.Set(kKey, "NAME", "12345");
    HKEY key = nullptr;
    REQUIRE(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKey, 0, KEY_READ, &key) == 0);
    BYTE data[] = "########";
    DWORD type = 99;
    DWORD size = 0;
    CHECK(Values{RegQueryValueExA(key, "NAME", nullptr, &type, nullptr, &size), type, size} == "0 1 6"); // with the NUL
    size = 5;
    CHECK(Values{RegQueryValueExA(key, "NAME", nullptr, nullptr, data, &size), size, data[5]} == "234 6 #");
    size = 8;
    CHECK(Values{RegQueryValueExA(key, "NAME", nullptr, &type, data, &size), size} == "0 6");
    CHECK(std::memcmp(data, "12345\0##", 8) == 0);
    CHECK(RegQueryValueExA(key, "NAME", nullptr, nullptr, nullptr, nullptr) == 0);
    CHECK(RegQueryValueExA(key, "NAME", nullptr, nullptr, data, nullptr) == 87);
    for (const char* none : {"OTHER", static_cast<const char*>(nullptr)})
        CHECK(RegQueryValueExA(key, none, nullptr, nullptr, data, &size) == 2);
    CHECK(RegCloseKey(key) == 0);
    CHECK(RegQueryValueExA(key, "NAME", nullptr, nullptr, nullptr, &size) == 6);
    CHECK(RegCloseKey(key) == 6);
}

#if !defined(_WIN32)
namespace {

/// Sets or removes a variable of the environment as long as it lives.
class Variable {
public:
    Variable(const char* name, const std::optional<std::string>& value) : m_name(name) {
        if (const char* before = std::getenv(name))
            m_before = before;
        Apply(value);
    }
    ~Variable() { Apply(m_before); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void Apply(const std::optional<std::string>& value) const {
        value ? setenv(m_name, value->c_str(), 1) : unsetenv(m_name);
    }

    const char* m_name;
    std::optional<std::string> m_before;
};

std::string TextOf(const char* name, const char* key = "A\\B") {
    return ReadMachineString(key, name).value_or("(none)");
}

} // namespace

TEST_CASE("registry: the file's syntax") {
    const TempFolder folder;
    const Variable file("TORV_REGISTRY", folder.File("r", "lost = before any key\n"
                                                          "[HKEY_LOCAL_MACHINE\\A\\B\n"
                                                          "lost = a key that does not end\n"
                                                          " [ hkey_local_machine\\a\\b\\ ] \r\n"
                                                          "; comment = 1\r\n"
                                                          "\t# comment = 2\r\n"
                                                          "nothing here\n"
                                                          "\tPATH \t=  /data/a b \t\r\n"
                                                          "path = later\n"
                                                          "QUOTED=\"  a\"b  \"\n"
                                                          "QUOTE=\"\n"
                                                          "BYTES=\x83\x5D\xFF\x80;#[]=\n"
                                                          "NONE=\n"
                                                          "[HKEY_LOCAL_MACHINE\\A\\\x83\x5D]\n"
                                                          "PATH = other\n"
                                                          "[HKEY_LOCAL_MACHINE\\A\\B]\n"
                                                          "LAST = 1"));
    const std::pair<const char*, const char*> rows[] = {
        {"PATH", "/data/a b"}, {"QUOTED", "  a\"b  "},  {"QUOTE", "\""},           {"BYTES", "\x83\x5D\xFF\x80;#[]="},
        {"NONE", ""},          {"LAST", "1"},           {"lost", "(none)"},        {"; comment", "(none)"},
        {"comment", "(none)"}, {"# comment", "(none)"}, {"nothing here", "(none)"}};
    for (const auto& [name, text] : rows) {
        CAPTURE(name);
        CHECK(TextOf(name) == text);
    }
    CHECK(ReadMachineString("A\\\x83\x5D", "PATH") == "other"); // a letter whose second byte is a bracket's
    HKEY key = nullptr;
    CHECK(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "A\\B", 0, KEY_READ | 0x2, &key) == 5); // nobody writes here
    CHECK(key == nullptr);
}

TEST_CASE("registry: which file has a key: the one that is named alone, else the user's, else the installed one") {
    const TempFolder folder;
    for (const char* path : {"config", "config/torv", "home", "home/.config", "home/.config/torv"})
        folder.Folder(path);
    folder.File("config/torv/registry",
                "[HKEY_LOCAL_MACHINE\\A\\B]\nWHO = config\n[HKEY_LOCAL_MACHINE\\A\\BELOW\\C]\n");
    folder.File("home/.config/torv/registry", "[HKEY_LOCAL_MACHINE\\A\\B]\nWHO = home\n");
    // Beside the library, where one that is there already is left alone.
    const std::string installed = std::string(torv::LibraryFolder()) + "/torv.registry";
    const bool isOurs = !std::filesystem::exists(installed);
    if (isOurs)
        std::ofstream(installed) << "[HKEY_LOCAL_MACHINE\\A\\B]\nALSO = own\nWHO = own\n"
                                    "[HKEY_LOCAL_MACHINE\\A\\BELOW]\nWHO = own\n";
    const std::string own = isOurs ? "own" : "(none)";
    {
        const Variable home("HOME", folder.Path("home"));
        const Variable config("XDG_CONFIG_HOME", folder.Path("config"));
        const Variable unnamed("TORV_REGISTRY", std::nullopt);
        CHECK(TextOf("WHO") == "config");
        CHECK(TextOf("ALSO") == "(none)");             // a key comes from one file as a whole
        CHECK(TextOf("WHO", "A\\BELOW") == own);       // of which the user's has only a key below it
        for (const char* none : {"missing", "config"}) // one that is named alone, there or not
            CHECK((Variable("TORV_REGISTRY", folder.Path(none)), TextOf("WHO")) == "(none)");
        CHECK((Variable("XDG_CONFIG_HOME", folder.Path("nowhere")), TextOf("WHO")) == own);
        CHECK((Variable("XDG_CONFIG_HOME", std::nullopt), TextOf("WHO")) == "home");
    }
    if (isOurs)
        std::filesystem::remove(installed);
}
#endif
