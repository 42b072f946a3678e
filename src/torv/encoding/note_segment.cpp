#include "torv/encoding/note_segment.h"

#include "torv/encoding/nprn_block.h"

#include <cstring>

namespace torv {

namespace {

constexpr BYTE kEndLsb = 127;
constexpr BYTE kEndOfBlock = 127;
constexpr BYTE kContinuation = 0;
constexpr BYTE kFirstCharacterLsb = 19;

/// The block being written: parameters follow each other, absent ones are skipped.
class NoteBlockWriter {
public:
    NoteBlockWriter(BYTE* out, const tagQuillMidiOutNoteParam& note) : m_begin(out), m_next(out) {
        m_next +=
            WriteStartNPRNEvents(m_next, static_cast<int>(note.channel), kNprnNoteSegment, note.presend, &m_block);
    }
    void Put(int msb) { Put(SevenBits(msb), kNoDataLsb); }
    void PutPair(int msb, int lsb) { Put(SevenBits(msb), SevenBits(lsb)); }
    /// A code goes out as its two bytes, uncut: they are the icon database's, which knows the engine's codes.
    void PutCode(WORD code) { Put(HIBYTE(code), LOBYTE(code)); }
    void PutCharacter(char character, BYTE advancement) {
        if (m_block.nextLsb >= kEndLsb) {
            Put(kContinuation, kNoDataLsb);
            m_block.nextLsb = kFirstCharacterLsb;
        }
        Put(SevenBits(character), advancement);
    }
    void Skip(int parameters) { m_block.nextLsb = static_cast<BYTE>(m_block.nextLsb + parameters); }
    DWORD Finish() {
        m_block.nextLsb = kEndLsb;
        Put(kEndOfBlock, kNoDataLsb);
        return static_cast<DWORD>(m_next - m_begin);
    }

private:
    void Put(BYTE msb, BYTE lsb) { m_next += WriteNextNPRNEvents(m_next, msb, lsb, &m_block); }

    BYTE* m_begin;
    BYTE* m_next;
    tagQuillNPRNBlock m_block;
};

/// Attack and release: code; index with depth; duration.
void PutShape(NoteBlockWriter& block, WORD code, BYTE index, BYTE depth, BYTE duration) {
    if (code == kNoIconCode) {
        block.Skip(3);
        return;
    }
    block.PutCode(code);
    block.PutPair(index, depth);
    block.Put(duration);
}

} // namespace

DWORD WriteNoteSegmentBlock(BYTE* out, const tagQuillMidiOutNoteParam& note, const tagQuillMidiNoteSegment& segment) {
    NoteBlockWriter block(out, note);
    block.Put(static_cast<int>(note.noteNumber));
    block.Put(static_cast<int>(note.dynamics));
    block.PutPair(segment.durationTime >> 7, segment.durationTime);
    block.Put(segment.type);
    PutShape(block, segment.attackCode, segment.attackIndex, segment.attackDepth, segment.attackDuration);
    PutShape(block, segment.releaseCode, segment.releaseIndex, segment.releaseDepth, segment.releaseDuration);
    if (segment.vibratoCode == kNoIconCode) {
        block.Skip(3);
    } else {
        block.PutCode(segment.vibratoCode);
        block.PutPair(segment.vibratoIndex, segment.vibratoExtent);
        block.Put(segment.vibratoStart);
    }
    if (segment.transitionCode == kNoIconCode) {
        block.Skip(2);
    } else {
        block.PutCode(segment.transitionCode);
        block.PutPair(segment.transitionIndex, segment.transitionDuration);
    }
    block.Put(segment.one);
    const size_t characters = strnlen(segment.phonemes, kMaxPhonemeCharacters);
    block.Put(static_cast<int>(characters));
    for (size_t i = 0; i < characters; ++i)
        block.PutCharacter(segment.phonemes[i], segment.advancements[i]);
    return block.Finish();
}

} // namespace torv
