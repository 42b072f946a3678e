#include "torv/stream/stream_buffer.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "allocation_failure.h"
#include "torv/platform/afx/mem_file.h"
#include "values.h"

using namespace torv;

namespace {

using Words = std::vector<DWORD>;

/// Opened to the tests.
class Stream : public CStreamBuffer {
public:
    using CStreamBuffer::IsValidLocation;
    LONG State() const { return m_nState; }
};

/// A whole entry of up to 60 bytes.
using Entry = std::array<DWORD, 15>;

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

/// "state clock rest tag" of the cursor; tag 0 on no entry.
std::string PlaceOf(Stream& stream) {
    Entry entry{};
    tagClockPosition position{};
    stream.GetPosition(&position);
    return Values(stream.State(), position.clock, position.extra, stream.ReadEntry(entry.data()) ? entry[1] : 0);
}

/// The same, from clocks instead of distances and without any bytes.
class Plain {
public:
    bool Next() {
        if (m_state == kCursorAtEnd)
            return false;
        const bool isThere = m_current + 1 < static_cast<int>(m_entries.size());
        isThere ? Stand(kCursorOnEntry, m_current + 1, 0) : SeekToEnd(0);
        return isThere;
    }
    bool Previous() {
        const int current = m_current - (m_state == kCursorOnEntry);
        const bool isThere = m_state != kCursorAtTop && current >= 0;
        isThere ? Stand(kCursorOnEntry, current, 0) : Stand(kCursorAtTop, -1, 0);
        return isThere;
    }
    /// To the first entry at that clock, else between two, or to the end. Clock 0 is always the top.
    void MoveTo(DWORD clock) {
        Stand(kCursorAtTop, -1, 0);
        if (clock > Length())
            return SeekToEnd(std::min(clock, kMaxClock) - Length());
        while (Clock() < clock && At(m_current + 1).clock <= clock)
            ++m_current;
        for (; clock && m_current > 0 && At(m_current - 1).clock == clock; --m_current)
            continue;
        m_rest = clock - Clock();
        if (clock)
            m_state = m_rest ? kCursorBetween : kCursorOnEntry;
    }
    bool MoveBehind(DWORD clock) {
        MoveTo(clock);
        int last = static_cast<int>(m_entries.size()) - 1;
        while (last >= 0 && At(last).clock > clock)
            --last;
        const bool isThere = last >= 0 && At(last).clock == clock;
        if (isThere)
            Stand(kCursorOnEntry, last, 0);
        return isThere;
    }
    void Add(DWORD delta, DWORD tag) {
        SeekToEnd(delta);
        Insert(tag, false);
    }
    void Insert(DWORD tag, bool after) {
        const DWORD clock = Clock() + m_rest;
        const bool before = m_state == kCursorOnEntry && !after;
        if (m_state == kCursorAtTop) // the rest that removing the first entry leaves moves what follows
            for (Timed& later : m_entries)
                later.clock += m_rest;
        const int place = m_current + !before;
        m_entries.insert(m_entries.begin() + place, Timed{clock, tag});
        Stand(kCursorOnEntry, place, 0);
    }
    bool Write(DWORD tag) {
        if (m_state == kCursorOnEntry)
            At(m_current).tag = tag;
        return m_state == kCursorOnEntry;
    }
    bool Remove() {
        if (m_state != kCursorOnEntry)
            return false;
        const DWORD clock = Clock();
        m_entries.erase(m_entries.begin() + m_current--);
        Stand(m_current < 0 ? kCursorAtTop : kCursorBetween, m_current, clock - Clock());
        return true;
    }
    DWORD Length() const { return m_entries.empty() ? 0 : m_entries.back().clock; }
    std::string Place() const {
        const bool isOn = m_current >= 0 && m_state != kCursorAtEnd;
        return Values(m_state, Clock(), m_rest, isOn ? m_entries[static_cast<size_t>(m_current)].tag : 0);
    }
    /// As they are stored, each payload filled with the tag.
    Words Stored(DWORD entryWords) const {
        Words words;
        DWORD last = 0;
        for (const Timed& entry : m_entries) {
            words.push_back(entry.clock - last);
            words.insert(words.end(), entryWords - 1, entry.tag);
            last = entry.clock;
        }
        words.insert(words.end(), {kMaxClock - last, kEndMarkTag});
        return words;
    }

private:
    struct Timed {
        DWORD clock;
        DWORD tag;
    };
    void Stand(LONG state, int current, DWORD rest) {
        m_state = state;
        m_current = current;
        m_rest = rest;
    }
    void SeekToEnd(DWORD rest) { Stand(kCursorAtEnd, static_cast<int>(m_entries.size()) - 1, rest); }
    Timed& At(int index) { return m_entries[static_cast<size_t>(index)]; }
    DWORD Clock() const { return m_current < 0 ? 0 : m_entries[static_cast<size_t>(m_current)].clock; }

