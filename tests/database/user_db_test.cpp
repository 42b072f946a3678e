#include "allocation_failure.h"
#include "database/database_fixture.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

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
    std::string Content() const { return folder.Content("User.def"); }
    std::string SavedAgain() {
        CHECK(Values{database.LoadDatabase(path.c_str()), database.SaveDatabase()} == "1 1");
        return Content();
    }
};

bool Add(CUserDB& database, std::unique_ptr<CIconObject> icon) { return database.Register(icon) != nullptr; }

constexpr const char* kTwoIcons = "[NoteAttack]\r\n3 = #USER0001\r\n\r\n"
                                  "[#USER0001]\r\nIconID = $01018003\r\nIDS = mine\r\nOriginal = 2\r\n"
                                  "Caption = Mine\r\nLength = 240\r\nDuration = 10\r\nDepth = 20\r\n\r\n"
                                  "[Dynaff]\r\n1 = #USER0002\r\n\r\n"
                                  "[#USER0002]\r\nIconID = $05018001\r\nIDS = low\r\nOriginal = 0\r\n"
                                  "Caption = low\r\nLength = 1\r\nStartDyn = 12\r\nEndDyn = 12\r\nDynBPNum = 0\r\n\r\n";

/// The file as two hosts have it open at once.
struct Hosts : Users {
    CUserDB other;

    /// Both open a file with these levels, 1 from the first on.
    explicit Hosts(const std::vector<int>& levels) {
        CUserDB writer;
        writer.LoadDatabase(path.c_str());
        for (const int level : levels)
            Register(writer, level);
        CHECK(writer.SaveDatabase() == 1);
        for (CUserDB* const host : {&database, &other})
            CHECK(host->LoadDatabase(path.c_str()) == 1);
    }
    static void Change(CUserDB& host, int number, int level) {
        CHECK(host.Replace(*Level(torv::kDynaff, 0x8000 + number, std::to_string(level).c_str(), level)) == 1);
    }
    static void Remove(CUserDB& host, int number) { CHECK(host.Unregister(0x05018000U + static_cast<DWORD>(number))); }
    static void Register(CUserDB& host, int level) {
        CHECK(Add(host, Level(torv::kDynaff, 0, std::to_string(level).c_str(), level)));
    }
    /// The other saves first, then this one. "number=level" of what is there afterwards.
    std::string Saved() {
        CHECK(other.SaveDatabase() == 1);
        CHECK(database.SaveDatabase() == 1);
        const std::string written = Content();
        CHECK(database.SaveDatabase() == 1); // what it wrote itself is nobody else's
        CHECK(Content() == written);
        CUserDB read;
        read.LoadDatabase(path.c_str());
        std::string levels;
        for (CIconObject* const icon : read.GetModels(torv::kStatusDynamics, torv::kDynaff))
            levels += std::to_string(icon->GetIconID() & 0x7FFF) + "=" +
                      std::to_string(dynamic_cast<CIconDynamics&>(*icon).GetStartDynamics()) + " ";
        return levels;
    }
    std::string Taken(const char* number) const {
        return path + "\nEntry key '" + number + "' ([Dynaff]) has already been used !\n";
    }
};

} // namespace

TEST_CASE("user icons: the file's bytes, and the same bytes again") {
    Users users;
    // Not there yet there are no icons, and no message.
    CHECK(Values{users.database.LoadDatabase(users.path.c_str()), users.Load(kTwoIcons)} == "1 1");
    CHECK(About(users.database.GetModelIconObject(0x01018003)) ==
          "01018003 mine 'Mine' 240 from 2 shape 10 20 of 0 0  ");
    std::filesystem::remove(users.path);
    CHECK(Values{users.database.SaveDatabase(), users.boxes.texts.size(), users.Content()} == Values(1, 0, kTwoIcons));
}

