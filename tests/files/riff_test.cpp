#include "torv/files/riff.h"

#include "torv/platform/afx/mem_file.h"

#include "allocation_failure.h"
#include "platform/small_disk.h"
#include "platform/temp_folder.h"
#include "values.h"

#include <doctest/doctest.h>

using torv::ChunkId;

namespace {

using namespace std::string_literals;

constexpr DWORD kRiff = ChunkId("RIFF");
constexpr DWORD kList = ChunkId("LIST");
constexpr DWORD kWave = ChunkId("WAVE");
constexpr DWORD kData = ChunkId("data");

std::string Le(DWORD value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

/// A chunk, or with a size of its own one that lies.
std::string Chunk(const char* id, const std::string& content) {
    return id + Le(static_cast<DWORD>(content.size())) + content;
}
std::string Lie(const char* id, DWORD size, const std::string& content) { return id + Le(size) + content; }

/// A file of bytes with a CxRiff on it.
struct OnBytes {
    CMemFile file;
    CxRiff riff{&file};
    explicit OnBytes(const std::string& bytes = "") : file(bytes.data(), static_cast<UINT>(bytes.size())) {}
    std::string Read(DWORD count) {
        std::string bytes(count, '\0');
        bytes.resize(riff.Read(bytes.data(), count));
        return bytes;
    }
    /// The identifiers of the level, in order.
    std::string Level() {
        std::string ids;
        CHUNK_INFO info;
        for (int has = riff.FindFirstChunk(info); has; has = riff.FindNextChunk(info)) {
            ids += ids.empty() ? "" : " ";
            for (int shift = 0; shift < 32; shift += 8)
                ids += static_cast<char>(info.id >> shift & 0xFF);
        }
        return ids;
    }
};

const std::string kGood =
    Chunk("RIFF", "WAVE"s + Chunk("fmt ", "abc") + Chunk("LIST", "INFO" + Chunk("name", "x")) + Chunk("data", "1234")) +
    Chunk("tail", "");

} // namespace

TEST_CASE("riff: what is written stands in the bytes, without a pad") {
    OnBytes on;
    CHECK(Values{on.riff.AddData("x", 1), on.riff.CloseChunk(), on.file.GetBytes()} == "0 0 "); // no chunk

    CHECK(Values{on.riff.CreateChunk(kRiff, kWave), on.riff.CreateChunk(kData, 0)} == "1 1");
    CHECK(Values{on.riff.AddData("12", 2), on.riff.AddData(nullptr, 0), on.riff.AddData("345", 3)} == "1 1 1");
    CHECK(Values{on.riff.CloseChunk(), on.riff.GetPosition()} == "1 20"); // 12 of the outer header, identifier, size
    SUBCASE("one inner chunk") {
        CHECK(on.riff.CloseChunk() == 1);
        CHECK(on.file.GetBytes() == "RIFF\x11\0\0\0WAVEdata\x05\0\0\00012345"s);     // 17 = 4 + 8 + 5
        CHECK(Values{on.riff.CreateChunk(kData, 0), on.riff.CloseChunk()} == "1 1"); // behind what was written
        CHECK(on.file.GetBytes().substr(25) == "data\0\0\0\0"s);
    }
    SUBCASE("another right behind it, then bytes of the outer chunk itself") {
        CHECK(Values{on.riff.CreateChunk(kList, ChunkId("INFO")), on.riff.CloseChunk()} == "1 1");
        CHECK(Values{on.riff.AddData("end", 3), on.riff.CloseChunk()} == "1 1");
        CHECK(on.file.GetBytes() ==
              "RIFF\x20\0\0\0WAVEdata\x05\0\0\00012345LIST\x04\0\0\0INFOend"s); // 32 = 4 + 13 + 12 + 3
    }
}

TEST_CASE("riff: data from a buffer and from another file") {
    std::string bytes(10000, '\0'); // more than two of the areas that copying uses
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 7 % 251);
    CMemFile source(bytes.data(), 10000);
    CExtendBuffer buffer(512, -1);
    buffer.Append(bytes.data() + 100, 9000);

