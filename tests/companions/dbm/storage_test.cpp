#include "user_data.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace dbm_test;

TEST_CASE("user files that cannot be read are put aside, one by one") {
    const UserData user;
    const Texts singers = user.Singers();
    int number = 0;
    for (const std::string& broken : {std::string(), std::string("{"), std::string("[]"), std::string("\xFF\xFE"),
                                      std::string(R"({"virtual":7,"items":7})"), std::string(100000, '[')}) {
        CAPTURE(broken.substr(0, 30));
        user.Write("voices.json", broken);
        user.Write("expressions.json", broken);
        user.Restart();
        CHECK(user.Singers() == singers);
        const std::string ending = ++number == 1 ? ".broken" : ".broken" + std::to_string(number);
        CHECK(user.Content("voices.json" + ending) == broken);
        CHECK(user.Content("expressions.json" + ending) == broken);
    }
    CHECK(user.Files().size() == 12);
    int32_t program = 0;
    CHECK(user.library.CreateVirtualVoice(DBM_JAPANESE, 0, "a", &program) == DBM_OK);
    user.Restart();
    CHECK(user.Singers().size() == 14);
}

TEST_CASE("single entries that make no sense are left out, and kept in a copy when the file is written anew") {
    const UserData user;
    const std::string good = R"({"language":"ja","program":4,"voice":0,"name":"Mine","parameters":{"Noise":1}})";
    const std::string voices =
        R"({"virtual":[7,{},null,)"
        R"({"language":"ja","program":4,"voice":1,"name":"a"},)"
        R"({"language":"ja","program":4,"voice":5,"name":"a"},)"
        R"({"language":"ja","program":132,"voice":0,"name":"a"},)"
        R"({"language":"ja","program":8,"voice":0,"name":"Hana"},)"
        R"({"language":"ja","program":8,"voice":0,"name":""},)"
        R"({"language":"ja","program":8,"voice":0,"name":"\u8868"},)"
        R"({"language":"ja","program":8,"voice":0,"name":")" +
        std::string(1001, 'a') +
        R"("},)"
        R"({"language":"ja","program":8,"voice":0,"name":"b","parameters":{"Noise":1e3}},)"
        R"({"language":["ja"],"program":8,"voice":0,"name":"b"},)"
        R"({"language":"ja","program":8,"voice":18446744073709551615,"name":"b"},)" +
        good + "," + good +
        R"(],"changed":[{"language":"ja","program":98,"name":"c"},{"language":"ja","program":0,"name":"Yuki"}],)"
        R"("installed":[{"number":0,"name":"a","engineProgram":0},{"number":100,"name":"a","engineProgram":-1}]})";
    const std::string expressions =
        R"({"databases":[{"number":1,"name":"a","expressions":[]},{"number":2,"name":"a","expressions":[{}]}],)"
        R"("items":[[],{"database":2,"high":1,"low":0,"value":5,"id":"a","caption":""},)"
        R"({"database":1,"high":1,"low":9,"value":5,"id":"a","caption":""},)"
        R"({"database":1,"high":1,"low":0,"value":4294967296,"id":"a","caption":""},)"
        R"({"database":1,"high":1,"low":0,"value":5,"id":"a","caption":"x"}]})";
    const Texts before = user.Singers();
    user.Write("voices.json", voices);
    user.Write("expressions.json", expressions);
    user.Restart();
    Texts singers = user.Singers();
    REQUIRE(singers.size() == 14);
    CHECK(singers.back().starts_with("0 4 0 user: VOICENAME=Mine;"));
    CHECK(user.ParametersOf(DBM_JAPANESE, 0).starts_with("VOICENAME=Hana;")); // another has the name it was to get
    CHECK(user.Items(1, 1, 0).back() == "5 user a|x|||");
    CHECK(user.Files() == Texts{"expressions.json", "voices.json"});

    CHECK(user.library.SetVirtualVoiceName(DBM_JAPANESE, 4, "Other") == DBM_OK);
    CHECK(user.library.SetVirtualExpItemCaption(1, 1, 0, 5, "y") == DBM_OK);
    CHECK(user.Content("voices.json.broken") == voices);
    CHECK(user.Content("expressions.json.broken") == expressions);
    user.Restart();
    CHECK(user.ParametersOf(DBM_JAPANESE, 4).starts_with("VOICENAME=Other;"));
    CHECK(user.library.SetVirtualVoiceName(DBM_JAPANESE, 4, "Again") == DBM_OK);
    CHECK(user.Files().size() == 4); // no more copies: the file is sound now
}

