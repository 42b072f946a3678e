#include "torv/encoding/nprn_block.h"

namespace torv {

namespace {

constexpr BYTE kControlChange = 0xB0;
constexpr BYTE kNrpnMsb = 99;
constexpr BYTE kNrpnLsb = 98;
constexpr BYTE kDataMsb = 6;
constexpr BYTE kDataLsb = 38;

BYTE* PutControl(BYTE* out, BYTE status, BYTE controller, BYTE value) {
    out[0] = status;
    out[1] = controller;
    out[2] = value;
    return out + 3;
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

} // namespace torv
