#include "torv/encoding/note_segment.h"

#include <cstring>

namespace torv {

namespace {

constexpr BYTE kEndLsb = 127;
constexpr BYTE kEndOfBlock = 127;
constexpr BYTE kContinuation = 0;
constexpr BYTE kFirstCharacterLsb = 19;

// Opening, parameters up to LSB 18, one a character, end mark; every one at its longest.
static_assert(kNprnOpeningWithDelayBytes + (17 + kMaxPhonemeCharacters + 1) * kNprnMaxParameterBytes <=
              BlockWriter::kMaxBytes);

/// A code goes out as its two bytes, uncut: they are the icon database's, which knows the engine's codes.
BlockWriter& PutCode(BlockWriter& block, WORD code) { return block.PutBytes(HIBYTE(code), LOBYTE(code)); }

void PutShape(BlockWriter& block, const tagQuillMidiSegmentShape& shape) {
    if (shape.code == kNoIconCode)
        block.Skip(3);
    else
        PutCode(block, shape.code).Put(shape.index, shape.depth).Put(shape.duration);
}

void PutCharacter(BlockWriter& block, char character, BYTE advancement) {
    if (block.NextParameter() >= kEndLsb) {
        block.Put(kContinuation);
        block.GoToParameter(kFirstCharacterLsb);
    }
    block.PutBytes(SevenBits(character), advancement);
}

} // namespace

BlockWriter NoteSegmentBlock(const tagQuillMidiOutNoteParam& note, const tagQuillMidiNoteSegment& segment) {
    BlockWriter block;
    block.Open(note.channel, kNprnNoteSegment, note.presend)
        .Put(static_cast<int>(note.noteNumber))
        .Put(static_cast<int>(note.dynamics))
        .Put(segment.durationTime >> 7, segment.durationTime)
        .Put(segment.type);
    PutShape(block, segment.attack);
    PutShape(block, segment.release);
    if (segment.vibratoCode == kNoIconCode)
        block.Skip(3);
    else
        PutCode(block, segment.vibratoCode).Put(segment.vibratoIndex, segment.vibratoExtent).Put(segment.vibratoStart);
    if (segment.transitionCode == kNoIconCode)
        block.Skip(2);
    else
        PutCode(block, segment.transitionCode).Put(segment.transitionIndex, segment.transitionDuration);
    const size_t characters = strnlen(segment.phonemes, kMaxPhonemeCharacters);
    block.Put(segment.one).Put(static_cast<int>(characters));
    for (size_t i = 0; i < characters; ++i)
        PutCharacter(block, segment.phonemes[i], segment.advancements[i]);
    block.GoToParameter(kEndLsb);
    return block.Put(kEndOfBlock);
}

} // namespace torv
