#pragma once

#include "torv/encoding/nprn_block.h"
#include "torv/platform/platform.h"

#include <cstddef>

class CIconVibrato;

/// A code field with no icon behind it.
inline constexpr WORD kNoIconCode = 0xFFFF;
/// Characters a segment's phoneme string can have.
inline constexpr int kMaxPhonemeCharacters = 16;
/// The advancement stored at characters that start no phoneme.
inline constexpr BYTE kNoAdvancement = 0xFF;

/// An attack or release as a segment has it.
struct tagQuillMidiSegmentShape {
    WORD code = kNoIconCode;
    BYTE index;
    BYTE depth; ///< before the duration here, after it in the note's record
    BYTE duration;
    BYTE zero;
};
static_assert(sizeof(tagQuillMidiSegmentShape) == 6 && offsetof(tagQuillMidiSegmentShape, depth) == 3);

/// One lyric element of a note as the engine is told of it, 72 bytes. Icons that do not begin, end or meet in the
/// segment have no code.
struct tagQuillMidiNoteSegment {
    DWORD startTick;
    WORD lengthTicks;
    WORD zero1;
    DWORD startTime;   ///< milliseconds
    WORD durationTime; ///< milliseconds
    BYTE type;         ///< bit 0: begins the sound, bit 1: ends it
    BYTE zero2;
    tagQuillMidiSegmentShape attack;
    tagQuillMidiSegmentShape release;
    WORD transitionCode = kNoIconCode;
    BYTE transitionIndex;
    BYTE transitionDuration;
    WORD vibratoCode = kNoIconCode;
    BYTE vibratoIndex;
    BYTE vibratoExtent; ///< 0..127 of the segment
    BYTE vibratoStart;  ///< 0..127 of the segment
    BYTE one;
    char phonemes[kMaxPhonemeCharacters + 1];
    BYTE advancements[kMaxPhonemeCharacters];
    BYTE zero5;
};
static_assert(sizeof(tagQuillMidiNoteSegment) == 72);
static_assert(offsetof(tagQuillMidiNoteSegment, startTime) == 8 && offsetof(tagQuillMidiNoteSegment, type) == 14 &&
              offsetof(tagQuillMidiNoteSegment, attack) == 16 && offsetof(tagQuillMidiNoteSegment, release) == 22 &&
              offsetof(tagQuillMidiNoteSegment, transitionCode) == 28 &&
              offsetof(tagQuillMidiNoteSegment, vibratoCode) == 32 && offsetof(tagQuillMidiNoteSegment, one) == 37 &&
              offsetof(tagQuillMidiNoteSegment, phonemes) == 38 &&
              offsetof(tagQuillMidiNoteSegment, advancements) == 55);

/// A note icon as a note's record has it.
struct tagQuillMidiOutIcon {
    LONG code = -1; ///< 16-bit engine code, -1 when none
    LONG index;
    LONG length; ///< ticks
    LONG duration;
};
struct tagQuillMidiOutShape {
    tagQuillMidiOutIcon icon;
    LONG depth;
};

/// One note with its icons resolved and its segments, made and freed by the encoder.
struct tagQuillMidiOutNoteParam {
    DWORD position;   ///< ticks
    DWORD length;     ///< ticks
    DWORD channel;    ///< the note's own
    DWORD noteNumber; ///< after transposition
    DWORD dynamics;   ///< velocity
    DWORD attribute;  ///< bit 0: joined to the previous note, bit 1: joined to the next
    DWORD presend;    ///< milliseconds
    tagQuillMidiOutShape attack;
    tagQuillMidiOutShape release;
    tagQuillMidiOutIcon transition;
    LONG vibratoCode = -1;
    LONG vibratoIndex;
    DWORD vibratoStart;    ///< tick
    DWORD vibratoEnd;      ///< tick
    CIconVibrato* vibrato; ///< borrowed
    DWORD segmentCount;
    tagQuillMidiNoteSegment* segments; ///< owned
};
static_assert(offsetof(tagQuillMidiOutNoteParam, attack) == 28 && offsetof(tagQuillMidiOutNoteParam, release) == 48 &&
              offsetof(tagQuillMidiOutNoteParam, transition) == 68 &&
              offsetof(tagQuillMidiOutNoteParam, vibratoCode) == 84);

namespace torv {

/// A segment's note block: LSB by LSB, absent icons leaving gaps, so that the engine can decode by LSB alone.
BlockWriter NoteSegmentBlock(const tagQuillMidiOutNoteParam& note, const tagQuillMidiNoteSegment& segment);

} // namespace torv
