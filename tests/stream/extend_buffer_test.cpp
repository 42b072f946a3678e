#include "torv/stream/extend_buffer.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <random>
#include <string>

#include "torv/platform/afx/mem_file.h"
#include "values.h"

namespace {

/// Opens the chain to the tests.
class Chain : public CExtendBuffer {
public:
    explicit Chain(DWORD blockSize, const std::string& text = "", int flags = -1) : CExtendBuffer(blockSize, flags) {
        Append(text.data(), static_cast<DWORD>(text.size()));
    }
    using CExtendBuffer::InsertBlock;
    using CExtendBuffer::InsertInOrder;
    using CExtendBuffer::Overwrite;
    using CExtendBuffer::RemoveAll;

    CxShortBuff* Last() const { return m_pLast; }
    DWORD InsertText(const std::string& text) { return Insert(text.data(), static_cast<DWORD>(text.size())); }
    DWORD WriteText(const std::string& text) { return Write(text.data(), static_cast<DWORD>(text.size())); }
    std::string ReadText(DWORD count) {
        std::string text(count, '\0');
        text.resize(Read(text.data(), count));
        return text;
    }

    /// Every block's bytes, "|" between blocks.
    std::string Blocks() {
        std::string text;
        for (const CxShortBuff* block = m_pFirst; block; block = block->m_pNext) {
            text.append(reinterpret_cast<const char*>(block->m_pData), block->m_dwUsed);
            text += block->m_pNext ? "|" : "";
        }
        return text;
    }

    /// The chain is whole, its numbers add up, and the current block holds the position.
    bool IsSound() {
        DWORD start = 0;
        bool holdsPosition = false;
        const CxShortBuff* previous = nullptr;
        for (const CxShortBuff* block = m_pFirst; block; previous = block, block = block->m_pNext) {
            if (block->m_pPrev != previous || block->m_dwUsed > block->m_dwCapacity)
                return false;
            holdsPosition |= block == m_pCurrent && m_dwCurrentStart == start && OffsetInBlock() <= block->m_dwUsed;
            start += block->m_dwUsed;
        }
        return holdsPosition && previous == m_pLast && start == GetSize();
    }
};

/// "cd|ef" in blocks of four, the position at 0: the first block has room for two more.
struct WithRoom : Chain {
    WithRoom() : Chain(4, "abcdef") {
        SeekTo(0);
        Remove(2);
    }
};

/// Fails after a number of reads.
class FailingFile : public CMemFile {
public:
    explicit FailingFile(int reads) : CMemFile("0123456789", 10), m_reads(reads) {}
    UINT Read(void* buffer, UINT bytes) override {
        if (m_reads-- == 0)
            throw CFileException(CFileException::hardIO);
        return CMemFile::Read(buffer, bytes);
    }
    void Write(const void*, UINT) override { throw CFileException(CFileException::diskFull); }

private:
    int m_reads;
};

} // namespace

TEST_CASE("extend buffer: created once, with a block; before that it holds nothing") {
    Chain buffer(0);
    CHECK(Values(buffer.GetSize(), buffer.SeekTo(7), buffer.Seek(3, 0), buffer.InsertText("a"), buffer.WriteText("a"),
                 buffer.InsertInOrder("a", 1, 1), buffer.Overwrite("a", 1), buffer.Remove(1), buffer.ReadText(1),
                 buffer.Create(0, -1)) == "0 0 0 0 0 0 0 0  0");
    CHECK(buffer.Create(4, -1) != 0);
    CHECK(buffer.Create(8, -1) == 0);
    CHECK(buffer.Append("abcde", 5) == 5);
    CHECK(buffer.Blocks() == "abcd|e"); // still blocks of four
    CHECK(buffer.InsertBlock(buffer.InsertBlock(buffer.Last(), nullptr, 0), nullptr, 1) != nullptr);
    CHECK(buffer.Blocks() == "abcd|||e");
    CHECK(Values(buffer.Append(nullptr, 1), buffer.Insert(nullptr, 1), buffer.Write(nullptr, 1),
                 buffer.Read(nullptr, 1), buffer.InsertInOrder(nullptr, 1, 1),
                 buffer.Overwrite(nullptr, 1)) == "0 0 0 0 0 0");
    buffer.RemoveAll();
    CHECK(buffer.GetSize() == 0);
    CHECK(buffer.Create(8, -1) != 0);
}

