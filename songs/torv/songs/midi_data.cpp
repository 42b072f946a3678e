#include "torv/songs/midi_data.h"

#include "torv/songs/song_error.h"

#include <torv/files/midi_track.h>

#include <algorithm>
#include <array>
#include <deque>
#include <map>

namespace torv::songs {

namespace {

constexpr uint32_t kMillisecondTempo = 480000; ///< makes a tick a millisecond
constexpr int kHighestKey = 127;
constexpr int kMostVelocity = 127;

[[noreturn]] void Fail(const std::string& what) { throw SongError(what); }

/// The ticks of a file's division, as ticks of 480 to a quarter note.
class TickScale {
public:
    explicit TickScale(unsigned division) {
        if (division & 0x8000) {
            const int frames = 0x100 - static_cast<int>(division >> 8);
            const unsigned perFrame = division & 0xFF;
            if (frames != 24 && frames != 25 && frames != 29 && frames != 30)
                Fail("time division of " + std::to_string(frames) +
                     " frames a second is none of MIDI's four: is this a MIDI file?");
            // Milliseconds: 29 stands for 30000 / 1001 frames a second.
            m_numerator = frames == 29 ? 1001 : 1000;
            m_denominator = static_cast<uint64_t>(frames == 29 ? 30 : frames) * perFrame;
            m_smpte = true;
        } else {
            m_numerator = kTicksPerQuarter;
            m_denominator = division;
        }
        if (m_denominator == 0)
            Fail("time division is 0, so its events have no times");
    }
    bool IsSmpte() const { return m_smpte; }
    uint32_t operator()(uint64_t tick) const {
        const uint64_t whole = tick / m_denominator * m_numerator;
        const uint64_t rest = (tick % m_denominator * m_numerator + m_denominator / 2) / m_denominator;
        return static_cast<uint32_t>(std::min<uint64_t>(whole + rest, kLastTick));
    }

private:
    uint64_t m_numerator = 0;
    uint64_t m_denominator = 0;
    bool m_smpte = false;
};

struct Reader {
    const TickScale& scale;
    MidiData& song;
    std::map<uint32_t, uint32_t> tempos;
    std::map<uint32_t, Meter> meters;

    void ReadTrack(size_t number, Bytes bytes);
};

/// The notes of one channel while its track is read.
struct ChannelNotes {
    std::vector<MidiNote> notes;
    std::array<std::deque<size_t>, 128> sounding; ///< indexes of notes without an end yet, oldest first

