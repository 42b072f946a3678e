/** @file
   The voice engine's binary interface: library "RVE.dll" ("RVE.so" on POSIX), eight entry points, undecorated names.
   Every record is little-endian and belongs to the caller; the engine keeps no pointer after a call returns (it copies
   the option text). All calls take and return 32-bit integers. */
#ifndef RVE_ABI_H
#define RVE_ABI_H

#include <stdint.h>

#if defined(_WIN32)
#define RVE_CALL __cdecl
#else
#define RVE_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* C, so typedef. NOLINTBEGIN(modernize-use-using) */

/** The languages that an engine stream names. */
enum { RVE_JAPANESE = 0, RVE_ENGLISH = 1 };

/** Handed by value to RVESetStaticSetting. 20 bytes on 32-bit targets. */
typedef struct RVEStaticSetting {
    uint32_t sampleRate; /**< output rate in Hz: 44100, 48000 or 96000 */
    uint32_t frameSize;  /**< always 256, whatever the rate */
    const char* option;  /**< engine option text, zero-terminated, may be null */
    uint32_t reserved;   /**< 0 */
    uint8_t one;         /**< 1 */
    uint8_t padding[3];  /**< 0 */
} RVEStaticSetting;

/** One MIDI channel message of the engine stream. 8 bytes. */
typedef struct RVEEvent {
    uint32_t delta; /**< place in the current step, in samples of the 44.1 kHz time base, 0..255 */
    uint8_t status; /**< a channel message's status byte */
    /** 0 to 127. */
    /** @{ */
    uint8_t data1;
    uint8_t data2;
    /** @} */
    uint8_t padding; /**< 0 */
} RVEEvent;

/** Where a step's samples go. */
typedef struct RVEStepOutput {
    uint32_t count;   /**< in: capacity of `samples`; out: samples produced */
    int16_t* samples; /**< signed 16-bit mono */
} RVEStepOutput;

/** A new instance: a small non-negative handle, or a negative value (-2) when none can be made. */
typedef int32_t(RVE_CALL* RVECreateProc)(void);
/** 0 on success. Right after RVECreate, before RVEStart. */
typedef int32_t(RVE_CALL* RVESetStaticSettingProc)(int32_t handle, RVEStaticSetting setting);
/** Reserved: the library resolves it and never calls it. Answers 0. */
typedef int32_t(RVE_CALL* RVESetDynamicSettingProc)(int32_t handle, const void* setting);
/** Ready to step from time 0 with the default controller state. */
typedef int32_t(RVE_CALL* RVEStartProc)(int32_t handle);
/** Advances by one step: 256 samples of the 44.1 kHz time base, whatever the output rate. Takes `count` events with
    their place in the step, writes the step's samples at the output rate (at most the capacity). 0, or an error code.
 */
typedef int32_t(RVE_CALL* RVEDoStepSynthesisProc)(int32_t handle, int32_t count, const RVEEvent* events,
                                                  RVEStepOutput* output);
/** Silences the instance, drops what is pending and restores the default controller state. 0, or an error code. */
typedef int32_t(RVE_CALL* RVEResetProc)(int32_t handle);
/** The end of what RVEStart began, as RVEReset. 0, or an error code. */
typedef int32_t(RVE_CALL* RVEStopProc)(int32_t handle);
/** The instance is gone; its handle may come back for another one. 0, or an error code. */
typedef int32_t(RVE_CALL* RVEDeleteProc)(int32_t handle);

/* NOLINTEND(modernize-use-using) */

#ifdef __cplusplus
}
static_assert(sizeof(RVEEvent) == 8, "the event record is eight bytes everywhere");
static_assert(sizeof(void*) != 4 || sizeof(RVEStaticSetting) == 20, "the static setting is 20 bytes on 32-bit targets");
#endif

#endif
