#include "companions/dbm/user_data.h"

#include "torv/abi/vedit.h"

#if !defined(_WIN32)
#include <unistd.h>
#endif

using namespace dbm_test;

namespace {

struct VeditLibrary {
    VeditLibrary() {
        module.Bind(init, "VEDIT_Init");
        module.Bind(remove, "VEDIT_Delete");
        module.Bind(openDialog, "VEDIT_OpenDialog");
        module.Bind(version, "VEDIT_GetVersionString");
    }
    CompanionModule module{"VEDIT"};
    VEDITInitProc init = nullptr;
    VEDITDeleteProc remove = nullptr;
    VEDITOpenDialogProc openDialog = nullptr;
    VEDITGetVersionStringProc version = nullptr;
};

const VeditLibrary& Editor() {
    static const VeditLibrary library;
    return library;
}

#if defined(_WIN32)
constexpr const char* kTemporaryFolder = "TMP";
#else
constexpr const char* kTemporaryFolder = "TMPDIR";
#endif

/// A user with the voice editor open, whose texts and temporary files are in a folder of this test's own.
class EditingUser : public UserData {
public:
    EditingUser() {
        folder.Folder("texts");
        REQUIRE(Editor().init() == VEDIT_OK);
    }
    ~EditingUser() { CHECK(Editor().remove() == VEDIT_OK); }

    /// Opens the dialog with an editor that saves this text.
    int32_t Save(const std::string& text) const {
        folder.File("edited text.txt", text);
#if defined(_WIN32)
        return Open("copy /y \"" + folder.Path("edited text.txt") + "\"");
#else
        return Open("cp '" + folder.Path("edited text.txt") + "'");
#endif
    }
    /// What the editor gets to see.
    std::string Shown() const {
#if defined(_WIN32)
        folder.File("show.bat", "@copy /y %1 \"" + folder.Path("shown.txt") + "\"\r\n");
        CHECK(Open("\"" + folder.Path("show.bat") + "\"") == VEDIT_CANCELLED);
#else
        CHECK(Open("f() { cp \"$1\" '" + folder.Path("shown.txt") + "'; }; f") == VEDIT_CANCELLED);
#endif
        return folder.Content("shown.txt");
    }
    int32_t Open(const std::string& command, int32_t which = 1) const {
        SetEnvironment("TORV_EDITOR", command);
        const char* const before = std::getenv(kTemporaryFolder);
        const std::string restored = before ? before : "";
        SetEnvironment(kTemporaryFolder, folder.Path("texts"));
        int32_t language = DBM_ENGLISH, program = which;
        const int32_t answer = Editor().openDialog(nullptr, &language, &program);
        SetEnvironment(kTemporaryFolder, restored);
        CHECK(Values(language, program) == Values(DBM_ENGLISH, which));
        CHECK(std::filesystem::is_empty(folder.Path("texts"))); // whatever came of it
        return answer;
    }
};

} // namespace

TEST_CASE("an edited text changes the voice, for a host of the database too and for good") {
    const EditingUser user;
    const Texts before = user.Singers();
    const std::string shown = user.Shown();
    CHECK(shown.starts_with("#"));
    CHECK(shown.find("\nName = Thomas\nResonance1 Frequency = 64\n") != std::string::npos);
    CHECK(shown.ends_with("\nGender Factor = 64\n"));
    CHECK(user.Save(shown) == VEDIT_CANCELLED);
    CHECK(user.Save("") == VEDIT_CANCELLED);
    CHECK(user.Save("# Noise = 3\r\n\r\n  Name=Thomas  \r\n") == VEDIT_CANCELLED);
    CHECK(user.Singers() == before);
    CHECK(user.Files().empty());

    CHECK(user.Save("Noise=3\r\n\tName  =  Tom = \x89\xCC \r\nGender Factor = 127") == VEDIT_OK);
    const std::string changed = user.ParametersOf(DBM_ENGLISH, 1);
    CHECK(changed.starts_with("VOICENAME=Tom = \x89\xCC;Resonance1 Frequency=64;"));
    CHECK(changed.find(";Noise=3;") != std::string::npos);
    CHECK(changed.ends_with(";Gender Factor=127;"));
    CHECK(user.Shown().find("\nName = Tom = \x89\xCC\n") != std::string::npos);
    user.Restart();
    CHECK(user.ParametersOf(DBM_ENGLISH, 1) == changed);
}