    std::vector<Timed> m_entries;
    LONG m_state = kCursorAtTop;
    int m_current = -1; ///< the entry at the cursor or before it
    DWORD m_rest = 0;
};

/// Entries of 12 bytes at 100, 200, 200 and 300, with tags 1 to 4.
struct Filled : Stream {
    Filled() {
        Create(12, kStreamBlockSize, kHeapBlocks);
        for (DWORD tag = 1; tag < 5; ++tag) {
            const Entry entry = {tag == 3 ? 0u : 100u, tag, tag};
            AddEntry(entry.data());
        }
        SeekToBegin();
    }
};

} // namespace

TEST_CASE("stream: does what clocks in a list do, whatever the blocks are, and leaves the bytes that they say") {
    for (const DWORD entryWords : {2u, 3u, 5u, 15u}) {
        for (const DWORD blockSize : {8 * entryWords + 3, kStreamBlockSize, DWORD{1 << 20}}) { // of two entries first
            Stream stream;
            REQUIRE(stream.Create(4 * entryWords, blockSize, kHeapBlocks) == 1);
            Plain plain;
            std::mt19937 random(entryWords);
            const auto below = [&](DWORD limit) { return static_cast<DWORD>(random() % limit); };
            for (DWORD tag = 1; tag < 3000; ++tag) {
                CAPTURE(entryWords);
                CAPTURE(blockSize);
                CAPTURE(tag);
                Entry entry;
                entry.fill(tag);
                const DWORD target = below(plain.Length() + 40);
                const bool choice = below(2);
                switch (below(stream.GetSize() > 2400 * entryWords ? 12 : 8)) {
                case 0:
                    entry[0] = below(3) * below(50);
                    plain.Add(entry[0], tag);
                    REQUIRE(stream.AddEntry(entry.data()) == 1);
                    break;
                case 1:
                    REQUIRE(stream.MoveBehind(target) == plain.MoveBehind(target));
                    break;
                case 2:
                    plain.MoveTo(target);
                    REQUIRE(stream.MoveTo(target) == target);
                    break;
                case 3:
                case 4:
                    plain.Insert(tag, choice);
                    REQUIRE(stream.InsertEntry(entry.data(), choice) == 1);
                    break;
                case 5:
                    REQUIRE(stream.ReadNextEntry(entry.data()) == plain.Next());
                    break;
                case 6:
                    REQUIRE(stream.ReadPrevEntry(entry.data()) == plain.Previous());
                    break;
                case 7: {
                    REQUIRE(stream.WriteEntry(entry.data()) == plain.Write(tag));
                    tagLocateMarker here;
                    stream.StoreLocation(&here);
                    stream.MoveTo(target);
                    REQUIRE(stream.RestoreLocation(&here, choice) == 1);
                    break;
                }
                default:
                    REQUIRE(stream.RemoveEntry() == plain.Remove());
                }
                if (below(2)) // looking puts the cursor right, so that it may not do so after every step
                    REQUIRE(PlaceOf(stream) == plain.Place());
                REQUIRE(stream.IsValidLocation());
                REQUIRE(stream.GetStreamLength() == plain.Length());
            }
            CHECK(WordsOf(stream) == plain.Stored(entryWords));
        }
    }
}

TEST_CASE("stream: the stored bytes, and the distance that the caller is told") {
    Filled stream;
    // 300 = 12C, and 7FFFFFFF - 12C = 7FFFFED3.
    const Words four = {100, 1, 1, 100, 2, 2, 0, 3, 3, 100, 4, 4, 0x7FFFFED3, 0xFFFFFFFE};
    CHECK(WordsOf(stream) == four);
    stream.MoveTo(120);
    CHECK(Values(stream.GetPosition(), PlaceOf(stream)) == "120 1 100 20 1");
    Entry entry = {99999, 0xF9, 7};
    stream.InsertEntry(entry.data(), 1);
    CHECK(entry[0] == 20);
    CHECK(WordsOf(stream) == Words{100, 1, 1, 20, 0xF9, 7, 80, 2, 2, 0, 3, 3, 100, 4, 4, 0x7FFFFED3, 0xFFFFFFFE});
    stream.RemoveEntry();
    CHECK(Values(stream.InsertTime(5), stream.RemoveTime(5)) == "1 1");
    CHECK(WordsOf(stream) == four);
    CHECK(stream.MoveTo(0xFFFFFFFF) == kMaxClock);
    CHECK(PlaceOf(stream) == "-2 300 2147483347 0");
    CHECK(Values{stream.InsertEntry(entry.data(), 1), stream.GetStreamLength()} == Values(1, kMaxClock));
    stream.Empty();
    CHECK(WordsOf(stream) == Words{0x7FFFFFFF, 0xFFFFFFFE});
}

