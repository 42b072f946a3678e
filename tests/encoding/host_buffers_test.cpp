#include "torv/encoding/kel_controller_buffer.h"
#include "torv/encoding/kel_event_buffer.h"
#include "torv/encoding/pitch_buffer.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/stream/chart_record.h"
#include "values.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

// Each of these owns memory that a shallow copy would free twice.
static_assert(!std::is_copy_constructible_v<CPitchBuffer> && !std::is_copy_assignable_v<CPitchBuffer>);
static_assert(!std::is_copy_constructible_v<CKelEventBuffer> && !std::is_copy_assignable_v<CKelEventBuffer>);
static_assert(!std::is_copy_constructible_v<CKelControllerBuffer> && !std::is_copy_assignable_v<CKelControllerBuffer>);

namespace {

/// One of each kind, with everything that it can have and with nothing, 10 ticks apart.
void Fill(CKelEventBuffer& buffer) {
    tagBreakPoint point{5000, 20, 0};
    auto* const note = new tagKelNoteEvent{};
    CLyricObject lyric;
    lyric.AddNewElement()->SetPhonemeString("k a i", 0);
    lyric.AddNewElement()->SetPhonemeString("s", 0);
    CHECK(lyric.DescribeParameter(&note->lyric) == 1);
    note->noteIcon = new tagNoteIconObject{};
    CHECK(CIconNoteAttack(1, 1, 1).DescribeParameter(note->noteIcon) == 1);
    note->vibratoIcon = new tagVibratoIconObject{};
    CIconVibrato vibrato(4, 4, 1);
    vibrato.GetDepthBPList()->AddTail(point);
    vibrato.GetRateBPList()->AddTail(point);
    CHECK(vibrato.DescribeParameter(note->vibratoIcon) == 1);
    auto* const dynamics = new tagKelDynamicsEvent{};
    CIconDynamics icon(5, 1, 1);
    icon.GetDynamicsBPList()->AddTail(point);
    CHECK(icon.DescribeParameter(&dynamics->icon) == 1);
    auto* const singer = new tagKelSingerEvent{};
    CHECK(CIconSinger().DescribeParameter(&singer->icon) == 1);
    for (tagKelEventEntry entry : {tagKelEventEntry{10, 245, note},
                                   {10, 245, new tagKelNoteEvent{}},
                                   {10, 244, dynamics},
                                   {10, 244, new tagKelDynamicsEvent{}},
                                   {10, 249, singer},
                                   {10, 249, new tagKelSingerEvent{}},
                                   {10, 245, nullptr},
                                   {10, 7, nullptr}})
        CHECK(buffer.AddEvent(&entry) == 1);
}

template <class Buffer>
std::vector<DWORD> TagsOf(Buffer& buffer) {
    std::vector<DWORD> tags;
    buffer.SeekToBegin();
    do
        tags.push_back(buffer.SeekNext());
    while (tags.back() != 242);
    return tags;
}

} // namespace

TEST_CASE("pitch: nothing works before Create, or with null, and nothing changes") {
    CPitchBuffer buffer;
    CMemFile file("12345678", 8);
    DWORD frame = 5;
    for (const bool isCreated : {false, true}) {
        CHECK(buffer.Create(isCreated ? 64 : 0) == isCreated);
        DWORD* const frames = isCreated ? nullptr : &frame;
        CHECK(Values{buffer.ReadData(frames, 1), buffer.WriteData(frames, 1), buffer.InsertData(frames, 1),
                     buffer.AddData(frames, 1)} == "0 0 0 0");
        CHECK(Values{buffer.ReadData(frames), buffer.WriteData(frames), buffer.AddData(frames)} == "0 0 0");
        CHECK(Values{buffer.MoveTo(3), buffer.Load(isCreated ? nullptr : &file, 2, nullptr)} == "0 0");
        CHECK(Values(buffer.GetSize(), buffer.GetModify(), buffer.GetFrameSize()) == Values(0, 0, isCreated ? 4 : 0));
    }
    CHECK(Values(buffer.GetSampleRate(), buffer.GetFrameStep()) == "44100 256");
}

TEST_CASE("pitch: random edits, as a list of frames has them; a single frame placed counts four") {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        CAPTURE(seed);
        std::mt19937 random(seed);
        CPitchBuffer buffer;
        buffer.Create(seed % 2 ? 64 : 4);
        std::vector<DWORD> frames;
        DWORD counted = 0;
        for (int step = 0; step < 100; ++step) {
            const DWORD block[] = {static_cast<DWORD>(random()), 2, 3};
            const auto count = static_cast<DWORD>(random() % 4);
            const auto at = static_cast<std::ptrdiff_t>(buffer.MoveTo(static_cast<DWORD>(random()) % (counted + 2)));
            REQUIRE(at <= static_cast<std::ptrdiff_t>(frames.size()));
            buffer.SetModify(0);
            const int kind = static_cast<int>(random() % 5);
            if (kind < 3) {
                const DWORD placed = kind == 0 ? count : 1;
                REQUIRE((kind == 0   ? buffer.AddData(block, count)
                         : kind == 1 ? static_cast<DWORD>(buffer.AddData(block))
                                     : static_cast<DWORD>(buffer.InsertData(block))) == placed);
                frames.insert(kind == 2 ? frames.begin() + at : frames.end(), block, block + placed);
                counted += kind == 0 ? placed : 4;
            } else if (kind == 3) {
                const DWORD asked = random() % 8 ? count : 0xFFFFFFFF;
                const DWORD gone = std::min(asked, static_cast<DWORD>(frames.size()) - static_cast<DWORD>(at));
                REQUIRE(buffer.RemoveData(asked) == gone);
                frames.erase(frames.begin() + at, frames.begin() + at + static_cast<std::ptrdiff_t>(gone));
                counted -= std::min(gone, counted);
            } else {
                REQUIRE(buffer.WriteData(block) == 1);
                frames.resize(std::max(frames.size(), static_cast<size_t>(at) + 1));
                frames[static_cast<size_t>(at)] = block[0];
                counted = static_cast<DWORD>(frames.size());
            }
            REQUIRE(Values(buffer.GetNumFrames(), buffer.GetModify()) == Values(counted, 1));
            std::vector<DWORD> held(frames.size());
            buffer.MoveTo(0);
            REQUIRE(buffer.ReadData(held.data(), static_cast<DWORD>(held.size() + 1)) == frames.size());
            REQUIRE(held == frames);
        }
    }
}

