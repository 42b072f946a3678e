#ifndef TORV_C_TORV_H
#define TORV_C_TORV_H

/**
 * @file
 * The library of singing for hosts in C, and for languages that call C: songs, databases, encoding, singing, playing
 * and mixing. Plain C11; nothing is thrown, and no call ends the program.
 *
 * **Statuses.** Every call that can fail answers a torv_status. torv_error_text() has the reason in one line.
 *
 * **Handles** name objects that the library owns; each is given back with the free function of its kind. A null handle,
 * one of another kind and one that was freed answer TORV_BAD_HANDLE. Freeing null is TORV_OK.
 *
 * **Threads.** Any thread may call anything. Two calls that use one object at the same time, from two threads or from
 * inside a callback of the first, do not wait for each other: the second answers TORV_BUSY and has done nothing. So
 * does freeing an object that a call is using. Objects know nothing of those they were made from: these may change or
 * go.
 *
 * **Records** begin with `size`, which the caller sets to the sizeof of the record before every call, in and out: a
 * host that was built against an older header works with a newer library.
 *
 * **Texts** are UTF-8, also paths. A call that gives a text out takes a buffer and its capacity in bytes, and answers
 * in `needed`, which may be null, how many bytes the text has with its closing NUL. With a capacity of 0 only that is
 * answered; where the buffer is too small the answer is TORV_TOO_SMALL and nothing is written. Texts that are taken in
 * are copied.
 *
 * **Times** of songs are ticks, 480 to a quarter note, from the song's start; those of sound are milliseconds or frames
 * from there. Keys are 0..127, 60 is middle C. Indexes count from 0; those out of range answer TORV_OUT_OF_RANGE.
 */

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(TORV_C_BUILDING)
#define TORV_C_API __declspec(dllexport)
#else
#define TORV_C_API __declspec(dllimport)
#endif
#else
/** Marks what the library gives out. */
#define TORV_C_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** @name Answers */
/** @{ */

/** What a call answers. */
typedef enum torv_status {
    TORV_OK = 0,            /**< done */
    TORV_BAD_ARGUMENT = 1,  /**< a null pointer, a record without its size, a value that means nothing */
    TORV_BAD_HANDLE = 2,    /**< null, of another kind, or freed */
    TORV_OUT_OF_RANGE = 3,  /**< an index or a value that is not there */
    TORV_NOT_FOUND = 4,     /**< no such name; the text has the nearest ones */
    TORV_TOO_SMALL = 5,     /**< the caller's buffer; `needed` says how much it takes */
    TORV_BUSY = 6,          /**< another call, or another host of this process, is using it */
    TORV_WRONG_ORDER = 7,   /**< not now: the text says what comes first */
    TORV_NO_MEMORY = 8,     /**< nothing has changed */
    TORV_FILE_ERROR = 9,    /**< a file cannot be read or written */
    TORV_BAD_SONG = 10,     /**< what cannot be read as a song, or cannot be sung */
    TORV_NO_COMPANION = 11, /**< the engine, the converters or the databases cannot be loaded */
    TORV_NO_DEVICE = 12,    /**< no such wave output, or it refuses */
    TORV_CANCELLED = 13,    /**< a callback said so */
    TORV_FAILED = 14        /**< anything else; the text says what */
} torv_status;

/** The status's name, "TORV_BUSY"; "unknown" for any other number. Static. */
TORV_C_API const char* torv_status_name(torv_status status);

/**
 * One line about the last call on this thread that failed: what, where, what to do. Empty before the first.
 * The library's, good until the next failure on this thread.
 */
TORV_C_API const char* torv_error_text(void);

/** The library's version, as in "0.1.0". Static. */
TORV_C_API const char* torv_version(void);

/** @} */
/** @name Songs
 * A song as plain values: parts of notes with words, tempo and meter, what the host adds to each part for singing. */
/** @{ */

/** A song. One call at a time uses it. */
typedef struct torv_song torv_song;

/** An empty song in 4/4 at 120 quarters a minute. The caller frees it. */
TORV_C_API torv_status torv_song_new(torv_song** song);

/**
 * Reads a song file: standard MIDI (.mid, .kar, .rmi), MusicXML (.musicxml, .mxl) or UST, by its content.
 * - `encoding`: how the words' bytes are read ("utf-8", "shift-jis", "latin-1", ...); null or "": they are looked at
 * - `song`: the caller frees it
 * @return TORV_FILE_ERROR when the file cannot be read, TORV_BAD_SONG when it is none; *song is null then
 */
TORV_C_API torv_status torv_song_open(const char* path, const char* encoding, torv_song** song);

