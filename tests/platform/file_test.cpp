#include "platform/temp_folder.h"
#include "torv/platform/new_file.h"

#include <doctest/doctest.h>

#include <functional>

namespace {

/// The cause of the exception that `operation` throws; `none` when it throws nothing.
int CauseOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const CFileException& error) {
        return error.m_cause;
    }
    return CFileException::none;
}

int OpenCause(const std::string& path, UINT flags) {
    CFile file;
    CFileException error;
    return file.Open(path.c_str(), flags, &error) ? static_cast<int>(CFileException::none) : error.m_cause;
}

std::string ReadAll(CFile& file) {
    std::string content(static_cast<std::size_t>(file.GetLength()) + 1, '\0');
    file.SeekToBegin();
    content.resize(file.Read(content.data(), static_cast<UINT>(content.size())));
    return content;
}

} // namespace

TEST_CASE("file: the open flags decide what becomes of an existing file, and whether a new one is made") {
    const TempFolder folder;
    const std::string path = folder.File("a.txt", "old");
    const UINT keeps = CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite;
    folder.Folder("d");
    const struct {
        const char* name;
        UINT flags;
        int cause;
    } rows[] = {{"a.txt", keeps, CFileException::none},
                {"b.txt", keeps, CFileException::none},
                {"c.txt", CFile::modeRead, CFileException::fileNotFound},
                {"none/c.txt", CFile::modeRead, CFileException::badPath},
                {"none/c.txt", CFile::modeCreate | CFile::modeWrite, CFileException::badPath},
                {"d", CFile::modeRead, CFileException::accessDenied}};
    for (const auto& row : rows) {
        CAPTURE(row.name);
        CHECK(OpenCause(folder.Path(row.name), row.flags) == row.cause);
    }
    CHECK(OpenCause("", CFile::modeRead) == CFileException::badPath);
    CHECK(folder.Names() == std::set<std::string>{"a.txt", "b.txt", "d"});
    CHECK(folder.Content("a.txt") == "old");
    CHECK(OpenCause(path, CFile::modeCreate | CFile::modeWrite) == CFileException::none);
    CHECK(folder.Content("a.txt").empty());

    const std::string missing = folder.Path("c.txt");
    try {
        CFile file(missing.c_str(), CFile::modeReadWrite);
        FAIL("opened a missing file");
    } catch (const CFileException& error) {
        CHECK(error.m_cause == CFileException::fileNotFound);
        CHECK(error.m_lOsError == 2);
        CHECK(error.m_strFileName == missing.c_str());
        char text[512];
        CHECK(error.GetErrorMessage(text, sizeof(text)));
        CHECK(std::string(text).find(missing) != std::string::npos);
        CHECK(error.GetErrorMessage(text, 5));
        CHECK(std::string(text).size() == 4);
    }
}

TEST_CASE("file: reads, writes and positions, on disk as in memory") {
    const TempFolder folder;
    CFile onDisk(folder.Path("a.bin").c_str(), CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive);
    CHECK(onDisk.GetFileName() == "a.bin");
    CHECK(onDisk.GetFilePath() == folder.Path("a.bin").c_str());
    onDisk.Write("0123456789", 10);
    CMemFile inMemory("0123456789", 10);
    inMemory.SeekToEnd();
    CHECK_FALSE(inMemory.Open("x", CFile::modeCreate)); // a path opens nothing there
    for (CFile* const each : {&onDisk, static_cast<CFile*>(&inMemory)}) {
        CFile& file = *each;
        CHECK(file.GetPosition() == 10);
        CHECK(file.Seek(-3, CFile::end) == 7);
        CHECK(file.Seek(-2, CFile::current) == 5);
        char buffer[16] = {};
        CHECK(file.Read(buffer, 3) == 3);
        CHECK(std::string(buffer) == "567");
        CHECK(file.Read(buffer, 16) == 2); // what is left
        CHECK(file.Read(buffer, 16) == 0);
        file.Seek(2, CFile::begin);
        file.Write("ab", 2);
        CHECK(file.GetLength() == 10);
        CHECK(file.GetPosition() == 4); // asking for the length moves nothing
        CHECK(ReadAll(file) == "01ab456789");

        CHECK(CauseOf([&] { file.Seek(-1, CFile::begin); }) == CFileException::badSeek);
        CHECK(CauseOf([&] { file.Seek(-11, CFile::current); }) == CFileException::badSeek);
        CHECK(CauseOf([&] { file.Seek(0, 3); }) == CFileException::badSeek);
        CHECK(file.GetPosition() == 10);

        CHECK(file.Seek(13, CFile::begin) == 13); // beyond the end: a write fills the gap with zeros
        CHECK(file.Read(buffer, 1) == 0);
        file.Write("!", 1);
        CHECK(ReadAll(file) == std::string("01ab456789\0\0\0!", 14));
        file.SetLength(3);
        CHECK(file.GetPosition() == 3);
        file.SetLength(5);
        CHECK(ReadAll(file) == std::string("01a\0\0", 5));
    }
    CHECK(inMemory.GetBytes() == std::string("01a\0\0", 5));
    CHECK(CauseOf([&] { inMemory.SetLength(0x80000000ULL); }) == CFileException::diskFull);
    onDisk.Seek(0x100000000LL, CFile::begin);
    CHECK(onDisk.GetPosition() == 0x100000000ULL); // positions are 64-bit
}

