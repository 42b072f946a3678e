#include "database/database_fixture.h"

namespace {

struct Users {
    TempFolder folder;
    CUserDB database;
    Boxes boxes;
    std::string path = folder.Path("User.def");

    int Load(const std::string& content) {
        folder.File("User.def", content);
        return database.LoadDatabase(path.c_str());
    }
    std::string Content() const { return ContentOf(path); }
    bool Add(std::unique_ptr<CIconObject> icon) {
        icon->SetVariation(database.GetNewVariation(torv::StatusFromID(icon->GetIconID()),
                                                    torv::ArticulationFromID(icon->GetIconID())));
        return database.AddIcon(icon) != nullptr;
    }
};

constexpr const char* kTwoIcons = "[NoteAttack]\r\n"
                                  "3 = #USER0001\r\n"
                                  "\r\n"
                                  "[#USER0001]\r\n"
                                  "IconID = $01018003\r\n"
                                  "IDS = mine\r\n"
                                  "Original = 2\r\n"
                                  "Caption = Mine\r\n"
                                  "Length = 240\r\n"
                                  "Duration = 10\r\n"
                                  "Depth = 20\r\n"
                                  "\r\n"
                                  "[Dynaff]\r\n"
                                  "1 = #USER0002\r\n"
                                  "\r\n"
                                  "[#USER0002]\r\n"
                                  "IconID = $05018001\r\n"
                                  "IDS = low\r\n"
                                  "Original = 0\r\n"
                                  "Caption = low\r\n"
                                  "Length = 1\r\n"
                                  "StartDyn = 12\r\n"
                                  "EndDyn = 12\r\n"
                                  "DynBPNum = 0\r\n"
                                  "\r\n";

} // namespace

TEST_CASE("user icons: the file's bytes, and the same bytes again") {
    Users users;
    CHECK(users.database.LoadDatabase(users.path.c_str()) == 1); // not there yet: no icons, and no message
    auto attack = std::make_unique<CIconNoteAttack>(torv::kStatusAttack, 1, 0x8003);
    attack->SetIDString("mine");
    attack->SetCaption("Mine");
    attack->SetLength(240);
    attack->SetDuration(10);
    attack->SetDepth(20);
    attack->SetOriginalVariation(2);
    std::unique_ptr<CIconObject> icon = std::move(attack);
    CHECK(users.database.AddIcon(icon));
    CHECK(users.Add(Level(torv::kDynaff, 0, "low", 12)));
    CHECK(users.database.IsModified());
    CHECK(users.database.SaveDatabase() == 1);
    CHECK(!users.database.IsModified());
    CHECK(users.Content() == kTwoIcons);

    CHECK(users.Load(kTwoIcons) == 1);
    CHECK(!users.database.IsModified());
    auto* const read = dynamic_cast<CIconNoteAttack*>(users.database.GetModelIconObject(0x01018003));
    REQUIRE(read);
    CHECK((read->GetDuration() == 10 && read->GetDepth() == 20 && read->GetOriginalVariation() == 2));
    CHECK(users.database.SaveDatabase() == 1);
    CHECK(users.Content() == kTwoIcons);
    CHECK(users.boxes.texts.empty());
}

TEST_CASE("user icons: texts are kept such as the file gives them back") {
    Users users;
    users.Load("");
    CHECK(users.Add(Level(torv::kDynaff, 0, " a;b\r\n[c]\t= \x83\x5C ", 1)));
    const CString id = users.database.GetModelIconObject(0x05018001)->GetIDString();
    CHECK(id == "a,b  [c] = \x83\x5C");
    CHECK(users.database.SaveDatabase() == 1);
    const std::string saved = users.Content();
    CHECK(users.database.LoadDatabase(users.path.c_str()) == 1);
    CHECK(users.database.GetModelIconObject(0x05018001)->GetIDString() == id);
    CHECK(users.database.SaveDatabase() == 1);
    CHECK(users.Content() == saved);
}

TEST_CASE("user icons: numbers are the lowest free, and end") {
    Users users;
    users.Load("");
    for (int i = 0; i < 0x7FFF; ++i)
        CHECK(users.Add(Level(torv::kCrescendo, 0, "", 0)));
    CHECK(users.database.GetNewVariation(5, torv::kCrescendo) == 0);
    CHECK(users.database.GetNewVariation(5, torv::kDecrescendo) == 0x8001);
    CHECK(users.database.RemoveIcon(0x05028123));
    CHECK(users.database.GetNewVariation(5, torv::kCrescendo) == 0x8123);
    struct Row {
        int status, articulation;
    };
    for (const Row& row : {Row{1, 2}, Row{5, 4}, Row{6, 1}, Row{7, 1}, Row{0, 0}})
        CHECK(users.database.GetNewVariation(row.status, row.articulation) == 0);
    // A preset's number, the number 0 and one that is taken are refused, and the icon stays the caller's.
    for (const int variation : {1, 0x8000, 0x8001}) {
        std::unique_ptr<CIconObject> icon = Level(torv::kCrescendo, variation, "x", 0);
        CHECK(users.database.AddIcon(icon) == nullptr);
        CHECK(icon != nullptr);
    }
}

