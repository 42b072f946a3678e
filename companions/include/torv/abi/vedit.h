/** @file
   The voice editor's binary interface: a library that the registry names, four entry points, undecorated names. It
   edits the virtual voices of the database manager's library beside it. Every call answers a status. */
#ifndef VEDIT_ABI_H
#define VEDIT_ABI_H

#include <stdint.h>

#if defined(_WIN32)
#define VEDIT_CALL __cdecl
#else
#define VEDIT_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A host relies on 0 (something was changed) and 1 (nothing was) only. */
enum {
    VEDIT_OK = 0,
    VEDIT_CANCELLED = 1,
    VEDIT_NOT_READY = 2, /**< before VEDIT_Init, or no database library beside it */
    VEDIT_NO_SUCH = 3,   /**< no such virtual voice */
    VEDIT_NO_EDITOR = 4, /**< no editor is named, or it cannot be run */
    VEDIT_BAD_INPUT = 5, /**< what came back cannot be used; nothing was changed */
    VEDIT_NO_MEMORY = 6,
    VEDIT_FILE_ERROR = 7 /**< the text to edit or what the user made cannot be written; nothing was changed */
};

/* NOLINTBEGIN(modernize-use-using): hosts in C include this too. */
/** Before all else, with the database library ready. */
typedef int32_t(VEDIT_CALL* VEDITInitProc)(void);
/** After all else. */
typedef int32_t(VEDIT_CALL* VEDITDeleteProc)(void);
/** Lets the user edit the virtual voice that the two numbers name. They come back as the voice that is then chosen.
   What DBM_GetVirtualVoiceParameters handed out before is no longer valid after this. */
typedef int32_t(VEDIT_CALL* VEDITOpenDialogProc)(void* owner, int32_t* language, int32_t* program);
/** Writes a text into a buffer, cut to `size` - 1 bytes. */
typedef int32_t(VEDIT_CALL* VEDITGetVersionStringProc)(char* buffer, int32_t size);
/* NOLINTEND(modernize-use-using) */

#ifdef __cplusplus
}
#endif

#endif