TEST_CASE("what another process wrote meanwhile is kept") {
    const UserData user;
    const DbmLibrary& library = user.library;
    const std::string icon = user.folder.File("icon.aic", "icon");
    int32_t program = 0;
    const std::string theirVoice = R"({"virtual":[{"language":"ja","program":4,"voice":0,"name":"Theirs"}]})";
    const std::string theirItem = R"({"items":[{"database":1,"high":1,"low":0,"value":5,"id":"theirs","caption":""}]})";
    user.Write("voices.json", theirVoice);
    user.Write("expressions.json", theirItem);
    CHECK(library.CreateVirtualVoice(DBM_JAPANESE, 0, "Theirs", &program) == DBM_EXISTS); // seen before it is changed
    CHECK(library.CreateVirtualVoice(DBM_JAPANESE, 0, "Ours", &program) == DBM_OK);
    CHECK(program == 8);
    CHECK(library.CreateVirtualExpItem(1, 1, 0, 5, "ours", icon.c_str(), "", "", "") == DBM_EXISTS);
    CHECK(library.CreateVirtualExpItem(1, 1, 0, 6, "ours", icon.c_str(), "", "", "") == DBM_OK);
    const auto areThere = [&](const char* theirs) {
        CAPTURE(theirs);
        const Texts singers = user.Singers(), items = user.Items(1, 1, 0);
        REQUIRE(singers.size() == 15);
        CHECK(singers[13].find(std::string("=") + theirs + ";") != std::string::npos);
        CHECK(singers[14].find("=Ours;") != std::string::npos);
        CHECK(items == Texts{items[0], "5 user theirs||||", "6 user ours||||icon"});
    };
    areThere("Theirs");
    user.Restart();
    areThere("Theirs");
    // A file that is gone, or is none any more, takes nothing away from what was loaded.
    for (const char* const name : {"First", "Second"}) {
        for (const std::string file : {"voices.json", "expressions.json"})
            name == std::string("First") ? std::filesystem::remove(user.Path(file)) : (user.Write(file, "{"), true);
        CHECK(library.SetVirtualVoiceName(DBM_JAPANESE, 4, name) == DBM_OK);
        CHECK(library.SetVirtualExpItemCaption(1, 1, 0, 5, "") == DBM_OK);
        user.Restart();
        areThere(name);
    }
    CHECK(user.Content("voices.json.broken") == "{");
    CHECK(user.Content("expressions.json.broken") == "{");
}

#if !defined(_WIN32)
TEST_CASE("two processes that write at once lose nothing of each other's") {
    const UserData user;
    user.Write("voices.json", "{}"); // turns are taken in a folder that is there
    const pid_t child = fork();
    for (int number = 0; number < 12; ++number) {
        int32_t program = 0;
        const std::string name = (child == 0 ? "Theirs " : "Ours ") + std::to_string(number);
        CHECK(user.library.CreateVirtualVoice(DBM_JAPANESE, 0, name.c_str(), &program) == DBM_OK);
    }
    if (child == 0)
        _exit(0);
    CHECK(waitpid(child, nullptr, 0) == child);
    user.Restart();
    CHECK(user.Singers().size() == 13 + 24);
}
#endif

TEST_CASE("a write that fails changes nothing") {
    const UserData user;
    const std::string icon = user.folder.File("icon.aic", "icon");
    const std::string voice = user.folder.File("voice.json", R"({"name":"A","engineProgram":0,"languages":["ja"]})");
    int32_t program = 0;
    REQUIRE(user.library.CreateVirtualVoice(DBM_JAPANESE, 0, "Mine", &program) == DBM_OK);
    REQUIRE(user.library.CreateVirtualExpItem(1, 1, 0, 7, "Mine", icon.c_str(), "a", "", "") == DBM_OK);
    const Texts singers = user.Singers(), items = user.Items(1, 1, 0);
    std::filesystem::rename(user.folder.Path("user"), user.folder.Path("away"));
    user.folder.File("user", "a file where the folder was");
    const DBMTextPair pairs[] = {{"Noise", "1"}, {}};
    const int32_t answers[] = {
        user.library.CreateVirtualVoice(DBM_JAPANESE, 0, "b", &program),
        user.library.CopyVirtualVoice(DBM_JAPANESE, 4, "b", &program),
        user.library.SetVirtualVoiceName(DBM_JAPANESE, 4, "b"),
        user.library.SetVirtualVoiceParameters(DBM_JAPANESE, 4, pairs),
        user.library.MoveVirtualVoice(DBM_JAPANESE, 4, DBM_ENGLISH, 8),
        user.library.DeleteVirtualVoice(DBM_JAPANESE, 4),
        user.library.AddVoice(voice.c_str()),
        user.library.CreateVirtualExpItem(1, 1, 0, 8, "b", icon.c_str(), "a", "", ""),
        user.library.SetVirtualExpItemCaption(1, 1, 0, 7, "b"),
        user.library.DeleteVirtualExpItem(1, 1, 0, 7),
    };
    for (const int32_t answer : answers)
        CHECK(answer == DBM_FILE_ERROR);
    CHECK(user.Singers() == singers);
    std::filesystem::remove(user.folder.Path("user"));
    std::filesystem::rename(user.folder.Path("away"), user.folder.Path("user"));
    CHECK(user.Items(1, 1, 0) == items);
    CHECK(user.Files() == Texts{"expressions.json", "u1-1-7.aic", "voices.json"});
    user.Restart();
    CHECK(user.Singers() == singers);
    CHECK(user.Items(1, 1, 0) == items);
}

TEST_CASE("only the list of expressions cannot be written: the icon file goes again") {
    const UserData user;
    std::filesystem::create_directories(user.Path("expressions.json/in the way"));
    user.Restart();
    const std::string icon = user.folder.File("icon.aic", "icon");
    CHECK(user.library.CreateVirtualExpItem(1, 1, 0, 7, "Mine", icon.c_str(), "a", "", "") == DBM_FILE_ERROR);
    CHECK(Values(user.Files().empty(), user.Items(1, 1, 0).size()) == "1 1");
}