/** The same of `size` bytes; `source`, which may be null, is only named in texts. */
TORV_C_API torv_status torv_song_read(const void* bytes, size_t size, const char* source, const char* encoding,
                                      torv_song** song);

/** A song of its own with the same content, as for an undo. The caller frees it. */
TORV_C_API torv_status torv_song_copy(torv_song* song, torv_song** copy);

/** Frees a song; what was made of it stays. */
TORV_C_API torv_status torv_song_free(torv_song* song);

/** What a song has. */
typedef struct torv_song_info {
    uint32_t size;     /**< sizeof(torv_song_info) */
    uint32_t end;      /**< tick where the last note or measure ends */
    uint32_t parts;    /**< how many */
    uint32_t tempos;   /**< how many changes of tempo */
    uint32_t meters;   /**< how many changes of meter */
    uint32_t measures; /**< how many */
    uint32_t remarks;  /**< how many things reading guessed or left out */
    uint32_t verses;   /**< the number of the last verse; 0 without words */
} torv_song_info;

/** Fills the record. */
TORV_C_API torv_status torv_song_get_info(torv_song* song, torv_song_info* info);

/** A song's texts. */
typedef enum torv_song_text {
    TORV_SONG_TITLE = 0,    /**< what the song is called */
    TORV_SONG_COMPOSER = 1, /**< who wrote it */
    TORV_SONG_LANGUAGE = 2, /**< of the words, as the file names it ("de") */
    TORV_SONG_SOURCE = 3,   /**< the file's name */
    TORV_SONG_FORMAT = 4    /**< "standard MIDI file", "MusicXML", ... */
} torv_song_text;

/** Gives a text out; empty where the song has none. */
TORV_C_API torv_status torv_song_get_text(torv_song* song, torv_song_text which, char* buffer, size_t capacity,
                                          size_t* needed);
/** Sets a text. */
TORV_C_API torv_status torv_song_set_text(torv_song* song, torv_song_text which, const char* text);

/** Something that reading guessed or left out, in one line. */
TORV_C_API torv_status torv_song_get_remark(torv_song* song, size_t index, char* buffer, size_t capacity,
                                            size_t* needed);

/** @} */
/** @name Tempo and measures */
/** @{ */

/** A change of tempo. */
typedef struct torv_tempo {
    uint32_t size;         /**< sizeof(torv_tempo) */
    uint32_t tick;         /**< from here on */
    uint32_t microseconds; /**< to a quarter note, 1..16777215; 500000 is 120 a minute */
} torv_tempo;

/** The change of this index, by tick. */
TORV_C_API torv_status torv_song_get_tempo(torv_song* song, size_t index, torv_tempo* tempo);
/** Puts a change at its tick, in place of one that is there. */
TORV_C_API torv_status torv_song_set_tempo(torv_song* song, const torv_tempo* tempo);
/** Takes the change of this index away. */
TORV_C_API torv_status torv_song_remove_tempo(torv_song* song, size_t index);

/** A change of meter. */
typedef struct torv_meter {
    uint32_t size;        /**< sizeof(torv_meter) */
    uint32_t tick;        /**< a measure begins here */
    uint32_t numerator;   /**< 1..255 */
    uint32_t denominator; /**< 1, 2, 4, ... 128 */
} torv_meter;

/** The change of this index, by tick. */
TORV_C_API torv_status torv_song_get_meter(torv_song* song, size_t index, torv_meter* meter);
/** Puts a change at its tick, in place of one that is there. The measures are made anew, full ones from number 1. */
TORV_C_API torv_status torv_song_set_meter(torv_song* song, const torv_meter* meter);
/** Takes the change of this index away. The measures are made anew. */
TORV_C_API torv_status torv_song_remove_meter(torv_song* song, size_t index);

/** A measure as it sounds: what is repeated stands there twice, with one number. */
typedef struct torv_measure {
    uint32_t size;   /**< sizeof(torv_measure) */
    uint32_t tick;   /**< where it begins */
    uint32_t length; /**< ticks that it has */
    int32_t number;  /**< as the file counts */
} torv_measure;

/** The measure of this index. */
TORV_C_API torv_status torv_song_get_measure(torv_song* song, size_t index, torv_measure* measure);
/** The tick at which the measure of this number begins, the first time; TORV_NOT_FOUND when there is none. */
TORV_C_API torv_status torv_song_find_measure(torv_song* song, int32_t number, uint32_t* tick);
/** When a tick is, in seconds from the song's start. */
TORV_C_API torv_status torv_song_seconds_at(torv_song* song, uint32_t tick, double* seconds);

/** @} */
/** @name Parts
 * One voice or instrument of a song: its notes, and what it is sung with. */
/** @{ */

