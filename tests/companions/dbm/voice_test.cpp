#include "user_data.h"

#include <set>

using namespace dbm_test;

namespace {

const std::string kShiftJis = "\x89\xCC\x8E\xE8\\ \"\x7F\x80\xFF"; // two characters, and bytes that are none

} // namespace

TEST_CASE("voices that come with the library: persons first, no two alike, and reading writes nothing") {
    const UserData user;
    std::set<std::string> sounds;
    Texts names;
    for (const std::string& singer : user.Singers()) {
        const size_t name = singer.find("VOICENAME="), end = singer.find(';');
        names.push_back(singer.substr(0, name) + singer.substr(name + 10, end - name - 10));
        sounds.insert(singer.substr(end));
        CHECK(std::count(singer.begin(), singer.end(), '=') == 18);
    }
    CHECK(names == Texts{"1 96 4 own: Susan", "1 97 5 own: Roger", "1 99 6 own: Angus", "0 96 4 own: Sumire",
                         "0 97 5 own: Ryo", "0 99 6 own: Akira", "0 0 0 own: Hana", "0 1 1 own: Kenta",
                         "0 2 2 own: Yuki", "1 0 0 own: Alice", "1 1 1 own: Thomas", "1 2 2 own: Robin",
                         "1 3 3 own: George"});
    CHECK(sounds.size() == names.size());
    const DBMVoiceParameters* hana = nullptr;
    REQUIRE(user.library.GetVirtualVoiceParameters(DBM_JAPANESE, 0, &hana) == DBM_OK);
    std::string settings;
    for (int32_t i = 0; i < hana->count; ++i)
        settings += std::string(hana->pairs[i].name) + ",";
    std::string expected = "VOICENAME,";
    for (const char* const resonance : {"Resonance1", "Resonance2", "Resonance3", "Resonance4"})
        for (const char* const what : {" Frequency,", " Band Width,", " Amplitude,"})
            expected += std::string(resonance) + what;
    CHECK(settings == expected + "Harmonics,Noise,Brightness,Clearness,Gender Factor,");
    Texts installed;
    const DBMInstalledVoice* voice = nullptr;
    for (int32_t number = 0; user.library.GetVoice(number, &voice) == DBM_OK; ++number) {
        CHECK(Values(voice->number, voice->user, *voice->description != 0) == Values(number, 0, 1));
        installed.push_back(std::to_string(voice->engineProgram) + " " + voice->name);
    }
    CHECK(installed ==
          Texts{"0 Soprano", "1 Tenor", "2 Child", "3 Bass", "96 Woman (alto)", "97 Man (tenor)", "99 Man (baritone)"});
    CHECK(user.Files().empty());
}

TEST_CASE("a singer's life, through restarts") {
    const UserData user;
    const DbmLibrary& library = user.library;
    int32_t program = 0, copy = 0;
    REQUIRE(library.CreateVirtualVoice(DBM_JAPANESE, 3, kShiftJis.c_str(), &program) == DBM_OK);
    CHECK(program == 3); // free: no bass came with this language
    REQUIRE(library.CreateVirtualVoice(DBM_ENGLISH, 3, "Low", &program) == DBM_OK);
    CHECK(program == 7);
    const DBMVoiceParameters* parameters = nullptr;
    REQUIRE(library.GetVoiceParameters(3, &parameters) == DBM_OK);
    const std::string bass = Parameters(*parameters);
    CHECK(user.ParametersOf(DBM_ENGLISH, 7).substr(13) == bass.substr(14)); // behind the names
    const DBMTextPair pairs[] = {{"Gender Factor", "0"}, {"Resonance4 Band Width", "127"}, {"VOICENAME", "Lower"}, {}};
    REQUIRE(library.SetVirtualVoiceParameters(DBM_ENGLISH, 7, pairs) == DBM_OK);
    REQUIRE(library.CopyVirtualVoice(DBM_ENGLISH, 7, "Lowest", &copy) == DBM_OK);
    CHECK(copy == 11);
    REQUIRE(library.MoveVirtualVoice(DBM_ENGLISH, 11, DBM_JAPANESE, 127) == DBM_OK);
    REQUIRE(library.SetVirtualVoiceName(DBM_JAPANESE, 127, "Lower") == DBM_OK); // a name holds within a language
    char name[64];
    CHECK(Values{library.GetVirtualVoiceName(DBM_JAPANESE, 3, name, 64), name} == Values(DBM_OK, kShiftJis));
    CHECK(Values{library.GetVirtualVoiceName(DBM_JAPANESE, 127, name, 4), name} == Values(DBM_OK, "Low"));

    // Two that came with the library swap their names.
    for (const auto& [which, called] : {std::pair(0, "x"), std::pair(2, "Hana"), std::pair(0, "Yuki")})
        REQUIRE(library.SetVirtualVoiceName(DBM_JAPANESE, which, called) == DBM_OK);
    const DBMTextPair noise[] = {{"Noise", "007"}, {}};
    REQUIRE(library.SetVirtualVoiceParameters(DBM_JAPANESE, 1, noise) == DBM_OK);

    const Texts singers = user.Singers();
    REQUIRE(singers.size() == 16);
    CHECK(singers[13].starts_with("0 3 3 user: VOICENAME=" + kShiftJis + ";"));
    CHECK(singers[14] == "0 127 3 user: " + user.ParametersOf(DBM_ENGLISH, 7));
    CHECK(singers[14].find("Resonance4 Band Width=127;") != std::string::npos);
    user.Restart();
    CHECK(user.Singers() == singers);

    REQUIRE(library.DeleteVirtualVoice(DBM_ENGLISH, 7) == DBM_OK);
    CHECK(library.GetVirtualVoiceName(DBM_ENGLISH, 7, name, 64) == DBM_NO_SUCH);
    user.Restart();
    CHECK(user.Singers() == Texts(singers.begin(), singers.end() - 1));
}

