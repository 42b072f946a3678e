#include "user_data.h"

#include <set>

using namespace dbm_test;

namespace {

constexpr uint32_t kHighest = 0xFFFFFFFF;

/// What is left of the attack items when those of the library are taken off.
Texts UserItems(const UserData& user, int32_t database = 1) {
    Texts items = user.Items(database, 1, 0);
    items.erase(items.begin());
    return items;
}

int32_t Create(const UserData& user, uint32_t value, const char* id, const std::string& icon) {
    return user.library.CreateVirtualExpItem(1, 1, 0, value, id, icon.c_str(), "\x83\x5C", "Hana", "me");
}

/// The value of a key in an icon file, empty without one.
std::string Value(const std::string& item, const std::string& key) {
    const size_t at = item.find("\n" + key + " = ");
    return at == std::string::npos ? ""
                                   : item.substr(at + key.size() + 4, item.find('\n', at + 1) - at - key.size() - 4);
}

} // namespace

TEST_CASE("the expressions that come with the library can be sung") {
    const UserData user;
    const DBMExpInfo* info = nullptr;
    REQUIRE(user.library.GetVirtualExpInfo(1, &info) == DBM_OK);
    REQUIRE(info->count == 12);
    std::set<std::string> ids;
    std::vector<int> counts(5);
    for (int32_t i = 0; i < info->count; ++i) {
        const DBMExpression& each = info->expressions[i];
        CHECK(Values(each.kind, each.high, each.low) == Values(i / 3 + 1, each.kind, i % 3));
        for (const std::string& item : user.Items(1, each.high, each.low)) {
            CAPTURE(item);
            CHECK(std::stoi(item) == ++counts[static_cast<size_t>(each.kind)]);
            CHECK(ids.insert(item.substr(item.find("own ") + 4, item.find('|') - item.find("own ") - 4)).second);
            CHECK(item.find("|" + Value(item, "Caption") + "|") != std::string::npos);
            CHECK(std::stoi(Value(item, "Length")) >= 480);
            CHECK(Value(item, each.kind == DBM_VIBRATO ? "DepthBPY" : "Duration") != "");
            CHECK(Value(item, "Depth").empty() == (each.kind == DBM_RELEASE || each.kind == DBM_VIBRATO));
        }
    }
    CHECK(counts == std::vector<int>{0, 5, 3, 4, 5});
    CHECK(ids.size() == 17);
    CHECK(user.library.DeleteVirtualExpInfo(info) == DBM_OK);
    CHECK(user.Files().empty());
}

TEST_CASE("a user's items: kept with their icon files, through restarts") {
    const UserData user;
    const DbmLibrary& library = user.library;
    const std::string icon = user.folder.File("mine.aic", "[Common]\r\n\x83\x5C");
    REQUIRE(Create(user, kHighest, "../../escape", icon) == DBM_OK);
    REQUIRE(Create(user, 1, "B", icon) == DBM_OK);             // one of the library has this number too
    REQUIRE(Create(user, 3, "Normal Attack", icon) == DBM_OK); // and this name
    REQUIRE(library.DeleteVirtualExpItem(1, 1, 0, 3) == DBM_OK);
    REQUIRE(library.CreateVirtualExpItem(1, 4, 2, 1, "B", icon.c_str(), "", "", "") == DBM_OK); // and one of vibrato
    std::filesystem::remove(icon);
    const Texts made{"1 user B|\x83\x5C|Hana|me|[Common]\r\n\x83\x5C",
                     "4294967295 user ../../escape|\x83\x5C|Hana|me|[Common]\r\n\x83\x5C"};
    CHECK(UserItems(user) == made);
    CHECK(user.Files() == Texts{"expressions.json", "u1-1-1.aic", "u1-1-4294967295.aic", "u1-4-1.aic"});
    user.Restart();
    CHECK(UserItems(user) == made);

    REQUIRE(library.SetVirtualExpItemCaption(1, 1, 0, 1, "New") == DBM_OK);
    REQUIRE(library.DeleteVirtualExpItem(1, 1, 0, kHighest) == DBM_OK);
    const Texts left{"1 user B|New|Hana|me|[Common]\r\n\x83\x5C"};
    CHECK(UserItems(user) == left);
    CHECK(user.Files() == Texts{"expressions.json", "u1-1-1.aic", "u1-4-1.aic"});

    const std::string other = user.folder.File("other.aic", "other");
    const struct {
        const char* what;
        int32_t status, answer;
    } refusals[] = {
        {"a number in use", DBM_EXISTS, Create(user, 1, "C", other)},
        {"no number", DBM_BAD_ARGUMENT, Create(user, 0, "C", other)},
        {"a name too long", DBM_BAD_ARGUMENT, Create(user, 2, std::string(1001, 'a').c_str(), other)},
        {"no icon file", DBM_FILE_ERROR, Create(user, 2, "C", user.folder.Path("none.aic"))},
        {"a folder as the icon file", DBM_FILE_ERROR, Create(user, 2, "C", user.folder.Path("user"))},
        {"no such expression", DBM_NO_SUCH, library.CreateVirtualExpItem(1, 1, 3, 2, "C", other.c_str(), "", "", "")},
        {"no such database", DBM_NO_SUCH, library.CreateVirtualExpItem(2, 1, 0, 2, "C", other.c_str(), "", "", "")},
        {"caption of the library's", DBM_READ_ONLY, library.SetVirtualExpItemCaption(1, 1, 1, 2, "a")},
        {"caption in another style", DBM_NO_SUCH, library.SetVirtualExpItemCaption(1, 1, 2, 1, "a")},
        {"deleting the library's", DBM_READ_ONLY, library.DeleteVirtualExpItem(1, 1, 1, 2)},
        {"deleting nothing", DBM_NO_SUCH, library.DeleteVirtualExpItem(1, 1, 0, kHighest)},
    };
    for (const auto& refusal : refusals) {
        CAPTURE(refusal.what);
        CHECK(refusal.answer == refusal.status);
    }
    CHECK(UserItems(user) == left);
    user.Restart();
    CHECK(UserItems(user) == left);
    CHECK(user.Files() == Texts{"expressions.json", "u1-1-1.aic", "u1-4-1.aic"});
}