/** Whether a part is sung. */
typedef enum torv_choice {
    TORV_SING_WITH_WORDS =
        0,                /**< when it has words in the verse that is sung; without any such part the first one is */
    TORV_SING_ALWAYS = 1, /**< whatever it has */
    TORV_SING_NEVER = 2   /**< not at all */
} torv_choice;

/** Where a choir would stand, for torv_part::pan: the first part left, the last one right, one alone in the middle. */
#define TORV_PAN_STAGE 2.0

/** A part. */
typedef struct torv_part {
    uint32_t size;   /**< sizeof(torv_part) */
    uint32_t notes;  /**< how many; not set by torv_part_set */
    int32_t track;   /**< which of the file's tracks or parts it comes from, from 1; 0: none */
    int32_t channel; /**< MIDI channel 0..15; -1: none; 9 is percussion */
    int32_t program; /**< General MIDI program 0..127; -1: none */
    int32_t sing;    /**< a torv_choice */
    double level;    /**< dB in a mix, -120..24 */
    double pan;      /**< -1 left .. 1 right, or TORV_PAN_STAGE */
} torv_part;

/** Puts a part without notes behind the others. `index`, which may be null, is the new part's. */
TORV_C_API torv_status torv_part_add(torv_song* song, const char* name, size_t* index);
/** Takes a part out; those behind it move up. */
TORV_C_API torv_status torv_part_remove(torv_song* song, size_t part);
/** Fills the record. */
TORV_C_API torv_status torv_part_get(torv_song* song, size_t part, torv_part* record);
/** Sets what the record has, but for its notes. */
TORV_C_API torv_status torv_part_set(torv_song* song, size_t part, const torv_part* record);

/** A part's texts. */
typedef enum torv_part_text {
    TORV_PART_NAME = 0,       /**< "Soprano" */
    TORV_PART_INSTRUMENT = 1, /**< what plays it, as the file names it */
    TORV_PART_CLEF = 2        /**< "treble", "treble-8", "alto", "tenor", "bass" or empty: who suits it goes by that */
} torv_part_text;

/** Gives a text out. */
TORV_C_API torv_status torv_part_get_text(torv_song* song, size_t part, torv_part_text which, char* buffer,
                                          size_t capacity, size_t* needed);
/** Sets a text. */
TORV_C_API torv_status torv_part_set_text(torv_song* song, size_t part, torv_part_text which, const char* text);

/** What stands at a tick of a part, by name. */
typedef enum torv_mark_kind {
    TORV_MARK_VOICE = 0,   /**< this voice sings from here on; without one at tick 0 the one that suits the part */
    TORV_MARK_DYNAMICS = 1 /**< "mf", "Crescendo": an icon of the databases' dynamics. A part in which none was set is
                              as loud as its file says, with hairpins and controllers; with one only its marks count */
} torv_mark_kind;

/** How many marks of a kind a part has. */
TORV_C_API torv_status torv_part_count_marks(torv_song* song, size_t part, torv_mark_kind kind, size_t* count);
/** The mark of this index, by tick: its place, and its name into the buffer. */
TORV_C_API torv_status torv_part_get_mark(torv_song* song, size_t part, torv_mark_kind kind, size_t index,
                                          uint32_t* tick, char* buffer, size_t capacity, size_t* needed);
/** Puts a mark at a tick, in place of one that is there; an empty or null name takes that away. Names are looked up
 * when a score is made. */
TORV_C_API torv_status torv_part_set_mark(torv_song* song, size_t part, torv_mark_kind kind, uint32_t tick,
                                          const char* name);

/** What a part's engine is steered by. The value of a point holds until the next one. */
typedef enum torv_curve {
    TORV_CURVE_PITCH = 0,    /**< semitones up, -24..24; 0 at first */
    TORV_CURVE_DYNAMICS = 1, /**< 0..127, in place of the marks; 64 is mf */
    TORV_CURVE_TREMOLO = 2,  /**< depth, 0..127; 0 at first */
    TORV_CURVE_VOICE = 3     /**< and 16 more: 0..127, the voice's own at first. Frequency, band width and amplitude of
                                  four resonances, then harmonics, noise, brightness, clearness and gender factor */
} torv_curve;

/** How many curves there are: TORV_CURVE_PITCH to TORV_CURVE_VOICE + 16. */
#define TORV_CURVES 20

/** A point of a curve. Points have no size: they never grow. */
typedef struct torv_point {
    uint32_t tick; /**< of the song */
    float value;   /**< in the curve's unit */
} torv_point;

/** Up to `capacity` points of a curve into `points`, which may be null for 0; `count`: how many it has. */
TORV_C_API torv_status torv_part_get_curve(torv_song* song, size_t part, int32_t curve, torv_point* points,
                                           size_t capacity, size_t* count);