TEST_CASE("singers: what is refused changes nothing, neither in memory nor on disk") {
    const UserData user;
    const DbmLibrary& library = user.library;
    int32_t made = 0;
    REQUIRE(library.CreateVirtualVoice(DBM_JAPANESE, 0, "Mine", &made) == DBM_OK);
    REQUIRE(made == 4);
    Texts before;
    std::string file;
    const auto remember = [&] {
        before = user.Singers();
        file = user.Content("voices.json");
    };
    const auto refuses = [&](const char* what, int32_t status, int32_t answer) {
        CAPTURE(what);
        CHECK(answer == status);
        CHECK(user.Singers() == before);
        CHECK(user.Content("voices.json") == file);
    };
    const auto create = [&](int32_t language, int32_t voice, const std::string& name) {
        int32_t program = -5;
        const int32_t answer = library.CreateVirtualVoice(language, voice, name.c_str(), &program);
        CHECK(program == -5);
        return answer;
    };
    const auto move = [&](int32_t program, int32_t toLanguage, int32_t toProgram) {
        return library.MoveVirtualVoice(DBM_JAPANESE, program, toLanguage, toProgram);
    };
    const auto set = [&](const char* name, const char* value) {
        const DBMTextPair pairs[] = {{"Noise", "1"}, {name, value}, {nullptr, nullptr}}; // the first is good
        return library.SetVirtualVoiceParameters(DBM_JAPANESE, 4, pairs);
    };
    remember();
    refuses("create: no such voice", DBM_NO_SUCH, create(DBM_JAPANESE, 7, "a"));
    refuses("create: no such language", DBM_BAD_ARGUMENT, create(DBM_LANGUAGES, 0, "a"));
    refuses("create: no name", DBM_BAD_ARGUMENT, create(DBM_JAPANESE, 0, ""));
    refuses("create: a name too long", DBM_BAD_ARGUMENT, create(DBM_JAPANESE, 0, std::string(1001, 'a')));
    refuses("create: a name in use", DBM_EXISTS, create(DBM_JAPANESE, 0, "Kenta"));
    refuses("copy: a name in use", DBM_EXISTS, library.CopyVirtualVoice(DBM_JAPANESE, 0, "Mine", &made));
    refuses("rename: a name in use", DBM_EXISTS, library.SetVirtualVoiceName(DBM_JAPANESE, 4, "Hana"));
    refuses("rename: nobody", DBM_NO_SUCH, library.SetVirtualVoiceName(DBM_ENGLISH, 77, "a"));
    refuses("delete: not the user's", DBM_READ_ONLY, library.DeleteVirtualVoice(DBM_ENGLISH, 3));
    refuses("delete: nobody", DBM_NO_SUCH, library.DeleteVirtualVoice(-1, -1));
    refuses("uninstall: not the user's", DBM_READ_ONLY, library.DeleteVoice(0));
    refuses("uninstall: nothing", DBM_NO_SUCH, library.DeleteVoice(100));
    refuses("move: not the user's", DBM_READ_ONLY, move(0, DBM_JAPANESE, 8));
    refuses("move: nobody", DBM_NO_SUCH, move(5, DBM_JAPANESE, 9));
    refuses("move: taken", DBM_EXISTS, move(4, DBM_JAPANESE, 0));
    refuses("move: another sound", DBM_BAD_ARGUMENT, move(4, DBM_JAPANESE, 9));
    refuses("move: a person", DBM_BAD_ARGUMENT, move(4, DBM_JAPANESE, 100));
    refuses("move: off the end", DBM_BAD_ARGUMENT, move(4, DBM_JAPANESE, 128));
    refuses("move: below", DBM_BAD_ARGUMENT, move(4, DBM_JAPANESE, -4));
    refuses("move: no such language", DBM_BAD_ARGUMENT, move(4, -1, 8));
    refuses("set: unknown", DBM_BAD_ARGUMENT, set("noise", "1"));
    for (const char* const value : {"128", "-1", "", "1 ", static_cast<const char*>(nullptr)})
        refuses(value ? value : "no value", DBM_BAD_ARGUMENT, set("Noise", value));
    refuses("set: a name in use", DBM_EXISTS, set("VOICENAME", "Hana"));
    refuses("set: no name", DBM_BAD_ARGUMENT, set("VOICENAME", ""));
    REQUIRE(library.CreateVirtualVoice(DBM_ENGLISH, 0, "Mine", &made) == DBM_OK);
    remember();
    refuses("move: its name is in use there", DBM_EXISTS, move(4, DBM_ENGLISH, 8));
    for (int32_t i = 0; i < 26; ++i) // four of the 32 are a person's
        REQUIRE(library.CreateVirtualVoice(DBM_ENGLISH, 0, std::to_string(i).c_str(), &made) == DBM_OK);
    CHECK(made == 124);
    remember();
    refuses("create: all are taken", DBM_FULL, create(DBM_ENGLISH, 0, "a"));
}