TEST_CASE("pitch: writing over counts what is there, loading what it loaded, in whole frames") {
    CPitchBuffer buffer;
    buffer.Create(64);
    const DWORD frames[] = {1, 2, 3};
    CHECK(buffer.AddData(frames, 2) == 2);
    buffer.MoveTo(1);
    CHECK(Values{buffer.WriteData(frames, 3), buffer.GetNumFrames()} == "3 4");
    CMemFile file("abcdefghij", 10);
    buffer.SetModify(0);
    CHECK(Values{buffer.Load(&file, 1, nullptr), buffer.GetNumFrames(), buffer.GetSize()} == "1 1 20");
    CHECK(Values{buffer.Load(&file, 0x40000001, nullptr), buffer.GetSize()} == "1 26"); // not 4 bytes
    CHECK(buffer.GetModify() == 0);
}

TEST_CASE_TEMPLATE("events and controllers: tags, order, and the ends", Buffer, CKelEventBuffer, CKelControllerBuffer) {
    Buffer buffer;
    std::conditional_t<std::is_same_v<Buffer, CKelEventBuffer>, tagKelEventEntry, tagKelControllerEntry> entry{};
    for (const bool isCreated : {false, true}) {
        CHECK(Values{buffer.SeekNext(), buffer.SeekPrev(), buffer.RemoveEvent()} == "242 241 0");
        buffer.RemoveAll();
        CHECK(buffer.AddEvent(&entry) == isCreated);
        CHECK(buffer.Create() == !isCreated);
        buffer.RemoveAll();
    }
    for (const DWORD clock : {500U, 100U, 300U}) {
        entry.tag = clock; // of none of the kinds
        buffer.MoveTo(clock);
        CHECK(buffer.InsertEvent(&entry) == 1);
    }
    CHECK(TagsOf(buffer) == std::vector<DWORD>{100, 300, 500, 242});
    CHECK(Values{buffer.SeekPrev(), buffer.SeekPrev(), buffer.ReadEvent(&entry), entry.delta} == "500 300 1 200");
    entry.tag = 7;
    CHECK(buffer.WriteEvent(&entry) == 1);
    CHECK(TagsOf(buffer) == std::vector<DWORD>{100, 7, 500, 242});
    buffer.MoveTo(300);
    CHECK(Values{buffer.RemoveEvent(), buffer.RemoveEvent()} == "1 0");
    CHECK(TagsOf(buffer) == std::vector<DWORD>{100, 500, 242});
    buffer.RemoveAll();
    CHECK(TagsOf(buffer) == std::vector<DWORD>{242});
}

TEST_CASE("events: records go with their entries, however filled; what leaves otherwise stays the caller's") {
    CKelEventBuffer buffer;
    buffer.Create();
    Fill(buffer);
    CHECK(TagsOf(buffer) == std::vector<DWORD>{245, 245, 244, 244, 249, 249, 245, 7, 242});
    buffer.MoveTo(30);
    tagKelEventEntry entry;
    REQUIRE(buffer.ReadEvent(&entry) == 1);
    const tagKelEventEntry replaced = entry;
    entry.record = new tagKelDynamicsEvent{};
    CHECK(buffer.WriteEvent(&entry) == 1);
    torv::ReleaseKelRecord(replaced.tag, replaced.record);
    const std::unique_ptr<tagKelSingerEvent> refused(new tagKelSingerEvent{});
    entry = {0x7FFFFFFF, torv::kEventSinger, refused.get()};
    CHECK(buffer.AddEvent(&entry) == 0);
    for (int i = 0; i < 5; ++i) { // one by one, from the dynamics on
        CHECK(Values{buffer.RemoveEvent(), buffer.RemoveEvent()} ==
              "1 0"); // the one before is readable, not current: its record stays
        buffer.SeekNext();
    }
    CHECK(TagsOf(buffer) == std::vector<DWORD>{245, 245, 7, 242});
    buffer.MoveTo(10);
    REQUIRE(buffer.ReadEvent(&entry) == 1);
    const auto* whole = static_cast<tagKelNoteEvent*>(entry.record);
    CHECK(std::string(whole->lyric.syllables[0].firstPhoneme.next->next->text) == "i");
    buffer.RemoveAll();
    Fill(buffer); // for the destructor
}
