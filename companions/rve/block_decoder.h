#pragma once

#include "timeline.h"
#include "torv/abi/rve.h"

#include <array>
#include <cstdint>

namespace rve {

/// Puts the stream's NRPN messages together to blocks and the blocks to segments and control changes. Any messages in
/// any order are taken: a block opens at parameter 0; a value block is complete with its last parameter, a note block
/// with its end mark; one that never ends is dropped when the next one opens.
class BlockDecoder {
public:
    void Reset();
    /// One channel message that arrives at `now`. Completed blocks are handed on; phonemes are those of the language
    /// that was named last, which may be ahead of the one in force.
    template <class OnSegment, class OnChange>
    void Message(uint8_t status, uint8_t data1, uint8_t data2, Time now, OnSegment onSegment, OnChange onChange) {
        data1 &= 0x7F;
        data2 &= 0x7F;
        if ((status & 0xF0) != 0xB0)
            return;
        switch (data1) {
        case 99:
            m_number = data2;
            return;
        case 98:
            SelectParameter(data2);
            return;
        case 6:
            m_data = data2;
            break;
        case 38:
            if (m_parameter >= 0)
                StoreLsb(data2);
            break;
        default:
            return;
        }
        if (m_parameter < 0)
            return;
        if (data1 == 6)
            StoreMsb(data2);
        if (IsNote()) {
            if (data1 == 6 && m_parameter == 127 && data2 == 127) {
                Segment segment;
                if (MakeSegment(now, segment))
                    onSegment(segment);
                m_parameter = -1;
            }
            return;
        }
        ControlChange change;
        if (MakeChange(now, data1 == 38, change))
            onChange(change);
    }

private:
    static constexpr int kParameters = 128;
    static constexpr int kMaxCharacters = 64;
    static constexpr Time kNever = -Segment::kForever;

    bool IsNote() const { return m_open == 0x50; }
    void SelectParameter(uint8_t parameter);
    bool IsCharacter() const { return IsNote() && m_parameter >= 19 && m_parameter < 127; }
    void StoreMsb(uint8_t value);
    void StoreLsb(uint8_t value);
    Time Delay() const;
    int Msb(int parameter) const { return m_msb[static_cast<size_t>(parameter)]; }
    int Lsb(int parameter) const { return m_lsb[static_cast<size_t>(parameter)]; }
    bool MakeSegment(Time now, Segment& segment);
    bool MakeChange(Time now, bool afterLsb, ControlChange& change);
    Shape ShapeAt(int code) const;
    void PlaceUnits(Segment& segment);

    int m_number = -1;    ///< of the last message
    int m_open = -1;      ///< of the block that is open
    int m_parameter = -1; ///< selected in it
    uint8_t m_data = 0;
    std::array<int16_t, kParameters> m_msb{}; ///< -1: not given
    std::array<int16_t, kParameters> m_lsb{};
    std::array<char, kMaxCharacters> m_characters{};
    std::array<int16_t, kMaxCharacters> m_advancements{}; ///< -1: no phoneme begins here
    int m_characterCount = 0;
    int m_language = RVE_JAPANESE;
    int m_program = 0;
    Time m_neutralEnd = kNever; ///< of the last segment, when a person holds the neutral vowel in it
};

} // namespace rve
