// Opening and closing: the order, every way to fail, and what is left then.
#include "database/database_fixture.h"

#include "torv/lyrics/converter_modules.h"

namespace {

constexpr const char* kOpened = "Init EditorInit GetAllVoice GetExpDB ";

bool HasConverters() { return torv::ConverterModule(0) && torv::ConverterModule(1); }

} // namespace

TEST_CASE("database manager: opens and closes in order, as often as wanted") {
    const FakeHost host;
    Boxes boxes;
    CQuillDBManager manager;
    for (int i = 0; i < 100; ++i) {
        REQUIRE(manager.OpenDatabase() == 1);
        CHECK(host.TakeCalls() == kOpened);
        CHECK(HasConverters());
        CHECK(manager.OpenDatabase() == 0); // open already
        CHECK(host.TakeCalls().empty());
        CHECK(torv::GetVoiceCatalogue() == manager.GetVoiceDB());
        manager.CloseDatabase();
        CHECK(host.TakeCalls() == "EditorDelete Delete ");
        CHECK(!HasConverters());
        CHECK(torv::GetVoiceCatalogue() == nullptr);
        CHECK(torv::GetIconCatalogue() == nullptr);
    }
    manager.CloseDatabase();
    CHECK(host.TakeCalls().empty());
    CHECK(host.fake->infosOut == 0);
    CHECK(boxes.texts.empty());
    CHECK(!std::filesystem::exists(host.UserFile())); // nothing changed, nothing written
}

TEST_CASE("database manager: what keeps it from opening") {
    FakeHost host;
    Boxes boxes;
    CQuillDBManager manager;
    const auto failsAfter = [&](const char* calls, const Texts& told) {
        CHECK(manager.OpenDatabase() == 0);
        CHECK(host.TakeCalls() == calls);
        CHECK(boxes.Take() == told);
        CHECK(!manager.IsOpen());
        CHECK(torv::GetVoiceCatalogue() == nullptr);
        CHECK(!HasConverters());
        CHECK(manager.GetModelIconObject(0x05010001) == nullptr);
    };
    SUBCASE("no registry value") {
        host.registry.Remove(kDatabaseKey);
        failsAfter("", {});
    }
    SUBCASE("no library") {
        host.registry.Set(kDatabaseKey, "PATH", "no_such_library.dll");
        failsAfter("", {});
    }
    SUBCASE("no entry point") {
        host.registry.Set(kDatabaseKey, "PATH", "FAKE_DBM_INCOMPLETE.dll");
        failsAfter("", {"Function error - 'DBM_DeleteVirtualExpItem'"});
        failsAfter("", {}); // told once
    }
    SUBCASE("the library refuses") {
        host.fake->initStatus = 5;
        failsAfter("Init ", {});
    }
    SUBCASE("no voices") {
        host.fake->voiceStatus = 8;
        failsAfter("Init EditorInit GetAllVoice EditorDelete Delete ",
                   {"Failed to loading databae ! - CVoiceDB::OpenDatabase\n\nDBM_GetAllVoice returned 8"});
    }
    SUBCASE("no expressions") {
        host.fake->expStatus = 9;
        failsAfter("Init EditorInit GetAllVoice GetExpDB EditorDelete Delete ",
                   {"Failed to loading databae ! - CExpressionDB::OpenDatabase\n\nDBM_GetExpDB returned 9"});
    }
    // It opens when the reason is gone.
    *host.fake = {};
    host.registry.Set(kDatabaseKey, "PATH", "FAKE_DBM.dll");
    CHECK(manager.OpenDatabase() == 1);
}

