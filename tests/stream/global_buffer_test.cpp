#include "torv/stream/global_buffer.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <string>

#include "torv/platform/afx/mem_file.h"

namespace {

class UnreadableFile : public CMemFile {
public:
    UnreadableFile() : CMemFile("abcdef", 6) {}
    UINT Read(void*, UINT) override { throw CFileException(CFileException::hardIO); }
};

std::string Text(const CxGlobalBuffer& buffer) {
    return {static_cast<const char*>(buffer.GetBuffer()), buffer.GetSize()};
}

} // namespace

TEST_CASE("global buffer: all four kinds of memory") {
    for (const int fixed : {0, 1}) {
        for (const int zeroed : {0, 1}) {
            CxGlobalBuffer buffer(100, fixed, zeroed);
            REQUIRE(buffer.GetBuffer());
            CHECK(buffer.GetSize() == 100);
            const auto* bytes = static_cast<const char*>(buffer.GetBuffer());
            if (zeroed)
                CHECK(std::all_of(bytes, bytes + 100, [](char c) { return c == 0; }));
            CHECK(buffer.Create(DWORD{0}, fixed, zeroed) == nullptr);
            CHECK(buffer.GetBuffer() == nullptr);
            CHECK(buffer.GetSize() == 0);
        }
    }
}

TEST_CASE("global buffer: a whole file, wherever its position is") {
    CMemFile file("\x00hello\xFF", 7);
    file.Seek(4, CFile::begin);
    CxGlobalBuffer buffer(&file, 1);
    CHECK(Text(buffer) == std::string("\x00hello\xFF", 7));
    CMemFile empty;
    CHECK(buffer.Create(&empty, 1) == nullptr);
    CHECK(buffer.GetSize() == 0);
    CHECK(buffer.Create("no/such/file", 1) == nullptr);
    UnreadableFile unreadable;
    CHECK(buffer.Create(&unreadable, 1) != nullptr);
    CHECK(Text(buffer) == std::string(6, '\0')); // the memory is kept, and holds nothing undefined
}

TEST_CASE("global buffer: a detached handle is the caller's, and a copy names the same memory") {
    CxGlobalBuffer buffer(8, 0, 1);
    CxGlobalBuffer copy = buffer;
    CHECK(copy.GetBuffer() == buffer.GetBuffer());
    static_cast<char*>(copy.GetBuffer())[0] = 'x';
    CHECK(copy.Detach() != nullptr); // only one of the two frees it
    HGLOBAL memory = nullptr;
    {
        CxGlobalBuffer owner = buffer;
        buffer = CxGlobalBuffer();
        memory = owner.Detach();
        CHECK(owner.GetBuffer() == nullptr);
        CHECK(owner.Detach() == nullptr);
    }
    REQUIRE(memory);
    CHECK(static_cast<char*>(GlobalLock(memory))[0] == 'x'); // still there after its owner has gone
    GlobalUnlock(memory);
    CHECK(GlobalFree(memory) == nullptr);
}
