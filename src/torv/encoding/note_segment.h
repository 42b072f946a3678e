#pragma once

#include "torv/platform/platform.h"

#include <cstddef>

class CIconVibrato;

/// A code field with no icon behind it.
inline constexpr WORD kNoIconCode = 0xFFFF;
/// Characters a segment's phoneme string can have.
inline constexpr int kMaxPhonemeCharacters = 16;
/// The advancement stored at characters that start no phoneme.
inline constexpr BYTE kNoAdvancement = 0xFF;

/// One lyric element of a note as the engine is told of it, 72 bytes.
struct tagQuillMidiNoteSegment {
    DWORD startTick;
    WORD lengthTicks;
    WORD zero1;
    DWORD startTime;   ///< milliseconds
    WORD durationTime; ///< milliseconds
    BYTE type;         ///< bit 0: begins the sound, bit 1: ends it
    BYTE zero2;
    WORD attackCode;
    BYTE attackIndex;
    BYTE attackDepth; ///< before the duration here, after it in the note's record
    BYTE attackDuration;
    BYTE zero3;
    WORD releaseCode;
    BYTE releaseIndex;
    BYTE releaseDepth;
    BYTE releaseDuration;
    BYTE zero4;
    WORD transitionCode;
    BYTE transitionIndex;
    BYTE transitionDuration;
    WORD vibratoCode;
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
              offsetof(tagQuillMidiNoteSegment, attackCode) == 16 &&
              offsetof(tagQuillMidiNoteSegment, attackDepth) == 19 &&
              offsetof(tagQuillMidiNoteSegment, releaseCode) == 22 &&
              offsetof(tagQuillMidiNoteSegment, transitionCode) == 28 &&
              offsetof(tagQuillMidiNoteSegment, vibratoCode) == 32 && offsetof(tagQuillMidiNoteSegment, one) == 37 &&
              offsetof(tagQuillMidiNoteSegment, phonemes) == 38 &&
              offsetof(tagQuillMidiNoteSegment, advancements) == 55);

/// One note with its icons resolved and its segments, made and freed by the encoder.
struct tagQuillMidiOutNoteParam {
    DWORD position;   ///< ticks
    DWORD length;     ///< ticks
    DWORD channel;    ///< the note's own
    DWORD noteNumber; ///< after transposition
    DWORD dynamics;   ///< velocity
    DWORD attribute;  ///< bit 0: joined to the previous note, bit 1: joined to the next
    DWORD presend;    ///< milliseconds
    LONG attackCode;  ///< 16-bit engine code, -1 when none
    LONG attackIndex;
    LONG attackLength;
    LONG attackDuration;
    LONG attackDepth;
    LONG releaseCode;
    LONG releaseIndex;
    LONG releaseLength;
    LONG releaseDuration;
    LONG releaseDepth;
    LONG transitionCode;
    LONG transitionIndex;
    LONG transitionLength;
    LONG transitionDuration;
    LONG vibratoCode;
    LONG vibratoIndex;
    DWORD vibratoStart;    ///< tick
    DWORD vibratoEnd;      ///< tick
    CIconVibrato* vibrato; ///< borrowed
    DWORD segmentCount;
    tagQuillMidiNoteSegment* segments; ///< owned
};

namespace torv {

/// Writes a segment's note block: LSB by LSB, absent icons leaving gaps, so that the engine can decode by LSB alone.
/// `out` has room for kMaxNoteBlockBytes. Returns the bytes written.
DWORD WriteNoteSegmentBlock(BYTE* out, const tagQuillMidiOutNoteParam& note, const tagQuillMidiNoteSegment& segment);

/// Opening, parameters up to LSB 18, one a character, end mark; every one at its longest.
inline constexpr DWORD kMaxNoteBlockBytes = 24 + 17 * 12 + kMaxPhonemeCharacters * 12 + 12;

} // namespace torv
