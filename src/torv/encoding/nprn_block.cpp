#include "torv/encoding/nprn_block.h"

#include "torv/encoding/quill_midi_buffer.h"
#include "torv/encoding/realtime_info.h"

namespace torv {

namespace {

constexpr BYTE kControlChange = 0xB0;
constexpr BYTE kNrpnMsb = 99;
constexpr BYTE kNrpnLsb = 98;
constexpr BYTE kDataMsb = 6;
constexpr BYTE kDataLsb = 38;
constexpr DWORD kMessageBytes = 3;
constexpr int kRealTimeMode = 1;

BYTE* PutControl(BYTE* out, BYTE status, BYTE controller, BYTE value) {
    out[0] = status;
    out[1] = controller;
    out[2] = value;
    return out + kMessageBytes;
}

} // namespace

DWORD WriteStartNPRNEvents(BYTE* out, int channel, BYTE numberMsb, tagQuillNPRNBlock* block) {
    *block = {static_cast<BYTE>(kControlChange | (channel & 0x0F)), numberMsb, 0, 0, 0};
    return WriteNextNPRNEvents(out, 0, 0, block);
}

DWORD WriteStartNPRNEvents(BYTE* out, int channel, BYTE numberMsb, DWORD delay, tagQuillNPRNBlock* block) {
    const DWORD opening = WriteStartNPRNEvents(out, channel, numberMsb, block);
    return opening + WriteNextNPRNEvents(out + opening, SevenBits(static_cast<int>(delay >> 7)),
                                         SevenBits(static_cast<int>(delay)), block);
}

DWORD WriteNextNPRNEvents(BYTE* out, BYTE dataMsb, BYTE dataLsb, tagQuillNPRNBlock* block) {
    BYTE* next = PutControl(out, block->status, kNrpnMsb, block->numberMsb);
    next = PutControl(next, block->status, kNrpnLsb, block->nextLsb);
    next = PutControl(next, block->status, kDataMsb, dataMsb);
    if (dataLsb < 0x80)
        next = PutControl(next, block->status, kDataLsb, dataLsb);
    block->dataMsb = dataMsb;
    block->dataLsb = dataLsb;
    ++block->nextLsb;
    return static_cast<DWORD>(next - out);
}

BlockWriter& BlockWriter::Open(DWORD channel, BYTE numberMsb, DWORD delay) {
    return PutWith([=](BYTE* out, tagQuillNPRNBlock* block) {
        return WriteStartNPRNEvents(out, static_cast<int>(channel), numberMsb, delay, block);
    });
}

BlockWriter& BlockWriter::PutBytes(BYTE msb, BYTE lsb) {
    return PutWith([=](BYTE* out, tagQuillNPRNBlock* block) { return WriteNextNPRNEvents(out, msb, lsb, block); });
}

BlockWriter& BlockWriter::Skip(int parameters) {
    m_block.nextLsb = static_cast<BYTE>(m_block.nextLsb + parameters);
    return *this;
}

int BlockWriter::Place(CQuillMidiBuffer& stream, const tagQuillMidiRealtimeInfo& info, LONG time) const {
    const DWORD tick = TickOfSendTime(time, info);
    if (stream.GetMode() == kRealTimeMode)
        return stream.InsertEventExAt(tick, time, m_bytes, m_length);
    return stream.InsertMessagesAt(tick, stream.GetEventInterval(), m_bytes, m_length / kMessageBytes);
}

} // namespace torv
