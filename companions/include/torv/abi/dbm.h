/** @file
   The database manager's binary interface: a library that the registry names, 27 entry points, undecorated names.

   It keeps the singers (virtual voices, each made over an installed voice of the engine) and the note expressions with
   their items. Every call answers a status, 0 for success. Texts are zero-terminated bytes; what a caller passes is
   copied before the call returns. Lists and records that a call hands out belong to the library: they stay as they are
   until the same entry point is called again or DBM_Delete, except for expression infos and expression items, which the
   caller gives back with DBM_DeleteVirtualExpInfo and DBM_DeleteVirtualExpItems. One thread at a time may call. */
#ifndef DBM_ABI_H
#define DBM_ABI_H

#include <stdint.h>

#if defined(_WIN32)
#define DBM_CALL __cdecl
#else
#define DBM_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Statuses of this project's own library. A host relies on 0 only: any other value of any maker's is an error code. */
enum {
    DBM_OK = 0,           /**< done */
    DBM_NOT_READY = 1,    /**< before DBM_Init or after DBM_Delete */
    DBM_NO_SUCH = 2,      /**< no such voice, database, expression or item */
    DBM_EXISTS = 3,       /**< the number or the name is in use */
    DBM_BAD_ARGUMENT = 4, /**< a null pointer, a number out of range, an unknown parameter name */
    DBM_READ_ONLY = 5,    /**< it came with the library, and cannot be removed or changed */
    DBM_FILE_ERROR = 6,   /**< a file cannot be read or written */
    DBM_FULL = 7,         /**< no number is free */
    DBM_NO_DIALOG = 8,    /**< there is no user interface */
    DBM_NO_MEMORY = 9     /**< memory was refused */
};

/** Languages of voices. */
enum { DBM_JAPANESE = 0, DBM_ENGLISH = 1, DBM_LANGUAGES = 2 };
/** Programs of virtual voices are 0..127; the engine sings program p with its own program p % 4, which is synthetic,
   but those of 96..111 with 96 + p % 4, a recorded person. */
enum { DBM_PROGRAMS = 128, DBM_ENGINE_PROGRAMS = 4, DBM_FIRST_PERSON = 96, DBM_LAST_PERSON = 111 };

/** What an expression is for, as the engine takes it; the number is that of the icons made from it. */
enum { DBM_ATTACK = 1, DBM_TRANSITION = 2, DBM_RELEASE = 3, DBM_VIBRATO = 4 };

/* NOLINTBEGIN(modernize-use-using): hosts in C include this too. */
/** A singer: a named set of parameters over an installed voice. */
typedef struct DBMVoice {
    int32_t language; /**< with the program its identity */
    int32_t program;  /**< with the language */
    int32_t voice;    /**< the installed voice's number */
    int32_t user;     /**< 1: made by the user; 0: came with the library */
    const char* name; /**< for the user */
} DBMVoice;

/** Every virtual voice. */
typedef struct DBMVoiceList {
    int32_t count;          /**< voices */
    const DBMVoice* voices; /**< null when there are none */
} DBMVoiceList;

/** An installed voice: one program of the engine. */
typedef struct DBMInstalledVoice {
    int32_t number;          /**< from 1 */
    int32_t engineProgram;   /**< 0..3 */
    int32_t user;            /**< 1: added with DBM_AddVoice */
    const char* name;        /**< "Soprano" */
    const char* description; /**< one line for a person */
} DBMInstalledVoice;

/** One setting of a voice. */
typedef struct DBMTextPair {
    const char* name;  /**< DBM_VOICE_NAME or one of DBM_PARAMETER_NAMES */
    const char* value; /**< a text, or a number's decimal digits */
} DBMTextPair;

/** The setting that is what a voice is called. */
#define DBM_VOICE_NAME "VOICENAME"
/** The names of a voice's seventeen parameters. */
#define DBM_PARAMETER_NAMES                                                                                            \
    "Resonance1 Frequency", "Resonance1 Band Width", "Resonance1 Amplitude", "Resonance2 Frequency",                   \
        "Resonance2 Band Width", "Resonance2 Amplitude", "Resonance3 Frequency", "Resonance3 Band Width",              \
        "Resonance3 Amplitude", "Resonance4 Frequency", "Resonance4 Band Width", "Resonance4 Amplitude", "Harmonics",  \
        "Noise", "Brightness", "Clearness", "Gender Factor"

/** The name and the parameters, each a decimal text 0..127, ended by a pair whose name is null. */
typedef struct DBMVoiceParameters {
    int32_t count;            /**< pairs before the null name */
    const DBMTextPair* pairs; /**< `count` of them and the null one */
} DBMVoiceParameters;