TEST_CASE("extend buffer: seeking") {
    Chain buffer(4, "0123456789");
    struct Row {
        LONG offset;
        int from;
        DWORD reached;
    };
    for (const Row& row : {Row{3, 0, 3}, Row{-1, 0, 0}, Row{11, 0, 10}, Row{2, 1, 6}, Row{-5, 1, 0}, Row{-4, 2, 6},
                           Row{0x7FFFFFFF, 1, 10}, Row{5, 3, 4}, Row{5, -1, 4}}) {
        CAPTURE(row.offset);
        CAPTURE(row.from);
        buffer.SeekTo(4);
        CHECK(buffer.Seek(row.offset, row.from) == row.reached);
        CHECK(buffer.IsTop() == (row.reached == 0));
        CHECK(buffer.IsBottom() == (row.reached == 10));
    }
}

TEST_CASE("extend buffer: a write at a block's end inserts there after a read and overwrites after a seek") {
    WithRoom afterRead;
    CHECK(afterRead.ReadText(2) == "cd");
    CHECK(afterRead.WriteText("XYZ") == 3);
    CHECK(afterRead.Blocks() == "cdXY|Zf"); // two grow the block that the read stopped in, the third goes on
    WithRoom afterSeek;
    afterSeek.SeekTo(2);
    CHECK(afterSeek.WriteText("XY") == 2);
    CHECK(afterSeek.Blocks() == "cd|XY");
}

TEST_CASE("extend buffer: an insert uses free room before it splits, and repeats its first bytes when it spills") {
    WithRoom buffer;
    buffer.SeekTo(2);
    CHECK(buffer.InsertText("Z") == 1);
    CHECK(buffer.Blocks() == "cdZ|ef");

    // "abcd" is split at 2 into "ab" and "cd". Round one puts 1, 2 behind "ab"; four bytes are left and do not fit
    // before "cd", so round two splits there and takes four from the start again: 1, 2, 3, 4.
    Chain spill(4, "abcd");
    spill.SeekTo(2);
    CHECK(spill.InsertText("123456") == 6);
    CHECK(spill.Blocks() == "ab12|1234|cd");
    CHECK(spill.ReadText(9) == "cd"); // the position is behind what was inserted

    // At the end there is no next block to go to: 4 + 1 bytes, both from the start.
    Chain atEnd(4, "abcd");
    CHECK(atEnd.InsertText("12345") == 5);
    CHECK(atEnd.Blocks() == "abcd|1234|1");
}

TEST_CASE("extend buffer: loading from a file") {
    FailingFile file(2);
    int error = -1;
    Chain buffer(4, "abcd");
    SUBCASE("a count above 31 bits means the rest of the file") {
        file.Seek(3, CFile::begin);
        CHECK(buffer.Load(&file, 0xFFFFFFFF, nullptr) == 7); // behind a full block
        CHECK(buffer.Blocks() == "abcd|3456|789");
    }
    SUBCASE("in the middle it overwrites and never outgrows a block; a file that ends early gives what it has") {
        CMemFile rest("01234", 5);
        buffer.SeekTo(2);
        CHECK(buffer.Load(&rest, 99, &error) == 5);
        CHECK(buffer.Blocks() == "ab01|234");
        CHECK(Values(buffer.Load(&rest, 0, &error), buffer.Load(nullptr, 5, &error), error) == "0 0 0");
    }
    SUBCASE("a file error ends it and tells its cause") {
        CHECK(buffer.Load(&file, 10, &error) == 8);
        CHECK(error == CFileException::hardIO);
        CHECK(buffer.Blocks() == "abcd|0123|4567|");
        CHECK(buffer.Save(&file, &error) == 0);
        CHECK(error == CFileException::diskFull);
    }
    CHECK(buffer.IsSound());
}