TEST_CASE("file: what a handle may not do is refused by exception") {
    const TempFolder folder;
    const std::string path = folder.File("a.txt", "content");
    char byte = 'x';
    CFile reader(path.c_str(), CFile::modeRead);
    CHECK(CauseOf([&] { reader.Write(&byte, 1); }) == CFileException::accessDenied);
    CHECK(CauseOf([&] { reader.SetLength(1); }) != CFileException::none);
    CHECK(CauseOf([&] { reader.Flush(); }) == CFileException::none);
    reader.Close();
    CFile writer(path.c_str(), CFile::modeWrite);
    CHECK(CauseOf([&] { writer.Read(&byte, 1); }) == CFileException::accessDenied);
    writer.Close();
    writer.Close(); // nothing is open: harmless
    CHECK(writer.m_hFile == CFile::hFileNull);
    const std::function<void()> operations[] = {[&] { writer.Write(&byte, 1); }, [&] { writer.Read(&byte, 0); },
                                                [&] { writer.GetLength(); }, [&] { writer.SeekToBegin(); },
                                                [&] { writer.Flush(); }};
    for (const auto& operation : operations)
        CHECK(CauseOf(operation) == CFileException::invalidFile);
    CHECK(folder.Content("a.txt") == "content");
#if !defined(_WIN32)
    CFile full("/dev/full", CFile::modeWrite);
    CHECK(CauseOf([&] { full.Write(&byte, 1); }) == CFileException::diskFull);
#endif
}

TEST_CASE("file: removing and renaming") {
    const TempFolder folder;
    const std::string a = folder.File("a.txt", "A");
    const std::string b = folder.File("b.txt", "B");
    const std::string c = folder.Path("c.txt");
    CHECK(CauseOf([&] { CFile::Rename(a.c_str(), b.c_str()); }) == CFileException::accessDenied); // never over a file
    CHECK(folder.Content("a.txt") + folder.Content("b.txt") == "AB");
    CHECK(torv::RenameOver(a.c_str(), b.c_str()));
    CHECK(folder.Content("b.txt") == "A");
    CHECK_FALSE(folder.Has("a.txt"));
    CFile::Rename(b.c_str(), c.c_str());
    CHECK(folder.Content("c.txt") == "A");

    CHECK(CauseOf([&] { CFile::Rename(a.c_str(), b.c_str()); }) == CFileException::fileNotFound);
    CHECK_FALSE(torv::RenameOver(a.c_str(), c.c_str()));
    CHECK(GetLastError() == ERROR_FILE_NOT_FOUND);
    CHECK(folder.Content("c.txt") == "A");
    CFile::Remove(c.c_str());
    CHECK_FALSE(folder.Has("c.txt"));
    CHECK(CauseOf([&] { CFile::Remove(c.c_str()); }) == CFileException::fileNotFound);
    CHECK(CauseOf([&] { CFile::Remove(folder.Path("none/c.txt").c_str()); }) == CFileException::badPath);
    CHECK(CauseOf([&] { CFile::Remove(folder.Folder("d").c_str()); }) == CFileException::accessDenied);
}

