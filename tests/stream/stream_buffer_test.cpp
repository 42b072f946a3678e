#include "torv/stream/stream_buffer.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "allocation_failure.h"
#include "torv/platform/afx/mem_file.h"
#include "values.h"

using namespace torv;

namespace {

using Words = std::vector<DWORD>;

/// A stream of 12-byte entries {delta, tag, value}, opened to the tests.
class Stream : public CStreamBuffer {
public:
    using CStreamBuffer::IsValidLocation;
    LONG State() const { return m_nState; }
};

struct Entry {
    DWORD delta;
    DWORD tag;
    DWORD value;
};

/// The stored bytes, as little-endian words.
Words WordsOf(CStreamBuffer& stream) {
    CMemFile file;
    stream.Save(&file, nullptr);
    const auto& bytes = file.GetBytes();
    Words words((bytes.size() + 3) / 4);
    for (size_t i = 0; i < bytes.size(); ++i)
        words[i / 4] |= DWORD{static_cast<unsigned char>(bytes[i])} << i % 4 * 8;
    return words;
}

/// They are whole entries, whose distances and the end mark's add up.
void CheckWhole(const Words& words, DWORD entrySize) {
    REQUIRE(words.size() * 4 % entrySize == 8 % entrySize);
    DWORD sum = 0;
    for (size_t at = 0; at < words.size(); at += entrySize / 4)
        sum += words[at];
    REQUIRE(sum == kMaxClock);
}

/// Entries at these clocks, with tags 1, 2, 3...
void Fill(CStreamBuffer& stream, std::initializer_list<DWORD> clocks) {
    REQUIRE(stream.Create(sizeof(Entry), kStreamBlockSize, kHeapBlocks));
    DWORD last = 0;
    DWORD tag = 0;
    for (const DWORD clock : clocks) {
        const Entry entry = {clock - last, ++tag, 0};
        REQUIRE(stream.AddEntry(&entry));
        last = clock;
    }
    stream.SeekToBegin();
}

/// What a walk from the top sees, as "clock:tag ".
std::string Walk(CStreamBuffer& stream) {
    std::string text;
    Entry entry;
    stream.SeekToBegin();
    while (stream.ReadNextEntry(&entry))
        text += std::to_string(stream.GetPosition()) + ":" + std::to_string(entry.tag) + " ";
    return text;
}

/// "state clock rest tag" of the cursor; tag 0 on no entry.
std::string PlaceOf(Stream& stream) {
    std::array<DWORD, 15> entry{};
    tagClockPosition position{};
    stream.GetPosition(&position);
    return Values(stream.State(), position.clock, position.extra, stream.ReadEntry(entry.data()) ? entry[1] : 0);
}

} // namespace

TEST_CASE("stream: the stored bytes") {
    Stream stream;
    REQUIRE(stream.Create(12, 2048, -1));
    const Words empty = {0x7FFFFFFF, 0xFFFFFFFE}; // only the end mark
    CHECK(WordsOf(stream) == empty);
    Entry entry = {480, 0xF5, 0x01020304};
    CHECK(stream.AddEntry(&entry) == 1);
    entry = {0x100, 0xF4, 7};
    CHECK(stream.AddEntry(&entry) == 1);
    // 480 = 1E0; 7FFFFFFF - 1E0 - 100 = 7FFFFD1F.
    const Words two = {0x1E0, 0xF5, 0x01020304, 0x100, 0xF4, 7, 0x7FFFFD1F, 0xFFFFFFFE};
    CHECK(WordsOf(stream) == two);
    CHECK(stream.GetStreamLength() == 736);
    stream.MoveTo(500);
    entry = {99999, 0xF9, 1};
    CHECK(stream.InsertEntry(&entry, 1) == 1);
    CHECK(entry.delta == 20); // what was stored; 256 - 20 = EC is left for the one behind
    CHECK(WordsOf(stream) == Words{0x1E0, 0xF5, 0x01020304, 20, 0xF9, 1, 0xEC, 0xF4, 7, 0x7FFFFD1F, 0xFFFFFFFE});
    CHECK(stream.RemoveEntry() == 1);
    CHECK(WordsOf(stream) == two);
    stream.Empty();
    CHECK(Values(stream.InsertTime(5), stream.RemoveTime(5)) == "1 1");
    CHECK(WordsOf(stream) == empty);
}