TEST_CASE("database manager: what it opens without") {
    FakeHost host;
    Boxes boxes;
    CQuillDBManager manager;
    int language = 0, program = 0;
    Texts told;
    SUBCASE("a voice editor") {
        SUBCASE("named") { host.registry.Remove(kEditorKey); }
        SUBCASE("there") { host.registry.Set(kEditorKey, "PATH", "no_such_library.dll"); }
        SUBCASE("whole") {
            host.registry.Set(kEditorKey, "PATH", "FAKE_DBM_INCOMPLETE.dll");
            told = {"Function error - 'VEDIT_OpenDialog'"};
        }
        CHECK(manager.OpenDatabase() == 1);
        CHECK(manager.OpenVoiceEditDialog(&language, &program) == 0);
        manager.CloseDatabase();
        CHECK(host.TakeCalls() == "Init GetAllVoice GetExpDB Delete ");
        CHECK(boxes.texts == told);
    }
    SUBCASE("entry points that nobody calls") {
        host.registry.Set(kDatabaseKey, "PATH", "FAKE_DBM_LEAN.dll");
        host.registry.Set(kEditorKey, "PATH", "FAKE_DBM_LEAN.dll");
        for (int i = 0; i < 2; ++i) {
            CHECK(manager.OpenDatabase() == 1);
            CHECK(manager.OpenVoiceEditDialog(&language, &program) == 1);
            manager.CloseDatabase();
        }
        CHECK(boxes.texts == Texts{"Function error - 'DBM_AddVoice, DBM_DeleteVoice'",
                                   "Function error - 'VEDIT_GetVersionString'"}); // once
    }
    SUBCASE("a user database that can be read") {
        std::filesystem::create_directory(host.UserFile());
        CHECK(manager.OpenDatabase() == 1);
        CHECK(boxes.Take() == Texts{"Function error - 'CUserDB::LoadDatabase'"});
        // Nothing is lost silently: what cannot be saved is told.
        CHECK(manager.RegisterIconObject(Level(torv::kDynaff, 0, "mine", 50).release()) == 0x05018001);
        manager.CloseDatabase();
        CHECK(boxes.Take() == Texts{"Failed to save UserDB fle !"});
        CHECK(boxes.types.back() == (MB_ICONEXCLAMATION | MB_OK));
    }
}

TEST_CASE("database manager: a failed save leaves the old file") {
    const FakeHost host;
    Boxes boxes;
    const std::string old = "[Dynaff]\r\n1 = #USER0001\r\n\r\n[#USER0001]\r\nIconID = $05018001\r\nIDS = old\r\n";
    std::ofstream(host.UserFile(), std::ios::binary) << old;
    CQuillDBManager manager;
    REQUIRE(manager.OpenDatabase() == 1);
    const std::unique_ptr<CIconObject> removed(manager.UnregisterIconObject(0x05018001));
    CHECK(removed != nullptr);
    // What takes its place in the meantime cannot be replaced by a file.
    std::filesystem::rename(host.UserFile(), host.UserFile() + ".old");
    std::filesystem::create_directories(host.UserFile() + "/full");
    manager.CloseDatabase();
    CHECK(boxes.texts == Texts{"Failed to save UserDB fle !"});
    CHECK(ContentOf(host.UserFile() + ".old") == old);
    std::filesystem::remove(host.UserFile() + ".old");
}

TEST_CASE("database manager: two in one process, closed in any order") {
    const FakeHost host;
    const Boxes boxes;
    for (const bool isFirstClosedFirst : {true, false}) {
        CQuillDBManager first, second;
        REQUIRE(first.OpenDatabase() == 1);
        REQUIRE(second.OpenDatabase() == 1);
        CHECK(torv::GetVoiceCatalogue() == second.GetVoiceDB());
        CHECK(first.RegisterIconObject(Level(torv::kDynaff, 0, "one", 1).release()) == 0x05018001);
        CHECK(second.RegisterIconObject(Level(torv::kDynaff, 0, "two", 2).release()) == 0x05018001);
        (isFirstClosedFirst ? first : second).CloseDatabase();
        CHECK(torv::GetVoiceCatalogue() == (isFirstClosedFirst ? second : first).GetVoiceDB());
        CHECK(torv::GetIconCatalogue() != nullptr);
        CHECK(HasConverters());
        (isFirstClosedFirst ? second : first).CloseDatabase();
        CHECK(torv::GetVoiceCatalogue() == nullptr);
        CHECK(torv::GetIconCatalogue() == nullptr);
        CHECK(!HasConverters());
        REQUIRE(first.OpenDatabase() == 1);
        CHECK(first.GetModelIconObject(0x05018001)->GetIDString() == (isFirstClosedFirst ? "one" : "two"));
        CHECK(first.GetModelIconObject(0x05018002)->GetIDString() == (isFirstClosedFirst ? "two" : "one"));
        first.CloseDatabase();
        host.RemoveUserFile();
    }
}