TEST_CASE("stream: creation, and a stream that was not created") {
    Stream stream;
    Entry entry = {0, 1, 0};
    void* const bytes = entry.data();
    tagLocateMarker marker{};
    stream.Empty();
    stream.SeekToEnd();
    CHECK(Values(stream.MoveTo(5), stream.GetStreamLength(), stream.ReadNextEntry(bytes), stream.ReadPrevEntry(bytes),
                 stream.ReadEntry(bytes), stream.WriteEntry(bytes), stream.AddEntry(bytes),
                 stream.InsertEntry(bytes, 0), stream.RemoveEntry(),
                 stream.RestoreLocation(&marker, 1)) == "0 0 0 0 0 0 0 0 0 0");
    CHECK(PlaceOf(stream) == "-1 0 0 0");
    for (const DWORD entrySize : {0u, 7u, 4096u})
        CHECK(stream.Create(entrySize, 2048, -1) == 0);
    CHECK(stream.Create(12, 2048, -1) == 1);
    CHECK(stream.Create(12, 2048, -1) == 0);
    CHECK(Values(stream.AddEntry(nullptr), stream.InsertEntry(nullptr, 0), stream.ReadEntry(nullptr),
                 stream.WriteEntry(nullptr), stream.StoreLocation(nullptr), stream.RestoreLocation(nullptr, 1),
                 stream.GetPosition(nullptr)) == "0 0 0 0 0 0 0");
}

TEST_CASE("stream: refuses what would break it, and changes nothing") {
    Filled stream;
    const Words before = WordsOf(stream);
    for (const DWORD clock : {DWORD{0}, DWORD{100}, DWORD{150}, kMaxClock}) {
        stream.MoveTo(clock);
        const std::string place = PlaceOf(stream);
        for (const DWORD reserved : {kEndMarkTag, kTopTag}) {
            Entry entry = {5, reserved};
            CHECK(Values{stream.AddEntry(entry.data()), stream.InsertEntry(entry.data(), 1),
                         stream.WriteEntry(entry.data()), entry[0]} == "0 0 0 5");
        }
        const Entry late = {kMaxClock - 300 + 1, 5};
        CHECK(stream.AddEntry(late.data()) == 0);
        CHECK(PlaceOf(stream) == place);
    }
    CHECK(WordsOf(stream) == before);
    const Entry last = {kMaxClock - 300, 5};
    CHECK(Values{stream.AddEntry(last.data()), stream.GetStreamLength()} == "1 2147483647");
}

TEST_CASE("stream: a location that no longer fits leads nowhere dangerous") {
    Filled stream;
    std::mt19937 random(1);
    const auto below = [&](DWORD limit) { return static_cast<DWORD>(random() % limit); };
    for (int step = 0; step < 3000; ++step) {
        Entry entry = {0, 6};
        const tagLocateMarker wild = {static_cast<LONG>(below(5)) - 3, below(3) ? below(60) : below(~0u), below(~0u),
                                      below(3) ? below(300) : below(~0u)};
        REQUIRE(stream.RestoreLocation(&wild, 1) == 1);
        if (step % 2)
            stream.ReadPrevEntry(entry.data());
        else if (step % 3)
            stream.MoveTo(below(400));
        stream.WriteEntry(entry.data());
        stream.InsertEntry(entry.data(), step % 5 < 3);
        const Words words = WordsOf(stream); // whole entries, whose distances and the end mark's add up
        REQUIRE(words.size() % 3 == 2);
        DWORD sum = 0;
        for (size_t at = 0; at < words.size(); at += 3)
            sum += words[at];
        REQUIRE(sum == kMaxClock);
    }
}

TEST_CASE("stream: memory that cannot be had leaves it as it was") {
    FailEachAllocation([](AllocationFailure& failure) {
        Stream stream;
        Entry entry = {10, 1};
        REQUIRE(stream.Create(12, 48, kHeapBlocks) == 1);
        for (int i = 0; i < 4; ++i)
            stream.AddEntry(entry.data());
        stream.MoveTo(20);
        const Words before = WordsOf(stream);
        const std::string place = PlaceOf(stream);
        const int inserted = failure.During([&] { return stream.InsertEntry(entry.data(), 0); });
        CHECK(inserted == !failure.HasHappened());
        if (!inserted) {
            CHECK(WordsOf(stream) == before);
            CHECK(PlaceOf(stream) == place);
            CHECK(entry[0] == 10);
        }
    });
}