TEST_CASE("stream: creation, and a stream that was not created") {
    Stream stream;
    Entry entry = {0, 1, 0};
    tagLocateMarker marker{};
    stream.Empty();
    stream.SeekToEnd();
    CHECK(Values(stream.MoveTo(5), stream.GetStreamLength(), stream.ReadNextEntry(&entry), stream.ReadPrevEntry(&entry),
                 stream.ReadEntry(&entry), stream.WriteEntry(&entry), stream.AddEntry(&entry),
                 stream.InsertEntry(&entry, 0), stream.RemoveEntry(),
                 stream.RestoreLocation(&marker, 1)) == "0 0 0 0 0 0 0 0 0 0");
    CHECK(PlaceOf(stream) == "-1 0 0 0");
    for (const DWORD entrySize : {0u, 7u, 4096u})
        CHECK(stream.Create(entrySize, 2048, -1) == 0);
    CHECK(stream.Create(12, 2048, -1) == 1);
    CHECK(stream.Create(12, 2048, -1) == 0);
    CHECK(stream.ReadNextEntry(&entry) == 0);
    CHECK(PlaceOf(stream) == "-2 0 0 0");
    CHECK(Values(stream.AddEntry(nullptr), stream.InsertEntry(nullptr, 0), stream.ReadEntry(nullptr),
                 stream.WriteEntry(nullptr), stream.StoreLocation(nullptr), stream.RestoreLocation(nullptr, 1),
                 stream.GetPosition(nullptr)) == "0 0 0 0 0 0 0");
}

TEST_CASE("stream: moving to a time, and stepping from there") {
    Stream stream;
    Fill(stream, {0, 100, 200, 200, 300}); // tags 1 to 5
    struct Row {
        DWORD target;
        const char* place; // state, clock, rest, tag
        const char* next;  // after a step forward, and one back
        const char* previous;
    };
    const Row rows[] = {
        {0, "-1 0 0 0", "0 0 0 1", "-1 0 0 0"}, // the top, though an entry sits at 0
        {1, "1 0 1 1", "0 100 0 2", "0 0 0 1"}, // between two entries the one before is the current one
        {100, "0 100 0 2", "0 200 0 3", "0 0 0 1"},
        {199, "1 100 99 2", "0 200 0 3", "0 100 0 2"},
        {200, "0 200 0 3", "0 200 0 4", "0 100 0 2"}, // the first of the two
        {299, "1 200 99 4", "0 300 0 5", "0 200 0 4"},
        {300, "0 300 0 5", "-2 300 0 0", "0 200 0 4"},
        {301, "-2 300 1 0", "-2 300 1 0", "0 300 0 5"},
        {0xFFFFFFFF, "-2 300 2147483347 0", "-2 300 2147483347 0", "0 300 0 5"}, // 7FFFFFFF
    };
    for (const Row& from : rows) { // wherever the cursor comes from
        for (const Row& row : rows) {
            CAPTURE(from.target);
            CAPTURE(row.target);
            stream.MoveTo(from.target);
            CHECK(stream.MoveTo(row.target) == std::min(row.target, kMaxClock));
            CHECK(stream.GetPosition() == std::min(row.target, kMaxClock));
            CHECK(PlaceOf(stream) == row.place);
            CHECK(stream.IsValidLocation());
            tagLocateMarker marker;
            CHECK(stream.StoreLocation(&marker) == 1);
            stream.ReadNextEntry(nullptr);
            CHECK(PlaceOf(stream) == row.next);
            CHECK(stream.RestoreLocation(&marker, 1) == 1);
            CHECK(PlaceOf(stream) == row.place);
            CHECK(stream.IsValidLocation());
            stream.ReadPrevEntry(nullptr);
            CHECK(PlaceOf(stream) == row.previous);
        }
    }
    stream.MoveTo(900);
    stream.SeekToEnd();
    CHECK(PlaceOf(stream) == "-2 300 0 0"); // without a rest
    Stream late;
    Fill(late, {100});
    CHECK(late.MoveTo(40) == 40); // between the top and the first entry
    CHECK(PlaceOf(late) == "1 0 40 0");
    CHECK(late.ReadPrevEntry(nullptr) == 0);
    CHECK(PlaceOf(late) == "-1 0 0 0");
}