/** Sets a curve, by ascending tick; 0 points take it away. Values beyond the curve's range are TORV_OUT_OF_RANGE. */
TORV_C_API torv_status torv_part_set_curve(torv_song* song, size_t part, int32_t curve, const torv_point* points,
                                           size_t count);

/** @} */
/** @name Notes, words and icons */
/** @{ */

/** How a note is sung, for torv_note::flags. */
typedef enum torv_note_flag {
    TORV_NOTE_SLURRED = 1,  /**< goes on into the next note without a new attack */
    TORV_NOTE_STACCATO = 2, /**< sounds half its length */
    TORV_NOTE_TENUTO = 4,   /**< sounds for all of its length */
    TORV_NOTE_ACCENT = 8,   /**< has an accent */
    TORV_NOTE_FERMATA = 16, /**< is held */
    TORV_NOTE_BREATH = 32   /**< a breath mark stands behind it */
} torv_note_flag;

/** A note. One voice sings one note at a time: of notes that sound together the highest. */
typedef struct torv_note {
    uint32_t size;    /**< sizeof(torv_note) */
    uint32_t tick;    /**< 0..1073741823 */
    uint32_t length;  /**< ticks, 1 or more */
    int32_t key;      /**< 0..127 */
    int32_t velocity; /**< 1..127 */
    uint32_t flags;   /**< of torv_note_flag */
    uint32_t words;   /**< how many; not set by torv_note_add and torv_note_set */
} torv_note;

/** The note of this index, by tick, then key. */
TORV_C_API torv_status torv_note_get(torv_song* song, size_t part, size_t note, torv_note* record);
/** Adds a note without words in its place by time. `index`, which may be null, is the new note's. */
TORV_C_API torv_status torv_note_add(torv_song* song, size_t part, const torv_note* record, size_t* index);
/** Changes a note, which keeps its words and icons; where its time moves it, `index` is its new place. */
TORV_C_API torv_status torv_note_set(torv_song* song, size_t part, size_t note, const torv_note* record, size_t* index);
/** Takes a note out; those behind it move up. */
TORV_C_API torv_status torv_note_remove(torv_song* song, size_t part, size_t note);

/** Where a syllable stands in its word, for torv_word::flags. */
typedef enum torv_word_flag {
    TORV_WORD_HYPHEN_BEFORE = 1, /**< its word has begun with an earlier syllable */
    TORV_WORD_HYPHEN_AFTER = 2,  /**< its word goes on with the next syllable */
    TORV_WORD_EXTENDS = 4        /**< the notes after it go on with its vowel */
} torv_word_flag;

/** One syllable that a note sings in one verse. Several of one verse share its time. A note without words goes on with
 * the vowel before it. */
typedef struct torv_word {
    uint32_t size;  /**< sizeof(torv_word) */
    int32_t verse;  /**< from 1 */
    uint32_t flags; /**< of torv_word_flag */
} torv_word;

/** The word of this index. */
TORV_C_API torv_status torv_word_get(torv_song* song, size_t part, size_t note, size_t word, torv_word* record);
/** Its text, without hyphens. */
TORV_C_API torv_status torv_word_get_text(torv_song* song, size_t part, size_t note, size_t word, char* buffer,
                                          size_t capacity, size_t* needed);
/** Puts a word behind the note's others. `index`, which may be null, is the new word's. */
TORV_C_API torv_status torv_word_add(torv_song* song, size_t part, size_t note, const torv_word* record,
                                     const char* text, size_t* index);
/** Changes a word. A null text leaves it; a new one takes phonemes away that were given by hand. */
TORV_C_API torv_status torv_word_set(torv_song* song, size_t part, size_t note, size_t word, const torv_word* record,
                                     const char* text);
/** Takes a word away; those behind it move up. */
TORV_C_API torv_status torv_word_remove(torv_song* song, size_t part, size_t note, size_t word);
/** The phonemes that were given by hand; empty where they are looked up. See torv_score_get_phonemes. */
TORV_C_API torv_status torv_word_get_phonemes(torv_song* song, size_t part, size_t note, size_t word, char* buffer,
                                              size_t capacity, size_t* needed);
/** Gives a word phonemes (SAMPA, blanks between them: "h @ l @U"), in place of those that are looked up; null or ""
 * gives it back to the converters. Symbols that the language lacks are told in the score's remarks; the word is looked
 * up then. */
TORV_C_API torv_status torv_word_set_phonemes(torv_song* song, size_t part, size_t note, size_t word,
                                              const char* phonemes);

