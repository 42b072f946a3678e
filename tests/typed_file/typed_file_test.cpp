
#include <doctest/doctest.h>

#include <random>

#include "allocation_failure.h"
#include "platform/temp_folder.h"
#include "typed_file/file_text.h"
#include "values.h"

namespace {

std::string Reread(const std::string& text) {
    CxTypedFile file;
    CHECK(LoadText(file, text));
    return Compact(file);
}

class BadDisk : public CMemFile {
public:
    BadDisk() : CMemFile("[S]", 3) {}
    UINT Read(void*, UINT) override { throw CFileException(CFileException::hardIO); }
    void Write(const void*, UINT) override { throw CFileException(CFileException::diskFull); }
};

} // namespace

TEST_CASE("typed file: what a line means") {
    struct Row {
        const char* text;
        const char* read; // compact form of what was understood
    };
    const Row rows[] = {
        {"[S]\nkey = value ; note", "[S]\nkey=value\n"},
        {"[S]\r\n  key\t =\t a\tb  \r\n", "[S]\nkey=a\tb\n"}, // a tab inside a value stays
        {"[S]\na=1;2;3\nb=;\n", "[S]\na=1\nb=\n"},
        {"[S]\na=1=2\nk;x=3\n", "[S]\na=1=2\nk;x=3\n"}, // only the first "=" counts; a key may hold ";"
        {"; [N]\n[S];x\n;a=1\n", "[S]\n"},
        {"[ A ]\n[]\na=1\n[[x]]\n", "[ A ]\n[]\na=1\n[[x]\n"},    // names are untrimmed and may be empty
        {"a=0\n[S]\n=1\njusttext\n[Broken\na=2\n", "[S]\na=2\n"}, // "[Broken" leaves the section as it was
        {"[S]\na=1\nb=2\n[T]\nc=3\n[S]\na=4\nd=5\n", "[S]\na=4\nb=2\nd=5\n[T]\nc=3\n"},
        {"[s]\na=1\n[S]\nA=2\n", "[s]\na=1\n[S]\nA=2\n"}, // letters count
        {"\x01\x02[S]\x03"
         "a=1\x04"
         "b=2\x7F\n",
         "[S]\na=1\nb=2\x7F\n"},                                                    // control bytes end a line
        {"[S]\na=\x82\xA0\xFF\n\x83\x5D=x\n", "[S]\na=\x82\xA0\xFF\n\x83\x5D=x\n"}, // other bytes are text
        {"", ""},
        {"\r\n \t\r\n", ""},
        {"[S]", "[S]\n"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.text);
        CHECK(Reread(row.text) == row.read);
    }
    CHECK(Reread(std::string("[S]\na=1\0b=2\n", 12)) == "[S]\na=1\nb=2\n"); // a NUL is a control byte like any other
}

TEST_CASE("typed file: a line has at most 65,535 bytes, the rest of it is passed over") {
    // "k=" and 69,998 letters: 65,533 of them are kept.
    CHECK(Reread("[S]\nk=" + std::string(69998, 'x') + "\nnext=1\n") ==
          "[S]\nk=" + std::string(65533, 'x') + "\nnext=1\n");
}

TEST_CASE("typed file: a default stands in for a missing section only") {
    CxTypedFile file;
    CHECK(LoadText(file, "[Sec]\na=1\n"));
    CHECK(file.ReadAt("Sec", "a", "dflt") == "1");
    CHECK(file.ReadAt("Sec", "Missing", "dflt") == "");
    CHECK(file.ReadAt("Other", "a", "dflt") == "dflt");
    CHECK(file.ReadAt(nullptr, nullptr, nullptr) == "");
    CString value = "kept";
    CHECK(Values{file.GetSectionMap()->ReadEntry(value, "Other", "a"), value} == "0 kept");
    CHECK(Values{file.GetSectionMap()->ReadEntry(value, "Sec", "Missing"), value} == "1 ");
    CHECK(Values{file.GetEntryMap("Sec")->Lookup("Missing", value), file.GetEntryMap("Sec")->Lookup("a", value),
                 value} == "0 1 1");
}

