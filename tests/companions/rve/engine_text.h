#pragma once

#include "torv/abi/rve.h"

#include <cstdint>
#include <string>
#include <vector>

/// Engine messages, written block by block.
class Stream {
public:
    /// One parameter: data MSB, and data LSB unless it is negative.
    Stream& Parameter(int block, int parameter, int msb, int lsb = -1) {
        Put(99, block);
        Put(98, parameter);
        Put(6, msb);
        if (lsb >= 0)
            Put(38, lsb);
        return *this;
    }
    Stream& Open(int block, int delayMs) {
        return Parameter(block, 0, 0, 0).Parameter(block, 1, delayMs / 128, delayMs % 128);
    }
    Stream& Value(int block, int value, int delayMs = 0) { return Open(block, delayMs).Parameter(block, 2, value); }
    Stream& Bend(int value, int delayMs = 0) {
        return Open(0x54, delayMs).Parameter(0x54, 2, (value + 8192) >> 7, (value + 8192) & 127);
    }
    Stream& VoiceControl(int index, int value, int delayMs = 0) {
        const int selector = index == 16 ? 0x70 : 0x30 + index / 4 * 16 + index % 4;
        return Open(0x55, delayMs).Parameter(0x55, 2, selector).Parameter(0x55, 3, value);
    }

    struct NoteText {
        int note = 57;
        int startMs = 100;
        int lengthMs = 600;
        std::string phonemes = "a"; ///< parted by blanks
        int advancement = 64;       ///< of every sound but the last
        int type = 3;
        int velocity = 64;
        int attackCode = -1, attackDepth = 64, attackDuration = 64;
        int releaseCode = -1, releaseDuration = 64;
        int transitionDuration = -1; ///< of the way out, into the next note
        int vibratoStart = -1, vibratoExtent = 0;
    };
    Stream& Note(const NoteText& text) {
        Open(0x50, text.startMs);
        Parameter(0x50, 2, text.note).Parameter(0x50, 3, text.velocity);
        Parameter(0x50, 4, text.lengthMs / 128, text.lengthMs % 128).Parameter(0x50, 5, text.type);
        if (text.attackCode >= 0)
            Parameter(0x50, 6, 1, text.attackCode)
                .Parameter(0x50, 7, 0, text.attackDepth)
                .Parameter(0x50, 8, text.attackDuration);
        if (text.releaseCode >= 0)
            Parameter(0x50, 9, 2, text.releaseCode)
                .Parameter(0x50, 10, 0, 64)
                .Parameter(0x50, 11, text.releaseDuration);
        if (text.vibratoStart >= 0)
            Parameter(0x50, 12, 4, 0).Parameter(0x50, 13, 0, text.vibratoExtent).Parameter(0x50, 14, text.vibratoStart);
        if (text.transitionDuration >= 0)
            Parameter(0x50, 15, 3, 0).Parameter(0x50, 16, 0, text.transitionDuration);
        std::string plain;
        std::vector<int> marks;
        bool starts = true;
        for (const char c : text.phonemes) {
            if (c == ' ') {
                starts = true;
                continue;
            }
            plain += c;
            marks.push_back(starts ? text.advancement : -1);
            starts = false;
        }
        for (size_t i = marks.size(); i-- > 0;)
            if (marks[i] >= 0) {
                marks[i] = 0; // the last sound: the vowel
                break;
            }
        Parameter(0x50, 17, 1).Parameter(0x50, 18, static_cast<int>(plain.size()));
        for (size_t i = 0; i < plain.size(); ++i)
            Parameter(0x50, 19 + static_cast<int>(i), plain[i], marks[i]);
        return Parameter(0x50, 127, 127);
    }
    const std::vector<RVEEvent>& Events() const { return m_events; }

private:
    void Put(int controller, int value) {
        m_events.push_back({0, 0xB0, static_cast<uint8_t>(controller), static_cast<uint8_t>(value), 0});
    }
    std::vector<RVEEvent> m_events;
};
