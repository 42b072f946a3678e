#include "database/database_fixture.h"

namespace {

constexpr const char* kList = "[Dynamics]\nDynaff=p,f\nCrescendo=up\nDecrescendo=down\n";

/// A preset database in a folder of its own.
struct Presets {
    TempFolder folder;
    CAiconDB database;
    Boxes boxes;

    Presets() {
        folder.Folder("Set");
        folder.Folder("Set/Dynamics");
    }
    void Icon(const std::string& name, const std::string& keys, const std::string& button = "") const {
        folder.File("Set/Dynamics/" + name + ".aic",
                    "[Common]\nCaption=" + name + "!\nButton=" + button + "\n[Parameter]\n" + keys + "\n");
    }
    int Load(const std::string& definition) {
        return database.LoadDatabase(folder.File("Set.def", definition).c_str());
    }
    std::string Names(int articulation) const {
        std::string names;
        for (const CIconObject* icon : database.GetModels(torv::kStatusDynamics, articulation))
            names += std::to_string(torv::VariationFromID(icon->GetIconID())) + "=" +
                     icon->GetIDString().GetStdString() + " ";
        return names;
    }
};

/// A 24-bit bitmap of one colour.
std::string Bitmap(int width, int height, unsigned char blue) {
    const int row = (width * 3 + 3) / 4 * 4;
    std::string bytes = "BM";
    const auto number = [&bytes](int value, int size) {
        for (int i = 0; i < size; ++i)
            bytes += static_cast<char>(value >> 8 * i & 0xFF);
    };
    for (const int field : {54 + row * height, 0, 54, 40, width, height})
        number(field, 4);
    number(1, 2);
    number(24, 2);
    for (const int field : {0, row * height, 0, 0, 0, 0})
        number(field, 4);
    return bytes + std::string(static_cast<size_t>(row * height), static_cast<char>(blue));
}

} // namespace

TEST_CASE("preset icons: read from the listed files, numbered densely") {
    Presets set;
    set.Icon("p", "StartDyn=44\nEndDyn=44\nLength=960");
    set.Icon("f", "StartDyn=200\nEndDyn=200", "f.bmp");
    set.Icon("up", "Length=480\nEndDyn=30");
    set.Icon("down", "EndDyn=-200");
    set.folder.File("Set/Dynamics/f.bmp", Bitmap(7, 5, 200));
    CHECK(set.Load("[Dynamics]\nDynaff = p , lost,, f\nCrescendo=up\nDecrescendo=down\n") == 1);
    const std::string lost = torv::JoinPath(set.folder.Path("Set").c_str(), "Dynamics").GetStdString();
    CHECK(set.boxes.Take() == Texts{"File not found !\n\n" + torv::JoinPath(lost.c_str(), "lost.aic").GetStdString()});
    CHECK(set.Names(torv::kDynaff) == "1=p 2=f ");
    CHECK(set.Names(torv::kCrescendo) == "1=up ");
    CHECK(set.Names(torv::kDecrescendo) == "1=down ");
    CHECK(set.database.GetDatabaseName() == "Set");

    auto* const loud = dynamic_cast<CIconDynamics*>(set.database.GetModelIconObject(0x05010002));
    REQUIRE(loud);
    CHECK(loud->GetStartDynamics() == 127);
    CHECK(loud->GetCaption() == "f!");
    CHECK(loud->GetOriginalVariation() == 2);
    BITMAP bitmap{};
    REQUIRE(GetObjectA(set.database.GetButtonBitmap(0x05010002), sizeof bitmap, &bitmap));
    CHECK((bitmap.bmWidth == 7 && bitmap.bmHeight == 5 && bitmap.bmBitsPixel == 24));
    CHECK(static_cast<unsigned char*>(bitmap.bmBits)[0] == 200);
    // Without a button of its own, the library's: 16 x 15.
    REQUIRE(GetObjectA(set.database.GetButtonBitmap(0x05010001), sizeof bitmap, &bitmap));
    CHECK((bitmap.bmWidth == 16 && bitmap.bmHeight == 15));

    CHECK(set.database.IndexOf(5, torv::kDynaff, "f") == 2);
    CHECK(set.database.IndexOf(5, torv::kDynaff, "lost") == 0);
    CHECK(set.database.IndexOf(5, torv::kCrescendo, "f") == 0);
}

