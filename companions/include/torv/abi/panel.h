/** @file
   The host panel's binary interface: library "paneldll.dll" ("paneldll.so" on POSIX), eleven entry points, undecorated
   names. A panel shows transport and device beside the score editor; the host tells it what happens and asks it where
   it stands. Texts and records belong to the host: the panel copies what it needs and keeps no pointer after a call
   returns. A window handle is the host's too, and good until the host names another or destroys the window. Calls may
   come from several threads at once. */
#ifndef PANEL_ABI_H
#define PANEL_ABI_H

#include <stdint.h>

#if defined(_WIN32)
#define PANEL_CALL __cdecl
#else
#define PANEL_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* NOLINTBEGIN(modernize-use-using): hosts in C include this too. */

/** The wave output that the host plays through. 16 bytes; the host's, read during the call only. */
typedef struct WAV_DATAS {
    uint32_t device;     /**< number of the device among the system's wave outputs, 0xFFFFFFFF for the default one */
    uint32_t sampleRate; /**< Hz */
    uint32_t channels;   /**< 1 or 2 */
    uint32_t bits;       /**< of a sample: 8 or 16 */
} WAV_DATAS;

/** The first call; `text`, as wide as a pointer, is the address of a zero-terminated text, such as the host's name.
    0 on success. */
typedef int32_t(PANEL_CALL* PANELInitProc)(intptr_t text);
/** The window to show the panel in; null for none. */
typedef void(PANEL_CALL* PANELSetParentProc)(void* window);
/** Playing starts, at a position in the unit that the host counts plays in. */
typedef void(PANEL_CALL* PANELSetPlayProc)(int32_t position);
/** Playing has stopped. */
typedef void(PANEL_CALL* PANELSetStopProc)(void);
/** The device was opened or changed. The answer of this call and of the next is the panel's own; -1 is a failure. */
typedef int32_t(PANEL_CALL* PANELSendDeviceDataProc)(WAV_DATAS* data);
/** The song position, in ticks. */
typedef int32_t(PANEL_CALL* PANELSendPPQPosProc)(int32_t position);
/** Answers the panel's song position, in ticks. */
typedef int32_t(PANEL_CALL* PANELSendGetPPQPosProc)(void);
/** Answers the panel's tempo, in microseconds per quarter note. */
typedef int32_t(PANEL_CALL* PANELSendGetTempoProc)(void);
/** The host has made the data to play. */
typedef void(PANEL_CALL* PANELSetMakeDataProc)(void);
/** Everything that is on show is to be drawn anew. */
typedef void(PANEL_CALL* PANELSendAllFlashProc)(void);
/** The track that is selected, from 0. */
typedef void(PANEL_CALL* PANELSendSelectTrackProc)(uint32_t track);

/* The rest is this project's own panel library, which shows nothing and remembers: other makers' need not have it. */

/** The entry points, by their place in PANELRecord::calls. */
enum {
    PANEL_CALL_INIT = 0,
    PANEL_CALL_SET_PARENT = 1,
    PANEL_CALL_SET_PLAY = 2,
    PANEL_CALL_SET_STOP = 3,
    PANEL_CALL_SEND_DEVICE_DATA = 4,
    PANEL_CALL_SEND_PPQ_POS = 5,
    PANEL_CALL_SEND_GET_PPQ_POS = 6,
    PANEL_CALL_SEND_GET_TEMPO = 7,
    PANEL_CALL_SET_MAKE_DATA = 8,
    PANEL_CALL_SEND_ALL_FLASH = 9,
    PANEL_CALL_SEND_SELECT_TRACK = 10,
    PANEL_CALLS = 11
};
enum { PANEL_TEXT_SIZE = 256 }; /**< what the panel keeps of a text, its NUL included */

/** What the panel has been told since it was loaded. The caller's, filled with a copy. */
typedef struct PANELRecord {
    uint32_t calls[PANEL_CALLS]; /**< how often each entry point was called, modulo 2^32; refused calls count too */
    int32_t lastCall;            /**< the latest PANEL_CALL_..., -1 before the first */
    int32_t playing;             /**< 1 from PANEL_SetPlay to PANEL_SetStop */
    int32_t playPosition;        /**< of the last PANEL_SetPlay; 0 at first, as all that follows */
    int32_t position;            /**< of the last PANEL_SendPPQPos, in ticks */
    uint32_t track;              /**< of the last PANEL_SendSelectTrack */
    WAV_DATAS deviceData;        /**< of the last PANEL_SendDeviceData */
    void* parent;                /**< never followed: the window may be gone */
    char text[PANEL_TEXT_SIZE];  /**< PANEL_Init's, cut to 255 bytes */
} PANELRecord;

/** Entry point "PANEL_GetRecord": 0, or -1 for a null pointer. Is not recorded itself. */
typedef int32_t(PANEL_CALL* PANELGetRecordProc)(PANELRecord* record);

/* NOLINTEND(modernize-use-using) */

#ifdef __cplusplus
}
static_assert(sizeof(WAV_DATAS) == 16, "the device record is sixteen bytes everywhere");
static_assert(sizeof(void*) != 4 || sizeof(PANELRecord) == 340, "the panel's record is 340 bytes on 32-bit targets");
#endif

#endif