TEST_CASE("typed file: editing keeps the order in which sections and keys came") {
    CxTypedFile file;
    for (const char* section : {"B", "A", "B"})
        CHECK(file.AddSection(section));
    for (const char* key : {"x", "y", "z", "x"})
        CHECK(file.WriteAt("A", key, key));
    CHECK(file.WriteAt("C", "n", nullptr));
    CHECK(file.WriteAt("A", "x", "3")); // an old key keeps its place
    CHECK(Compact(file) == "[B]\n[A]\nx=3\ny=y\nz=z\n[C]\nn=\n");
    CHECK(Values{file.RemoveEntry("A", "x"), file.RemoveEntry("A", "x"), file.RemoveEntry("Z", "x")} == "1 0 0");
    CHECK(file.WriteAt("A", "x", "4")); // a new key now: it comes last
    CHECK(file.RemoveEntry("A", "z"));  // whose neighbours find each other
    CHECK(Values{file.RemoveSection("B"), file.RemoveSection("B")} == "1 0");
    CHECK(Compact(file) == "[A]\ny=y\nx=4\n[C]\nn=\n");
    CHECK(file.GetEntryMap("A")->GetCount() == 2);
    CString name;
    CxEntryMap* map = file.GetEntryMap("A");
    POSITION at = file.GetSectionMap()->GetStartPosition();
    for (const char* const wanted : {"A", "C", "C"}) { // past the last: no map, and nothing else
        file.GetSectionMap()->GetNextAssoc(at, name, map);
        CHECK(name == wanted);
    }
    CHECK(map == nullptr);

    map = file.GetEntryMap("A");
    map->RemoveAll();
    CHECK(map->GetCount() == 0);
    for (int n = 0; n < 1000; ++n) // more than there is room for at first
        file.WriteAt("A", std::to_string(n).c_str(), std::to_string(2 * n).c_str());
    for (int n = 0; n < 1000; n += 2)
        file.RemoveEntry("A", std::to_string(n).c_str());
    for (int n = 0; n < 1000; n += 4) // where the others were
        file.WriteAt("A", std::to_string(n).c_str(), "new");
    for (int n = 0; n < 1000; ++n)
        CHECK(file.ReadAt("A", std::to_string(n).c_str(), "") == (n % 2   ? std::to_string(2 * n)
                                                                  : n % 4 ? ""
                                                                          : "new")
                                                                     .c_str());
}

TEST_CASE("typed file: both written forms, byte by byte") {
    CxTypedFile file;
    file.WriteAt("S", "A", "1");
    file.WriteAt("S", "B", "2");
    file.WriteAt("T", "C", "x;y");
    CMemFile spaced;
    CHECK(file.Save(&spaced));
    CHECK(spaced.GetBytes() == "[S]\r\nA = 1\r\nB = 2\r\n\r\n[T]\r\nC = x;y\r\n\r\n");
    CHECK(Compact(file) == "[S]\nA=1\nB=2\n[T]\nC=x;y\n");
    BadDisk bad;
    CHECK(Values{file.Save(&bad), file.Save2(&bad), file.Load(&bad), file.Save(static_cast<CFile*>(nullptr))} ==
          "0 0 0 0");
}

TEST_CASE("typed file: on disk") {
    const TempFolder folder;
    const CString path = folder.Path("a.def").c_str();
    CxTypedFile file;
    CHECK(file.Save() == 0); // no path yet
    file.WriteAt("S", "A", "1");
    CHECK(Values{file.SaveAs(path), file.WriteAt("S", "A", "2"), file.Save()} == "1 1 1"); // over the old one
    CFile open(path, CFile::modeRead);
    open.SeekToEnd();
    file.RemoveAll();
    CHECK(file.GetPathName() == "");
    CHECK(Values{file.Load(&open), Compact(file)} == "1 [S]\nA=2\n");   // from its beginning, wherever it stands
    CHECK(Values{LoadText(file, "[M]\n"), Compact(file)} == "1 [M]\n"); // in place of what was there
    CHECK(file.GetPathName() == open.GetFilePath());                    // text from memory has no path
    open.Close();

    const CString missing = torv::JoinPath(path, "nowhere.def");
    CHECK(Values{file.Load(static_cast<const char*>(missing)), file.GetSectionCount(), file.GetPathName()} ==
          Values(0, 0, missing));
    CHECK(Values{file.SaveAs(missing), file.Load(static_cast<const char*>(nullptr)),
                 file.Load(static_cast<CFile*>(nullptr))} == "0 0 0");
    CHECK(file.Load(folder.File("empty.def", "").c_str())); // an empty file, not an unreadable one
}

TEST_CASE("typed file: memory that cannot be had is answered, and saving then leaves the old file") {
    const TempFolder folder;
    const std::string path = folder.Path("a.def");
    const std::string text = "a text that is too long for a text's own room";
    FailEachAllocation([&](AllocationFailure& failure) {
        folder.File("a.def", "[S]\nA=old\n");
        CxTypedFile file;
        const int loaded = failure.During([&] { return file.Load(path.c_str()); });
        CHECK(file.GetSectionCount() == loaded);
        const int written = failure.During(
            [&] { return loaded && file.WriteAt("T", text.c_str(), "B") && file.WriteAt("S", "A", text.c_str()); });
        CHECK((file.ReadAt("S", "A", nullptr) == text.c_str()) == (written != 0));
        const int saved = failure.During([&] { return written && file.Save(); });
        CHECK(saved == !failure.HasHappened());
        CHECK((folder.Content("a.def") == "[S]\nA=old\n") == !saved);
    });
}

TEST_CASE("typed file: any bytes load, and what was understood reads back the same") {
    std::mt19937 random(7);
    const char likely[] = "[]=;\n\r\t ab\x82\xA0";
    for (int n = 0; n < 2000; ++n) {
        std::string text(random() % 200, ' ');
        for (char& c : text)
            c = random() % 5 ? likely[random() % (sizeof likely - 1)] : static_cast<char>(random());
        CxTypedFile file;
        REQUIRE(LoadText(file, text));
        CMemFile spaced;
        REQUIRE(file.Save(&spaced));
        REQUIRE(Reread(spaced.GetBytes()) == Compact(file));
    }
}
