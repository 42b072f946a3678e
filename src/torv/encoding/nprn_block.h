#pragma once

#include "torv/platform/platform.h"

class CQuillMidiBuffer;
struct tagQuillMidiRealtimeInfo;

// The engine's MIDI dialect: everything travels as blocks of NRPN controller messages, each message a full three-byte
// control change (99, 98, 6 and, where there is one, 38), never with running status. (NPRN is the interface's
// spelling.)

/// Where a block's writing stands, five bytes.
struct tagQuillNPRNBlock {
    BYTE status;    ///< 0xB0 with the channel
    BYTE numberMsb; ///< which block
    BYTE nextLsb;   ///< the parameter number that the next parameter gets
    BYTE dataMsb;   ///< data last written
    BYTE dataLsb;
};
static_assert(sizeof(tagQuillNPRNBlock) == 5);

namespace torv {

/// The blocks of the dialect, by NRPN number MSB.
enum NprnBlock : BYTE {
    kNprnNoteSegment = 0x50,
    kNprnEovm = 0x52,
    kNprnSingerProgram = 0x53,
    kNprnPitchBend = 0x54,
    kNprnVoiceControl = 0x55,
    kNprnSingerLanguage = 0x60,
    kNprnDynamics = 0x63,
    kNprnVibratoRate = 0x64,
    kNprnVibratoDepth = 0x65,
    kNprnTremoloDepth = 0x66,
    kNprnPitchBendSens = 0x67,
};

/// A data LSB that is not written: the parameter then has no CC 38.
inline constexpr BYTE kNoDataLsb = 0xFF;
inline constexpr DWORD kNprnOpeningWithDelayBytes = 24;
inline constexpr DWORD kNprnMaxParameterBytes = 12;

/// Cuts to the seven bits that a MIDI data byte has.
constexpr BYTE SevenBits(int value) { return static_cast<BYTE>(value & 0x7F); }

/// Opens a block without a delay: 12 bytes at `out`, which they are counted from; returns 12.
DWORD WriteStartNPRNEvents(BYTE* out, int channel, BYTE numberMsb, tagQuillNPRNBlock* block);
/// Opens a block whose content applies `delay` milliseconds (14 bits) after it arrives; returns 24.
DWORD WriteStartNPRNEvents(BYTE* out, int channel, BYTE numberMsb, DWORD delay, tagQuillNPRNBlock* block);
/// Writes the block's next parameter; a `dataLsb` of 0x80 and above means none. Nothing is masked: callers pass seven
/// bits. Returns 12, or 9 without a data LSB.
DWORD WriteNextNPRNEvents(BYTE* out, BYTE dataMsb, BYTE dataLsb, tagQuillNPRNBlock* block);

/// Blocks that are put together on the stack, one behind the other, and then placed in a stream as one. `kMaxBytes`
/// hold any block of the dialect at its longest.
class BlockWriter {
public:
    static constexpr DWORD kMaxBytes = 480;

    /// Begins a block whose content applies `delay` milliseconds after it arrives.
    BlockWriter& Open(DWORD channel, BYTE numberMsb, DWORD delay);
    /// The next parameter, cut to the seven bits of a data byte.
    BlockWriter& Put(int msb) { return PutBytes(SevenBits(msb), kNoDataLsb); }
    BlockWriter& Put(int msb, int lsb) { return PutBytes(SevenBits(msb), SevenBits(lsb)); }
    /// The next parameter as it stands; an `lsb` of 0x80 and above is not written.
    BlockWriter& PutBytes(BYTE msb, BYTE lsb);
    /// Leaves parameters out: those behind them keep their numbers.
    BlockWriter& Skip(int parameters);
    BYTE NextParameter() const { return m_block.nextLsb; }
    void GoToParameter(BYTE parameter) { m_block.nextLsb = parameter; }
    /// `write` puts parameters at the place it is given, as WriteNextNPRNEvents does, and returns their bytes.
    template <class Write>
    BlockWriter& PutWith(Write write) {
        m_length += write(m_bytes + m_length, &m_block);
        return *this;
    }

    /// Into the stream, sent at `time` milliseconds: as one entry in real time, as an event a message in a file. A time
    /// before the song's start stands at tick 0 and is kept, so that time plus delay is still when it sounds. 0 when
    /// the stream refuses it.
    int Place(CQuillMidiBuffer& stream, const tagQuillMidiRealtimeInfo& info, LONG time) const;

private:
    BYTE m_bytes[kMaxBytes];
    DWORD m_length = 0;
    tagQuillNPRNBlock m_block{};
};

} // namespace torv