/** A database of expressions. */
typedef struct DBMExpDatabase {
    int32_t number;   /**< from 1 */
    int32_t user;     /**< 1: added with DBM_AddExp */
    const char* name; /**< for the user */
} DBMExpDatabase;

/** Every expression database. */
typedef struct DBMExpDatabaseList {
    int32_t count;                   /**< databases */
    const DBMExpDatabase* databases; /**< null when there are none */
} DBMExpDatabaseList;

/** One expression: what the engine does is told by (high, low), of which it looks at the low part. */
typedef struct DBMExpression {
    int32_t kind;     /**< DBM_ATTACK .. DBM_VIBRATO */
    int32_t high;     /**< with `low` the engine's code */
    int32_t low;      /**< its low part */
    const char* name; /**< for the user */
} DBMExpression;

/** The expressions of a database. */
typedef struct DBMExpInfo {
    int32_t count;                    /**< expressions */
    const DBMExpression* expressions; /**< null when there are none */
} DBMExpInfo;

/** One setting of an expression, described by an icon file. */
typedef struct DBMExpItem {
    uint32_t value;            /**< its number, unique within (kind, user) of its database, from 1 */
    int32_t user;              /**< 1: made by the user */
    const char* idString;      /**< its name; that of an item that came with a database is its own among its kind */
    const char* fileName;      /**< full path of its icon file */
    const char* caption;       /**< for the user */
    const char* singerName;    /**< whose voice it was made with */
    const char* developerName; /**< who made it */
} DBMExpItem;

/** The items of an expression. */
typedef struct DBMExpItems {
    int32_t count;           /**< items */
    const DBMExpItem* items; /**< null when there are none */
} DBMExpItems;

/** Reads what came with the library and what the user made. A second call while it is ready succeeds and changes
    nothing; each call of DBM_Init wants a DBM_Delete. */
typedef int32_t(DBM_CALL* DBMInitProc)(void);
/** Undoes one DBM_Init; with the last one every list that was handed out is gone. */
typedef int32_t(DBM_CALL* DBMDeleteProc)(void);
/** Installs the voice that a definition file describes, with a virtual voice of its own in each of its languages. */
typedef int32_t(DBM_CALL* DBMAddVoiceProc)(const char* file);
/** Removes an installed voice and every virtual voice over it; DBM_READ_ONLY for one that came with the library. */
typedef int32_t(DBM_CALL* DBMDeleteVoiceProc)(int32_t voice);
/** A dialog for managing what is installed, over an owner window. */
typedef int32_t(DBM_CALL* DBMActivateDialogProc)(void* owner);
/** Writes a text into a buffer, cut to `size` - 1 bytes. */
typedef int32_t(DBM_CALL* DBMGetVersionStringProc)(char* buffer, int32_t size);
/** A new virtual voice over an installed one, with its parameters; the lowest free program is chosen. */
typedef int32_t(DBM_CALL* DBMCreateVirtualVoiceProc)(int32_t language, int32_t voice, const char* name,
                                                     int32_t* program);
/** Writes the name into a buffer, cut to `size` - 1 bytes. */
typedef int32_t(DBM_CALL* DBMGetVirtualVoiceNameProc)(int32_t language, int32_t program, char* buffer, int32_t size);
/** Removes a user's virtual voice; DBM_READ_ONLY for one that came with the library. */
typedef int32_t(DBM_CALL* DBMDeleteVirtualVoiceProc)(int32_t language, int32_t program);
/** A copy under another name, in the same language. */
typedef int32_t(DBM_CALL* DBMCopyVirtualVoiceProc)(int32_t language, int32_t program, const char* name,
                                                   int32_t* newProgram);
/** Name and parameters of a virtual voice. */
typedef int32_t(DBM_CALL* DBMGetVirtualVoiceParametersProc)(int32_t language, int32_t program,
                                                            const DBMVoiceParameters** result);
/** Sets what the pairs name, up to one whose name is null, and leaves the rest; all or nothing. "VOICENAME" renames. */
typedef int32_t(DBM_CALL* DBMSetVirtualVoiceParametersProc)(int32_t language, int32_t program,
                                                            const DBMTextPair* pairs);
/** Gives a virtual voice another place, which must be free and sung by the same program of the engine. */
typedef int32_t(DBM_CALL* DBMMoveVirtualVoiceProc)(int32_t language, int32_t program, int32_t toLanguage,
                                                   int32_t toProgram);