TEST_CASE("stream: inserting at one clock, at the ends and in between") {
    Stream stream;
    Fill(stream, {100, 200});
    struct Row {
        DWORD clock;
        int after;
        const char* walk;
    };
    DWORD tag = 8;
    for (const Row& row :
         {Row{200, 0, "100:1 200:8 200:2 "}, Row{200, 1, "100:1 200:8 200:9 200:2 "},
          Row{250, 0, "100:1 200:8 200:9 200:2 250:10 "}, Row{0, 0, "0:11 100:1 200:8 200:9 200:2 250:10 "},
          Row{50, 1, "0:11 50:12 100:1 200:8 200:9 200:2 250:10 "}}) {
        Entry entry = {7, tag++, 0};
        stream.MoveTo(row.clock);
        CHECK(stream.InsertEntry(&entry, row.after) == 1);
        CHECK(PlaceOf(stream) == Values(0, row.clock, 0, entry.tag));
        CHECK(Walk(stream) == row.walk);
    }
    stream.SeekToEnd();
    Entry entry = {7, tag, 0};
    CHECK(stream.InsertEntry(&entry, 0) == 1);
    CHECK(PlaceOf(stream) == "0 250 0 13"); // after the last
    CHECK(stream.GetStreamLength() == 250);
}

TEST_CASE("stream: removing keeps the cursor's time and that of later entries") {
    Stream stream;
    Fill(stream, {100, 200, 200, 300});
    stream.MoveTo(200);
    CHECK(stream.RemoveEntry() == 1); // tag 2, the first at 200
    CHECK(PlaceOf(stream) == "1 100 100 1");
    CHECK(stream.RemoveEntry() == 0); // on no entry now
    CHECK(Walk(stream) == "100:1 200:3 300:4 ");
    Entry entry = {0, 5, 0};
    stream.MoveTo(200);
    stream.InsertEntry(&entry, 1);
    CHECK(stream.RemoveEntry() == 1); // distance 0: nothing to hand on, and no rest
    CHECK(PlaceOf(stream) == "1 200 0 3");
    CHECK(stream.IsValidLocation());

    Stream first;
    Fill(first, {70, 100});
    first.MoveTo(70);
    CHECK(first.RemoveEntry() == 1);
    CHECK(PlaceOf(first) == "-1 0 70 0");
    CHECK(first.IsValidLocation());
    CHECK(first.InsertEntry(&entry, 0) ==
          1); // the rest becomes its distance, lengthens the stream, and moves what follows
    CHECK(Walk(first) == "70:5 170:2 ");
    CHECK(first.GetStreamLength() == 170);
}

TEST_CASE("stream: writing changes payload and tag, never the time") {
    Stream stream;
    Fill(stream, {100, 200});
    Entry entry = {12345, 77, 88};
    for (const DWORD noEntry : {0u, 150u, 900u}) {
        stream.MoveTo(noEntry);
        CHECK(stream.WriteEntry(&entry) == 0);
    }
    stream.MoveTo(100);
    CHECK(stream.WriteEntry(&entry) == 1);
    entry = {};
    CHECK(stream.ReadEntry(&entry) == 1);
    CHECK(Values(entry.delta, entry.tag, entry.value) == "100 77 88");
    CHECK(Walk(stream) == "100:77 200:2 ");
}

TEST_CASE("stream: refuses what would break it, and changes nothing") {
    Stream stream;
    Fill(stream, {100, 0x7FFFFF00});
    const Words before = WordsOf(stream);
    for (const DWORD clock : {0u, 100u, 150u, 0x7FFFFF10u}) {
        stream.MoveTo(clock);
        const std::string place = PlaceOf(stream);
        for (const DWORD reserved : {kEndMarkTag, kTopTag}) {
            Entry entry = {5, reserved, 0};
            CHECK(Values{stream.AddEntry(&entry), stream.InsertEntry(&entry, 1), stream.WriteEntry(&entry),
                         entry.delta} == "0 0 0 5");
        }
        const Entry late = {0x100, 5, 0}; // 7FFFFF00 + 100 is one too many
        CHECK(stream.AddEntry(&late) == 0);
        CHECK(PlaceOf(stream) == place);
    }
    CHECK(WordsOf(stream) == before);
    const Entry last = {0xFF, 5, 0};
    CHECK(Values{stream.AddEntry(&last), stream.GetStreamLength()} == "1 2147483647");
}