/** The expressions of the databases that notes get, and the other kinds that databases list. */
typedef enum torv_icon_kind {
    TORV_ICON_ATTACK = 0,     /**< how a note begins */
    TORV_ICON_RELEASE = 1,    /**< how it ends before a rest */
    TORV_ICON_TRANSITION = 2, /**< how it goes on into the next */
    TORV_ICON_VIBRATO = 3,    /**< how it vibrates */
    TORV_ICON_DYNAMICS = 4,   /**< of databases only: see TORV_MARK_DYNAMICS */
    TORV_ICON_VOICE = 5       /**< of databases only: see TORV_MARK_VOICE */
} torv_icon_kind;

/** For the `note` of torv_icon_set and torv_icon_get: what all notes of the part get that have none of their own. */
#define TORV_ALL_NOTES SIZE_MAX

/** The name of the icon that was set: empty for the usual one (of a note: the part's), "none" for none. */
TORV_C_API torv_status torv_icon_get(torv_song* song, size_t part, size_t note, torv_icon_kind kind, char* buffer,
                                     size_t capacity, size_t* needed);
/** Gives a note, or with TORV_ALL_NOTES a part, an attack, release, transition or vibrato by name, "none" for none,
 * null or "" for the usual one. Names are looked up when a score is made. */
TORV_C_API torv_status torv_icon_set(torv_song* song, size_t part, size_t note, torv_icon_kind kind, const char* name);

/** @} */
/** @name Databases
 * The voices, expressions and presets that songs are sung with. */
/** @{ */

/** The open databases. */
typedef struct torv_databases torv_databases;

/**
 * Opens the databases and loads the phoneme converters. The process has them once: while they are open, also through
 * another host of the process or a score that was made with them, a second call answers TORV_BUSY. Hosts of one process
 * share the handle. What the library would show in message boxes is kept from now on, until they close.
 * - `databases`: the caller frees it
 * @return TORV_NO_COMPANION when a library or its data are missing
 */
TORV_C_API torv_status torv_databases_open(torv_databases** databases);
/** Gives the handle back; the databases close with the last score that was made with them. */
TORV_C_API torv_status torv_databases_free(torv_databases* databases);

/** Something of a database. */
typedef struct torv_icon {
    uint32_t size;    /**< sizeof(torv_icon) */
    uint32_t id;      /**< as engine streams and icon files name it */
    int32_t kind;     /**< a torv_icon_kind */
    int32_t language; /**< of a voice: a torv_language; of anything else TORV_LANGUAGE_AUTO */
} torv_icon;

/** A language that can be sung. */
typedef enum torv_language {
    TORV_LANGUAGE_AUTO = 0,     /**< what the words look like */
    TORV_LANGUAGE_JAPANESE = 1, /**< kana or Roman letters */
    TORV_LANGUAGE_ENGLISH = 2   /**< words as they are written */
} torv_language;

/** How many there are of a kind. */
TORV_C_API torv_status torv_databases_count(torv_databases* databases, torv_icon_kind kind, size_t* count);
/** The one of this index, presets before users' own: the record, which may be null, and its name. */
TORV_C_API torv_status torv_databases_get(torv_databases* databases, torv_icon_kind kind, size_t index,
                                          torv_icon* record, char* buffer, size_t capacity, size_t* needed);
/** The index of what has this name, or is the only one that begins so, whatever the case of its letters. */
TORV_C_API torv_status torv_databases_find(torv_databases* databases, torv_icon_kind kind, const char* name,
                                           size_t* index);
/** What opening told, and was not shown, in one line each, since the last call; needs no free. */
TORV_C_API torv_status torv_databases_get_messages(torv_databases* databases, char* buffer, size_t capacity,
                                                   size_t* needed);

/** @} */
/** @name Scores
 * A song made ready for the engine: voices cast, words turned into phonemes, every part encoded. It does not change. */
/** @{ */

/** A score. */
typedef struct torv_score torv_score;

/** How a score is made. All zero, but for the size, is the usual. */
typedef struct torv_score_options {
    uint32_t size;     /**< sizeof(torv_score_options) */
    int32_t transpose; /**< semitones, -60..60 */
    int32_t verse;     /**< from 1; 0: the first */
    int32_t plain;     /**< 1: without attacks, releases, transitions, vibratos and dynamics */
    int32_t language;  /**< a torv_language: who sings must sing it */
    uint32_t presend;  /**< milliseconds that the engine must know of a note ahead, 500..5000; 0: 2000 */
    int32_t breaths;   /**< 1: who sings is heard to breathe in, where there is a pause for it; breaths are no notes */
} torv_score_options;

/**
 * Makes a song's score. The song is copied.
 * - `options`: null for the usual
 * - `score`: the caller frees it; it keeps the databases open
 * @return TORV_BAD_SONG for what cannot be sung, TORV_NOT_FOUND for a voice or an icon that is not there
 */