/** Renames a user's virtual voice. */
typedef int32_t(DBM_CALL* DBMSetVirtualVoiceNameProc)(int32_t language, int32_t program, const char* name);
/** An installed voice. */
typedef int32_t(DBM_CALL* DBMGetVoiceProc)(int32_t voice, const DBMInstalledVoice** result);
/** The name of an installed voice, and the parameters that a new virtual voice over it begins with. */
typedef int32_t(DBM_CALL* DBMGetVoiceParametersProc)(int32_t voice, const DBMVoiceParameters** result);
/** Every virtual voice: those that came with the library in its order, then the user's by language and program. */
typedef int32_t(DBM_CALL* DBMGetAllVoiceProc)(const DBMVoiceList** result);
/** Adds the expression database that a definition file and the icon files beside it describe. */
typedef int32_t(DBM_CALL* DBMAddExpProc)(const char* file);
/** Removes an added expression database; DBM_READ_ONLY for one that came with the library. */
typedef int32_t(DBM_CALL* DBMDeleteExpProc)(int32_t database);
/** Every expression database, what came with the library first. */
typedef int32_t(DBM_CALL* DBMGetExpDBProc)(const DBMExpDatabaseList** result);
/** The expressions of a database, the caller's to give back. */
typedef int32_t(DBM_CALL* DBMGetVirtualExpInfoProc)(int32_t database, const DBMExpInfo** result);
/** Takes back what DBM_GetVirtualExpInfo gave. */
typedef int32_t(DBM_CALL* DBMDeleteVirtualExpInfoProc)(const DBMExpInfo* info);
/** The items of one expression: those that came with the database in its order, then the user's by value. */
typedef int32_t(DBM_CALL* DBMGetVirtualExpItemsProc)(int32_t database, int32_t high, int32_t low,
                                                     const DBMExpItems** result);
/** Takes back what DBM_GetVirtualExpItems gave. */
typedef int32_t(DBM_CALL* DBMDeleteVirtualExpItemsProc)(const DBMExpItems* items);
/** Changes the caption of a user's item, which `value` names. */
typedef int32_t(DBM_CALL* DBMSetVirtualExpItemCaptionProc)(int32_t database, int32_t high, int32_t low, uint32_t value,
                                                           const char* caption);
/** Keeps a user's item with a copy of its icon file. DBM_EXISTS when a user's item of the same kind has the value.
    Several may have one name. */
typedef int32_t(DBM_CALL* DBMCreateVirtualExpItemProc)(int32_t database, int32_t high, int32_t low, uint32_t value,
                                                       const char* idString, const char* fileName, const char* caption,
                                                       const char* singerName, const char* developerName);
/** Removes a user's item and its icon file. */
typedef int32_t(DBM_CALL* DBMDeleteVirtualExpItemProc)(int32_t database, int32_t high, int32_t low, uint32_t value);
/* NOLINTEND(modernize-use-using) */

/** The entry points' names behind "DBM_", in the order in which a host looks them up. */
#define DBM_ENTRIES(ENTRY)                                                                                             \
    ENTRY(Init)                                                                                                        \
    ENTRY(Delete)                                                                                                      \
    ENTRY(AddVoice)                                                                                                    \
    ENTRY(DeleteVoice)                                                                                                 \
    ENTRY(ActivateDialog)                                                                                              \
    ENTRY(GetVersionString)                                                                                            \
    ENTRY(CreateVirtualVoice)                                                                                          \
    ENTRY(GetVirtualVoiceName)                                                                                         \
    ENTRY(DeleteVirtualVoice)                                                                                          \
    ENTRY(CopyVirtualVoice)                                                                                            \
    ENTRY(GetVirtualVoiceParameters)                                                                                   \
    ENTRY(SetVirtualVoiceParameters)                                                                                   \
    ENTRY(MoveVirtualVoice)                                                                                            \
    ENTRY(SetVirtualVoiceName)                                                                                         \
    ENTRY(GetVoice)                                                                                                    \
    ENTRY(GetVoiceParameters)                                                                                          \
    ENTRY(GetAllVoice)                                                                                                 \
    ENTRY(AddExp)                                                                                                      \
    ENTRY(DeleteExp)                                                                                                   \
    ENTRY(GetExpDB)                                                                                                    \
    ENTRY(GetVirtualExpInfo)                                                                                           \
    ENTRY(DeleteVirtualExpInfo)                                                                                        \
    ENTRY(GetVirtualExpItems)                                                                                          \
    ENTRY(DeleteVirtualExpItems)                                                                                       \
    ENTRY(SetVirtualExpItemCaption)                                                                                    \
    ENTRY(CreateVirtualExpItem)                                                                                        \
    ENTRY(DeleteVirtualExpItem)

#ifdef __cplusplus
}
#endif

#endif