TEST_CASE("user icons: every text comes back as it was, beside one that older readers can take") {
    Users users;
    users.Load("");
    const Texts texts{" a;b\r\n[c]\t= \x83\x5C ", ";", "\x81;", std::string(4096, '\x1F'), "plain"};
    for (const std::string& text : texts)
        CHECK(Add(users.database, Level(torv::kDynaff, 0, text.c_str(), 1)));
    CHECK(users.database.SaveDatabase() == 1);
    const std::string saved = users.Content();
    CHECK(saved.find("\r\nIDS = a,b  [c] = \x83\x5C\r\n") != std::string::npos); // a tab is a control byte too
    CHECK(saved.find("\r\nCaptionBytes = 3b\r\n") != std::string::npos);
    CHECK(users.database.LoadDatabase(users.path.c_str()) == 1);
    for (size_t i = 0; i < texts.size(); ++i) {
        CIconObject* const icon = users.database.GetModelIconObject(0x05018001 + static_cast<DWORD>(i));
        CHECK(Values(icon->GetIDString(), icon->GetCaption()) == Values(texts[i], texts[i]));
    }
    // Where a person changed the plain text, or the bytes make no sense, the plain text holds; half a byte is none.
    users.Load("[Dynaff]\n1=a\n2=b\n3=c\n[a]\nIconID=$05018001\nIDS=new\nIDSBytes=3b\n"
               "[b]\nIconID=$05018002\nIDS=,\nIDSBytes=3x\n"
               "[c]\nIconID=$05018003\nIDS=,\nIDSBytes=3b3\n");
    CHECK(Values(users.database.GetModelIconObject(0x05018001)->GetIDString(),
                 users.database.GetModelIconObject(0x05018002)->GetIDString(),
                 users.database.GetModelIconObject(0x05018003)->GetIDString()) == "new , ;");
}

