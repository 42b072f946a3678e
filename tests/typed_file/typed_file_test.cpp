#include "torv/typed_file/typed_file.h"

#include <doctest/doctest.h>

#include <filesystem>
#include <random>
#include <string>
#include <thread>

#include "allocation_failure.h"
#include "torv/platform/afx/mem_file.h"

namespace {

int LoadText(CxTypedFile& file, const std::string& text) {
    return file.Load(reinterpret_cast<const unsigned char*>(text.data()), static_cast<DWORD>(text.size()));
}

/// What the file holds, compact: every section, key and value in order.
std::string Compact(CxTypedFile& file) {
    CMemFile out;
    CHECK(file.Save2(&out));
    return out.GetBytes();
}

std::string Reread(const std::string& text) {
    CxTypedFile file;
    CHECK(LoadText(file, text));
    return Compact(file);
}

/// A path in the folder for temporary files, whose file goes with the object.
struct TemporaryPath {
    TemporaryPath() {
        char folder[MAX_PATH] = "";
        GetTempPathA(MAX_PATH, folder);
        path = torv::JoinPath(folder, "torv_typed_file_test.def");
        std::filesystem::remove(path.GetStdString());
    }
    ~TemporaryPath() { std::filesystem::remove(path.GetStdString()); }
    TemporaryPath(const TemporaryPath&) = delete;
    TemporaryPath& operator=(const TemporaryPath&) = delete;

    CString path;
};

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
    const std::string text = "[S]\nk=" + std::string(69998, 'x') + "\nnext=1\n";
    CxTypedFile file;
    CHECK(LoadText(file, text));
    CHECK(file.ReadAt("S", "k", nullptr).GetLength() == 65533);
    CHECK(file.ReadAt("S", "next", nullptr) == "1");
    CHECK(file.GetEntryMap("S")->GetCount() == 2);
}

TEST_CASE("typed file: a default stands in for a missing section only") {
    CxTypedFile file;
    CHECK(LoadText(file, "[Sec]\na=1\n"));
    CHECK(file.ReadAt("Sec", "a", "dflt") == "1");
    CHECK(file.ReadAt("Sec", "Missing", "dflt") == "");
    CHECK(file.ReadAt("Other", "a", "dflt") == "dflt");
    CHECK(file.ReadAt(nullptr, nullptr, nullptr) == "");
    CString value = "kept";
    CHECK(file.GetSectionMap()->ReadEntry(value, "Other", "a") == 0);
    CHECK(value == "kept");
    CHECK(file.GetSectionMap()->ReadEntry(value, "Sec", "Missing") == 1);
    CHECK(value == "");
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
    CHECK(file.RemoveEntry("A", "x"));
    CHECK(file.RemoveEntry("A", "x") == 0);
    CHECK(file.RemoveEntry("Z", "x") == 0);
    CHECK(file.WriteAt("A", "x", "4")); // a new key now: it comes last
    CHECK(file.RemoveEntry("A", "y"));  // whose neighbours find each other
    CHECK(file.RemoveSection("B"));
    CHECK(file.RemoveSection("B") == 0);
    CHECK(Compact(file) == "[A]\nz=z\nx=4\n[C]\nn=\n");
    CHECK(file.GetEntryMap("A")->GetCount() == 2);
    CString name;
    CxEntryMap* map = nullptr;
    POSITION none = nullptr;
    file.GetSectionMap()->GetNextAssoc(none, name, map = file.GetEntryMap("A")); // past the last: no map
    CHECK(map == nullptr);

    for (int n = 0; n < 1000; ++n) // more than there is room for at first
        CHECK(file.WriteAt("A", std::to_string(n).c_str(), std::to_string(2 * n).c_str()));
    for (int n = 0; n < 1000; n += 2)
        CHECK(file.RemoveEntry("A", std::to_string(n).c_str()));
    for (int n = 0; n < 1000; ++n)
        CHECK(file.ReadAt("A", std::to_string(n).c_str(), "") == (n % 2 ? std::to_string(2 * n) : "").c_str());
    file.SetPathName("somewhere");
    file.RemoveAll();
    CHECK(file.GetSectionCount() == 0);
    CHECK(file.GetPathName() == "");
}

TEST_CASE("typed file: both written forms, byte by byte") {
    CxTypedFile file;
    file.WriteAt("S", "A", "1");
    file.WriteAt("S", "B", "2");
    file.WriteAt("T", "C", "x;y");
    CMemFile spaced;
    CHECK(file.Save(&spaced));
    CHECK(spaced.GetBytes() == "[S]\r\nA = 1\r\nB = 2\r\n\r\n[T]\r\nC = x;y\r\n\r\n");
    CMemFile compact;
    CHECK(file.Save2(&compact));
    CHECK(compact.GetBytes() == "[S]\nA=1\nB=2\n[T]\nC=x;y\n");
    BadDisk bad;
    CHECK(file.Save(&bad) == 0);
    CHECK(file.Save2(&bad) == 0);
    CHECK(file.Load(&bad) == 0);
    CHECK(file.Save(static_cast<CFile*>(nullptr)) == 0);
}