TORV_C_API torv_status torv_score_make(torv_song* song, torv_databases* databases, const torv_score_options* options,
                                       torv_score** score);
/** Frees a score; what sings or plays of it goes on. */
TORV_C_API torv_status torv_score_free(torv_score* score);

/** What a score has. */
typedef struct torv_score_info {
    uint32_t size;    /**< sizeof(torv_score_info) */
    uint32_t parts;   /**< how many are sung */
    uint32_t remarks; /**< how many things were guessed or left out */
    uint32_t lead;    /**< milliseconds that the engine's stream begins before the song */
    uint32_t length;  /**< milliseconds from the song's start to its last sound */
} torv_score_info;

/** Fills the record. */
TORV_C_API torv_status torv_score_get_info(torv_score* score, torv_score_info* info);
/** Something that was guessed or left out, in one line. */
TORV_C_API torv_status torv_score_get_remark(torv_score* score, size_t index, char* buffer, size_t capacity,
                                             size_t* needed);

/** A part that is sung. */
typedef struct torv_score_part {
    uint32_t size;      /**< sizeof(torv_score_part) */
    uint32_t song_part; /**< its index in the song */
    uint32_t notes;     /**< how many */
    uint32_t voice;     /**< the id of who begins */
    double level;       /**< dB */
    double pan;         /**< -1 left .. 1 right */
} torv_score_part;

/** The part of this index: the record, and the name of the voice that begins. */
TORV_C_API torv_status torv_score_get_part(torv_score* score, size_t part, torv_score_part* record, char* buffer,
                                           size_t capacity, size_t* needed);

/** A note as it is sung: overlaps cut, transposed, very long ones in pieces. */
typedef struct torv_score_note {
    uint32_t size;    /**< sizeof(torv_score_note) */
    uint32_t tick;    /**< of the song */
    uint32_t length;  /**< ticks */
    int32_t key;      /**< as it sounds */
    int32_t velocity; /**< 1..127 */
    int32_t joined;   /**< 1: goes on from the note before without a break */
    double start;     /**< seconds from the song's start */
    double end;       /**< seconds */
} torv_score_note;

/** The note of this index, by time. */
TORV_C_API torv_status torv_score_get_note(torv_score* score, size_t part, size_t note, torv_score_note* record);
/** Its syllables as they are sung, with blanks between them. */
TORV_C_API torv_status torv_score_get_syllables(torv_score* score, size_t part, size_t note, char* buffer,
                                                size_t capacity, size_t* needed);
/** Its phonemes: SAMPA, blanks between them. */
TORV_C_API torv_status torv_score_get_phonemes(torv_score* score, size_t part, size_t note, char* buffer,
                                               size_t capacity, size_t* needed);

/** @} */
/** @name Encoding
 * What the engine is told of a part. */
/** @{ */

/** One event of a part's stream. Grows at its end only; `size` is set by the library. */
typedef struct torv_event {
    uint32_t size;        /**< sizeof(torv_event) of the library */
    uint32_t length;      /**< of the bytes */
    int64_t time;         /**< milliseconds from the song's start at which it is sent; negative in the lead */
    const uint8_t* bytes; /**< MIDI messages of three bytes; the library's, good during the call */
} torv_event;

/** Is given one event; 0 goes on, anything else ends the walk. Called on the thread of the call that it was given to.
 */
typedef int (*torv_event_callback)(const torv_event* event, void* user);

/** Walks the events of a part, by time. TORV_CANCELLED when the callback ended it. */
TORV_C_API torv_status torv_score_encode(torv_score* score, size_t part, torv_event_callback callback, void* user);
/** Writes the parts' streams into a standard MIDI file, which takes its name when it is whole: TORV_FILE_ERROR leaves
 * what was there. */
TORV_C_API torv_status torv_score_save_midi(torv_score* score, const char* path);

/** @} */
/** @name Sounds
 * Sound in memory, and singing offline. */
/** @{ */

/** A sound: one channel or two of 32-bit floats, full scale 1. Memory: 4 bytes a sample. */
typedef struct torv_sound torv_sound;

/** What a sound is. */
typedef struct torv_sound_info {
    uint32_t size;     /**< sizeof(torv_sound_info) */
    uint32_t rate;     /**< frames a second */
    uint32_t channels; /**< 1 or 2 */
    float peak;        /**< the largest magnitude; above 1 it is cut or made softer when saved */
    uint64_t frames;   /**< how many */
} torv_sound_info;

