#include "torv/songs/midi_channel.h"

#include <algorithm>

namespace torv::songs {

void MidiChannel::Start(uint32_t tick, int key, int velocity) {
    m_sounding[static_cast<size_t>(key)].push_back(notes.size());
    notes.push_back({tick, 0, key, velocity});
}

void MidiChannel::End(uint32_t tick, int key) {
    auto& open = m_sounding[static_cast<size_t>(key)];
    if (open.empty())
        return;
    MidiNote& note = notes[open.front()];
    zeroLengths += tick == note.tick ? 1 : 0;
    note.length = std::max<uint32_t>(1, tick - note.tick);
    open.pop_front();
}

void MidiChannel::EndAll(uint32_t tick) {
    for (int key = 0; key < 128; ++key)
        while (!m_sounding[static_cast<size_t>(key)].empty())
            End(tick, key);
}

void MidiChannel::Control(uint32_t tick, int number, int value, std::map<int, size_t>& blocks) {
    constexpr int kFirstBlock = 0x50;
    constexpr int kLastBlock = 0x67;
    const bool isBendRange = m_parameter[0] == 0 && m_parameter[1] == 0;
    switch (number) {
    case 7:
    case 10:
    case 11:
        controllers.push_back({tick, number, value & 0x7F});
        break;
    case 6:
    case 38:
        if (isBendRange)
            m_bendRange[number == 38] = value & 0x7F;
        break;
    case 101:
    case 100:
        m_parameter[number == 100] = value;
        break;
    case 99:
        m_block = value;
        m_parameter[0] = 127;
        break;
    case 98:
        m_parameter[0] = 127;
        if (value == 0 && m_block >= kFirstBlock && m_block <= kLastBlock)
            ++blocks[m_block];
        break;
    case 120:
    case 123:
        EndAll(tick);
        break;
    default:
        break;
    }
}

void MidiChannel::Bend(uint32_t tick, int value) {
    bends.push_back({tick, (value - 0x2000) / 8192.0 * (m_bendRange[0] + m_bendRange[1] / 100.0)});
}

} // namespace torv::songs
