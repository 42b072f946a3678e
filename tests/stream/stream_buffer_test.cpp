#include "torv/stream/stream_buffer.h"

#include <doctest/doctest.h>

#include <cstring>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "torv/platform/afx/mem_file.h"

using namespace torv;

namespace {

using Bytes = std::vector<int>;

/// A stream of 12-byte entries {delta, tag, value}, opened to the tests.
class Stream : public CStreamBuffer {
public:
    using CStreamBuffer::IsValidLocation;
    LONG State() const { return m_nState; }
    DWORD Extra() const { return m_dwExtra; }
};

struct Entry {
    DWORD delta;
    DWORD tag;
    DWORD value;
};

Bytes BytesOf(CStreamBuffer& stream) {
    CMemFile file;
    stream.Save(&file, nullptr);
    Bytes bytes;
    for (const char c : file.GetBytes())
        bytes.push_back(static_cast<unsigned char>(c));
    return bytes;
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

DWORD TagAt(CStreamBuffer& stream) {
    Entry entry;
    return stream.ReadEntry(&entry) ? entry.tag : 0;
}

} // namespace

TEST_CASE("stream: the stored bytes") {
    Stream stream;
    REQUIRE(stream.Create(12, 2048, -1));
    // Only the end mark: 7FFFFFFF, FFFFFFFE.
    const Bytes empty = {0xFF, 0xFF, 0xFF, 0x7F, 0xFE, 0xFF, 0xFF, 0xFF};
    CHECK(BytesOf(stream) == empty);

    Entry entry = {480, 0xF5, 0x01020304};
    CHECK(stream.AddEntry(&entry));
    entry = {0x100, 0xF4, 7};
    CHECK(stream.AddEntry(&entry));
    // 480 = 1E0; 7FFFFFFF - 1E0 - 100 = 7FFFFD1F.
    const Bytes two = {0xE0, 0x01, 0x00, 0x00, 0xF5, 0x00, 0x00, 0x00, 0x04, 0x03, 0x02, 0x01, //
                       0x00, 0x01, 0x00, 0x00, 0xF4, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00, 0x00, //
                       0x1F, 0xFD, 0xFF, 0x7F, 0xFE, 0xFF, 0xFF, 0xFF};
    CHECK(BytesOf(stream) == two);
    CHECK(stream.GetStreamLength() == 736);

    stream.MoveTo(500);
    entry = {99999, 0xF9, 1};
    CHECK(stream.InsertEntry(&entry, 1));
    CHECK(entry.delta == 20); // what was stored; 256 - 20 = EC is left for the one behind
    CHECK(BytesOf(stream) == Bytes{0xE0, 0x01, 0x00, 0x00, 0xF5, 0x00, 0x00, 0x00, 0x04, 0x03, 0x02, 0x01, //
                                   0x14, 0x00, 0x00, 0x00, 0xF9, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, //
                                   0xEC, 0x00, 0x00, 0x00, 0xF4, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00, 0x00, //
                                   0x1F, 0xFD, 0xFF, 0x7F, 0xFE, 0xFF, 0xFF, 0xFF});
    CHECK(stream.RemoveEntry());
    CHECK(BytesOf(stream) == two);
    stream.Empty();
    CHECK(BytesOf(stream) == empty);
    CHECK(stream.InsertTime(5) == 1);
    CHECK(stream.RemoveTime(5) == 1);
    CHECK(BytesOf(stream) == empty);
}

TEST_CASE("stream: creation, and a stream that was not created") {
    Stream stream;
    Entry entry = {0, 1, 0};
    tagLocateMarker marker;
    CHECK(stream.State() == kCursorAtTop);
    CHECK(stream.MoveTo(5) == 0);
    CHECK(stream.GetStreamLength() == 0);
    CHECK(stream.ReadNextEntry(&entry) == 0);
    CHECK(stream.ReadPrevEntry(&entry) == 0);
    CHECK(stream.AddEntry(&entry) == 0);
    CHECK(stream.InsertEntry(&entry, 0) == 0);
    CHECK(stream.RemoveEntry() == 0);
    stream.Empty();
    stream.SeekToEnd();
    CHECK(stream.StoreLocation(&marker) == 1);
    CHECK(stream.RestoreLocation(&marker, 1) == 0);
    for (const DWORD entrySize : {0u, 7u, 4096u})
        CHECK(stream.Create(entrySize, 2048, -1) == 0);
    CHECK(stream.Create(12, 2048, -1) == 1);
    CHECK(stream.Create(12, 2048, -1) == 0);
    CHECK(stream.ReadNextEntry(&entry) == 0);
    CHECK(stream.State() == kCursorAtEnd);
}

TEST_CASE("stream: moving to a time") {
    Stream stream;
    Fill(stream, {0, 100, 200, 200, 300}); // tags 1 to 5
    struct Row {
        DWORD target;
        LONG state;
        DWORD tag; // of the entry that ReadEntry gives, 0 none
        DWORD extra;
        DWORD reached;
    };
    const Row rows[] = {
        {0, kCursorAtTop, 0, 0, 0}, // the top, though an entry sits at 0
        {1, kCursorBetween, 1, 1, 1},      {100, kCursorOnEntry, 2, 0, 100},
        {199, kCursorBetween, 2, 99, 199}, {200, kCursorOnEntry, 3, 0, 200}, // the first of the two
        {299, kCursorBetween, 4, 99, 299}, {300, kCursorOnEntry, 5, 0, 300},
        {301, kCursorAtEnd, 0, 1, 301},    {0xFFFFFFFF, kCursorAtEnd, 0, 0x7FFFFFFF - 300, 0x7FFFFFFF},
    };
    for (const Row& from : rows) { // wherever the cursor comes from
        for (const Row& row : rows) {
            CAPTURE(from.target);
            CAPTURE(row.target);
            stream.MoveTo(from.target);
            CHECK(stream.MoveTo(row.target) == row.reached);
            CHECK(stream.State() == row.state);
            CHECK(TagAt(stream) == row.tag);
            CHECK(stream.Extra() == row.extra);
            CHECK(stream.GetPosition() == row.reached);
            CHECK(stream.IsValidLocation());
        }
    }
    tagClockPosition position;
    stream.MoveTo(250);
    CHECK(stream.GetPosition(&position));
    CHECK(position.clock == 200);
    CHECK(position.extra == 50);

    Stream late;
    Fill(late, {100});
    CHECK(late.MoveTo(40) == 40); // between the top and the first entry
    CHECK(late.State() == kCursorBetween);
    CHECK(TagAt(late) == 0);
    CHECK(late.ReadPrevEntry(nullptr) == 0);
    CHECK(late.State() == kCursorAtTop);
}

TEST_CASE("stream: stepping") {
    Stream stream;
    Fill(stream, {10, 20, 20});
    Entry entry;
    CHECK(stream.ReadPrevEntry(&entry) == 0);
    for (const DWORD tag : {1u, 2u, 3u}) {
        CHECK(stream.ReadNextEntry(&entry));
        CHECK(entry.tag == tag);
    }
    CHECK(stream.ReadNextEntry(&entry) == 0);
    CHECK(stream.GetPosition() == 20); // the end keeps the last entry's clock
    CHECK(stream.ReadNextEntry(&entry) == 0);
    for (const DWORD tag : {3u, 2u, 1u}) {
        CHECK(stream.ReadPrevEntry(&entry));
        CHECK(entry.tag == tag);
    }
    CHECK(stream.GetPosition() == 10);
    CHECK(stream.ReadPrevEntry(&entry) == 0);
    stream.MoveTo(15);
    CHECK(stream.ReadPrevEntry(&entry)); // between two entries the one before the cursor is the current one
    CHECK(entry.tag == 1);
    CHECK(stream.GetPosition() == 10);
}

TEST_CASE("stream: inserting at one clock, at the ends and in between") {
    Stream stream;
    Fill(stream, {100, 200});
    Entry entry = {7, 8, 0};
    stream.MoveTo(200);
    CHECK(stream.InsertEntry(&entry, 0));
    CHECK(entry.delta == 100); // it took the old entry's distance, which is now 0
    CHECK(Walk(stream) == "100:1 200:8 200:2 ");
    stream.MoveTo(200);
    entry.tag = 9;
    CHECK(stream.InsertEntry(&entry, 1));
    CHECK(Walk(stream) == "100:1 200:8 200:9 200:2 ");
    stream.MoveTo(250);
    entry.tag = 10;
    CHECK(stream.InsertEntry(&entry, 0));
    CHECK(stream.GetPosition() == 250);
    stream.SeekToEnd();
    entry.tag = 11;
    CHECK(stream.InsertEntry(&entry, 0));
    stream.SeekToBegin();
    entry.tag = 12;
    CHECK(stream.InsertEntry(&entry, 0));
    stream.MoveTo(50);
    entry.tag = 13;
    CHECK(stream.InsertEntry(&entry, 0));
    CHECK(Walk(stream) == "0:12 50:13 100:1 200:8 200:9 200:2 250:10 250:11 ");
    CHECK(stream.GetStreamLength() == 250);
}

TEST_CASE("stream: removing keeps the cursor's time and that of later entries") {
    Stream stream;
    Fill(stream, {100, 200, 200, 300});
    stream.MoveTo(200);
    CHECK(stream.RemoveEntry()); // tag 2, the first at 200
    CHECK(stream.State() == kCursorBetween);
    CHECK(stream.GetPosition() == 200);
    CHECK(stream.Extra() == 100);
    CHECK(stream.RemoveEntry() == 0); // on no entry now
    CHECK(Walk(stream) == "100:1 200:3 300:4 ");

    Entry entry = {0, 5, 0};
    stream.MoveTo(200);
    stream.InsertEntry(&entry, 1);
    CHECK(stream.RemoveEntry()); // distance 0: nothing to hand on, and no rest
    CHECK(stream.State() == kCursorBetween);
    CHECK(stream.Extra() == 0);
    CHECK(stream.IsValidLocation());
    CHECK(stream.GetPosition() == 200);

    Stream only;
    Fill(only, {70});
    only.MoveTo(70);
    CHECK(only.RemoveEntry());
    CHECK(only.GetStreamLength() == 0);
    CHECK(only.State() == kCursorAtTop);
    CHECK(only.Extra() == 70);
    CHECK(only.GetPosition() == 70);
}

TEST_CASE("stream: an insert at the top after removing the first entry moves what follows") {
    Stream stream;
    Fill(stream, {70, 100});
    stream.MoveTo(70);
    stream.RemoveEntry();
    Entry entry = {0, 9, 0};
    CHECK(stream.InsertEntry(&entry, 0)); // the rest of 70 becomes its distance and lengthens the stream
    CHECK(Walk(stream) == "70:9 170:2 ");
    CHECK(stream.GetStreamLength() == 170);
}

TEST_CASE("stream: writing changes payload and tag, never the time") {
    Stream stream;
    Fill(stream, {100, 200});
    Entry entry = {12345, 77, 88};
    CHECK(stream.WriteEntry(&entry) == 0); // at the top
    stream.MoveTo(150);
    CHECK(stream.WriteEntry(&entry) == 0); // on no entry
    stream.MoveTo(100);
    CHECK(stream.WriteEntry(&entry));
    CHECK(entry.delta == 100);
    CHECK(stream.ReadEntry(&entry));
    CHECK(entry.value == 88);
    CHECK(Walk(stream) == "100:77 200:2 ");
}

TEST_CASE("stream: refuses what would break it, and changes nothing") {
    Stream stream;
    Fill(stream, {100, 0x7FFFFF00});
    const Bytes before = BytesOf(stream);
    const auto refuses = [&](Entry entry) {
        const DWORD delta = entry.delta;
        for (const DWORD clock : {0u, 100u, 150u, 0x7FFFFF10u}) {
            stream.MoveTo(clock);
            const LONG state = stream.State();
            CHECK(stream.AddEntry(&entry) == 0);
            CHECK(stream.State() == state);
            CHECK(stream.GetPosition() == clock);
            if (entry.tag >= kEndMarkTag) {
                CHECK(stream.InsertEntry(&entry, 1) == 0);
                CHECK(stream.WriteEntry(&entry) == 0);
                CHECK(entry.delta == delta);
            }
        }
    };
    refuses({0, kEndMarkTag, 0});
    refuses({0, kTopTag, 0});
    refuses({0x100, 5, 0}); // 7FFFFF00 + 100 is one too many
    CHECK(stream.AddEntry(nullptr) == 0);
    CHECK(stream.InsertEntry(nullptr, 0) == 0);
    CHECK(stream.ReadEntry(nullptr) == 0);
    CHECK(stream.WriteEntry(nullptr) == 0);
    CHECK(BytesOf(stream) == before);
    const Entry last = {0xFF, 5, 0};
    CHECK(stream.AddEntry(&last));
    CHECK(stream.GetStreamLength() == 0x7FFFFFFF);
}

TEST_CASE("stream: a stored location comes back; one that no longer fits leads nowhere dangerous") {
    Stream stream;
    Fill(stream, {100, 200, 300});
    tagLocateMarker marker;
    for (const DWORD clock : {0u, 50u, 100u, 250u, 300u, 900u}) {
        for (const int reread : {0, 1}) {
            CAPTURE(clock);
            stream.MoveTo(clock);
            const LONG state = stream.State();
            const DWORD tag = TagAt(stream);
            CHECK(stream.StoreLocation(&marker));
            Walk(stream);
            CHECK(stream.RestoreLocation(&marker, reread));
            CHECK(stream.State() == state);
            CHECK(stream.GetPosition() == clock);
            CHECK(TagAt(stream) == tag);
            CHECK(stream.IsValidLocation());
        }
    }
    std::mt19937 random(1);
    for (int n = 0; n < 3000; ++n) {
        const DWORD end = random() % 4 ? random() % 60 : random();
        marker = {static_cast<LONG>(random() % 5) - 3, end, static_cast<DWORD>(random()),
                  static_cast<DWORD>(random() % 3 ? random() % 300 : random())};
        REQUIRE(stream.RestoreLocation(&marker, 1));
        Entry entry = {0, 6, 0};
        switch (random() % 6) {
        case 0:
            stream.InsertEntry(&entry, static_cast<int>(random() % 2));
            break;
        case 1:
            stream.ReadNextEntry(&entry);
            break;
        case 2:
            stream.ReadPrevEntry(&entry);
            break;
        case 3:
            stream.WriteEntry(&entry);
            break;
        case 4:
            stream.MoveTo(random() % 400);
            break;
        default:
            TagAt(stream);
        }
        // Its bytes still are whole entries whose distances and the end mark's add up.
        DWORD sum = 0;
        stream.SeekToBegin();
        while (stream.ReadNextEntry(&entry))
            sum += entry.delta;
        REQUIRE(sum == stream.GetStreamLength());
        REQUIRE(stream.GetSize() % 12 == 8);
        if (stream.GetSize() > 2000) {
            stream.Empty();
            for (int i = 0; i < 3; ++i) {
                entry = {100, 1, 0};
                stream.AddEntry(&entry);
            }
        }
    }
}

namespace {

/// The same stream as a plain vector: what the cursor must show after each step, whatever the blocks are.
class Model {
public:
    Model(DWORD entrySize, DWORD blockSize, unsigned seed) : m_entrySize(entrySize), m_random(seed) {
        REQUIRE(m_stream.Create(entrySize, blockSize, kHeapBlocks));
    }