TEST_CASE("user icons: numbers are the lowest free, and end") {
    Users users;
    users.Load("");
    for (int i = 0; i < 0x7FFF; ++i)
        CHECK(Add(users.database, Level(torv::kCrescendo, 0, "", 0)));
    CHECK(!Add(users.database, Level(torv::kCrescendo, 0, "", 0)));
    CHECK(users.database.GetNewVariation(5, torv::kDecrescendo) == 0x8001);
    CHECK(users.database.Unregister(0x05028123));
    CHECK(users.database.GetNewVariation(5, torv::kCrescendo) == 0x8123);
    for (const int kind : {0x102, 0x504, 0x601, 0x701, 0})
        CHECK(users.database.GetNewVariation(kind >> 8, kind & 0xFF) == 0);
    // A preset's number, the number 0 and one that is taken are refused, and the icon stays the caller's.
    for (const int variation : {1, 0x8000, 0x8001}) {
        std::unique_ptr<CIconObject> icon = Level(torv::kCrescendo, variation, "x", 0);
        CHECK(users.database.Restore(icon) == 0);
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
    CHECK(users.database.GetModels(1, 1).size() == 2);

    // A save brings them along; the readable icons get names that they do not have.
    CHECK(users.database.SaveDatabase() == 1);
    const std::string saved = users.Content();
    for (const char* kept : {"[#USER0003]\r\nIconID = $05018001\r\n", "[#USER0006]\r\nIconID = $01010002\r\n",
                             "[#USER0007]\r\nIconID = $01018001\r\nIDS = double\r\n", "[Odd]\r\nkey = value\r\n"})
        CHECK(saved.find(kept) != std::string::npos);
    CHECK(saved.find("[NoteAttack]\r\n1 = #USER0001\r\n7 = #USER0002\r\n2 = #USER0003\r\n3 = #USER0006\r\n") == 0);
    CHECK(users.SavedAgain() == saved);
}

TEST_CASE("user icons: a file that was not read is not written over") {
    Users users;
    users.folder.Folder("User.def");
    CHECK(users.database.LoadDatabase(users.path.c_str()) == 0);
    CHECK(users.boxes.Take() == Texts{"Function error - 'CUserDB::LoadDatabase'"});
    CHECK(Add(users.database, Level(torv::kDynaff, 0, "new", 1)));
    CHECK(users.database.SaveDatabase() == 0);
    CHECK(std::filesystem::is_directory(users.path));
    // When it can be read by then, nothing of it is lost.
    std::filesystem::remove(users.path);
    users.folder.File("User.def", kTwoIcons);
    CHECK(Values{users.database.SaveDatabase(), users.database.LoadDatabase(users.path.c_str())} == "1 1");
    CHECK(Values(users.database.GetModels(1, 1).size(), users.database.GetModels(5, 1).size()) == "1 2");
}

TEST_CASE("user icons: values of any length, and a damaged file is told a few times, not for ever") {
    Users users;
    const std::string huge(1'000'000, 'x');
    std::string file = "[Dynaff]\n1=a\n2=" + huge + "\n[a]\nIconID=$05018001\nIDS=" + huge +
                       "\nDynBPNum=9\nDynBPX=" + huge + "\nDynBPY=" + huge + "\n[" + huge + "]\n";
    for (int i = 0; i < 20000; ++i)
        file += "[s" + std::to_string(i) + "]\n";
    CHECK(users.Load(file) == 1);
    CHECK(users.boxes.texts.size() == 11);
    CHECK(users.boxes.Take().back() == "19991 more of such errors in\n\n" + users.path); // a line before the 20000
    REQUIRE(users.database.GetModelIconObject(0x05018001));
    CHECK(users.database.GetModelIconObject(0x05018001)->GetIDString().GetLength() == 4096);
    CHECK(users.database.SaveDatabase() == 1);
    const std::string saved = users.Content();
    CHECK(saved.find("[s19999]") != std::string::npos);
    CHECK(users.SavedAgain() == saved);
}

TEST_CASE("user icons: two hosts with one file") {
    SUBCASE("both put one in: the first keeps its number") {
        Hosts hosts({});
        Hosts::Register(hosts.other, 10);
        Hosts::Register(hosts.database, 20);
        CHECK(hosts.Saved() == "1=10 2=20 ");
        CHECK(hosts.boxes.Take() == Texts{hosts.Taken("1")});
        Hosts::Remove(hosts.database, 2); // which it has put there itself
        CHECK(hosts.Saved() == "1=10 ");
    }
    SUBCASE("each change is kept, each removal only where the other knows of it") {
        Hosts hosts({10, 20, 30, 40, 50});
        Hosts::Remove(hosts.other, 1);
        Hosts::Change(hosts.other, 2, 21);
        Hosts::Change(hosts.other, 3, 31);
        Hosts::Register(hosts.other, 11); // in place 1
        Hosts::Remove(hosts.database, 3); // changed by the other
        Hosts::Remove(hosts.database, 4);
        Hosts::Change(hosts.database, 5, 51);
        CHECK(hosts.Saved() == "1=11 2=21 3=31 5=51 ");
        CHECK(hosts.boxes.texts.empty());
    }
    SUBCASE("both change one: both are kept, and it is told") {
        Hosts hosts({10, 20});
        Hosts::Change(hosts.other, 1, 11);
        Hosts::Change(hosts.database, 1, 12);
        Hosts::Change(hosts.other, 2, 21);
        Hosts::Change(hosts.database, 2, 21); // alike
        CHECK(hosts.Saved() == "1=11 2=21 3=12 ");
        CHECK(hosts.boxes.Take() == Texts{hosts.Taken("1")});
    }
#if !defined(_WIN32)
    SUBCASE("two processes save at once, again and again") {
        Hosts hosts({});
        const pid_t child = fork();
        CUserDB& host = child == 0 ? hosts.other : hosts.database;
        for (int level = 1; level <= 20; ++level) {
            Hosts::Register(host, child == 0 ? level : level + 50);
            host.SaveDatabase();
        }
        if (child == 0)
            _exit(0);
        CHECK(waitpid(child, nullptr, 0) == child);
        CHECK(hosts.database.LoadDatabase(hosts.path.c_str()) == 1);
        CHECK(hosts.database.GetModels(torv::kStatusDynamics, torv::kDynaff).size() == 40);
    }
#endif
    SUBCASE("the file is away at opening, and back at saving") {
        Hosts hosts({10, 20, 30});
        std::filesystem::rename(hosts.path, hosts.path + ".away");
        CHECK(hosts.database.LoadDatabase(hosts.path.c_str()) == 1);
        std::filesystem::rename(hosts.path + ".away", hosts.path);
        Hosts::Register(hosts.database, 99);
        CHECK(hosts.Saved() == "1=10 2=20 3=30 4=99 ");
    }
    SUBCASE("the file is away at saving") {
        Hosts hosts({10, 20});
        std::filesystem::remove(hosts.path);
        CHECK(hosts.Saved() == "1=10 2=20 ");
    }
    SUBCASE("sections that cannot be read") {
        Hosts hosts({10});
        hosts.Load(hosts.Content() + "[Odd]\r\na = b\r\n\r\n");
        hosts.folder.File("User.def", hosts.Content() + "[Odder]\r\nc = d\r\n\r\n");
        hosts.boxes.Take();
        CHECK(hosts.database.SaveDatabase() == 1);
        const std::string saved = hosts.Content();
        for (const char* kept : {"[Odd]\r\na = b\r\n", "[Odder]\r\nc = d\r\n"})
            CHECK(saved.find(kept) < saved.size());
        CHECK(saved.rfind("[Odd]") == saved.find("[Odd]")); // once
        CHECK(hosts.boxes.texts.empty());                   // told when the file is opened
    }
    SUBCASE("an expression that both know from the external library is one") {
        Hosts hosts({});
        for (CUserDB* const host : {&hosts.other, &hosts.database}) {
            auto icon = std::make_unique<CIconNoteAttack>(torv::kStatusAttack, 1, 0);
            icon->SetIDString("kept");
            icon->SetOriginalVariation(host == &hosts.other ? 1 : 2);
            CHECK(Add(*host, std::move(icon)));
        }
        hosts.Saved();
        CHECK(hosts.boxes.texts.empty());
        CHECK(hosts.Content().find("Original = 1") < hosts.Content().find("Original = 2")); // which is not there
    }
}

TEST_CASE("user icons: memory that is refused loses nothing") {
    Users users;
    users.Load(std::string(kTwoIcons) + "[Odd]\r\nkey = value\r\n\r\n");
    users.boxes.Take();
    const std::string theirs = users.Content() + "[Odder]\r\n\r\n";
    std::string whole;
    FailEachAllocation([&](AllocationFailure& failure) {
        CUserDB database;
        database.LoadDatabase(users.path.c_str());
        users.folder.File("User.def", theirs); // to be merged
        const int saved = failure.During([&] { return database.SaveDatabase(); });
        CHECK(saved == !failure.HasHappened());
        if (saved)
            whole = users.Content();
        else
            CHECK(users.Content() == theirs);
        users.folder.File("User.def", std::string(kTwoIcons) + "[Odd]\r\nkey = value\r\n\r\n");
    });
    CHECK(whole.find("[Odder]") != std::string::npos);
    CHECK(whole.find("StartDyn = 12") != std::string::npos);
    users.folder.File("User.def", whole);
    FailEachAllocation([&](AllocationFailure& failure) {
        CUserDB database;
        const int loaded = failure.During([&] { return database.LoadDatabase(users.path.c_str()); });
        CHECK(loaded == !failure.HasHappened());
        for (const std::string& told : users.boxes.Take())
            CHECK(told.substr(0, 16) != "Folder not found"); // it is a file, which could not be read
        database.SaveDatabase();                             // whether it was loaded or not
        CHECK(users.Content() == whole);
    });
}