TEST_CASE("a text that cannot be used changes nothing") {
    const EditingUser user;
    const Texts before = user.Singers();
    for (const std::string& text :
         {std::string("Noise"), std::string("Nose = 3"), std::string("VOICENAME = a"), std::string("Noise = 128"),
          std::string("Noise = -1"), std::string("Noise ="), std::string("Noise = 3 4"), std::string("Name ="),
          std::string("Name = Alice"), std::string("Name = ") + std::string(1001, 'a'), std::string(65536, '\n')}) {
        CAPTURE(text.substr(0, 30));
        CHECK(user.Save("Harmonics = 1\n" + text) == VEDIT_BAD_INPUT);
    }
    CHECK(user.Singers() == before);
    CHECK(user.Files().empty());
    user.folder.File("user", "a file where the folder would be");
    CHECK(user.Save("Noise = 3") == VEDIT_FILE_ERROR);
    CHECK(user.Singers() == before);
}

TEST_CASE("a name of several lines is left alone unless its line is changed") {
    const EditingUser user;
    REQUIRE(user.library.SetVirtualVoiceName(DBM_ENGLISH, 1, " a\nNoise = 3\r") == DBM_OK);
    const std::string before = user.ParametersOf(DBM_ENGLISH, 1);
    CHECK(user.Save(user.Shown()) == VEDIT_CANCELLED);
    CHECK(user.ParametersOf(DBM_ENGLISH, 1) == before);
}

TEST_CASE("no voice, no editor, no database") {
    {
        const EditingUser user;
        CHECK(user.Open("exit 0 #", 5) == VEDIT_NO_SUCH);
        int32_t language = DBM_ENGLISH;
        CHECK(Editor().openDialog(nullptr, &language, nullptr) == VEDIT_NO_SUCH);
        CHECK(Editor().openDialog(nullptr, nullptr, &language) == VEDIT_NO_SUCH);
        const int32_t cannotRun = user.Open("no-such-editor");
#if defined(_WIN32)
        CHECK(
            (cannotRun == VEDIT_NO_EDITOR || cannotRun == VEDIT_CANCELLED)); // its processor tells no more than failure
#else
        CHECK(cannotRun == VEDIT_NO_EDITOR);
        const std::string before = user.ParametersOf(DBM_ENGLISH, 1);
        for (const char* const end : {"exit 1", "kill -9 $$"}) // what it saved is not meant
            CHECK(user.Open("f() { echo 'Noise = 3' > \"$1\"; " + std::string(end) + "; }; f") == VEDIT_CANCELLED);
        CHECK(user.ParametersOf(DBM_ENGLISH, 1) == before);
        CHECK(user.Open("rm") == VEDIT_BAD_INPUT);
        SetEnvironment("EDITOR", "touch '" + user.folder.Path("started") + "'");
        if (!isatty(0)) {
            CHECK(user.Open("") == VEDIT_NO_EDITOR);
            CHECK(!user.folder.Has("started"));
        }
#endif
        CHECK(Editor().init() == VEDIT_OK); // counted
        CHECK(Editor().remove() == VEDIT_OK);
        CHECK(user.Open("exit 0 #", 5) == VEDIT_NO_SUCH);
    }
    CHECK(Editor().remove() == VEDIT_NOT_READY);
    int32_t language = 0, program = 0;
    CHECK(Editor().openDialog(nullptr, &language, &program) == VEDIT_NOT_READY);
    char version[6] = "";
    CHECK(Values{Editor().version(version, 6), version} == Values(VEDIT_OK, "VEDIT"));
    CHECK(Values(Editor().version(nullptr, 6), Editor().version(version, 0)) ==
          Values(VEDIT_BAD_INPUT, VEDIT_BAD_INPUT));
}

TEST_CASE("the editor keeps the database ready without its host") {
    const EditingUser user;
    REQUIRE(user.library.Delete() == DBM_OK);
    CHECK(user.Save("Noise = 3") == VEDIT_OK);
    CHECK(user.ParametersOf(DBM_ENGLISH, 1).find(";Noise=3;") != std::string::npos);
    CHECK(Editor().remove() == VEDIT_OK);
    CHECK(user.library.Delete() == DBM_NOT_READY); // and leaves it as it found it
    CHECK(Editor().init() == VEDIT_OK);
    REQUIRE(user.library.Init() == DBM_OK);
}