    void Step() {
        switch (Below(m_items.size() > 600 ? 9 : 6)) {
        case 0:
            Add();
            break;
        case 1:
        case 2:
            MoveTo(Below(Length() + 40));
            break;
        case 3:
        case 4:
            Insert(static_cast<int>(Below(2)));
            break;
        case 5:
            Below(2) ? Next() : Prev();
            break;
        default:
            Remove();
        }
        REQUIRE(m_stream.IsValidLocation());
        REQUIRE(m_stream.GetPosition() == m_time);
        REQUIRE(m_stream.State() == m_state);
        REQUIRE(m_stream.GetStreamLength() == Length());
        const bool hasEntry = (m_state == kCursorOnEntry || m_state == kCursorBetween) && m_current >= 0;
        REQUIRE(m_stream.ReadEntry(m_buffer) == hasEntry);
        if (hasEntry)
            CheckBuffer(m_items[Current()].tag);
    }

    void CheckWhole() {
        m_stream.SeekToBegin();
        for (const Item& item : m_items) {
            REQUIRE(m_stream.ReadNextEntry(m_buffer));
            REQUIRE(m_stream.GetPosition() == item.clock);
            CheckBuffer(item.tag);
        }
        REQUIRE(m_stream.ReadNextEntry(nullptr) == 0);
        for (size_t i = m_items.size(); i-- > 0;) {
            REQUIRE(m_stream.ReadPrevEntry(m_buffer));
            REQUIRE(m_stream.GetPosition() == m_items[i].clock);
            CheckBuffer(m_items[i].tag);
        }
        MoveTo(0);
    }

private:
    struct Item {
        DWORD clock;
        DWORD tag;
    };