TEST_CASE("extend buffer: agrees with a plain string through random edits, whatever the blocks are") {
    struct Shape {
        DWORD blockSize;
        int flags;
    };
    for (const Shape& shape : {Shape{1, -1}, Shape{3, 0x00}, Shape{3, 0x42}, Shape{8, -1}, Shape{64, 0x02}}) {
        CAPTURE(shape.blockSize);
        std::mt19937 random(shape.blockSize);
        const auto below = [&](size_t limit) { return static_cast<DWORD>(random() % limit); };
        Chain buffer(shape.blockSize, "", shape.flags);
        std::string model;
        DWORD position = 0;
        for (int step = 0; step < 5000; ++step) {
            CAPTURE(step);
            std::string bytes(below(2 * shape.blockSize) + 1, static_cast<char>('a' + step % 26));
            auto count = static_cast<DWORD>(bytes.size());
            DWORD wanted = below(3 * shape.blockSize);
            const DWORD size = buffer.GetSize();
            const DWORD unit = below(shape.blockSize) + 1;
            switch (below(model.size() > 500 ? 9 : 8)) {
            case 0: // often enough in a row for the tree over the blocks to be used, old and new
                for (int seeks = 0; seeks < 10; ++seeks) {
                    position = below(model.size() + 1);
                    REQUIRE(buffer.SeekTo(position) == position);
                    REQUIRE(buffer.IsSound());
                }
                break;
            case 1:
                REQUIRE(buffer.ReadText(wanted) == model.substr(position, wanted));
                position = std::min<DWORD>(position + wanted, size);
                break;
            case 2:
                REQUIRE(buffer.Append(bytes.data(), count) == count);
                model += bytes;
                position = size + count;
                break;
            case 3: // equal bytes, so that a spill's repetition does not show
                REQUIRE(buffer.InsertText(bytes) == count);
                model.insert(position, bytes);
                position += count;
                break;
            case 4: // what a write does not add to a block's end, it overwrites
                REQUIRE(buffer.WriteText(bytes) == count);
                model.replace(position, count - (buffer.GetSize() - size), bytes);
                position += count;
                break;
            case 5:
                REQUIRE(buffer.Overwrite(bytes.data(), count) == count);
                model.replace(position, count, bytes);
                position += count;
                break;
            case 6: // in order, and whole units only
                for (DWORD i = 0; i < count; ++i)
                    bytes[i] = static_cast<char>('A' + i % 26);
                REQUIRE(buffer.InsertInOrder(bytes.data(), count, unit) == count / unit * unit);
                count = count / unit * unit;
                model.insert(position, bytes, 0, count);
                position += count;
                break;
            default:
                wanted *= model.size() > 500 ? 10 : 1;
                REQUIRE(buffer.Remove(wanted) == std::min(wanted, size - position));
                model.erase(position, wanted);
            }
            REQUIRE(buffer.GetIndex() == position);
            REQUIRE(buffer.IsSound());
            CMemFile saved;
            REQUIRE(buffer.Save(&saved, nullptr) == model.size());
            REQUIRE(saved.GetBytes() == model);
        }
    }
}

TEST_CASE("extend buffer: ascending insertions leave no trail of almost empty blocks") {
    Chain buffer(64, std::string(8000, '.'));
    for (DWORD i = 0; i < 4000; ++i) { // between every two of the older bytes
        buffer.SeekTo(4 * i + 2);
        buffer.InsertInOrder("ab", 2, 2);
    }
    const std::string blocks = buffer.Blocks();
    CHECK(std::count(blocks.begin(), blocks.end(), '|') < 2 * 16000 / 64);
}
