#pragma once

#include "torv/songs/midi_data.h"

#include <array>
#include <deque>

namespace torv::songs {

/// What one channel of a track has said so far.
struct MidiChannel {
    std::vector<MidiNote> notes;
    std::vector<Controller> controllers;
    std::vector<PitchBend> bends;
    int program = -1;
    size_t zeroLengths = 0; ///< notes that end where they begin: they have a tick

    void Start(uint32_t tick, int key, int velocity);
    /// Ends the oldest note of the key that still sounds.
    void End(uint32_t tick, int key);
    void EndAll(uint32_t tick);
    /// Also counts the engine's blocks: one opens with controllers 99, its number, and 98, parameter 0.
    void Control(uint32_t tick, int number, int value, std::map<int, size_t>& blocks);
    /// 14 bits, 0x2000 for none; heard over the range that is set by then.
    void Bend(uint32_t tick, int value);

private:
    std::array<std::deque<size_t>, 128> m_sounding; ///< indexes of notes without an end yet, oldest first
    int m_block = 0;
    int m_parameter[2] = {127, 127}; ///< the registered one that is being set, high and low byte
    int m_bendRange[2] = {2, 0};     ///< semitones and cents
};

} // namespace torv::songs