    void Start(uint32_t tick, int key, int velocity) {
        sounding[static_cast<size_t>(key)].push_back(notes.size());
        notes.push_back({tick, 0, key, velocity});
    }
    void End(uint32_t tick, int key) {
        auto& open = sounding[static_cast<size_t>(key)];
        if (open.empty())
            return;
        MidiNote& note = notes[open.front()];
        note.length = std::max<uint32_t>(1, tick - note.tick);
        open.pop_front();
    }
    void EndAll(uint32_t tick) {
        for (int key = 0; key < 128; ++key)
            while (!sounding[static_cast<size_t>(key)].empty())
                End(tick, key);
    }
};

/// Counts the engine's blocks in a track: a block opens with controllers 99, its number, and 98, parameter 0.
struct BlockCounter {
    std::array<int, 16> number{};
    void Hear(int channel, int controller, int value, std::map<int, size_t>& blocks) {
        constexpr int kFirst = 0x50;
        constexpr int kLast = 0x67;
        int& current = number[static_cast<size_t>(channel)];
        if (controller == 99)
            current = value;
        else if (controller == 98 && value == 0 && current >= kFirst && current <= kLast)
            ++blocks[current];
    }
};

/// Three bytes, big-endian. Some programs write four, with a zero first.
uint32_t TempoOf(const std::string& bytes) {
    const bool hasFour = bytes.size() == 4 && bytes[0] == 0;
    uint32_t tempo = 0;
    for (size_t i = 0; i < 3; ++i)
        tempo = tempo << 8 | static_cast<unsigned char>(bytes[i + (hasFour ? 1 : 0)]);
    return tempo;
}

void Reader::ReadTrack(size_t number, Bytes bytes) {
    std::array<ChannelNotes, 16> channels;
    MidiTrack track;
    BlockCounter blocks;
    CxMidiTrack parser;
    parser.Attach(bytes.data(), static_cast<DWORD>(bytes.size()));
    parser.SeekToBegin();
    bool ended = false;
    uint64_t clock = 0;
    uint32_t tick = 0;
    tagEvent event;
    while (!ended && parser.GetEvent(&event)) {
        clock += event.delta;
        tick = scale(clock);
        const int channel = event.status & 0x0F;
        const std::string text(reinterpret_cast<const char*>(event.bytes), event.bytes ? event.length : 0);
        const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
        const bool isNote = (event.status & 0xE0) == 0x80;
        if (isNote && event.data1 > kHighestKey)
            Fail("track " + std::to_string(number) + " has a note with the key " + std::to_string(event.data1) +
                 " at tick " + std::to_string(clock) +
                 ", and 127 is the highest: the file is damaged; export it again");
        if (isNote && (event.status & 0x10) && event.data2 > 0) {
            channels[static_cast<size_t>(channel)].Start(tick, event.data1, std::min<int>(event.data2, kMostVelocity));
        } else if (isNote) {
            channels[static_cast<size_t>(channel)].End(tick, event.data1);
        } else if ((event.status & 0xF0) == 0xB0) {
            blocks.Hear(channel, event.data1, event.data2, track.engineBlocks);
        } else if (event.status == 0xFF) {
            ended = event.data1 == 0x2F;
            if (event.data1 == 0x01 || event.data1 == 0x05)
                track.texts.push_back({tick, event.data1 == 0x05, text});
            else if (event.data1 == 0x03 && track.name.empty())
                track.name = text;
            else if (event.data1 == 0x51 && text.size() >= 3 && !scale.IsSmpte())
                tempos[tick] = TempoOf(text);
            else if (event.data1 == 0x58 && text.size() >= 2 && byte(0) > 0 && byte(1) <= 7)
                meters[tick] = {tick, byte(0), byte(1)};
        }
    }
    if (!ended && (parser.GetState()->flags & torv::kMidiTrackError))
        Fail("track " + std::to_string(number) + " is broken after tick " + std::to_string(clock) +
             ": the file is damaged or cut short; export it again");
    song.end = std::max(song.end, tick);

    // A file of format 0 has every part in one track: each channel is a part of its own then.
    bool first = true;
    for (size_t i = 0; i < channels.size(); ++i) {
        ChannelNotes& channel = channels[i];
        if (channel.notes.empty())
            continue;
        channel.EndAll(tick);
        std::stable_sort(channel.notes.begin(), channel.notes.end(), [](const MidiNote& a, const MidiNote& b) {
            return a.tick != b.tick ? a.tick < b.tick : a.key < b.key;
        });
        MidiTrack part{track.name, std::move(channel.notes), {}, static_cast<int>(i), {}};
        if (first) {
            part.texts = std::move(track.texts);
            part.engineBlocks = std::move(track.engineBlocks);
        }
        first = false;
        song.tracks.push_back(std::move(part));
    }
    if (first)
        song.tracks.push_back(std::move(track));
}

} // namespace

MidiData ReadMidiData(Bytes bytes) {
    const auto number = [&](size_t at, size_t size) {
        uint64_t value = 0;
        for (size_t i = 0; i < size; ++i)
            value = value << 8 | bytes[at + i];
        return value;
    };
    const auto isChunk = [&](size_t at, const char* id) {
        return std::equal(id, id + 4, bytes.begin() + static_cast<std::ptrdiff_t>(at));
    };
    if (bytes.size() < 4 || !isChunk(0, "MThd"))
        Fail("not a standard MIDI file (it does not begin with \"MThd\")");
    if (bytes.size() < 14 || number(4, 4) < 6 || bytes.size() - 8 < number(4, 4))
        Fail("the MIDI header is cut short; export the file again");
    const uint64_t format = number(8, 2);
    const uint64_t trackCount = number(10, 2);
    if (format > 1)
        Fail("format " + std::to_string(format) + " holds patterns, not one song: save it as format 0 or 1");
    const TickScale scale(static_cast<unsigned>(number(12, 2)));

    MidiData song;
    song.format = static_cast<int>(format);
    song.division = static_cast<int>(number(12, 2));
    Reader reader{scale, song, {}, {}};
    size_t at = 8 + static_cast<size_t>(number(4, 4));
    uint64_t found = 0;
    while (found < trackCount) {
        if (bytes.size() - at < 8)
            Fail("cut short: " + std::to_string(found) + " of " + std::to_string(trackCount) +
                 " tracks are there; export the file again");
        const uint64_t size = number(at + 4, 4);
        const bool isTrack = isChunk(at, "MTrk");
        at += 8;
        if (size > bytes.size() - at)
            Fail("cut short inside track " + std::to_string(found + 1) + ": it lacks " +
                 std::to_string(size - (bytes.size() - at)) + " bytes; export the file again");
        if (isTrack)
            reader.ReadTrack(static_cast<size_t>(++found), bytes.subspan(at, static_cast<size_t>(size)));
        at += static_cast<size_t>(size);
    }
    if (scale.IsSmpte())
        reader.tempos = {{0, kMillisecondTempo}};
    for (const auto& [tick, tempo] : reader.tempos)
        if (tempo > 0)
            song.tempos.push_back({tick, tempo});
    for (const auto& [tick, meter] : reader.meters)
        song.meters.push_back(meter);
    return song;
}

} // namespace torv::songs