TEST_CASE("file: both separators and any case of letters lead to a file; the exact name comes first") {
    const TempFolder folder;
    folder.Folder("Database");
    folder.File("Database/AiconDB.def", "mixed");
    const auto content = [&](const std::string& name) {
        CFile file(folder.Path(name).c_str(), CFile::modeRead);
        return ReadAll(file);
    };
    CHECK(content("Database\\AiconDB.def") == "mixed");
    CHECK(content("DATABASE\\AICONDB.DEF") == "mixed");
    CHECK(content("database/aicondb.def") == "mixed");
    { CFile file(folder.Path("database\\new.txt").c_str(), CFile::modeCreate | CFile::modeWrite); }
    CHECK(folder.Has("Database/new.txt"));
#if !defined(_WIN32)
    folder.File("Database/AICONDB.DEF", "upper"); // two files here, of which Windows would know one
    CHECK(content("Database/AICONDB.DEF") == "upper");
    CHECK(content("Database/AiconDB.def") == "mixed");
    CHECK(content("Database/aicondb.def") == "upper"); // the first in byte order
    CHECK(CauseOf([&] { CFile::Remove(folder.Path("Database/aicondb.def").c_str()); }) ==
          CFileException::fileNotFound); // removing takes no other spelling
#endif
}

TEST_CASE("file: what replaces a file goes where a file of that name is created, and fails as that does") {
    const TempFolder folder;
    folder.Folder("Data");
    folder.File("Data/USER.DEF", "old");
    const std::pair<const char*, int> rows[] = {{"DATA\\User.def", CFileException::none},
                                                {"Data\\new.def", CFileException::none},
                                                {"Data", CFileException::accessDenied},
                                                {"none/new.def", CFileException::badPath}};
    for (const auto& [name, cause] : rows) {
        CAPTURE(name);
        const std::string path = folder.Path(name);
        torv::ReplacedFile file(torv::NewFilePath(path.c_str()));
        file.Write("new", 3);
        CHECK(file.Commit() == (cause == CFileException::none));
        CHECK(torv::NewFileError(file, path.c_str()).m_cause == cause);
        CHECK(OpenCause(path, CFile::modeCreate | CFile::modeNoTruncate | CFile::modeWrite) == cause);
    }
    CHECK(folder.Content("Data/USER.DEF") + folder.Content("Data/new.def") == "newnew");
}

TEST_CASE("file: a name that differs only in case is no new name") {
    const TempFolder folder;
    const auto content = [&folder](const std::string& name) {
        CFile file(folder.Path("Data/" + name).c_str(), CFile::modeRead);
        return ReadAll(file);
    };
    folder.Folder("Data");
    folder.File("Data/USER.DEF", "old");
    const std::string other = folder.Path("DATA\\User.def");

    SUBCASE("creating reaches the file that is there") {
        CHECK(CFile(other.c_str(), CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite).GetLength() == 3);
        CHECK(CFile(other.c_str(), CFile::modeCreate | CFile::modeWrite).GetLength() == 0);
        CHECK(folder.Names("Data").size() == 1);
    }
    SUBCASE("renaming over it replaces it, plain renaming refuses") {
        const std::string source = folder.File("Data/user.tmp", "new");
        CHECK(CauseOf([&] { CFile::Rename(source.c_str(), other.c_str()); }) == CFileException::accessDenied);
        CHECK(content("USER.DEF") == "old");
        CHECK(torv::RenameOver(source.c_str(), other.c_str()));
        CHECK(content("USER.DEF") == "new");
        CHECK(folder.Names("Data").size() == 1);
    }
    SUBCASE("a file is not in its own way: it can be given another spelling, or the same") {
        const std::string lower = folder.Path("Data/user.def");
        CFile::Rename(folder.Path("Data/USER.DEF").c_str(), other.c_str());
        CHECK(torv::RenameOver(folder.Path("Data/User.def").c_str(), lower.c_str()));
        CFile::Rename(lower.c_str(), lower.c_str());
        CHECK(content("user.def") == "old");
        CHECK(folder.Names("Data").size() == 1); // Windows finds it under either name
#if !defined(_WIN32)
        CHECK(folder.Has("Data/user.def"));
#endif
    }
#if !defined(_WIN32)
    SUBCASE("the exact name comes first; another link to a file is another name") {
        folder.File("Data/user.def", "exact");
        const std::string source = folder.File("Data/user.tmp", "new");
        CHECK(torv::RenameOver(source.c_str(), folder.Path("Data/user.def").c_str()));
        CHECK(content("USER.DEF") + content("user.def") == "oldnew");
        std::filesystem::create_hard_link(folder.Path("Data/user.def"), folder.Path("Data/link"));
        CHECK(CauseOf([&] { CFile::Rename(folder.Path("Data/link").c_str(), folder.Path("Data/user.def").c_str()); }) ==
              CFileException::accessDenied);
        CHECK(folder.Has("Data/link"));
    }
#endif
}
