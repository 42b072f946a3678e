#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Standard MIDI files, written by hand: every delta is a byte or two as it stands in the file.
using FileBytes = std::vector<unsigned char>;

inline void Append(FileBytes& to, const FileBytes& more) { to.insert(to.end(), more.begin(), more.end()); }

inline FileBytes Number(uint32_t value, int bytes) {
    FileBytes out;
    for (int i = bytes; i-- > 0;)
        out.push_back(static_cast<unsigned char>(value >> (8 * i)));
    return out;
}

inline FileBytes Delta(uint32_t ticks) {
    FileBytes out{static_cast<unsigned char>(ticks & 0x7F)};
    while (ticks >>= 7)
        out.insert(out.begin(), static_cast<unsigned char>((ticks & 0x7F) | 0x80));
    return out;
}

/// One track's events, each a delta after the one before.
class TrackBytes {
public:
    TrackBytes& Event(uint32_t delta, const FileBytes& event) {
        Append(m_bytes, Delta(delta));
        Append(m_bytes, event);
        return *this;
    }
    TrackBytes& Meta(uint32_t delta, int type, const std::string& text) {
        FileBytes event{0xFF, static_cast<unsigned char>(type), static_cast<unsigned char>(text.size())};
        event.insert(event.end(), text.begin(), text.end());
        return Event(delta, event);
    }
    TrackBytes& Lyric(uint32_t delta, const std::string& text) { return Meta(delta, 5, text); }
    TrackBytes& On(uint32_t delta, int key, int channel = 0) {
        return Event(delta, {static_cast<unsigned char>(0x90 | channel), static_cast<unsigned char>(key), 100});
    }
    TrackBytes& Off(uint32_t delta, int key, int channel = 0) {
        return Event(delta, {static_cast<unsigned char>(0x80 | channel), static_cast<unsigned char>(key), 0});
    }
    FileBytes Chunk() const {
        FileBytes all = m_bytes;
        Append(all, {0, 0xFF, 0x2F, 0});
        FileBytes chunk{'M', 'T', 'r', 'k'};
        Append(chunk, Number(static_cast<uint32_t>(all.size()), 4));
        Append(chunk, all);
        return chunk;
    }

private:
    FileBytes m_bytes;
};

inline FileBytes MidiFile(int format, int division, const std::vector<TrackBytes>& tracks) {
    FileBytes file{'M', 'T', 'h', 'd', 0, 0, 0, 6};
    Append(file, Number(static_cast<uint32_t>(format), 2));
    Append(file, Number(static_cast<uint32_t>(tracks.size()), 2));
    Append(file, Number(static_cast<uint32_t>(division), 2));
    for (const TrackBytes& track : tracks)
        Append(file, track.Chunk());
    return file;
}

/// The same inside a RIFF file, as .rmi files are.
inline FileBytes RmiFile(const FileBytes& midi) {
    const auto size = [](size_t bytes, int place) { return static_cast<unsigned char>(bytes >> 8 * place); };
    FileBytes data{'d', 'a', 't', 'a', size(midi.size(), 0), size(midi.size(), 1), 0, 0};
    Append(data, midi);
    FileBytes file{'R', 'I', 'F', 'F', size(data.size() + 4, 0), size(data.size() + 4, 1), 0, 0, 'R', 'M', 'I', 'D'};
    Append(file, data);
    return file;
}