TEST_CASE("voices to install") {
    const UserData user;
    const DbmLibrary& library = user.library;
    const std::string good = R"({"name":"Alto","description":"Deep","engineProgram":3,"languages":["en","ja"],)"
                             R"("parameters":{"Noise":70}})";
    const Texts before = user.Singers();
    const auto voice = [](const std::string& rest) { return R"({"name":"A","engineProgram":)" + rest + "}"; };
    for (const std::string& bad :
         {std::string(), std::string("[]"), std::string(R"({"name":"A","languages":["ja"]})"),
          std::string(R"({"engineProgram":0,"languages":["ja"]})"), voice(R"(4,"languages":["ja"])"),
          voice(R"(0,"languages":[])"), voice(R"(0,"languages":["ja","ja"])"), voice(R"(0,"languages":["fr"])"),
          voice(R"(0,"languages":["ja"],"parameters":{"Noise":128})"),
          voice(R"(0,"languages":["ja"],"parameters":{"noise":1})"),
          std::string(R"({"name":"A\u0000","engineProgram":0,"languages":["ja"]})")}) {
        CAPTURE(bad);
        CHECK(library.AddVoice(user.folder.File("bad.json", bad).c_str()) == DBM_FILE_ERROR);
    }
    CHECK(library.AddVoice(user.folder.Path("none.json").c_str()) == DBM_FILE_ERROR);
    CHECK(user.Singers() == before);
    CHECK(user.Files().empty());

    const std::string file = user.folder.File("alto.json", good);
    REQUIRE(library.AddVoice(file.c_str()) == DBM_OK);
    CHECK(library.AddVoice(file.c_str()) == DBM_EXISTS);
    int32_t program = 0;
    REQUIRE(library.CreateVirtualVoice(DBM_ENGLISH, 100, "Second", &program) == DBM_OK);
    user.Restart();
    const DBMInstalledVoice* added = nullptr;
    REQUIRE(library.GetVoice(100, &added) == DBM_OK);
    CHECK(Values(added->user, added->engineProgram, added->description) == "1 3 Deep");
    const Texts singers = user.Singers();
    REQUIRE(singers.size() == 16);
    CHECK(singers[13].starts_with("0 3 100 user: VOICENAME=Alto;"));
    CHECK(singers[14].starts_with("1 7 100 user: VOICENAME=Alto;"));
    CHECK(singers[15].find("Noise=70;") != std::string::npos); // the new voice's own parameters
    REQUIRE(library.DeleteVoice(100) == DBM_OK);
    CHECK(library.GetVoice(100, &added) == DBM_NO_SUCH);
    CHECK(user.Singers() == before);
}
