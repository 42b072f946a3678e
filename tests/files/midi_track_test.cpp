#include "torv/files/midi_track.h"

#include "values.h"

#include <doctest/doctest.h>

#include <random>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

CxMidiTrack TrackOf(const Bytes& bytes) {
    CxMidiTrack track;
    track.Attach(bytes.data(), static_cast<DWORD>(bytes.size()));
    return track;
}

/// The events that come, as {delta, status, data 1, data 2, variable bytes}.
struct Event {
    DWORD delta;
    Bytes message;
    Bytes data;
    bool operator==(const Event&) const = default;
};

std::vector<Event> EventsOf(CxMidiTrack& track) {
    std::vector<Event> events;
    tagEvent event;
    while (track.GetEvent(&event)) {
        const BYTE* end = event.length ? event.bytes + event.length : event.bytes;
        events.push_back({event.delta, {event.status, event.data1, event.data2}, Bytes(event.bytes, end)});
    }
    return events;
}

const Bytes kWholeTrack{0x81, 0x00, 0x90, 0x3C, 0x40,             // note on after 128 ticks
                        0x10, 0x3C, 0x00,                         // running status: the same note at velocity 0
                        0x00, 0xC1, 0x05,                         // two bytes only
                        0x05, 0xF0, 0x03, 0x01, 0x02, 0xF7,       // system exclusive of three bytes
                        0x00, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20, // tempo
                        0x7F, 0xE2, 0x00, 0x40,                   // bend
                        0x00, 0xFF, 0x2F, 0x00};

} // namespace

TEST_CASE("midi track: every kind of event, and a track that breaks off anywhere") {
    CxMidiTrack track = TrackOf(kWholeTrack);
    const std::vector<Event> expected{{128, {0x90, 0x3C, 0x40}, {}},
                                      {16, {0x90, 0x3C, 0x00}, {}},
                                      {0, {0xC1, 0x05, 0x00}, {}},
                                      {5, {0xF0, 0x00, 0x00}, {0x01, 0x02, 0xF7}},
                                      {0, {0xFF, 0x51, 0x00}, {0x07, 0xA1, 0x20}},
                                      {127, {0xE2, 0x00, 0x40}, {}},
                                      {0, {0xFF, 0x2F, 0x00}, {}}};
    CHECK(EventsOf(track) == expected);
    CHECK(Values(track.GetTickPosition(), mtGetNextEvent(track.GetState())) == "276 7");
    CHECK(Values(mtGetNextEvent(nullptr), track.GetEvent(nullptr)) == "1 0");
    for (const auto& [status, length] :
         {std::pair(0x7F, 0), {0x80, 3}, {0xBF, 3}, {0xC0, 2}, {0xDF, 2}, {0xE0, 3}, {0xF0, 0}})
        CHECK(torv::MidiEventLength(status) == length);
    CxMidiTrack copy = track; // at the end as well
    CHECK(EventsOf(copy).empty());
    copy.SeekToBegin();
    CHECK(EventsOf(copy) == expected);

    track.SeekToBegin();
    track.SetChannelFilter(0, 0);
    CHECK(EventsOf(track).front() == Event{144, {0xC1, 0x05, 0x00}, {}}); // 128 + 16 + 0
    track.SeekToBegin();
    track.SetChannelFilter(-1, 0);
    CHECK(EventsOf(track).size() == 3); // what has no channel
    CHECK(Values(copy.GetChannelFilter(-1), copy.GetChannelFilter(0), copy.GetChannelFilter(15),
                 copy.GetChannelFilter(16)) == "0 1 1 0");

    for (auto end = kWholeTrack.begin(); end != kWholeTrack.end(); ++end) {
        const Bytes cut(kWholeTrack.begin(), end); // its own end, for the sanitizer
        CxMidiTrack part = TrackOf(cut);
        const auto events = EventsOf(part);
        CHECK(events.size() < expected.size());
        CHECK(std::equal(events.begin(), events.end(), expected.begin()));
        CHECK(mtGetNextEvent(part.GetState()) == 1);
    }
}

TEST_CASE("midi track: malformed bytes are an error, then and ever after") {
    struct Row {
        const char* what;
        Bytes bytes;
        std::size_t events;
    };
    const Row rows[] = {{"a delta that does not end", {0x81, 0x80, 0x80, 0x80, 0x90, 0x3C, 0x40}, 0},
                        {"a data byte without a status", {0x00, 0x3C, 0x40, 0x00}, 0},
                        {"fewer than three bytes after a delta", {0x00, 0x90, 0x3C, 0x40, 0x00, 0x3C, 0x00}, 1},
                        {"F1 has no place in a file", {0x00, 0xF1, 0x00, 0x00}, 0},
                        {"FE neither", {0x00, 0xFE, 0x00, 0x00}, 0},
                        {"system exclusive ends running status",
                         {0x00, 0x90, 0x3C, 0x40, 0x00, 0xF0, 0x01, 0xF7, 0x00, 0x3C, 0x00, 0x00},
                         2},
                        {"an end mark with a length past the end", {0x00, 0xFF, 0x2F, 0x7F}, 0}};
    for (const auto& row : rows) {
        CAPTURE(row.what);
        CxMidiTrack track = TrackOf(row.bytes);
        CHECK(EventsOf(track).size() == row.events);
        CHECK(mtGetNextEvent(track.GetState()) == 1);
    }
}

TEST_CASE("midi track: any bytes are survived, and variable data lies inside the track") {
    std::mt19937 random(20031);
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes(random() % 40);
        for (auto& byte : bytes)
            byte = static_cast<BYTE>(random() % 3 ? random() : (random() % 2 ? 0xFF : 0x00));
        CxMidiTrack track = TrackOf(bytes);
        tagEvent event;
        for (size_t left = bytes.size() / 2; track.GetEvent(&event); --left) { // at least two bytes each
            REQUIRE(left > 0);
            REQUIRE(event.status >= 0x80);
            const BYTE* const data = event.length > 0 ? event.bytes : bytes.data();
            REQUIRE(data >= bytes.data());
            REQUIRE(data + event.length <= bytes.data() + bytes.size());
        }
    }
}