/** A sound of the caller's samples, which are copied. `samples`: frames * channels floats, interleaved, finite. */
TORV_C_API torv_status torv_sound_new(uint32_t rate, uint32_t channels, const float* samples, uint64_t frames,
                                      torv_sound** sound);
/** Reads a wave file: PCM of 8 to 32 bits or 32-bit floats, one or two channels. */
TORV_C_API torv_status torv_sound_open(const char* path, torv_sound** sound);
/** Frees a sound, with its samples. */
TORV_C_API torv_status torv_sound_free(torv_sound* sound);
/** Fills the record. */
TORV_C_API torv_status torv_sound_get_info(torv_sound* sound, torv_sound_info* info);
/** The samples, interleaved: the sound's own, good until it is freed. */
TORV_C_API torv_status torv_sound_get_samples(torv_sound* sound, const float** samples);

/** What became of a sound in a file. */
typedef struct torv_saved {
    uint32_t size;    /**< sizeof(torv_saved) */
    uint32_t clipped; /**< frames that were cut at full scale */
    double lowered;   /**< dB that all is softer, so that nothing is cut */
} torv_saved;

/**
 * Writes a 16-bit wave file, which takes its name when it is whole: TORV_FILE_ERROR leaves what was there.
 * - `lower`: 1: where it would pass full scale, all is softer; 0: it is cut there
 * - `saved`: may be null
 */
TORV_C_API torv_status torv_sound_save(torv_sound* sound, const char* path, int32_t lower, torv_saved* saved);

/** How far a call is, 0..1, about ten times a second of sound; 0 goes on, anything else cancels. Called on the thread
 * of the call that it was given to. */
typedef int (*torv_progress_callback)(double done, void* user);

/** How a score is sung. All zero, but for the size, is the usual. */
typedef struct torv_sing_options {
    uint32_t size;                   /**< sizeof(torv_sing_options) */
    uint32_t rate;                   /**< 44100, 48000 or 96000; 0: 44100 */
    uint32_t channels;               /**< 1 or 2; 0: one for one part in the middle, else two */
    uint32_t from;                   /**< milliseconds of the song, at most its own */
    uint32_t to;                     /**< milliseconds; 0: to the last sound */
    uint32_t part;                   /**< from 1: only this one of the score's parts; 0: all */
    torv_progress_callback progress; /**< may be null */
    void* user;                      /**< given to it */
} torv_sing_options;

/**
 * Has the engine sing a score, as many parts at a time as there are processors: always the same samples. The sound
 * begins at `from`, and is not made softer where parts together pass full scale.
 * - `options`: null for the usual
 * - `sound`: the caller frees it
 * @return TORV_NO_COMPANION without the engine, TORV_CANCELLED
 */
TORV_C_API torv_status torv_sing(torv_score* score, const torv_sing_options* options, torv_sound** sound);

/** The next frames of a song that is being sung, interleaved; 0 goes on, anything else cancels. The samples are the
 * library's, good during the call, which comes on the thread of torv_sing_blocks. */
typedef int (*torv_block_callback)(const float* samples, size_t frames, uint32_t channels, void* user);

/** The same samples, block by block and as they are made: blocks are at most 16384 frames, and nothing else is kept. */
TORV_C_API torv_status torv_sing_blocks(torv_score* score, const torv_sing_options* options,
                                        torv_block_callback callback, void* user);
/** torv_sing and torv_sound_save: of several parts the sum is made softer where it would be cut. */
TORV_C_API torv_status torv_sing_file(torv_score* score, const torv_sing_options* options, const char* path,
                                      torv_saved* saved);

/** What one hears of a sound every 20 ms. */
typedef struct torv_heard {
    float pitch; /**< key with cents as its fraction, 60 is middle C; NaN where no pitch is heard */
    float level; /**< RMS, dB of full scale, -90 or more */
} torv_heard;

/**
 * Measures a sound of one part, sung from the song's start: up to `capacity` points into `points`, which may be null
 * for 0; `count`: how many there are. The score's notes only say which octave is meant.
 */
TORV_C_API torv_status torv_sound_measure(torv_sound* sound, torv_score* score, size_t part, torv_heard* points,
                                          size_t capacity, size_t* count);

/** One sound of a mix. */
typedef struct torv_mix_track {
    uint32_t size;     /**< sizeof(torv_mix_track) */
    uint32_t start;    /**< frames of silence before it */
    torv_sound* sound; /**< one may stand in several tracks */
    double level;      /**< dB; 0 leaves it as it is */
    double pan;        /**< -1 left .. 1 right */
} torv_mix_track;

/**
 * Mixes sounds of one rate into a new one in stereo. A pan raises one side and lowers the other; in the middle a mono
 * sound is heard on both as it is. Sums are not cut: see torv_sound_save.
 * @return TORV_BAD_ARGUMENT when the rates differ
 */
