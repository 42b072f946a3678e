#include "database/database_fixture.h"

namespace {

/// A preset database in a folder of its own.
struct Presets {
    TempFolder folder;
    CAiconDB database;
    Boxes boxes;

    Presets() {
        folder.Folder("Set");
        folder.Folder("Set/Dynamics");
        for (const char* name : {"p", "f", "up", "down"})
            Icon(name, "Length=480\nEndDyn=30");
    }
    void Icon(const std::string& name, const std::string& keys, const std::string& button = "") const {
        folder.File("Set/Dynamics/" + name + ".aic",
                    "[Common]\nCaption=" + name + "!\nButton=" + button + "\n[Parameter]\n" + keys + "\n");
    }
    int Load(const std::string& definition) {
        return database.LoadDatabase(folder.File("Set.def", definition).c_str());
    }
    std::string InFolder(const char* name) const {
        return torv::JoinPath(torv::JoinPath(folder.Path("Set").c_str(), "Dynamics"), name).GetStdString();
    }
    std::string Names() const {
        std::string names;
        for (const int articulation : {torv::kDynaff, torv::kCrescendo, torv::kDecrescendo})
            for (const CIconObject* icon : database.GetModels(torv::kStatusDynamics, articulation))
                names += Values(articulation, torv::VariationFromID(icon->GetIconID()), icon->GetIDString()) + ", ";
        return names;
    }
};

/// 7 by 5 points of 24 bits, all of one colour.
std::string Bitmap() {
    return std::string("BM\xAE\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\7\0\0\0\5\0\0\0\1\0\x18\0", 30) +
           std::string(24, '\0') + std::string(120, '\xC8');
}

} // namespace

TEST_CASE("preset icons: read from the listed files, numbered densely, each with its button or the library's") {
    Presets set;
    set.Icon("f", "StartDyn=200\nEndDyn=200", "f.bmp");
    set.Icon("bad", "", "bad.bmp");
    set.Icon("short", "", "short.bmp");
    set.folder.File("Set/Dynamics/f.bmp", Bitmap());
    set.folder.File("Set/Dynamics/bad.bmp", "no picture");
    set.folder.File("Set/Dynamics/short.bmp", "BM");
    CHECK(set.Load("[Dynamics]\nDynaff = p , lost,, f, bad, short\nCrescendo=up\nDecrescendo=down\n") == 1);
    CHECK(set.boxes.Take() == Texts{"File not found !\n\n" + set.InFolder("lost.aic")});
    CHECK(Values(set.database.GetDatabaseName(), set.Names()) ==
          "Set 1 1 p, 1 2 f, 1 3 bad, 1 4 short, 2 1 up, 3 1 down, ");
    CHECK(About(set.database.GetModelIconObject(0x05010002)) == "05010002 f 'f!' 1 from 2 level 127");
    const char* const sizes[] = {"16x15", "7x5", "16x15", "16x15"};
    for (DWORD i = 0; i < 4; ++i)
        CHECK(SizeOf(set.database.GetButtonBitmap(0x05010001 + i)) == sizes[i]);
    BITMAP bitmap{};
    GetObjectA(set.database.GetButtonBitmap(0x05010002), sizeof bitmap, &bitmap);
    CHECK(static_cast<unsigned char*>(bitmap.bmBits)[0] == 0xC8);
    CHECK(Values(set.database.IndexOf(5, 1, "f"), set.database.IndexOf(5, 1, "lost"),
                 set.database.IndexOf(5, 2, "f")) == "2 0 0");
}

TEST_CASE("preset icons: what is wrong with the definition is told, and what was read before stays") {
    Presets set;
    const std::string path = set.folder.Path("Set.def");
    const std::string other = set.folder.File("Other.def", "[Dynamics]\n");
    CHECK(set.database.LoadDatabase(set.folder.Path("None.def").c_str()) == 0);
    CHECK(set.Load("[dynamics]\n") == 0); // names are compared with their case
    CHECK(Values{set.Load("[Dynamics]\nDynaff=p\nDecrescendo=down\n"), set.Names()} == "0 1 1 p, ");
    CHECK(Values{set.database.LoadDatabase(other.c_str()), set.Names()} == "0 ");
    CHECK(set.boxes.Take() == Texts{"File not found !\n\n" + set.folder.Path("None.def"),
                                    "Section key \"[Dynamics]\" not found !\n\nfile : " + path,
                                    "Entry key \"'%1\" ([%2]) not found !\n\nCrescendo",
                                    "Folder not found !\n\n" +
                                        torv::JoinPath(set.folder.Path("Other").c_str(), "Dynamics").GetStdString()});
    // A damaged list is told a few times, not for ever.
    std::string names;
    for (int i = 0; i < 5000; ++i)
        names += "x" + std::to_string(i) + ",";
    CHECK(set.Load("[Dynamics]\nDynaff=" + names + "p\nCrescendo=\nDecrescendo=,\n") == 1);
    CHECK(set.boxes.texts.size() == 11);
    CHECK(set.boxes.texts.back() == "4990 more of such errors in\n\n" + path);
    CHECK(set.Names() == "1 1 p, ");
    set.database.CloseDatabase();
    CHECK(set.Names().empty());
}

#if !defined(_WIN32) // there such names are the code page's affair
TEST_CASE("preset icons: names whose last byte looks like a separator") {
    // Code page 932: the second byte of these characters is a backslash.
    const std::string surface = "\x95\x5C", skill = "\x94\x5C", so = "\x83\x5C";
    const TempFolder folder;
    std::filesystem::create_directories(folder.Path(surface + "/" + skill + "/Dynamics"));
    const std::string icons = surface + "/" + skill + "/Dynamics/";
    folder.File(icons + so + ".aic", "[Common]\nButton=" + skill + "\n[Parameter]\nStartDyn=44\n");
    folder.File(icons + skill, Bitmap());
    const Boxes boxes;
    CAiconDB database;
    CHECK(database.LoadDatabase(
              folder.File(surface + "/" + skill + ".def", "[Dynamics]\nDynaff=" + so + "\nCrescendo=\nDecrescendo=\n")
                  .c_str()) == 1);
    CHECK(boxes.texts.empty());
    CHECK(SizeOf(database.GetButtonBitmap(0x05010001)) == "7x5");
}
#endif
