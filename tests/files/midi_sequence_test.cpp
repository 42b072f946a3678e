#include "files/midi_song.h"

#include "allocation_failure.h"
#include "values.h"

#include <doctest/doctest.h>

#include <array>
#include <random>

namespace {

/// {delta, status, data 1} of each event.
using Heads = std::vector<std::array<DWORD, 3>>;

Heads Read(CxMidiSequence& sequence) {
    Heads heads;
    tagEvent event;
    while (sequence.GetEvent(&event))
        heads.push_back({event.delta, event.status, event.data1});
    return heads;
}

const std::vector<Bytes> kTwoTracks{
    {0x0A, 0x90, 0x3C, 0x40, 0x14, 0x80, 0x3C, 0x40, 0x00, 0xFF, 0x2F, 0x00},  // 10, 30, 30
    {0x0A, 0x91, 0x30, 0x40, 0x46, 0x91, 0x30, 0x00, 0x10, 0xFF, 0x2F, 0x00}}; // 10, 80, 96

/// Many tracks as a list of events each, and the merge done the plain way: every event looks at every track.
struct PlainMerge {
    struct Event {
        DWORD tick;
        BYTE status, key, velocity;
    };
    struct Track {
        std::vector<Event> events;
        size_t next = 0;
        bool muted = false;
    };
    std::vector<Track> tracks;
    DWORD lastTick = 0;
    unsigned channels = 0xFFFF;

    /// {delta, status, key}; all 0 at the end.
    std::array<DWORD, 3> Next() {
        for (const DWORD from = lastTick;;) {
            Track* chosen = nullptr;
            const auto waits = [this](const Track& track) { return track.events[track.next].tick - lastTick; };
            for (Track& track : tracks)
                if (!track.muted && track.next < track.events.size() && (!chosen || waits(track) < waits(*chosen)))
                    chosen = &track;
            if (!chosen)
                return {};
            const Event event = chosen->events[chosen->next++];
            lastTick = event.tick;
            if (event.status == 0xFF || (channels >> (event.status & 0x0F) & 1))
                return {lastTick - from, event.status, event.key};
        }
    }
};

} // namespace

TEST_CASE("midi sequence: tracks merge by time, the earlier track first at one tick; a copy goes on from there") {
    MidiSong sequence(kTwoTracks);
    const Heads all{{10, 0x90, 0x3C}, {0, 0x91, 0x30},
                    {20, 0x80, 0x3C}, {0, 0xFF, 0x2F}, // the end of the shorter track is an event at its time
                    {50, 0x91, 0x30}, {16, 0xFF, 0x2F}};
    CHECK(Read(sequence) == all);
    tagEvent event;
    CHECK(Values{sequence.GetEvent(&event), sequence.GetEvent(nullptr)} == "0 0");
    sequence.SeekToBegin();
    sequence.SetMessageFilter(0xFF, 0);
    CHECK(sequence.GetEvent(&event) == 1);
    CxMidiSequence copy;
    CHECK(copy.Create(&sequence) == 1);
    CHECK(Read(copy) == Heads{{0, 0x91, 0x30}, {20, 0x80, 0x3C}, {50, 0x91, 0x30}});
    CHECK(Read(sequence).size() == 3);
    CHECK(copy.Create(nullptr) == 0);
    sequence.SeekToBegin();
    sequence.SetMessageFilter(0x8F, 0);
    CHECK(Read(sequence) == Heads{{10, 0x90, 0x3C}, {0, 0x91, 0x30}}); // a note without velocity ends one
    sequence.SeekToBegin();
    sequence.SetMuteAll(1);
    sequence.SetMute(7, 0);
    CHECK(Values(sequence.GetMute(1), sequence.GetMute(2)) == "1 0");
    CHECK(Read(sequence).empty());
}

TEST_CASE("midi sequence: three hundred tracks, while the host filters, mutes and reads them") {
    std::mt19937 engine(1);
    const auto random = [&](DWORD below) { return static_cast<DWORD>(engine() % below); };
    PlainMerge plain;
    std::vector<Bytes> bytes;
    for (int t = 0; t < 300; ++t) {
        auto& events = plain.tracks.emplace_back().events;
        Bytes& written = bytes.emplace_back();
        DWORD tick = 0;
        for (DWORD left = random(40) + 1; left-- > 0;) { // some have none but their end
            const DWORD delta = random(3) ? random(6) : random(128);
            PlainMerge::Event event{tick += delta, 0xFF, 0x2F, 0};
            if (left)
                event = {tick, static_cast<BYTE>(0x90 | random(16)), static_cast<BYTE>(random(128)),
                         static_cast<BYTE>(random(4))};
            events.push_back(event);
            written.insert(written.end(), {static_cast<BYTE>(delta), event.status, event.key, event.velocity});
        }
    }
    MidiSong sequence(bytes);
    tagEvent event{};
    size_t count = 0;
    for (;; ++count) {
        const auto expected = plain.Next();
        REQUIRE(sequence.GetEvent(&event) == (expected[1] != 0));
        if (expected[1] == 0)
            break;
        REQUIRE(std::array<DWORD, 3>{event.delta, event.status, event.data1} == expected);
        const DWORD number = random(300);
        auto& track = plain.tracks[number];
        if (random(20) == 0) { // muted tracks may come back after their time
            track.muted = random(2) == 0;
            sequence.SetMute(static_cast<int>(number), track.muted);
        }
        if (random(100) == 0) {
            plain.channels = random(0x10000);
            sequence.SetChannelFilter(static_cast<WORD>(plain.channels));
        }
        if (random(100) == 0 && sequence.GetTrack(static_cast<int>(number))->GetEvent(&event))
            ++track.next; // taken from under the merge
    }
    CHECK(count > 1000);
}