    OnBytes on;
    on.riff.CreateChunk(kRiff, kWave);
    on.riff.CreateChunk(kData, 0);
    CHECK(on.riff.AddData(&buffer) == 1);
    on.riff.CloseChunk();
    on.riff.CreateChunk(kData, 0);
    CHECK(on.riff.AddData(&source, 100, 9000) == 1);
    on.riff.CloseChunk();
    on.riff.CreateChunk(kData, 0);
    CHECK(on.riff.AddData(&source, 9990, 0xFFFFFFFF) == 0); // a source that runs out
    on.riff.CloseChunk();
    on.riff.CreateChunk(kData, 0);
    on.riff.AddData("abc", 3);
    CHECK(on.riff.AddData(&source, 1, 2) == 1); // a copy sets the chunk's size and adds to the ones around
    CHECK(on.riff.AddData(&source, 20000, 1) == 0);
    CHECK(Values{on.riff.AddData(static_cast<CFile*>(nullptr), 0, 1),
                 on.riff.AddData(static_cast<CExtendBuffer*>(nullptr))} == "0 0");
    on.riff.CloseChunk();
    const DWORD around = 4 + 2 * 9008 + 18 + 13;
    CHECK(on.riff.AddData(&on.file, 8 + around - 2, 1000) == 0); // out of the file itself: as much as it held
    on.riff.CloseChunk();
    const std::string chunk = Chunk("data", bytes.substr(100, 9000));
    const std::string content = "WAVE" + chunk + chunk + Chunk("data", bytes.substr(9990)) +
                                Lie("data", 0, "abc" + bytes.substr(1, 2)) + bytes.substr(1, 2);
    CHECK(on.file.GetBytes() == Lie("RIFF", 4 + 2, content));
}

TEST_CASE("riff: down and up a file") {
    OnBytes on(kGood);
    CHUNK_INFO info{1, 2, 3, 4};
    CHECK(Values{on.riff.Ascend(), on.riff.Descend(info, kRiff, ChunkId("AVI "))} == "0 0");
    CHECK(Values{on.riff.Descend(info, kData, 0), info.id, on.Level()} == "0 1 RIFF tail"); // it is one level down
    CHECK(on.riff.Descend(info, kRiff, kWave) == 1);
    CHECK(Values(info.form == kWave, info.offset, info.size) == "1 12 44"); // 11 of fmt, 21 of LIST, 12 of data
    CHECK(on.Level() == "fmt  LIST data");
    CHECK(Values{on.riff.Descend(info, kData, 0), on.Read(4)} == "1 1234");
    CHECK(Values{on.riff.Ascend(), on.Read(4)} == "1 tail"); // nothing is skipped behind data's end

    CHECK(Values{on.riff.Descend(info, kList, ChunkId("INFO")), on.Level()} == "1 name");
    CHECK(Values{on.riff.Ascend(), on.riff.FindNextChunk(info), info.id} == Values(1, 1, kData)); // of the level around
    CHECK(Values{on.riff.FindNextChunk(info), on.riff.GetError(0)} == "0 0");

    on.riff.Seek(12 + 8, CFile::begin);
    CExtendBuffer buffer(2, -1);
    CHECK(on.riff.Read(&buffer, 3) == 3);
    CMemFile read;
    buffer.Save(&read, nullptr);
    CHECK(read.GetBytes() == "abc");
}

