// Opening and closing: the order, every way to fail, and what is left then.
#include "database/database_fixture.h"

#include "torv/lyrics/converter_modules.h"

namespace {

/// Which of the converters are there, and whether the catalogues of voices and icons are.
Values Standing() {
    return Values(torv::ConverterModule(0) != nullptr, torv::ConverterModule(1) != nullptr,
                  torv::GetVoiceCatalogue() != nullptr, torv::GetIconCatalogue() != nullptr);
}

DWORD Put(CQuillDBManager& manager, const char* name) {
    return manager.RegisterIconObject(Level(torv::kDynaff, 0, name, 1).release());
}

} // namespace

TEST_CASE("database manager: opens and closes in order, as often as wanted") {
    FakeHost host;
    for (int i = 0; i < 20; ++i) {
        REQUIRE(host.manager.OpenDatabase() == 1);
        CHECK(host.TakeCalls() == "Init EditorInit GetAllVoice GetExpDB ");
        CHECK(Standing() == "1 1 1 1");
        CHECK(Values{host.manager.OpenDatabase(), host.TakeCalls()} == "0 "); // open already
        host.manager.CloseDatabase();
        CHECK(host.TakeCalls() == "EditorDelete Delete ");
        CHECK(Standing() == "0 0 0 0");
    }
    host.manager.CloseDatabase();
    CHECK(Values(host.TakeCalls(), host.fake->infosOut, host.boxes.texts.size()) == " 0 0");
    CHECK(!std::filesystem::exists(host.UserFile())); // nothing changed, nothing written
}

TEST_CASE("database manager: what keeps it from opening") {
    FakeHost host;
    const std::string failed = "Failed to loading databae ! - ";
    const char* const fake = "FAKE_DBM.dll";
    struct Row {
        const char* library;
        int32_t FakeDatabase::*status; ///< that is not 0
        const char* calls;
        Texts told;
    };
    const Row rows[] = {
        {nullptr, nullptr, "", {}},
        {"no_such_library.dll", nullptr, "", {}},
        {"FAKE_DBM_INCOMPLETE.dll", nullptr, "", {"Function error - 'DBM_DeleteVirtualExpItem'"}},
        {"FAKE_DBM_INCOMPLETE.dll", nullptr, "", {}}, // told once
        {fake, &FakeDatabase::initStatus, "Init ", {}},
        {fake,
         &FakeDatabase::voiceStatus,
         "Init EditorInit GetAllVoice EditorDelete Delete ",
         {failed + "CVoiceDB::OpenDatabase\n\nDBM_GetAllVoice returned 8"}},
        {fake,
         &FakeDatabase::expStatus,
         "Init EditorInit GetAllVoice GetExpDB EditorDelete Delete ",
         {failed + "CExpressionDB::OpenDatabase\n\nDBM_GetExpDB returned 8"}},
    };
    for (const Row& row : rows) {
        *host.fake = {};
        if (row.status)
            host.fake->*row.status = 8;
        if (row.library)
            host.registry.Set(kDatabaseKey, "PATH", row.library);
        else
            host.registry.Remove(kDatabaseKey);
        CHECK(Values{host.manager.OpenDatabase(), host.manager.IsOpen(), host.TakeCalls()} == Values(0, 0, row.calls));
        CHECK(host.boxes.Take() == row.told);
        CHECK(Standing() == "0 0 0 0");
        CHECK(host.manager.GetModelIconObject(0x05010001) == nullptr);
    }
    for (const auto status : {&FakeDatabase::voiceStatus, &FakeDatabase::expStatus})
        for (const int32_t missing : {-1, -2}) {
            *host.fake = {};
            host.fake->*status = missing;
            CHECK(host.manager.OpenDatabase() == 0);
            CHECK(host.boxes.Take().size() == 1);
        }
    *host.fake = {};
    CHECK(host.manager.OpenDatabase() == 1); // when the reason is gone
}

TEST_CASE("database manager: it opens without a voice editor, and without entry points that nobody calls") {
    FakeHost host;
    int language = 0, program = 0;
    for (const char* editor : {"", "no_such_library.dll", "FAKE_DBM_INCOMPLETE.dll"}) {
        host.registry.Set(kEditorKey, "PATH", editor);
        CHECK(Values{host.manager.OpenDatabase(), host.manager.OpenVoiceEditDialog(&language, &program)} == "1 0");
        host.manager.CloseDatabase();
        CHECK(host.TakeCalls() == "Init GetAllVoice GetExpDB Delete ");
    }
    host.registry.Set(kDatabaseKey, "PATH", "FAKE_DBM_LEAN.dll");
    host.registry.Set(kEditorKey, "PATH", "FAKE_DBM_LEAN.dll");
    for (int i = 0; i < 2; ++i) {
        CHECK(host.manager.OpenDatabase() == 1);
        host.manager.CloseDatabase();
    }
    CHECK(host.boxes.texts == Texts{"Function error - 'VEDIT_OpenDialog'",
                                    "Function error - 'DBM_AddVoice, DBM_DeleteVoice'"}); // of one library once
}

TEST_CASE("database manager: users' icons that cannot be read or saved") {
    FakeHost host;
    std::filesystem::create_directory(host.UserFile());
    CHECK(host.manager.OpenDatabase() == 1);
    CHECK(host.boxes.Take() == Texts{"Function error - 'CUserDB::LoadDatabase'"});
    CHECK(Put(host.manager, "mine") == 0x05018001);
    host.manager.CloseDatabase();
    CHECK(host.boxes.Take() == Texts{"Failed to save UserDB fle !"});
    CHECK(host.boxes.types.back() == (MB_ICONEXCLAMATION | MB_OK));
    host.RemoveUserFile();
}

TEST_CASE("database manager: two in one process, closed in any order") {
    const FakeHost host;
    for (const int closedFirst : {0, 1}) {
        CQuillDBManager managers[2];
        CQuillDBManager& first = managers[closedFirst];
        CQuillDBManager& last = managers[1 - closedFirst];
        REQUIRE(Values{managers[0].OpenDatabase(), managers[1].OpenDatabase()} == "1 1");
        CHECK(torv::GetVoiceCatalogue() == managers[1].GetVoiceDB());
        CHECK(Values{Put(first, "one"), Put(last, "two")} == Values(0x05018001, 0x05018001));
        first.CloseDatabase();
        CHECK(torv::GetVoiceCatalogue() == last.GetVoiceDB());
        CHECK(Standing() == "1 1 1 1");
        last.CloseDatabase();
        CHECK(Standing() == "0 0 0 0");
        REQUIRE(first.OpenDatabase() == 1);
        CHECK(Values(first.GetModelIconObject(0x05018001)->GetIDString(),
                     first.GetModelIconObject(0x05018002)->GetIDString()) == "one two");
        first.CloseDatabase();
        host.RemoveUserFile();
    }
}
