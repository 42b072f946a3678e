/** @file
   The phoneme converters' binary interface: libraries "G2PA_JPN.DLL" and "G2PA_ENG.DLL" (".so" on POSIX), five entry
   points, undecorated names.

   A host creates a converter, puts one record for each lyric element in song order and after each put takes outputs
   until there are none for now; then it puts a null record, which ends the input, and takes what was held back. A
   converter delivers exactly one output for each element put, in order, though it may hold outputs back until later
   input has arrived. */
#ifndef G2PA_ABI_H
#define G2PA_ABI_H

#include <stdint.h>

#if defined(_WIN32)
#define G2PA_CALL __cdecl
#else
#define G2PA_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** What records have room for. */
enum { G2PA_MAX_SLOTS = 256, G2PA_SLOT_BYTES = 8, G2PA_MIN_TEXT_BYTES = 256 };

/** Results of this project's own converters. A host relies on 0 and 1 and on the sign of a created handle only: any
    other value of any maker's converter is an error code. */
enum {
    G2PA_OK = 0,
    G2PA_NO_OUTPUT_NOW = 1,
    G2PA_BAD_HANDLE = -1,  /**< never created, or deleted */
    G2PA_INPUT_ENDED = -2, /**< a put after the null record */
    G2PA_BAD_RECORD = -3,  /**< no room given for an output */
    G2PA_NO_MEMORY = -4
};

/** What G2paFindWordProc answers; a negative value is an error code. */
enum {
    G2PA_WORD_SILENT = 0,  /**< nothing in it sounds */
    G2PA_WORD_RULE = 1,    /**< read by its letters */
    G2PA_WORD_LEXICON = 2, /**< stands in a lexicon, itself or as the stem of an ending */
    G2PA_WORD_COMMON = 3   /**< is among the commonest words of songs */
};

/* NOLINTBEGIN(modernize-use-using): hosts in C include this too. */
/** One lyric element. The text is inline and zero-terminated; the record has room for at least G2PA_MIN_TEXT_BYTES of
    it, and more when the text is longer. Lyrics are code page 932 bytes. */
typedef struct G2paInput {
    uint32_t position; /**< ticks from the previous note that carried a lyric, plus the preceding elements' lengths */
    uint32_t length;   /**< ticks */
    char text[G2PA_MIN_TEXT_BYTES]; /**< goes on behind the record when it is longer */
} G2paInput;

/** The phonemes of one element. Each slot is a zero-terminated symbol (or eight bytes without a terminator). */
typedef struct G2paOutput {
    int32_t count;                               /**< slots used, 0..256 */
    char slots[G2PA_MAX_SLOTS][G2PA_SLOT_BYTES]; /**< symbols, see above */
} G2paOutput;

/** `beats` is what the host was given, in ticks, divided by 480. A handle, or a negative error code. */
typedef int32_t(G2PA_CALL* G2paCreateProc)(uint32_t beats);
/** 0 when accepted, else an error code. A null record ends the input. */
typedef int32_t(G2PA_CALL* G2paPutProc)(int32_t handle, const void* input);
/** 0: one output delivered; 1: no more for now; anything else is an error code. */
typedef int32_t(G2PA_CALL* G2paGetProc)(int32_t handle, void* output);
/** 0, or an error code. What was not taken is gone. */
typedef int32_t(G2PA_CALL* G2paDeleteProc)(int32_t handle);
/** A static text. */
typedef const char*(G2PA_CALL* G2paGetVersionStringProc)(void);
/** "g2paFindWord", which a converter need not have: where the sounds of a word come from; hyphens stand between its
    syllables, code page 932. Of several words the least known one counts. It has no effect on any conversion. */
typedef int32_t(G2PA_CALL* G2paFindWordProc)(const char* word);
/* NOLINTEND(modernize-use-using) */

#ifdef __cplusplus
}
static_assert(sizeof(G2paOutput) == 4 + 256 * 8, "slots follow the count without padding");
#endif

#endif