TEST_CASE("riff: sizes that lie end the level and no more") {
    struct {
        std::string bytes;
        const char* top;
        const char* inside; ///< the first chunk
    } const cases[] = {
        {"", "", ""},
        {"data\0\0\0"s, "", ""},                                               // a header cut off
        {Lie("RIFF", 0, ""), "", ""},                                          // no room for its form
        {Lie("RIFF", 2, "WAVE") + Chunk("data", ""), "RIFF data", ""},         // too small for its form: no data
        {Lie("data", 9, "12345678"), "", ""},                                  // one byte more than the file
        {Chunk("ab  ", "") + Lie("data", 0xFFFFFFF0, "12345678"), "ab  ", ""}, // 32-bit sums would turn back to 0
        {Chunk("ab  ", "") + Lie("RIFF", 0xFFFFFFEC, "WAVE"), "ab  ", ""},
        {Chunk("RIFF", "WAVE" + Lie("data", 5, "1234")) + "x", "RIFF", ""}, // past its parent, not past the file
        {Chunk("RIFF", "WAVEdata") + Le(0), "RIFF", ""},                    // a header across the parent's end
        {Chunk("RIFF", "WAVE" + Chunk("a   ", "") + "LIST" + Le(4)) + "INFO", "RIFF", "a   "}, // a form likewise
    };
    for (const auto& test : cases) {
        CAPTURE(test.bytes);
        OnBytes on(test.bytes);
        CHECK(on.Level() == test.top);
        CHUNK_INFO info;
        if (on.riff.FindFirstChunk(info)) {
            CHECK(on.riff.Descend(info, info.id, info.form) == 1);
            CHECK(on.Level() == test.inside);
        }
        CHECK(on.riff.GetError(0) == 0); // bad content is no file error
    }
    for (DWORD n = 0; n < kGood.size(); ++n) { // a file may break off anywhere: only its RIFF can still be whole
        OnBytes on(kGood.substr(0, n));
        CHECK(on.Level() == (n < kGood.size() - 8 ? "" : "RIFF"));
    }
    std::string deep;
    for (int i = 0; i < 100; ++i)
        deep = Chunk("LIST", "deep" + deep);
    OnBytes on(deep);
    CHUNK_INFO info;
    int depth = 0;
    while (on.riff.Descend(info, kList, ChunkId("deep")))
        ++depth;
    CHECK(depth == 64);
    CHECK(on.riff.CreateChunk(kData, 0) == 0);
}

TEST_CASE("riff: 32 bits of size and position are not passed") {
    /// Eight bytes, then nothing but zeros.
    struct Vast : CMemFile {
        using CMemFile::CMemFile;
        ULONGLONG position = 0;
        ULONGLONG GetLength() const override { return 0x200000000; }
        ULONGLONG Seek(LONGLONG offset, UINT) override { return position = static_cast<ULONGLONG>(offset); }
        UINT Read(void* buffer, UINT bytes) override {
            for (UINT i = 0; i < bytes; ++i, ++position)
                static_cast<char*>(buffer)[i] = position < 8 ? GetBytes()[static_cast<size_t>(position)] : '\0';
            return bytes;
        }
    };
    const std::string header = Lie("data", 0xFFFFFFF0, "");
    Vast file(header.data(), 8);
    CxRiff riff(&file);
    CHUNK_INFO info;
    REQUIRE(riff.Descend(info, kData, 0) == 1);
    CHECK(riff.FindNextChunk(info) == 0); // at 0xFFFFFFF8: its data would be at 0x100000000
    info = {0, 0, 0x20, 0xFFFFFFF0};
    CHECK(riff.FindNextChunk(info) == 0); // at 0x100000010, not at 0x10
    const Values full(0, CFileException::diskFull);
    CHECK(Values{riff.AddData("0123456789ABCDEF", 16), riff.GetError(1)} == full); // the size would be 0x100000000
    CHECK(Values{riff.CreateChunk(kData, 0), riff.GetError(1)} == full);           // its data would be there
    CHECK(file.GetBytes() == header);
}