TORV_C_API torv_status torv_mix(const torv_mix_track* tracks, size_t count, torv_sound** sound);

/** @} */
/** @name Playing
 * A player has the engine sing its score ahead of what is heard, from the song's start and once, and keeps it (2 bytes
 * a frame and part): every place that is sung can be heard at once, again and with other levels. */
/** @{ */

/** How many wave outputs there are. */
TORV_C_API torv_status torv_devices_count(size_t* count);
/** The name of the wave output of this index; "Null Output" is one that nobody hears. */
TORV_C_API torv_status torv_devices_get(size_t index, char* buffer, size_t capacity, size_t* needed);

/** A player. Control calls, one at a time, and torv_player_read are two that may run side by side. */
typedef struct torv_player torv_player;

/** What a player tells. */
typedef enum torv_player_event {
    TORV_PLAYER_POSITION = 0, /**< how far it is, about twenty times a second */
    TORV_PLAYER_ENDED = 1     /**< by itself, at the song's or the region's end; nothing comes after it */
} torv_player_event;

/** Is told how far a player with a device is, on the player's own thread. Other calls of the player may be made from
 * here, but torv_player_start and torv_player_free answer TORV_BUSY. It should not take long. */
typedef void (*torv_player_callback)(torv_player_event event, uint32_t position, void* user);

/** How a player plays. All zero, but for the size, is the usual. */
typedef struct torv_player_options {
    uint32_t size;                 /**< sizeof(torv_player_options) */
    uint32_t rate;                 /**< 44100, 48000 or 96000; 0: 44100 */
    int32_t pull;                  /**< 1: no device; the host takes the sound with torv_player_read */
    const char* device;            /**< name of a wave output; null or "": the first one */
    torv_player_callback callback; /**< may be null; not called with `pull` */
    void* user;                    /**< given to it */
} torv_player_options;

/**
 * A player of a score, whose levels and pans it begins with; it begins to sing at once.
 * - `options`: null for the usual
 * - `player`: the caller frees it
 * @return TORV_NO_COMPANION without the engine
 */
TORV_C_API torv_status torv_player_new(torv_score* score, const torv_player_options* options, torv_player** player);
/** Stops and frees a player. */
TORV_C_API torv_status torv_player_free(torv_player* player);

/** Plays from where the player is; from the region's start when that is at its end. Nothing happens while it plays.
 * TORV_NO_DEVICE when there is no such wave output or it refuses. */
TORV_C_API torv_status torv_player_start(torv_player* player);
/** Stops where it is, and waits until the device is silent. */
TORV_C_API torv_status torv_player_stop(torv_player* player);
/** Goes to a place of the song, also while it plays: the next sound that is read, or given to the device, is there.
 * Where the engine has not sung yet there is silence until it has. */
TORV_C_API torv_status torv_player_seek(torv_player* player, uint32_t milliseconds);
/** Where playing ends and, with `loop`, goes on from; an end of 0 is the song's. The place stays. At first all, once.
 */
TORV_C_API torv_status torv_player_set_region(torv_player* player, uint32_t start, uint32_t end, int32_t loop);
/** How loud a part is (dB, -120..24), where it stands (-1 left .. 1 right), and whether it is not heard. */
TORV_C_API torv_status torv_player_set_part(torv_player* player, size_t part, double level, double pan, int32_t mute);
/** How loud all is together, dB, -120..24. */
TORV_C_API torv_status torv_player_set_level(torv_player* player, double level);

/** How a player is. */
typedef struct torv_player_state {
    uint32_t size;     /**< sizeof(torv_player_state) */
    uint32_t position; /**< milliseconds of the song that are heard now, or that the next read begins with */
    uint32_t length;   /**< milliseconds of the song */
    uint32_t sung;     /**< milliseconds that the engine has sung so far */
    int32_t playing;   /**< 1: plays */
    int32_t ended;     /**< 1: has come to its end by itself */
    int32_t failed;    /**< 1: the engine has given up, or the device no longer takes anything */
    uint32_t waited;   /**< how often there was silence because the engine had not sung yet */
} torv_player_state;

/** Fills the record. */
TORV_C_API torv_status torv_player_get_state(torv_player* player, torv_player_state* state);

/**
 * The next `frames` frames of a player with `pull`, in two interleaved channels, full scale 1, not cut: always all of
 * them, with silence where nothing plays. Neither waits, locks nor allocates: it may be called in an audio callback,
 * from one thread at a time.
 * @return TORV_WRONG_ORDER for a player with a device
 */
TORV_C_API torv_status torv_player_read(torv_player* player, float* samples, size_t frames);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