TEST_CASE("typed file: on disk") {
    const TemporaryPath temporary;
    CxTypedFile file;
    CHECK(file.Save() == 0); // no path yet
    file.WriteAt("S", "A", "1");
    CHECK(file.SaveAs(temporary.path));
    file.WriteAt("S", "A", "2");
    CHECK(file.Save()); // over the old one
    CxTypedFile other;
    CHECK(other.Load(static_cast<const char*>(temporary.path)));
    CHECK(other.GetPathName() == temporary.path);
    CHECK(Compact(other) == "[S]\nA=2\n");

    CFile open(temporary.path, CFile::modeRead);
    open.SeekToEnd();
    file.RemoveAll();
    CHECK(file.Load(&open)); // from its beginning, wherever it stands
    CHECK(Compact(file) == "[S]\nA=2\n");
    CHECK(LoadText(file, "[M]\n"));
    CHECK(file.GetPathName() == open.GetFilePath()); // text from memory has no path
    open.Close();

    const CString missing = torv::JoinPath(temporary.path, "nowhere.def");
    CHECK(file.Load(static_cast<const char*>(missing)) == 0);
    CHECK(file.GetSectionCount() == 0);
    CHECK(file.GetPathName() == missing);
    CHECK(file.SaveAs(missing) == 0);
    CHECK(file.Load(static_cast<const char*>(nullptr)) == 0);
    CHECK(file.Load(static_cast<CFile*>(nullptr)) == 0);
    { CFile emptied(temporary.path, CFile::modeCreate | CFile::modeWrite); }
    CHECK(file.Load(static_cast<const char*>(temporary.path))); // no bytes: an empty file, not an unreadable one
}

TEST_CASE("typed file: two that save one path at once leave what one of them wrote, and both are told so") {
    const TemporaryPath temporary;
    const auto saveOften = [&temporary](int entries) {
        CxTypedFile file;
        for (int n = 0; n < entries; ++n)
            file.WriteAt(std::to_string(entries).c_str(), std::to_string(n).c_str(), "value");
        int saved = 0;
        for (int n = 0; n < 30; ++n)
            saved += file.SaveAs(temporary.path);
        return saved;
    };
    int savedThere = 0;
    std::thread other([&] { savedThere = saveOften(3000); });
    CHECK(saveOften(5000) == 30);
    other.join();
    CHECK(savedThere == 30);
    CxTypedFile left;
    CHECK(left.Load(static_cast<const char*>(temporary.path)));
    REQUIRE(left.GetSectionCount() == 1);
    CString name;
    CxEntryMap* entries = nullptr;
    POSITION first = left.GetSectionMap()->GetStartPosition();
    left.GetSectionMap()->GetNextAssoc(first, name, entries);
    CHECK(std::to_string(entries->GetCount()).c_str() == name);
}

TEST_CASE("typed file: memory that cannot be had is answered, and saving then leaves the old file") {
    const TemporaryPath temporary;
    CxTypedFile file;
    file.WriteAt("S", "A", "old");
    REQUIRE(file.SaveAs(temporary.path));
    FailEachAllocation([&temporary](AllocationFailure& failure) {
        CxTypedFile loading;
        const char* const path = temporary.path;
        const int loaded = failure.During([&] { return loading.Load(path); });
        CHECK(loaded == !failure.HasHappened());
        CHECK(loading.GetSectionCount() == loaded);
    });
    FailEachAllocation([](AllocationFailure& failure) {
        CxTypedFile editing;
        editing.WriteAt("S", "A", "a value that is too long for a text's own room");
        const int written = failure.During([&] {
            return editing.WriteAt("T", "a key that is too long for a text's own room", "B") &&
                   editing.WriteAt("S", "A", "another one that is too long for a text's own room");
        });
        CHECK(written == !failure.HasHappened());
        CHECK((editing.ReadAt("S", "A", nullptr).Find("another") == 0) == (written != 0));
    });
    FailEachAllocation([&](AllocationFailure& failure) {
        CxTypedFile saving;
        saving.WriteAt("S", "A", "new");
        saving.SetPathName(temporary.path);
        const int saved = failure.During([&] { return saving.Save(); });
        CHECK(saved == !failure.HasHappened());
        CxTypedFile left;
        REQUIRE(left.Load(static_cast<const char*>(temporary.path)));
        CHECK(left.ReadAt("S", "A", nullptr) == (saved ? "new" : "old"));
        file.SaveAs(temporary.path);
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
