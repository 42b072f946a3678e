#include "torv/stream/global_buffer.h"

#include <doctest/doctest.h>

#include <string>

#include "torv/platform/afx/mem_file.h"

namespace {

struct UnreadableFile : CMemFile {
    UnreadableFile() : CMemFile("abcdef", 6) {}
    UINT Read(void*, UINT) override { throw CFileException(CFileException::hardIO); }
};

std::string Text(const CxGlobalBuffer& buffer) {
    return {static_cast<const char*>(buffer.GetBuffer()), buffer.GetSize()};
}

} // namespace

TEST_CASE("global buffer: zeroed memory, a whole file wherever its position is, or nothing") {
    for (const int fixed : {0, 1}) {
        CxGlobalBuffer buffer(100, fixed, 1);
        CHECK(Text(buffer) == std::string(100, '\0'));
        CMemFile file("\x00hello\xFF", 7);
        file.Seek(4, CFile::begin);
        CHECK(buffer.Create(&file, fixed) != nullptr);
        CHECK(Text(buffer) == std::string("\x00hello\xFF", 7));
        UnreadableFile unreadable;
        CHECK(buffer.Create(&unreadable, fixed) != nullptr);
        CHECK(Text(buffer) == std::string(6, '\0')); // the memory is kept, and holds nothing undefined
        CMemFile empty;
        CHECK(buffer.Create(&empty, fixed) == nullptr);
        CHECK(buffer.Create(DWORD{5}, fixed, 0) != nullptr);
        CHECK(buffer.Create("no/such/file", fixed) == nullptr);
        CHECK(buffer.GetBuffer() == nullptr);
        CHECK(buffer.GetSize() == 0);
    }
}

TEST_CASE("global buffer: a copy names the same memory, and a detached handle is the caller's") {
    CxGlobalBuffer buffer(8, 0, 1);
    CxGlobalBuffer copy = buffer;
    CHECK(copy.GetBuffer() == buffer.GetBuffer());
    const HGLOBAL memory = copy.Detach();
    CHECK(copy.Detach() == nullptr);
    buffer = copy; // of the two, none frees it
    REQUIRE(memory);
    CHECK_FALSE(GlobalUnlock(memory)); // it was left unlocked
    CHECK(GlobalFree(memory) == nullptr);
}