TEST_CASE("added expression databases") {
    const UserData user;
    const DbmLibrary& library = user.library;
    const auto definition = [](const std::string& items, int kind = 1) {
        return R"({"name":"More","expressions":[{"kind":)" + std::to_string(kind) +
               R"(,"high":1,"low":0,"name":"A","items":[)" + items + "]}]}";
    };
    const std::string item = R"({"value":1,"id":"A","caption":"a","file":"sub/a.aic"})";
    user.folder.Folder("sub");
    user.folder.File("sub/a.aic", "icon");
    const std::string files[] = {"{}", definition(item, 5), definition(item + "," + item),
                                 definition(R"({"value":0,"id":"A","caption":"a","file":"sub/a.aic"})"),
                                 definition(R"({"value":1,"id":"A","caption":"a","file":"sub/../sub/a.aic"})"),
                                 definition(R"({"value":1,"id":"A","caption":"a","file":"sub\\a.aic"})"),
                                 // The first icon file is copied before the second turns out to be missing.
                                 definition(item + R"(,{"value":2,"id":"B","caption":"a","file":"none.aic"})")};
    for (const std::string& bad : files) {
        CAPTURE(bad);
        CHECK(library.AddExp(user.folder.File("bad.json", bad).c_str()) == DBM_FILE_ERROR);
        CHECK(user.Files().empty());
    }

    const std::string file = user.folder.File("more.json", definition(item));
    for (int i = 0; i < 3; ++i)
        REQUIRE(library.AddExp(file.c_str()) == DBM_OK);
    REQUIRE(library.DeleteExp(3) == DBM_OK);
    REQUIRE(library.CreateVirtualExpItem(2, 1, 0, 1, "U", file.c_str(), "", "", "") == DBM_OK);
    user.Restart();
    const DBMExpDatabaseList* list = nullptr;
    REQUIRE(library.GetExpDB(&list) == DBM_OK);
    REQUIRE(list->count == 3);
    CHECK(Values(list->databases[0].number, list->databases[0].user) == "1 0");
    CHECK(Values(list->databases[2].number, list->databases[2].user, list->databases[2].name) == "4 1 More");
    CHECK(user.Items(2, 1, 0) == Texts{"1 own A|a|||icon", "1 user U||||" + definition(item)});
    CHECK(library.DeleteVirtualExpItem(2, 1, 0, 1) == DBM_OK);
    CHECK(library.DeleteVirtualExpItem(2, 1, 0, 1) == DBM_READ_ONLY);
    CHECK(Values(library.DeleteExp(1), library.DeleteExp(3)) == Values(DBM_READ_ONLY, DBM_NO_SUCH));
    for (const int32_t number : {2, 4})
        REQUIRE(library.DeleteExp(number) == DBM_OK);
    CHECK(user.Files() == Texts{"expressions.json"});
    REQUIRE(library.AddExp(file.c_str()) == DBM_OK);
    CHECK(user.Items(2, 1, 0).size() == 1); // the number again, without the items of the one before
#if !defined(_WIN32)                        // there such names are the code page's affair
    user.folder.File("sub/\x83\x5C.aic", "so");
    const std::string so = definition(R"({"value":1,"id":"S","caption":"s","file":"sub/\u0083\\.aic"})");
    REQUIRE(library.AddExp(user.folder.File("so.json", so).c_str()) == DBM_OK);
    CHECK(user.Items(3, 1, 0) == Texts{"1 own S|s|||so"});
#endif
}