TEST_CASE("midi sequence: the filter's slot for everything above system exclusive is not exclusive's own") {
    MidiSong sequence({{0x00, 0xF0, 0x01, 0xF7, 0x00, 0xF7, 0x01, 0x01, 0x00, 0xFF, 0x2F, 0x00}});
    for (const int status : {-1, 0, 255, 256})
        CHECK(sequence.GetMessageFilter(status) == (status == 0 || status == 255));
    sequence.SetMessageFilter(0xFF, 0);
    CHECK(Read(sequence) == Heads{{0, 0xF0, 0}});
    CHECK(Values(sequence.GetMessageFilter(0xF7), sequence.GetMessageFilter(0xF0)) == "0 1");
}

TEST_CASE("midi sequence: milliseconds") {
    // Fifty ticks one by one, each 500 x 1 = 500 = 1 ms and 20 over; 50 x 20 = 1000 makes one more. Exact would
    // be 52.08.
    Bytes track;
    for (int i = 0; i < 50; ++i)
        track.insert(track.end(), {0x01, 0x90, 0x3C, 0x40});
    track.insert(track.end(), {0x00, 0xFF, 0x2F, 0x00});
    MidiSong fifty({track});
    CHECK(Values{Read(fifty).size(), fifty.GetTimePosition()} == "51 51"); // and the end
    fifty.SeekToBegin();
    CHECK(fifty.GetTimePosition() == 0);
    // A tempo loses what is below a thousand, and its event still comes: 0x07A4FF = 500991 counts as 500, so that 480
    // ticks are 500 ms; at 120 (0x01D4C0 = 120000) 480 more are 120 ms.
    MidiSong faster({{0x00, 0xFF, 0x51, 0x03, 0x07, 0xA4, 0xFF, 0x83, 0x60, 0xFF,
                      0x51, 0x03, 0x01, 0xD4, 0xC0, 0x83, 0x60, 0xFF, 0x2F, 0x00}});
    tagEvent event;
    CHECK(Values{faster.GetEvent(&event), int{event.data1}, faster.GetSequenceTempo()} == Values(1, 0x51, 500991));
    CHECK(Values{faster.GetEvent(&event), faster.GetTimePosition()} == "1 500");
    CHECK(Values{faster.GetEvent(&event), faster.GetTimePosition()} == "1 620");
    faster.SeekToBegin();
    CHECK(faster.GetSequenceTempo() == 120000); // stays until the stream says otherwise
    MidiSong still(kTwoTracks, 0);
    CHECK(Values{Read(still).size(), still.GetTimePosition()} == "6 0"); // no division, no time
}

TEST_CASE("midi sequence: signatures, and meta events too short for their kind") {
    MidiSong sequence(
        {{0x00, 0xFF, 0x58, 0x04, 0x06, 0x03, 0x24, 0x08, 0x00, 0xFF, 0x59, 0x02,
          0xFD, 0x01, 0x00, 0xFF, 0x58, 0x01, 0x05, 0x00, 0xFF, 0x59, 0x00, // short: delivered, without effect
          0x00, 0xFF, 0x51, 0x02, 0x01, 0x02, 0x00, 0xFF, 0x2F, 0x00}});
    CHECK(Read(sequence).size() == 6);
    CHECK(Values(sequence.GetTimeSig(), sequence.GetKeySig(), sequence.GetSequenceTempo()) ==
          Values(0x08240306, 0x01FD, 500000));
    sequence.SeekToBegin();
    CHECK(Values(sequence.GetTimeSig(), sequence.GetKeySig()) == "0 0");
}

TEST_CASE("midi sequence: what does not fit") {
    CxMidiSequence none;
    tagEvent event;
    CHECK(Values{none.GetEvent(&event), none.PrepareTrackList(1, 1, 480), none.AddNewTrack(kTwoTracks[0].data(), 12)} ==
          "0 0 0"); // nothing created

    MidiSong sequence({kTwoTracks[0], {0x05, 0xF4, 0x00, 0x00}});
    CHECK(Values{sequence.AddNewTrack(kTwoTracks[1].data(), 12), sequence.GetTrack(2)} ==
          "0 0"); // the places are taken
    CHECK(sequence.PrepareTrackList(1, 0x10000, 480) == 0);
    CHECK(Values{sequence.GetEvent(&event), sequence.GetEvent(&event)} == "0 0"); // one malformed track stops all
    sequence.SetMute(1, 1);
    CHECK(Read(sequence).size() == 3);
    sequence.Create(1, 2);
    REQUIRE(sequence.PrepareTrackList(1, 3, 480) == 1);
    sequence.AddNewTrack(kTwoTracks[0].data(), 12);
    CHECK(Read(sequence).size() == 3); // prepared places that no track took are passed over
    sequence.CleanUp();
    CHECK(sequence.AddNewTrack(kTwoTracks[0].data(), 12) == nullptr);
}

TEST_CASE("midi sequence: what memory does not suffice for leaves the tracks as they were") {
    MidiSong other({kTwoTracks[0]});
    FailEachAllocation([&](AllocationFailure& failure) {
        MidiSong sequence(kTwoTracks);
        const int copied = failure.During([&] { return sequence.Create(&other); });
        CHECK(copied == !failure.HasHappened());
        CHECK(Read(sequence).size() == (copied ? 3 : 6));
        sequence.SeekToBegin();
        const bool made = failure.During([&] {
            return sequence.PrepareTrackList(1, 2, 480) && sequence.AddNewTrack(kTwoTracks[0].data(), 12) &&
                   sequence.AddNewTrack(kTwoTracks[1].data(), 12);
        });
        CHECK((made && copied) == !failure.HasHappened());
    });
}