TEST_CASE("riff: files are opened, closed, renamed and removed") {
    const TempFolder folder;
    const std::string first = folder.Path("first");
    const std::string second = folder.Path("second");
    CxRiff riff;
    CHECK(riff.Open(first.c_str(), CFile::modeCreate | CFile::modeReadWrite) == 1);
    riff.CreateChunk(kRiff, kWave);
    riff.CreateChunk(kData, 0);
    riff.AddData("123", 3);
    CHECK(Values{riff.Close(), riff.Close()} == "1 0"); // closes both chunks
    CHECK(riff.Rename(first.c_str(), second.c_str()) == 1);
    CHECK(riff.Open(second.c_str(), CFile::modeRead) == 1);
    CHUNK_INFO info;
    CHECK(riff.Descend(info, kRiff, kWave) == 1);
    CHECK(Values{riff.Write("x", 1), riff.GetError(1)} == Values(0, CFileException::accessDenied));
    CHECK(Values{riff.CreateChunk(kData, 0), riff.AddData("x", 1)} == "0 0");
    CHECK(riff.Close() == 1); // a chunk that was only read is not written
    {
        CxRiff change(second.c_str());
        CHECK(Values{change.Descend(info, kRiff, kWave), change.CreateChunk(kData, 0)} ==
              "1 1"); // behind what is there
        change.AddData("4", 1);
    }
    CHECK(folder.Content("second") == Chunk("RIFF", "WAVE" + Chunk("data", "123") + Chunk("data", "4")));
#if !defined(_WIN32)
    {
        CxRiff full(second.c_str());
        full.CreateChunk(kData, 0);
        const SmallDisk disk(0);
        CHECK(full.Close() == 0); // the size is not in its header
    }
#endif
    CHECK(Values{riff.Remove(second.c_str()), folder.Names().size()} == "1 0");
}

TEST_CASE("riff: an error is kept, told and forgotten") {
    std::string told;
    const auto before = torv::SetMessageBoxHandler([&](HWND window, const char* text, const char*, UINT type) {
        told += Values(window != nullptr, type, text) + "\n";
        return IDOK;
    });
    CxRiff riff(TempFolder().Path("missing").c_str());
    CHECK(Values(riff.IsOpen(), riff.GetError(0)) == Values(0, CFileException::fileNotFound));
    int someWindow = 0;
    CWnd parent(reinterpret_cast<HWND>(&someWindow));
    riff.ErrorMessageBox(&parent);
    riff.ErrorMessageBox(nullptr); // nothing left to tell
    CHUNK_INFO info;
    char byte;
    const Values invalid(0, "CFileException::invalidFile");
    CHECK(Values{riff.Read(&byte, 1), riff.GetErrorText()} == invalid); // a file that is not open
    riff.GetError(1);
    CHECK(Values{riff.FindFirstChunk(info), riff.GetErrorText()} == invalid);
    CxRiff none;
    CHECK(Values{none.CreateChunk(kData, 0), none.GetErrorText()} == invalid); // no file at all
    CHECK(none.Remove("") == 0);
    none.ErrorMessageBox(nullptr);
    torv::SetMessageBoxHandler(before);
    CHECK(told == "1 48 'Riff' error ! : CFileException::fileNotFound\n"
                  "0 48 'Riff' error ! : CFileException::badPath\n");
    CHECK(Values(torv::FileErrorText(11), torv::FileErrorText(14), torv::FileErrorText(15), torv::FileErrorText(-1)) ==
          "CFileException::sharingViolation SHARE.EXE CFileException::endOfFile  ");
}

TEST_CASE("riff: what memory does not suffice for has not happened") {
    const TempFolder folder;
    const std::string path = folder.Path("some.riff");
    FailEachAllocation([&](AllocationFailure& failure) {
        CxRiff riff;
        CHUNK_INFO info;
        const bool done = failure.During([&] {
            return riff.Open(path.c_str(), CFile::modeCreate | CFile::modeReadWrite) &&
                   riff.CreateChunk(kRiff, kWave) && riff.AddData("1234", 4) && riff.CloseChunk() &&
                   riff.Descend(info, kRiff, kWave) && riff.Close();
        });
        CHECK(done == !failure.HasHappened());
        CHECK((riff.GetError(0) != 0) == failure.HasHappened());
    });
}
