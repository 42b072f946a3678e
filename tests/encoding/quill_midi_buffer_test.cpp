#include "encoding_fixture.h"

#include <algorithm>
#include <random>

namespace {

/// A note segment block as far as its duration, or another block, sounding `delay` after it is sent.
Bytes Block(int number, int delay, int duration) {
    Bytes bytes(60, 0);
    bytes[2] = static_cast<BYTE>(number);
    bytes[20] = static_cast<BYTE>(delay / 128);
    bytes[23] = static_cast<BYTE>(delay % 128);
    bytes[50] = static_cast<BYTE>(duration / 128);
    bytes[53] = static_cast<BYTE>(duration % 128);
    return bytes;
}

} // namespace

TEST_CASE("buffer: whatever is stored, wherever it is put, stands by tick and there as it came") {
    std::mt19937 random(1);
    CQuillMidiBuffer buffer;
    buffer.Create(1, 2000, 3);
    std::vector<StreamEntry> expected;
    for (BYTE i = 0; i < 250; ++i) {
        const StreamEntry entry{static_cast<DWORD>(random() % 8 * 100), static_cast<LONG>(random() % 5) - 2, {i, 7}};
        const auto isBefore = [](const auto& one, const auto& other) { return one.tick < other.tick; };
        expected.insert(std::upper_bound(expected.begin(), expected.end(), entry, isBefore), entry);
        REQUIRE(buffer.InsertEventAt(entry.tick, entry.bytes.data(), 2, entry.time, 1) == 1);
    }
    const BYTE more[] = {1, 2, 3};
    CHECK(buffer.AddEvent(5, more, 2, more + 2, 1, 9) == 1); // two runs, behind all
    expected.push_back({expected.back().tick + 5, 9, {1, 2, 3}});
    CHECK(buffer.MoveTo(expected.back().tick + 10) == 1);
    CHECK(buffer.InsertEvent(more, 1, more, 3, -1, 1) == 1);
    expected.push_back({expected.back().tick + 10, -1, {1, 1, 2, 3}});
    CHECK(EntriesOf(buffer) == expected);
}

TEST_CASE("buffer: what it refuses leaves it as it was") {
    CQuillMidiBuffer buffer;
    const BYTE byte = 1;
    BYTE read = 0;
    tagQuillMidiEntry entry;
    for (const bool isCreated : {false, true}) {
        CHECK(buffer.AddEvent(isCreated ? 0x80000000 : 0, &byte, 1, 0) == 0); // no stream reaches so far
        CHECK(buffer.InsertEventExAt(isCreated ? 0x80000000 : 0, 0, &byte, 1) == 0);
        CHECK(buffer.InsertEventAt(isCreated ? 0x80000000 : 0, &byte, 1, 0, 1) == 0);
        CHECK(Values{buffer.AddEvent(1, nullptr, 3, 0), buffer.AddEvent(1, &byte, 1, nullptr, 1, 0)} == "0 0");
        CHECK(buffer.MoveTo(0) == isCreated);
        CHECK(EntriesOf(buffer).empty());
        CHECK(Values{buffer.ReadEntry(&entry), buffer.ReadNextEntry(&entry), buffer.ReadPrevEntry(&entry)} == "0 0 0");
        CHECK(Values{buffer.SeekToTimePosition(10), buffer.GetPosition()} == "0 0");
        buffer.Create(1, 2000, 0);
    }
    CHECK(buffer.InsertEventAt(0x7FFFFFFF, &byte, 1, 0, 1) == 1);
    CHECK(Values{buffer.ReadEvent(buffer.GetDataSize(), &read, 1), buffer.ReadEvent(0, nullptr, 1)} == "0 0");
    BYTE more[2];
    CHECK(buffer.ReadEvent(buffer.GetDataSize() - 1, more, sizeof more) == 1);
}

TEST_CASE("buffer: copies share what is stored, and the last one frees it") {
    auto first = std::make_unique<CQuillMidiBuffer>();
    first->Create(0, 1500, 7);
    CQuillMidiBuffer second(*first);
    const BYTE byte = 7;
    CHECK(second.InsertEventAt(5, &byte, 1, 0, 1) == 1);
    CHECK(EntriesOf(*first) == std::vector<StreamEntry>{{5, 0, {7}}});
    first.reset();
    CHECK(EntriesOf(second) == std::vector<StreamEntry>{{5, 0, {7}}});
    CHECK(Values(second.GetMode(), second.GetPresendTime(), second.GetEventInterval()) == "0 1500 7");
    second.RaiseLast(10, 20);
    second.RaiseLast(9, 99);
    CHECK(Values(second.GetLastTick(), second.GetLastTime()) == "10 20");
}

TEST_CASE("buffer: sounding times are sought, and a segment that sounds then is told") {
    CQuillMidiBuffer buffer;
    buffer.Create(1, 2000, 0);
    struct Row {
        int number;
        LONG time;
        int delay, duration;
    };
    const Row rows[] = {
        {0x50, -500, 2000, 500}, {0x63, 0, 1700, 900}, {0x50, 1000, 2000, 500}, {0x50, 1000, 2000, 700}};
    for (const Row& row : rows) {
        const Bytes block = Block(row.number, row.delay, row.duration);
        buffer.AddEvent(100, block.data(), 60, row.time);
    }
    const Bytes shorter = Block(0x50, 0, 9000);
    buffer.AddEvent(100, shorter.data(), 53, 5000); // too short for a duration
    buffer.AddEvent(100, shorter.data(), 23, 0);    // and for a delay: it sounds nowhere
    const Bytes last = Block(0x50, 2000, 500);
    buffer.AddEvent(100, last.data(), 60, 6000);
    struct Sought {
        DWORD time, found, tick;
        int sounds;
    };
    // Segments sound at 1500..2000, 3000..3500, 3000..3700 and 8000..8500; a level from 1700 on, something from 5000.
    for (const Sought& sought : {Sought{1499, 0, 0, 0}, Sought{1500, 1500, 100, 1}, Sought{1699, 1500, 100, 1},
                                 Sought{1800, 1700, 200, 0}, // seen from the level on
                                 Sought{2999, 1700, 200, 0}, Sought{3000, 3000, 300, 1}, Sought{3699, 3000, 400, 1},
                                 Sought{3700, 3000, 400, 0}, Sought{7999, 5000, 600, 0}, Sought{8499, 8000, 700, 1}}) {
        CAPTURE(sought.time);
        CHECK(Values{buffer.SeekToTimePosition(sought.time), buffer.GetPosition()} ==
              Values(sought.found, sought.tick));
        buffer.SeekToBegin();
        CHECK(Values{buffer.SetLoopEndState(sought.time), buffer.GetLoopEndState()} == Values(1, sought.sounds));
    }
    tagQuillMidiMessageHead head{};
    CQuillMidiBuffer::SetDelay(&head, 0x3FFF + 2); // 14 bits
    CHECK(CQuillMidiBuffer::GetDelay(&head) == 1);
    CQuillMidiBuffer::SetDelay(&head, 2000);
    CHECK(Values(int{head.bytes[20]}, int{head.bytes[23]}) == "15 80"); // 15 x 128 + 80
    CQuillMidiBuffer::SetDelay(nullptr, 1);
    CHECK(Values(CQuillMidiBuffer::GetDelay(nullptr), CQuillMidiBuffer::GetNoteDuration(nullptr)) == "0 0");
    CPtrArray table;
    table.SetSize(3);
    CHECK(Values{buffer.CreateChaseTable(table, 100), table.GetSize()} == "0 0");
}
