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
        const void* const data = buffer.Create(&file, fixed);
        CHECK(data == buffer.GetBuffer());
        CHECK(Text(buffer) == std::string("\x00hello\xFF", 7));
        UnreadableFile unreadable;
        CHECK(buffer.Create(&unreadable, fixed) != nullptr);
        CHECK(Text(buffer) == std::string(6, '\0')); // the memory is kept, and holds nothing undefined
        CMemFile empty;
        CHECK(buffer.Create(&empty, fixed) == nullptr);
        CHECK(buffer.Create(DWORD{5}, fixed, 0) != nullptr);
        CHECK(buffer.GetSize() == 5);
        CHECK(buffer.Create("no/such/file", fixed) == nullptr);
        CHECK(buffer.GetBuffer() == nullptr);
        CHECK(buffer.GetSize() == 0);
    }
}

TEST_CASE("global buffer: a copy names the same memory, and a detached handle is the caller's") {
    CxGlobalBuffer buffer(8, 0, 1);
    HGLOBAL memory = nullptr;
    {
        CxGlobalBuffer copy = buffer;
        CHECK(copy.GetBuffer() == buffer.GetBuffer());
        static_cast<char*>(copy.GetBuffer())[0] = 'x';
        memory = copy.Detach();
        CHECK(copy.GetBuffer() == nullptr);
        CHECK(copy.Detach() == nullptr);
        buffer = CxGlobalBuffer(); // only one of the two frees it
    }
    REQUIRE(memory);
    CHECK(static_cast<char*>(GlobalLock(memory))[0] == 'x');
    GlobalUnlock(memory);
    CHECK(GlobalFree(memory) == nullptr);
}