TEST_CASE("user icons: what cannot be read is told and kept") {
    Users users;
    const std::string file = "[NoteAttack]\r\n1 = #USER0001\r\nx = #USER0002\r\n3 = #USER0003\r\n4 = #USER0001\r\n"
                             "5 = NoteAttack\r\n6 = #USER0006\r\n7 = #USER0007\r\n\r\n"
                             "[#USER0001]\r\nIconID = $01018001\r\n\r\n"
                             "[#USER0002]\r\nIconID = $01018007\r\n\r\n" // a bad key is no reason to lose the icon
                             "[#USER0003]\r\nIconID = $05018001\r\n\r\n" // of another kind
                             "[#USER0006]\r\nIconID = $01010002\r\n\r\n" // a preset's
                             "[#USER0007]\r\nIconID = $01018001\r\nIDS = double\r\n\r\n"
                             "[Odd]\r\nkey = value\r\n\r\n";
    CHECK(users.Load(file) == 1);
    const auto line = [&](const char* key, const char* value) {
        return "Invalid Line !\n\nSection : 'NoteAttack'\nEntry : '" + std::string(key) + "'\nValue : '" + value +
               "'\n" + users.path + "\n";
    };
    const auto section = [&](const char* name) {
        return "Invalid section \"[" + std::string(name) + "]\".\n\nfile : " + users.path;
    };
    CHECK(users.boxes.Take() == Texts{"Invalid enty key 'x' !\n", section("#USER0003"), line("4", "#USER0001"),
                                      line("5", "NoteAttack"), section("#USER0006"), section("#USER0007"),
                                      section("Odd")});
    CHECK(users.database.CountModels(1, 1) == 2);

    // A save brings them along; the readable icons get names that they do not have.
    CHECK(users.database.SaveDatabase() == 1);
    const std::string saved = users.Content();
    for (const char* kept : {"[#USER0003]\r\nIconID = $05018001\r\n", "[#USER0006]\r\nIconID = $01010002\r\n",
                             "[#USER0007]\r\nIconID = $01018001\r\nIDS = double\r\n", "[Odd]\r\nkey = value\r\n"})
        CHECK(saved.find(kept) != std::string::npos);
    CHECK(saved.find("[NoteAttack]\r\n1 = #USER0001\r\n7 = #USER0002\r\n2 = #USER0003\r\n3 = #USER0006\r\n") == 0);
    CHECK(users.database.LoadDatabase(users.path.c_str()) == 1);
    CHECK(users.database.CountModels(1, 1) == 2);
    CHECK(users.database.SaveDatabase() == 1);
    CHECK(users.Content() == saved);
}

TEST_CASE("user icons: a file that was not read is not written over") {
    Users users;
    users.folder.Folder("User.def");
    CHECK(users.database.LoadDatabase(users.path.c_str()) == 0);
    CHECK(users.boxes.Take() == Texts{"Function error - 'CUserDB::LoadDatabase'"});
    CHECK(users.Add(Level(torv::kDynaff, 0, "new", 1)));
    CHECK(users.database.SaveDatabase() == 0);
    CHECK(std::filesystem::is_directory(users.path));
}

TEST_CASE("user icons: values of any length") {
    Users users;
    const std::string huge(10'000'000, 'x');
    CHECK(users.Load("[Dynaff]\n1=a\n2=" + huge + "\n[a]\nIconID=$05018001\nIDS=" + huge + "\nCaption=" + huge +
                     "\nDynBPNum=9\nDynBPX=" + huge + "\nDynBPY=" + huge + "\n[" + huge + "]\n") == 1);
    REQUIRE(users.database.GetModelIconObject(0x05018001));
    CHECK(users.database.GetModelIconObject(0x05018001)->GetIDString().GetLength() == 4096);
    CHECK(users.database.SaveDatabase() == 1);
    const std::string saved = users.Content();
    CHECK(users.database.LoadDatabase(users.path.c_str()) == 1);
    CHECK(users.database.SaveDatabase() == 1);
    CHECK(users.Content() == saved);
}

TEST_CASE("user icons: a damaged file is told a few times, not for ever") {
    Users users;
    std::string file;
    for (int i = 0; i < 20000; ++i)
        file += "[s" + std::to_string(i) + "]\n";
    CHECK(users.Load(file) == 1);
    CHECK(users.boxes.texts.size() == 10);
    CHECK(users.Add(Level(torv::kDynaff, 0, "new", 1)));
    CHECK(users.database.SaveDatabase() == 1);
    CHECK(users.Content().find("[s19999]") != std::string::npos);
}

TEST_CASE("user icons: a curve's points do not creep from one session to the next") {
    Users users;
    users.Load("");
    auto vibrato = std::make_unique<CIconVibrato>(torv::kStatusVibrato, 4, 0);
    vibrato->SetLength(480);
    for (LONG position = 3; position < torv::kIconUnits; position += 13) {
        tagBreakPoint point{position, 64, 0};
        vibrato->GetDepthBPList()->AddTail(point);
    }
    const CBreakPointList given = *vibrato->GetDepthBPList();
    CHECK(users.Add(std::move(vibrato)));
    std::string before;
    for (int session = 0; session < 3; ++session) {
        CHECK(users.database.SaveDatabase() == 1);
        if (session > 0)
            CHECK(users.Content() == before);
        before = users.Content();
        CHECK(users.database.LoadDatabase(users.path.c_str()) == 1);
    }
    auto* const read = dynamic_cast<CIconVibrato*>(users.database.GetModelIconObject(0x04048001));
    REQUIRE(read);
    REQUIRE(read->GetDepthBPList()->GetCount() == given.GetCount());
    LONG furthest = 0;
    POSITION at = given.GetHeadPosition();
    for (POSITION other = read->GetDepthBPList()->GetHeadPosition(); other;)
        furthest = std::max(furthest, given.GetNext(at).position - read->GetDepthBPList()->GetNext(other).position);
    CHECK(furthest <= 4);
}
