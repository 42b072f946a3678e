#include "encoding_fixture.h"

#include <doctest/doctest.h>

namespace {

const BYTE kOne[] = {1};

void Put(CQuillMidiBuffer& buffer, DWORD tick, LONG time, BYTE mark) {
    CHECK(buffer.InsertEventExAt(tick, time, &mark, 1) == 1);
}

std::vector<int> MarksOf(CQuillMidiBuffer& buffer) {
    std::vector<int> marks;
    for (const StreamEntry& entry : EntriesOf(buffer))
        marks.push_back(entry.bytes.at(0));
    return marks;
}

/// A note segment block as far as its duration, sounding `delay` after it is sent.
Bytes NoteBlock(int delay, int duration) {
    Bytes bytes(60, 0);
    bytes[2] = 0x50;
    bytes[20] = static_cast<BYTE>(delay / 128);
    bytes[23] = static_cast<BYTE>(delay % 128);
    bytes[50] = static_cast<BYTE>(duration / 128);
    bytes[53] = static_cast<BYTE>(duration % 128);
    return bytes;
}

} // namespace

TEST_CASE("buffer: entries of one tick ascend by time, equal times by insertion") {
    for (const DWORD tick : {0U, 100U}) {
        CAPTURE(tick);
        CQuillMidiBuffer buffer;
        buffer.Create(1, 2000, 0);
        Put(buffer, tick + 50, 99, 9);
        Put(buffer, tick, 10, 1);
        Put(buffer, tick, 5, 2);
        Put(buffer, tick, 10, 3);
        Put(buffer, tick, 7, 4);
        Put(buffer, tick, -3, 5);
        CHECK(MarksOf(buffer) == std::vector<int>{5, 2, 4, 1, 3, 9});
    }
}

TEST_CASE("buffer: MoveTo stands after every entry at its tick, at tick 0 too") {
    CQuillMidiBuffer buffer;
    buffer.Create(0, 2000, 0);
    for (const DWORD tick : {0U, 100U, 0U, 100U, 50U, 200U, 0U}) {
        const BYTE mark = static_cast<BYTE>(MarksOf(buffer).size());
        CHECK(buffer.InsertEventAt(tick, &mark, 1, 0, 1) == 1);
    }
    CHECK(MarksOf(buffer) == std::vector<int>{0, 2, 6, 4, 1, 3, 5});
    CHECK(buffer.MoveTo(0x80000000) == 0); // no stream reaches so far
}

TEST_CASE("buffer: AddEvent counts from the last entry, and two runs are one event") {
    CQuillMidiBuffer buffer;
    buffer.Create(0, 2000, 0);
    const BYTE a[] = {1, 2};
    const BYTE b[] = {3};
    CHECK(buffer.AddEvent(10, a, 2, b, 1, 4) == 1);
    CHECK(buffer.AddEvent(10, nullptr, 0, b, 1, 5) == 1);
    CHECK(buffer.AddEvent(1, nullptr, 3, 0) == 0);
    const auto entries = EntriesOf(buffer);
    REQUIRE(entries.size() == 2);
    CHECK((entries[0].tick == 10 && entries[0].time == 4 && entries[0].bytes == Bytes{1, 2, 3}));
    CHECK((entries[1].tick == 20 && entries[1].bytes == Bytes{3}));
    BYTE byte;
    CHECK(buffer.ReadEvent(4, &byte, 1) == 0);
}

TEST_CASE("buffer: copies share what is stored, and the last one frees it") {
    auto first = std::make_unique<CQuillMidiBuffer>();
    first->Create(1, 2000, 0);
    CQuillMidiBuffer second(*first);
    Put(second, 5, 0, 7);
    CHECK(MarksOf(*first) == std::vector<int>{7});
    first.reset();
    CHECK(MarksOf(second) == std::vector<int>{7});
}

TEST_CASE("buffer: seeking goes by sounding times") {
    CQuillMidiBuffer buffer;
    CHECK(buffer.SeekToTimePosition(10) == 0); // not created
    buffer.Create(1, 2000, 0);
    CHECK(buffer.SeekToTimePosition(10) == 0); // empty
    for (const LONG time : {0, 1000, 3000}) {
        const Bytes block = NoteBlock(2000, 500);
        buffer.AddEvent(100, block.data(), static_cast<DWORD>(block.size()), time);
    }
    buffer.AddEvent(0, kOne, 1, 5000); // too short for a delay: it sounds nowhere
    CHECK(buffer.SeekToTimePosition(1999) == 0);
    CHECK(buffer.SeekToTimePosition(2000) == 2000);
    CHECK(buffer.GetPosition() == 100);
    CHECK(buffer.SeekToTimePosition(4999) == 3000);
    CHECK(buffer.GetPosition() == 200);
    CHECK(buffer.SeekToTimePosition(9000) == 5000);
}

TEST_CASE("buffer: the loop-end state tells whether a segment sounds then") {
    CQuillMidiBuffer buffer;
    buffer.Create(1, 2000, 0);
    for (const LONG time : {0, 1000}) { // sounding 2000..2500 and 3000..3500
        const Bytes block = NoteBlock(2000, 500);
        buffer.AddEvent(100, block.data(), static_cast<DWORD>(block.size()), time);
    }
    const auto stateAt = [&](DWORD time) {
        CHECK(buffer.SetLoopEndState(time) == 1);
        return buffer.GetLoopEndState();
    };
    CHECK(stateAt(1000) == 0);
    CHECK(stateAt(2000) == 1);
    CHECK(stateAt(2499) == 1);
    CHECK(stateAt(2500) == 0);
    CHECK(stateAt(2700) == 0);
    CHECK(stateAt(3100) == 1);
    CHECK(stateAt(9999) == 0);
}

TEST_CASE("buffer: delays, durations and the chase table") {
    tagQuillMidiMessageHead head{};
    head.bytes[20] = 0x0F;
    head.bytes[23] = 0x50;
    CHECK(CQuillMidiBuffer::GetDelay(&head) == 2000);
    CQuillMidiBuffer::SetDelay(&head, 0x3FFF + 2); // 14 bits
    CHECK((head.bytes[20] == 0 && head.bytes[23] == 1));
    CQuillMidiBuffer buffer;
    buffer.Create(1, 2000, 0);
    CPtrArray table;
    table.SetSize(3);
    CHECK(buffer.CreateChaseTable(table, 100) == 0);
    CHECK(table.GetSize() == 0);
}