    DWORD Below(size_t limit) { return static_cast<DWORD>(m_random() % limit); }
    DWORD Length() const { return m_items.empty() ? 0 : m_items.back().clock; }
    size_t Current() const { return static_cast<size_t>(m_current); }

    /// The bytes of an entry follow from its tag.
    void MakeBuffer(DWORD delta) {
        ++m_tag;
        std::memset(m_buffer, static_cast<int>(m_tag % 251), m_entrySize);
        std::memcpy(m_buffer, &delta, 4);
        std::memcpy(m_buffer + 4, &m_tag, 4);
    }
    void CheckBuffer(DWORD tag) {
        DWORD stored = 0;
        std::memcpy(&stored, m_buffer + 4, 4);
        REQUIRE(stored == tag);
        for (DWORD i = 8; i < m_entrySize; ++i)
            REQUIRE(m_buffer[i] == static_cast<unsigned char>(tag % 251));
    }

    void Add() {
        const DWORD delta = Below(3) * Below(50);
        MakeBuffer(delta);
        REQUIRE(m_stream.AddEntry(m_buffer));
        m_items.push_back({Length() + delta, m_tag});
        GoOnto(m_items.size() - 1);
    }
    void MoveTo(DWORD target) {
        REQUIRE(m_stream.MoveTo(target) == target);
        m_time = target;
        if (target == 0 || target > Length()) {
            m_state = target ? kCursorAtEnd : kCursorAtTop;
            m_current = target ? static_cast<int>(m_items.size()) - 1 : -1;
            return;
        }
        size_t first = 0;
        while (m_items[first].clock < target)
            ++first;
        const bool exact = m_items[first].clock == target;
        m_state = exact ? kCursorOnEntry : kCursorBetween;
        m_current = static_cast<int>(first) - (exact ? 0 : 1);
    }
    void Insert(int after) {
        const bool before = m_state == kCursorOnEntry && !after;
        const size_t at = before ? Current() : static_cast<size_t>(m_current) + 1;
        MakeBuffer(Below(1000));
        REQUIRE(m_stream.InsertEntry(m_buffer, after));
        m_items.insert(m_items.begin() + static_cast<ptrdiff_t>(at), {m_time, m_tag});
        GoOnto(at);
    }
    void Remove() {
        const bool onEntry = m_state == kCursorOnEntry;
        REQUIRE(m_stream.RemoveEntry() == onEntry);
        if (!onEntry)
            return MoveTo(Below(Length() + 1));
        m_items.erase(m_items.begin() + m_current);
        --m_current;
        m_state = m_current < 0 ? kCursorAtTop : kCursorBetween;
        REQUIRE(m_stream.GetPosition() == m_time);
        MoveTo(m_time); // a rest at the top has its own rule, tested above
    }
    void Next() {
        const auto next = static_cast<size_t>(m_current) + 1;
        REQUIRE(m_stream.ReadNextEntry(m_buffer) == (m_state != kCursorAtEnd && next < m_items.size()));
        if (m_state == kCursorAtEnd)
            return;
        if (next < m_items.size())
            return GoOnto(next);
        m_state = kCursorAtEnd;
        m_time = Length();
    }
    void Prev() {
        const int previous = m_state == kCursorOnEntry ? m_current - 1 : m_current;
        REQUIRE(m_stream.ReadPrevEntry(m_buffer) == (previous >= 0));
        if (previous >= 0)
            return GoOnto(static_cast<size_t>(previous));
        m_state = kCursorAtTop;
        m_current = -1;
        m_time = 0;
    }
    void GoOnto(size_t index) {
        m_state = kCursorOnEntry;
        m_current = static_cast<int>(index);
        m_time = m_items[index].clock;
    }

    Stream m_stream;
    DWORD m_entrySize;
    std::mt19937 m_random;
    std::vector<Item> m_items;
    DWORD m_tag = 0;
    int m_current = -1;
    LONG m_state = kCursorAtTop;
    DWORD m_time = 0;
    unsigned char m_buffer[64] = {};
};

} // namespace

TEST_CASE("stream: agrees with a plain vector through random edits and moves") {
    const DWORD shapes[][2] = {{8, 8}, {8, 64}, {12, 40}, {16, 16}, {16, 128}, {20, 100}, {12, 2048}, {60, 64}};
    for (const auto& shape : shapes) {
        CAPTURE(shape[0]);
        CAPTURE(shape[1]);
        Model model(shape[0], shape[1], shape[0] * 1000 + shape[1]);
        for (int step = 0; step < 3000; ++step) {
            CAPTURE(step);
            model.Step();
            if (step % 500 == 499)
                model.CheckWhole();
        }
    }
}
