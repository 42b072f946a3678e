#include "user_data.h"

using namespace dbm_test;

namespace {

/// The answers of calls that are sound but for their pointers, which are null.
std::vector<int32_t> NullCalls(const DbmLibrary& library) {
    return {library.AddVoice(nullptr),
            library.CreateVirtualVoice(0, 0, nullptr, nullptr),
            library.GetVirtualVoiceName(0, 0, nullptr, 5),
            library.CopyVirtualVoice(0, 0, nullptr, nullptr),
            library.GetVirtualVoiceParameters(0, 0, nullptr),
            library.SetVirtualVoiceParameters(0, 0, nullptr),
            library.SetVirtualVoiceName(0, 0, nullptr),
            library.GetVoice(0, nullptr),
            library.GetVoiceParameters(0, nullptr),
            library.GetAllVoice(nullptr),
            library.AddExp(nullptr),
            library.GetExpDB(nullptr),
            library.GetVirtualExpInfo(1, nullptr),
            library.DeleteVirtualExpInfo(nullptr),
            library.GetVirtualExpItems(1, 1, 0, nullptr),
            library.DeleteVirtualExpItems(nullptr),
            library.SetVirtualExpItemCaption(1, 1, 0, 1, nullptr),
            library.CreateVirtualExpItem(1, 1, 0, 9, nullptr, nullptr, nullptr, nullptr, nullptr)};
}

} // namespace

TEST_CASE("null pointers, and calls outside of the library's life") {
    {
        const UserData user;
        for (const int32_t answer : NullCalls(user.library))
            CHECK(answer == DBM_BAD_ARGUMENT);
        CHECK(user.library.ActivateDialog(nullptr) == DBM_NO_DIALOG);
        CHECK(user.Files().empty());
    }
    const DbmLibrary& library = Library();
    auto answers = NullCalls(library);
    for (const int32_t answer : {library.Delete(), library.DeleteVoice(0), library.DeleteVirtualVoice(0, 0),
                                 library.MoveVirtualVoice(0, 0, 0, 4), library.DeleteExp(1),
                                 library.DeleteVirtualExpItem(1, 1, 0, 1), library.ActivateDialog(nullptr)})
        answers.push_back(answer);
    CHECK(std::count(answers.begin(), answers.end(), DBM_NOT_READY) == 25);
    char version[8] = "1234567";
    CHECK(
        (library.GetVersionString(version, 5) == DBM_OK && std::string(version, 8) == std::string("DBM \00067\0", 8)));
    for (const int32_t size : {0, -1})
        CHECK(library.GetVersionString(version, size) == DBM_BAD_ARGUMENT);
}

TEST_CASE("it stays ready until as many deletes as inits, over and over") {
    const UserData user;
    const DBMVoiceList* list = nullptr;
    CHECK(user.library.Init() == DBM_OK);
    CHECK(user.library.Delete() == DBM_OK);
    CHECK(user.library.GetAllVoice(&list) == DBM_OK);
    for (int i = 0; i < 100; ++i) {
        const DBMExpItems* forgotten = nullptr;
        CHECK(user.library.GetVirtualExpItems(1, 4, 0, &forgotten) == DBM_OK);
        user.Restart();
        CHECK(user.library.DeleteVirtualExpItems(forgotten) == DBM_BAD_ARGUMENT);
    }
}

TEST_CASE("what was handed out stays while the database goes on changing") {
    const UserData user;
    const DbmLibrary& library = user.library;
    int32_t program = 0;
    const std::string icon = user.folder.File("icon.aic", "icon");
    REQUIRE(library.CreateVirtualVoice(DBM_JAPANESE, 0, "Mine", &program) == DBM_OK);
    REQUIRE(library.CreateVirtualExpItem(1, 1, 0, 7, "Mine", icon.c_str(), "a", "", "") == DBM_OK);
    const DBMVoiceList* voices = nullptr;
    const DBMVoiceParameters *singer = nullptr, *installed = nullptr;
    const DBMExpItems *items = nullptr, *after = nullptr;
    REQUIRE(library.GetAllVoice(&voices) == DBM_OK);
    REQUIRE(library.GetVirtualVoiceParameters(DBM_JAPANESE, 4, &singer) == DBM_OK);
    REQUIRE(library.GetVoiceParameters(0, &installed) == DBM_OK); // another entry point
    REQUIRE(library.GetVirtualExpItems(1, 1, 0, &items) == DBM_OK);
    REQUIRE(library.DeleteVirtualVoice(DBM_JAPANESE, 4) == DBM_OK);
    REQUIRE(library.DeleteVirtualExpItem(1, 1, 0, 7) == DBM_OK);
    REQUIRE(library.GetVirtualExpItems(1, 1, 0, &after) == DBM_OK);
    CHECK(std::string(voices->voices[13].name) == "Mine");
    CHECK(Parameters(*singer).starts_with("VOICENAME=Mine;Resonance1 Frequency=64;"));
    CHECK(Values(items->count, items->items[1].caption) == "2 a");
    CHECK(after->count == 1);
    CHECK(library.DeleteVirtualExpItems(items) == DBM_OK);
    CHECK(library.DeleteVirtualExpItems(items) == DBM_BAD_ARGUMENT); // given back already
    CHECK(library.DeleteVirtualExpItems(after) == DBM_OK);
}
