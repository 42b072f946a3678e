#include "torv/songs/midi_data.h"

#include "torv/songs/midi_channel.h"
#include "torv/songs/song_error.h"

#include <torv/files/midi_track.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace torv::songs {

namespace {

constexpr uint32_t kMillisecondTempo = 480000; // makes a tick a millisecond
constexpr int kHighestKey = 127;
constexpr int kMostVelocity = 127;
constexpr size_t kMostEvents = 4000000; // of notes, texts and changes: no song has them, and memory is not for them
constexpr uint64_t kMostTracks = 1024;
constexpr size_t kMostTexts = 0xFFFF;
constexpr size_t kChunkHeader = 8;
constexpr unsigned char kEndOfTrack[] = {0, 0xFF, 0x2F, 0};

bool IsChunk(Bytes bytes, size_t at, std::string_view id) {
    return bytes.size() >= at && bytes.size() - at >= id.size() &&
           std::equal(id.begin(), id.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

uint64_t BigEndian(Bytes bytes, size_t at, size_t size) {
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i)
        value = value << 8 | bytes[at + i];
    return value;
}

/// The file inside a RIFF file: its "data" chunk, as far as it goes.
Bytes Unwrap(Bytes bytes) {
    constexpr size_t kRiffHeader = 12;
    if (!IsChunk(bytes, 0, "RIFF") || !IsChunk(bytes, 8, "RMID"))
        return bytes;
    for (size_t at = kRiffHeader; at < bytes.size() && bytes.size() - at >= kChunkHeader;) {
        size_t size = 0;
        for (size_t i = 4; i-- > 0;)
            size = size << 8 | bytes[at + 4 + i];
        const size_t begin = at + kChunkHeader;
        const size_t rest = bytes.size() - begin;
        if (IsChunk(bytes, at, "data"))
            return bytes.subspan(begin, std::min(size, rest));
        if (size >= rest)
            break;
        at = begin + size + size % 2;
    }
    throw SongError("is a RIFF file without a MIDI file in it");
}

/// The ticks of a file's division, as ticks of 480 to a quarter note.
class TickScale {
public:
    explicit TickScale(unsigned division) {
        if (division & 0x8000) {
            const int frames = 0x100 - static_cast<int>(division >> 8);
            const unsigned perFrame = division & 0xFF;
            if (frames != 24 && frames != 25 && frames != 29 && frames != 30)
                throw SongError("time division of " + std::to_string(frames) +
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
            throw SongError("time division is 0, so its events have no times");
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

/// Three bytes, big-endian. Some programs write four, with a zero first.
uint32_t TempoOf(const std::string& bytes) {
    const bool hasFour = bytes.size() == 4 && bytes[0] == 0;
    uint32_t tempo = 0;
    for (size_t i = 0; i < 3; ++i)
        tempo = tempo << 8 | static_cast<unsigned char>(bytes[i + (hasFour ? 1 : 0)]);
    return tempo;
}

class Reader {
public:
    Reader(const TickScale& scale, MidiData& data) : m_scale(scale), m_data(data) {}

    void ReadTrack(size_t number, Bytes bytes);
    /// The tracks after this one begin where those before end.
    void BeginPattern() { m_trackBegin = m_lastClock; }
    /// What stands in the track of any number.
    void TakeSongEvents();

private:
    void ReadMeta(uint32_t tick, int type, const std::string& text, MidiTrack& track);
    /// Whether the track goes on after it.
    bool ReadEvent(const tagEvent& event, uint32_t tick, MidiTrack& track, std::array<MidiChannel, 16>& channels);
    void AddTracks(MidiTrack track, std::array<MidiChannel, 16>& channels, uint32_t end);

    const TickScale& m_scale;
    MidiData& m_data;
    size_t m_events = 0;
    size_t m_texts = 0;
    size_t m_zeroLengths = 0;
    uint64_t m_trackBegin = 0; ///< in the file's ticks, as the next
    uint64_t m_lastClock = 0;  ///< of all tracks
    std::map<uint32_t, uint32_t> m_tempos;
    std::map<uint32_t, Meter> m_meters;
    std::map<uint32_t, KeySignature> m_keys;
};

void Reader::ReadMeta(uint32_t tick, int type, const std::string& text, MidiTrack& track) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    if ((type == 0x01 || type == 0x05) && m_texts++ < kMostTexts)
        track.texts.push_back({tick, type == 0x05, text});
    else if (type == 0x03 && track.name.empty())
        track.name = text;
    else if (type == 0x04 && track.instrument.empty())
        track.instrument = text;
    else if (type == 0x51 && text.size() >= 3 && !m_scale.IsSmpte())
        m_tempos[tick] = TempoOf(text);
    else if (type == 0x58 && text.size() >= 2 && byte(0) > 0 && byte(1) <= 7)
        m_meters[tick] = {tick, byte(0), byte(1)};
    else if (type == 0x59 && text.size() >= 2)
        m_keys[tick] = {tick, std::clamp<int>(static_cast<signed char>(byte(0)), -7, 7), byte(1) == 1};
}

bool Reader::ReadEvent(const tagEvent& event, uint32_t tick, MidiTrack& track, std::array<MidiChannel, 16>& channels) {
    MidiChannel& channel = channels[event.status & 0x0F];
    switch (event.status & 0xF0) {
    case 0x80:
    case 0x90:
        if (event.data1 > kHighestKey)
            return false;
        if ((event.status & 0x10) && event.data2 > 0)
            channel.Start(tick, event.data1, std::min<int>(event.data2, kMostVelocity));
        else
            channel.End(tick, event.data1);
        break;
    case 0xB0:
        channel.Control(tick, event.data1, event.data2, track.engineBlocks);
        break;
    case 0xC0:
        channel.program = channel.program < 0 ? event.data1 & 0x7F : channel.program;
        break;
    case 0xE0:
        channel.Bend(tick, (event.data1 & 0x7F) | (event.data2 & 0x7F) << 7);
        break;
    default:
        if (event.status == 0xFF)
            ReadMeta(tick, event.data1, {reinterpret_cast<const char*>(event.bytes), event.bytes ? event.length : 0},
                     track);
        break;
    }
    return true;
}

void Reader::ReadTrack(size_t number, Bytes bytes) {
    // One that breaks off between two events lacks nothing but its end, which the parser needs.
    std::vector<unsigned char> ended;
    size_t added = 0;
    if (bytes.size() < 3 || !std::equal(bytes.end() - 3, bytes.end(), kEndOfTrack + 1)) {
        ended.assign(bytes.begin(), bytes.end());
        ended.insert(ended.end(), std::begin(kEndOfTrack), std::end(kEndOfTrack));
        bytes = ended;
        added = std::size(kEndOfTrack);
        m_data.remarks.push_back("track " + std::to_string(number) + " has no end: what is there is taken");
    }
    std::array<MidiChannel, 16> channels;
    MidiTrack track;
    CxMidiTrack parser;
    parser.Attach(bytes.data(), static_cast<DWORD>(bytes.size()));
    parser.SeekToBegin();
    bool isWhole = true;
    bool hasEnded = false;
    uint64_t clock = m_trackBegin;
    uint32_t tick = m_scale(clock);
    tagEvent event;
    while (isWhole && !hasEnded && parser.GetEvent(&event)) {
        clock += event.delta;
        tick = m_scale(clock);
        hasEnded = event.status == torv::kMidiMeta && event.data1 == torv::kMetaEndOfTrack;
        const bool isTaken = hasEnded || parser.GetState()->left >= added; // else it ends in what was added
        isWhole = isTaken && ReadEvent(event, tick, track, channels);
        if (++m_events > kMostEvents)
            throw SongError("has more than " + std::to_string(kMostEvents) + " events, which no song has");
    }
    if (!hasEnded && (!isWhole || (parser.GetState()->flags & torv::kMidiTrackError)))
        m_data.remarks.push_back("track " + std::to_string(number) + " is broken after tick " + std::to_string(clock) +
                                 ": what stands before is taken");
    m_lastClock = std::max(m_lastClock, clock);
    m_data.end = std::max(m_data.end, tick);
    AddTracks(std::move(track), channels, tick);
}

/// A file of format 0 has every part in one track: each channel is a part of its own then.
void Reader::AddTracks(MidiTrack track, std::array<MidiChannel, 16>& channels, uint32_t end) {
    const size_t before = m_data.tracks.size();
    for (size_t i = 0; i < channels.size(); ++i) {
        MidiChannel& channel = channels[i];
        if (channel.notes.empty())
            continue;
        channel.EndAll(end);
        m_zeroLengths += i == kPercussionChannel ? 0 : channel.zeroLengths;
        std::stable_sort(channel.notes.begin(), channel.notes.end(), [](const MidiNote& a, const MidiNote& b) {
            return a.tick != b.tick ? a.tick < b.tick : a.key < b.key;
        });
        MidiTrack part;
        if (m_data.tracks.size() == before) {
            part.texts = std::move(track.texts);
            part.engineBlocks = std::move(track.engineBlocks);
        }
        part.name = track.name;
        part.instrument = track.instrument;
        part.notes = std::move(channel.notes);
        part.channel = static_cast<int>(i);
        part.program = channel.program;
        part.controllers = std::move(channel.controllers);
        part.bends = std::move(channel.bends);
        m_data.tracks.push_back(std::move(part));
    }
    for (size_t i = before; i < m_data.tracks.size(); ++i)
        m_data.tracks[i].isOneOfSeveral = m_data.tracks.size() - before > 1;
    if (m_data.tracks.size() == before)
        m_data.tracks.push_back(std::move(track));
}

void Reader::TakeSongEvents() {
    if (m_texts > kMostTexts)
        m_data.remarks.push_back("has " + std::to_string(m_texts) + " texts, of which the first " +
                                 std::to_string(kMostTexts) + " are taken");
    if (m_zeroLengths > 0)
        m_data.remarks.push_back(m_zeroLengths == 1 ? "1 note ends where it begins and is hardly heard"
                                                    : std::to_string(m_zeroLengths) +
                                                          " notes end where they begin and are hardly heard");
    if (m_scale.IsSmpte())
        m_tempos = {{0, kMillisecondTempo}};
    for (const auto& [tick, tempo] : m_tempos)
        if (tempo > 0)
            m_data.tempos.push_back({tick, tempo});
    for (const auto& [tick, meter] : m_meters)
        m_data.meters.push_back(meter);
    for (const auto& [tick, key] : m_keys)
        m_data.keys.push_back(key);
}

/// Where the next track begins that can be found; the end when there is none.
size_t FindTrack(Bytes bytes, size_t from) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return std::min(text.find("MTrk", from), bytes.size());
}

bool IsChunkName(Bytes bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](unsigned char c) { return c >= ' ' && c < 0x7F; });
}

/// All tracks that are there, whatever their number and their sizes are said to be.
void ReadTracks(Bytes bytes, size_t at, uint64_t expected, Reader& reader, MidiData& data) {
    uint64_t found = 0;
    while (bytes.size() - at >= kChunkHeader && found < kMostTracks) {
        const uint64_t size = BigEndian(bytes, at + 4, 4);
        const size_t begin = at + kChunkHeader;
        const size_t rest = bytes.size() - begin;
        const size_t end = size <= rest ? begin + static_cast<size_t>(size) : FindTrack(bytes, begin);
        if (IsChunk(bytes, at, "MTrk")) {
            if (size > rest)
                data.remarks.push_back("cut short inside track " + std::to_string(found + 1) + ": it lacks " +
                                       std::to_string(size - rest) + " bytes");
            if (data.format == 2)
                reader.BeginPattern();
            reader.ReadTrack(static_cast<size_t>(++found), bytes.subspan(begin, end - begin));
        }
        const bool isChunkNext = bytes.size() - end < kChunkHeader || IsChunkName(bytes.subspan(end, 4));
        at = isChunkNext ? end : FindTrack(bytes, end);
    }
    if (data.format == 2 && found > 1)
        data.remarks.push_back("is of format 2: its " + std::to_string(found) + " patterns follow one after the other");
    if (found != expected)
        data.remarks.push_back("has " + std::to_string(found) + (found == 1 ? " track" : " tracks") +
                               ", and its header says " + std::to_string(expected));
}

} // namespace

bool IsMidi(Bytes bytes) {
    return IsChunk(bytes, 0, "MThd") || (IsChunk(bytes, 0, "RIFF") && IsChunk(bytes, 8, "RMID"));
}

MidiData ReadMidiData(Bytes bytes) {
    if (!IsMidi(bytes))
        throw SongError("not a standard MIDI file (it does not begin with \"MThd\")");
    bytes = Unwrap(bytes);
    if (!IsChunk(bytes, 0, "MThd") || bytes.size() < 14 || BigEndian(bytes, 4, 4) < 6 ||
        bytes.size() - kChunkHeader < BigEndian(bytes, 4, 4))
        throw SongError("the MIDI header is cut short; export the file again");
    const uint64_t format = BigEndian(bytes, 8, 2);
    if (format > 2)
        throw SongError("format " + std::to_string(format) + " is none of MIDI's three: save it as format 0 or 1");
    const auto division = static_cast<unsigned>(BigEndian(bytes, 12, 2));
    const TickScale scale(division);
    MidiData data;
    data.format = static_cast<int>(format);
    data.division = static_cast<int>(division);
    Reader reader(scale, data);
    ReadTracks(bytes, kChunkHeader + static_cast<size_t>(BigEndian(bytes, 4, 4)), BigEndian(bytes, 10, 2), reader,
               data);
    reader.TakeSongEvents();
    return data;
}

} // namespace torv::songs