TEST_CASE("preset icons: a picture that cannot be read gives way to the library's") {
    Presets set;
    for (const char* name : {"p", "f", "up", "down"})
        set.Icon(name, "EndDyn=1", std::string(name) + ".bmp");
    set.folder.File("Set/Dynamics/p.bmp", "no picture");
    set.folder.File("Set/Dynamics/f.bmp", "BM");
    CHECK(set.Load(kList) == 1);
    CHECK(set.boxes.texts.empty());
    for (const DWORD id : {0x05010001U, 0x05010002U, 0x05020001U}) {
        BITMAP bitmap{};
        REQUIRE(GetObjectA(set.database.GetButtonBitmap(id), sizeof bitmap, &bitmap));
        CHECK(bitmap.bmWidth == 16);
    }
}

TEST_CASE("preset icons: what is wrong with the definition is told, and what was read before stays") {
    Presets set;
    for (const char* name : {"p", "f", "up", "down"})
        set.Icon(name, "EndDyn=1");
    const std::string path = set.folder.Path("Set.def");
    CHECK(set.database.LoadDatabase(path.c_str()) == 0);
    CHECK(set.boxes.Take() == Texts{"File not found !\n\n" + path});
    CHECK(set.Load("[dynamics]\n") == 0); // names are compared with their case
    CHECK(set.boxes.Take() == Texts{"Section key \"[Dynamics]\" not found !\n\nfile : " + path});
    CHECK(set.Load("[Dynamics]\nDynaff=p\nDecrescendo=down\n") == 0);
    CHECK(set.boxes.Take() == Texts{"Entry key \"'%1\" ([%2]) not found !\n\nCrescendo"});
    CHECK(set.Names(torv::kDynaff) == "1=p ");
    CHECK(set.Names(torv::kDecrescendo).empty());

    const std::string other = set.folder.File("Other.def", kList);
    CHECK(set.database.LoadDatabase(other.c_str()) == 0);
    const Texts told = set.boxes.Take();
    REQUIRE(told.size() == 1);
    CHECK(told[0] ==
          "Folder not found !\n\n" + torv::JoinPath(set.folder.Path("Other").c_str(), "Dynamics").GetStdString());
    CHECK(set.Names(torv::kDynaff).empty());

    CHECK(set.Load(kList) == 1);
    set.database.CloseDatabase();
    CHECK(set.database.GetModelIconObject(0x05010001) == nullptr);
}

TEST_CASE("preset icons: a damaged list is told a few times, not for ever") {
    Presets set;
    std::string names;
    for (int i = 0; i < 5000; ++i)
        names += "x" + std::to_string(i) + ",";
    set.Icon("p", "EndDyn=1");
    CHECK(set.Load("[Dynamics]\nDynaff=" + names + "p\nCrescendo=\nDecrescendo=,\n") == 1);
    CHECK(set.boxes.texts.size() == 11);
    CHECK(set.boxes.texts.back() == "4990 more of such errors in\n\n" + set.folder.Path("Set.def"));
    CHECK(set.Names(torv::kDynaff) == "1=p ");
}

#if !defined(_WIN32) // there such names are the code page's affair
TEST_CASE("preset icons: names whose last byte looks like a separator") {
    // Code page 932: the second byte of these characters is a backslash.
    const std::string surface = "\x95\x5C", skill = "\x94\x5C", so = "\x83\x5C";
    const TempFolder folder;
    folder.Folder(surface);
    folder.Folder(surface + "/" + skill);
    folder.Folder(surface + "/" + skill + "/Dynamics");
    const std::string icons = surface + "/" + skill + "/Dynamics/";
    folder.File(icons + so + ".aic", "[Common]\nButton=" + skill + "\n[Parameter]\nStartDyn=44\n");
    folder.File(icons + skill, Bitmap(7, 5, 200));
    const std::string path =
        folder.File(surface + "/" + skill + ".def", "[Dynamics]\nDynaff=" + so + "\nCrescendo=\nDecrescendo=\n");
    const Boxes boxes;
    CAiconDB database;
    CHECK(database.LoadDatabase(path.c_str()) == 1);
    CHECK(boxes.texts.empty());
    REQUIRE(database.GetModelIconObject(0x05010001));
    BITMAP bitmap{};
    REQUIRE(GetObjectA(database.GetButtonBitmap(0x05010001), sizeof bitmap, &bitmap));
    CHECK(bitmap.bmWidth == 7);
}
#endif
