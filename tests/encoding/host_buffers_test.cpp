#include "torv/encoding/kel_controller_buffer.h"
#include "torv/encoding/kel_event_buffer.h"
#include "torv/encoding/pitch_buffer.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/stream/chart_record.h"

#include <doctest/doctest.h>

#include <memory>
#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

// Each of these owns memory that a shallow copy would free twice.
static_assert(!std::is_copy_constructible_v<CPitchBuffer> && !std::is_copy_assignable_v<CPitchBuffer>);
static_assert(!std::is_copy_constructible_v<CKelEventBuffer> && !std::is_copy_assignable_v<CKelEventBuffer>);
static_assert(!std::is_copy_constructible_v<CKelControllerBuffer> && !std::is_copy_assignable_v<CKelControllerBuffer>);

namespace {

std::vector<DWORD> FramesOf(CPitchBuffer& buffer) {
    std::vector<DWORD> frames(buffer.GetSize() / 4);
    buffer.SeekTo(0);
    CHECK(buffer.ReadData(frames.data(), static_cast<DWORD>(frames.size())) == frames.size());
    return frames;
}

/// With `parts` 0 the record alone, 1 empty icons and syllables, 2 everything there is.
tagKelNoteEvent* NewNote(int parts) {
    auto* note = new tagKelNoteEvent{};
    if (parts == 0)
        return note;
    note->noteIcon = new tagNoteIconObject{};
    note->vibratoIcon = new tagVibratoIconObject{};
    if (parts == 1) {
        note->lyric = {2, new tagLyricSyllable[2]{}};
        return note;
    }
    CLyricObject lyric;
    lyric.AddNewElement()->SetPhonemeString("k a i", 0);
    lyric.AddNewElement()->SetPhonemeString("s", 0);
    CHECK(lyric.DescribeParameter(&note->lyric) == 1);
    CIconNoteAttack attack(1, 1, 1);
    CHECK(attack.DescribeParameter(note->noteIcon) == 1);
    CIconVibrato vibrato(4, 4, 1);
    tagBreakPoint point{5000, 20, 0};
    vibrato.GetDepthBPList()->AddTail(point);
    vibrato.GetRateBPList()->AddTail(point);
    CHECK(vibrato.DescribeParameter(note->vibratoIcon) == 1);
    CHECK((note->vibratoIcon->depthPoints && note->vibratoIcon->ratePoints && note->noteIcon->developerName));
    return note;
}

tagKelDynamicsEvent* NewDynamics() {
    auto* dynamics = new tagKelDynamicsEvent{};
    CIconDynamics icon(5, 1, 1);
    tagBreakPoint point{5000, 20, 0};
    icon.GetDynamicsBPList()->AddTail(point);
    CHECK((icon.DescribeParameter(&dynamics->icon) == 1 && dynamics->icon.points));
    return dynamics;
}

tagKelSingerEvent* NewSinger() {
    auto* singer = new tagKelSingerEvent{};
    CHECK((CIconSinger().DescribeParameter(&singer->icon) == 1 && singer->icon.header.caption));
    return singer;
}

/// One of each kind, whole and half filled, 10 ticks apart.
void Fill(CKelEventBuffer& buffer) {
    const auto add = [&buffer](DWORD tag, void* record) {
        tagKelEventEntry entry{10, tag, record};
        CHECK(buffer.AddEvent(&entry) == 1);
    };
    for (const int parts : {0, 1, 2})
        add(torv::kEventAnote, NewNote(parts));
    add(torv::kEventAicon, NewDynamics());
    add(torv::kEventAicon, new tagKelDynamicsEvent{});
    add(torv::kEventSinger, NewSinger());
    add(torv::kEventSinger, new tagKelSingerEvent{});
    for (const DWORD tag : {245U, 244U, 249U, 7U})
        add(tag, nullptr);
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

TEST_CASE("pitch: nothing works before Create, and nothing changes") {
    CPitchBuffer buffer;
    DWORD frame = 5;
    CMemFile file("12345678", 8);
    int error = 9;
    CHECK((buffer.GetSampleRate() == 44100 && buffer.GetFrameStep() == 256 && buffer.Create(0) == 0));
    CHECK((buffer.GetFrameSize() == 0 && buffer.GetFramePosition() == 0 && buffer.MoveTo(3) == 0));
    CHECK((buffer.ReadData(&frame) == 0 && buffer.ReadData(&frame, 1) == 0 && buffer.WriteData(&frame) == 0));
    CHECK((buffer.WriteData(&frame, 1) == 0 && buffer.AddData(&frame) == 0 && buffer.InsertData(&frame, 1) == 0));
    CHECK((buffer.RemoveData(0xFFFFFFFF) == 0 && buffer.Load(&file, 2, &error) == 0 && error == 0));
    CHECK((buffer.GetNumFrames() == 0 && buffer.GetModify() == 0));
    REQUIRE(buffer.Create(64) == 1);
    CHECK((buffer.GetFrameSize() == 4 && buffer.AddData(nullptr) == 0 && buffer.InsertData(nullptr, 3) == 0));
    CHECK((buffer.WriteData(nullptr) == 0 && buffer.WriteData(nullptr, 3) == 0 && buffer.ReadData(nullptr) == 0));
    CHECK((buffer.Load(nullptr, 3, nullptr) == 0 && buffer.GetModify() == 0));
}

TEST_CASE("pitch: a single frame placed counts four, many count themselves, writing counts anew") {
    CPitchBuffer buffer;
    buffer.Create(64);
    const DWORD frames[] = {1, 2, 3};
    CHECK((buffer.AddData(frames) == 1 && buffer.GetNumFrames() == 4 && buffer.GetSize() == 4));
    CHECK((buffer.MoveTo(3) == 1 && buffer.GetFramePosition() == 1)); // counted, but not there
    CHECK((buffer.AddData(frames, 3) == 3 && buffer.GetNumFrames() == 7));
    CHECK((buffer.MoveTo(1) == 1 && buffer.InsertData(frames + 2) == 1 && buffer.GetNumFrames() == 11));
    CHECK((buffer.InsertData(frames, 2) == 2 && buffer.GetNumFrames() == 13));
    CHECK(FramesOf(buffer) == std::vector<DWORD>{1, 3, 1, 2, 1, 2, 3});
    DWORD frame = 9;
    CHECK((buffer.ReadData(&frame) == 0 && buffer.MoveTo(6) == 6 && buffer.ReadData(&frame) == 1 && frame == 3));
    buffer.MoveTo(0);
    buffer.SetModify(0);
    CHECK((buffer.WriteData(frames + 1) == 1 && buffer.GetNumFrames() == 7 && buffer.GetModify() == 1));
    CHECK((buffer.MoveTo(6) == 6 && buffer.WriteData(frames, 3) == 3 && buffer.GetNumFrames() == 9));
    buffer.MoveTo(2);
    CHECK((buffer.RemoveData(3) == 3 && buffer.GetNumFrames() == 6 && buffer.GetFramePosition() == 2));
    CHECK(FramesOf(buffer) == std::vector<DWORD>{2, 3, 2, 1, 2, 3});
    buffer.MoveTo(4);
    CHECK((buffer.RemoveData(99) == 2 && buffer.GetNumFrames() == 4));
    CHECK((buffer.RemoveData(5) == 0 && buffer.GetNumFrames() == 4)); // nothing lies after the position
    CHECK((buffer.Create(0) == 0 && buffer.GetNumFrames() == 4));
    CHECK((buffer.Create(8) == 1 && buffer.GetNumFrames() == 0 && buffer.GetSize() == 0)); // a new start
}

TEST_CASE("pitch: removing all that is counted removes all that is there") {
    for (const bool single : {false, true}) {
        CPitchBuffer buffer;
        buffer.Create(10); // frames lie across blocks
        std::vector<DWORD> frames(100);
        std::iota(frames.begin(), frames.end(), 1);
        for (DWORD i = 0; single && i < 100; ++i)
            buffer.AddData(&frames[i]);
        if (!single)
            CHECK(buffer.AddData(frames.data(), 100) == 100);
        CHECK(FramesOf(buffer) == frames);
        buffer.MoveTo(0);
        buffer.SetModify(0);
        CHECK((buffer.RemoveData(0xFFFFFFFF) == 100 && buffer.GetSize() == 0 && buffer.GetModify() == 1));
        CHECK(buffer.GetNumFrames() == (single ? 300 : 0)); // what the single ones counted too much stays
    }
}

TEST_CASE("pitch: loading counts what it loaded, in whole frames") {
    CPitchBuffer buffer;
    buffer.Create(64);
    const DWORD frames[] = {1, 2, 3};
    buffer.AddData(frames, 3);
    CMemFile file("abcdefghij", 10);
    buffer.SetModify(0);
    int error = 9;
    CHECK((buffer.Load(&file, 1, &error) == 1 && error == 0 && buffer.GetNumFrames() == 1 && buffer.GetSize() == 16));
    CHECK((buffer.Load(&file, 0x40000001, nullptr) == 1 && buffer.GetSize() == 22)); // not 4 bytes
    CHECK(buffer.GetModify() == 0);
}

TEST_CASE("events: tags, order, and the ends") {
    CKelEventBuffer buffer;
    CHECK((buffer.SeekNext() == 242 && buffer.SeekPrev() == 241 && buffer.RemoveEvent() == 0)); // not created
    buffer.RemoveAll();
    tagKelEventEntry entry{0, 7, nullptr};
    CHECK((buffer.AddEvent(&entry) == 0 && buffer.Create() == 1 && buffer.Create() == 0));
    CHECK((buffer.SeekNext() == 242 && buffer.SeekPrev() == 241));
    DWORD host = 0;
    for (const DWORD clock : {500U, 100U, 100U, 300U}) {
        entry = {clock, clock + host, &host};
        buffer.MoveTo(clock);
        CHECK(buffer.InsertEvent(&entry) == 1);
        ++host;
    }
    CHECK(TagsOf(buffer) == std::vector<DWORD>{101, 102, 303, 500, 242});
    CHECK((buffer.SeekPrev() == 500 && buffer.GetPosition() == 500 && buffer.SeekPrev() == 303));
    CHECK((buffer.ReadEvent(&entry) == 1 && entry.delta == 200 && entry.record == &host));
    CHECK((buffer.RemoveEvent() == 1 && buffer.GetStreamLength() == 500)); // a tag of none of the kinds frees nothing
}

TEST_CASE("events: records go with their entries, however filled") {
    CKelEventBuffer buffer;
    buffer.Create();
    const std::vector<DWORD> all{245, 245, 245, 244, 244, 249, 249, 245, 244, 249, 7, 242};
    Fill(buffer);
    CHECK(TagsOf(buffer) == all);
    buffer.MoveTo(40);
    for (size_t left = 8; left-- > 1;) { // the rest one by one, from the dynamics on
        CHECK(buffer.RemoveEvent() == 1);
        CHECK(buffer.RemoveEvent() == 0); // the one before is readable, not current: its record stays
        buffer.SeekNext();
    }
    CHECK(TagsOf(buffer) == std::vector<DWORD>{245, 245, 245, 7, 242});
    tagKelEventEntry note;
    buffer.MoveTo(30);
    REQUIRE(buffer.ReadEvent(&note) == 1);
    const auto* whole = static_cast<tagKelNoteEvent*>(note.record);
    CHECK(std::string(whole->lyric.syllables[0].firstPhoneme.next->next->text) == "i");
    buffer.RemoveAll();
    CHECK((TagsOf(buffer) == std::vector<DWORD>{242} && buffer.GetStreamLength() == 0));
    Fill(buffer); // for the destructor
    CHECK(TagsOf(buffer) == all);
}

TEST_CASE("events: what leaves otherwise, and what was never taken, stays the caller's") {
    CKelEventBuffer buffer;
    buffer.Create();
    Fill(buffer);
    buffer.MoveTo(40);
    tagKelEventEntry replaced;
    REQUIRE(buffer.ReadEvent(&replaced) == 1);
    tagKelEventEntry entry{0, torv::kEventAnote, NewNote(2)};
    CHECK((buffer.WriteEvent(&entry) == 1 && entry.delta == 10));
    torv::ReleaseKelRecord(replaced.tag, replaced.record);

    const std::unique_ptr<tagKelSingerEvent> refused(new tagKelSingerEvent{});
    tagKelEventEntry late{0x7FFFFFFF, torv::kEventSinger, refused.get()};
    CHECK(buffer.AddEvent(&late) == 0);
    const DWORD clock = buffer.GetStreamLength();
    buffer.MoveTo(clock);
    tagKelEventEntry taken;
    REQUIRE((buffer.ReadEvent(&taken) == 1 && taken.tag == 7));
    DWORD host = 0;
    entry = {0, 7, &host};
    CHECK((buffer.WriteEvent(&entry) == 1 && buffer.RemoveEvent() == 1));
    torv::ReleaseKelRecord(torv::kEventAnote, nullptr);
}

TEST_CASE("controllers: values are the host's, whatever their tag") {
    CKelControllerBuffer buffer;
    CHECK((buffer.SeekNext() == 242 && buffer.Create() == 1 && buffer.Create() == 0 && buffer.SeekPrev() == 241));
    tagKelControllerEntry entry{10, torv::kEventAnote, 0xDEADBEEF};
    CHECK(buffer.AddEvent(&entry) == 1);
    CHECK(buffer.AddEvent(&entry) == 1);
    entry = {0, 3, 1};
    buffer.MoveTo(15);
    CHECK((buffer.InsertEvent(&entry) == 1 && buffer.ReadEvent(&entry) == 1 && entry.delta == 5 && entry.value == 1));
    entry.value = 2;
    CHECK((buffer.WriteEvent(&entry) == 1 && TagsOf(buffer) == std::vector<DWORD>{245, 3, 245, 242}));
    CHECK((buffer.SeekPrev() == 245 && buffer.RemoveEvent() == 1 && buffer.RemoveEvent() == 0));
    CHECK((TagsOf(buffer) == std::vector<DWORD>{245, 3, 242} && buffer.GetSize() == 2 * 12 + 8));
    buffer.RemoveAll();
    CHECK((TagsOf(buffer) == std::vector<DWORD>{242} && buffer.SeekPrev() == 241));
}