TEST_CASE("stream: block size changes nothing, and what is inserted and removed leaves every byte") {
    for (const DWORD entrySize : {8u, 12u, 20u, 60u}) {
        // One block that holds it all, two entries to a block, and the size that the library uses.
        std::array<Stream, 3> streams;
        const std::array<DWORD, 3> blockSizes{1 << 20, 2 * entrySize + 3, kStreamBlockSize};
        for (size_t i = 0; i < streams.size(); ++i)
            REQUIRE(streams[i].Create(entrySize, blockSizes[i], kHeapBlocks) == 1);
        std::mt19937 random(entrySize);
        const auto below = [&](DWORD limit) { return static_cast<DWORD>(random() % limit); };
        for (DWORD step = 0; step < 4000; ++step) {
            CAPTURE(entrySize);
            CAPTURE(step);
            const DWORD choice = below(streams[0].GetSize() > 600 * entrySize ? 16 : 10);
            const DWORD operand = below(2);
            const DWORD delta = below(3) * below(50);
            const DWORD target = below(streams[0].GetStreamLength() + 40);
            std::string first;
            for (Stream& stream : streams) {
                std::array<DWORD, 15> entry{delta, step + 1};
                std::fill(entry.begin() + 2, entry.end(), step * 0x01010101);
                int result = 0;
                if (choice < 2) {
                    result = stream.AddEntry(entry.data());
                } else if (choice < 4) {
                    stream.MoveTo(target);
                } else if (choice < 7) {
                    const Words before = step % 16 ? Words{} : WordsOf(stream);
                    result = stream.InsertEntry(entry.data(), static_cast<int>(operand));
                    if (result && step % 16 == 0) {
                        stream.RemoveEntry();
                        REQUIRE(WordsOf(stream) == before);
                    }
                } else if (choice == 7) {
                    result = operand ? stream.ReadNextEntry(entry.data()) : stream.ReadPrevEntry(entry.data());
                } else if (choice == 8) {
                    result = stream.WriteEntry(entry.data());
                } else {
                    result = stream.RemoveEntry();
                    stream.MoveTo(stream.GetPosition());
                }
                REQUIRE(stream.IsValidLocation());
                const std::string now = Values(result, PlaceOf(stream), stream.GetStreamLength(), stream.GetSize());
                if (&stream == &streams[0])
                    first = now;
                REQUIRE(now == first);
            }
        }
        const Words words = WordsOf(streams[0]);
        CheckWhole(words, entrySize);
        CHECK(WordsOf(streams[1]) == words);
        CHECK(WordsOf(streams[2]) == words);
    }
}

TEST_CASE("stream: a location that no longer fits leads nowhere dangerous") {
    Stream stream;
    Fill(stream, {100, 200, 300});
    std::mt19937 random(1);
    const auto below = [&](DWORD limit) { return static_cast<DWORD>(random() % limit); };
    for (int step = 0; step < 3000; ++step) {
        Entry entry = {0, 6, 0};
        const tagLocateMarker wild = {static_cast<LONG>(below(5)) - 3, below(3) ? below(60) : below(~0u), below(~0u),
                                      below(3) ? below(300) : below(~0u)};
        REQUIRE(stream.RestoreLocation(&wild, 1) == 1);
        if (step % 2)
            stream.ReadPrevEntry(&entry);
        else if (step % 3)
            stream.MoveTo(below(400));
        stream.WriteEntry(&entry);
        stream.InsertEntry(&entry, step % 5 < 3);
        CheckWhole(WordsOf(stream), sizeof(Entry));
    }
}

TEST_CASE("stream: memory that cannot be had leaves it as it was") {
    FailEachAllocation([](AllocationFailure& failure) {
        Stream stream;
        Entry entry = {10, 1, 0};
        REQUIRE(stream.Create(sizeof(Entry), 4 * sizeof(Entry), kHeapBlocks) == 1);
        for (int i = 0; i < 4; ++i)
            stream.AddEntry(&entry);
        stream.MoveTo(20);
        const Words before = WordsOf(stream);
        const std::string place = PlaceOf(stream);
        const int inserted = failure.During([&] { return stream.InsertEntry(&entry, 0); });
        CHECK(inserted == !failure.HasHappened());
        if (!inserted) {
            CHECK(WordsOf(stream) == before);
            CHECK(PlaceOf(stream) == place);
            CHECK(entry.delta == 10);
        }
    });
}
