/* Every call with a handle that is null, of another kind, freed, or no handle at all. */
#include "check.h"

static torv_song_info song_info = {sizeof song_info, 0, 0, 0, 0, 0, 0, 0};
static torv_tempo tempo = {sizeof tempo, 0, 500000};
static torv_meter meter = {sizeof meter, 0, 4, 4};
static torv_measure measure = {sizeof measure, 0, 0, 0};
static torv_part part = {sizeof part, 0, 0, -1, -1, 0, 0, 0};
static torv_note note = {sizeof note, 0, 480, 60, 80, 0, 0};
static torv_word word = {sizeof word, 1, 0};
static torv_icon icon = {sizeof icon, 0, 0, 0};
static torv_score_info score_info = {sizeof score_info, 0, 0, 0, 0};
static torv_score_part score_part = {sizeof score_part, 0, 0, 0, 0, 0};
static torv_score_note score_note = {sizeof score_note, 0, 0, 0, 0, 0, 0, 0};
static torv_player_state player_state = {sizeof player_state, 0, 0, 0, 0, 0, 0, 0};
static float frames_read[2];
static torv_sound_info sound_info = {sizeof sound_info, 0, 0, 0, 0};
static torv_heard heard;
static torv_point point;
static const float* samples;
static char text[64];
static size_t number;
static uint32_t tick;
static double seconds;
static torv_song* new_song;
static torv_score* new_score;
static torv_sound* new_sound;
static torv_player* new_player;
/* Of another kind, or good where a call takes two. */
static torv_song* song;
static torv_databases* databases;
static torv_score* score;
static torv_sound* sound;
static torv_player* player;

static int take_event(const torv_event* event, void* user) { return event == user; }
static int take_block(const float* block, size_t frames, uint32_t channels, void* user) {
    return block == user && frames < channels;
}

/* What follows the handle. */
#define OF_SONG(X)                                                                                                     \
    X(torv_song, torv_song_copy, &new_song)                                                                            \
    X(torv_song, torv_song_get_info, &song_info)                                                                       \
    X(torv_song, torv_song_get_text, TORV_SONG_TITLE, text, sizeof text, NULL)                                         \
    X(torv_song, torv_song_set_text, TORV_SONG_TITLE, "x")                                                             \
    X(torv_song, torv_song_get_remark, 0, text, sizeof text, NULL)                                                     \
    X(torv_song, torv_song_get_tempo, 0, &tempo)                                                                       \
    X(torv_song, torv_song_set_tempo, &tempo)                                                                          \
    X(torv_song, torv_song_remove_tempo, 0)                                                                            \
    X(torv_song, torv_song_get_meter, 0, &meter)                                                                       \
    X(torv_song, torv_song_set_meter, &meter)                                                                          \
    X(torv_song, torv_song_remove_meter, 0)                                                                            \
    X(torv_song, torv_song_get_measure, 0, &measure)                                                                   \
    X(torv_song, torv_song_find_measure, 1, &tick)                                                                     \
    X(torv_song, torv_song_seconds_at, 0, &seconds)                                                                    \
    X(torv_song, torv_part_add, "x", &number)                                                                          \
    X(torv_song, torv_part_remove, 0)                                                                                  \
    X(torv_song, torv_part_get, 0, &part)                                                                              \
    X(torv_song, torv_part_set, 0, &part)                                                                              \
    X(torv_song, torv_part_get_text, 0, TORV_PART_NAME, text, sizeof text, NULL)                                       \
    X(torv_song, torv_part_set_text, 0, TORV_PART_NAME, "x")                                                           \
    X(torv_song, torv_part_count_marks, 0, TORV_MARK_VOICE, &number)                                                   \
    X(torv_song, torv_part_get_mark, 0, TORV_MARK_VOICE, 0, &tick, text, sizeof text, NULL)                            \
    X(torv_song, torv_part_set_mark, 0, TORV_MARK_VOICE, 0, "x")                                                       \
    X(torv_song, torv_part_get_curve, 0, TORV_CURVE_PITCH, &point, 1, &number)                                         \
    X(torv_song, torv_part_set_curve, 0, TORV_CURVE_PITCH, &point, 1)                                                  \
    X(torv_song, torv_note_get, 0, 0, &note)                                                                           \
    X(torv_song, torv_note_add, 0, &note, &number)                                                                     \
    X(torv_song, torv_note_set, 0, 0, &note, &number)                                                                  \
    X(torv_song, torv_note_remove, 0, 0)                                                                               \
    X(torv_song, torv_word_get, 0, 0, 0, &word)                                                                        \
    X(torv_song, torv_word_get_text, 0, 0, 0, text, sizeof text, NULL)                                                 \
    X(torv_song, torv_word_add, 0, 0, &word, "x", &number)                                                             \
    X(torv_song, torv_word_set, 0, 0, 0, &word, "x")                                                                   \
    X(torv_song, torv_word_remove, 0, 0, 0)                                                                            \
    X(torv_song, torv_word_get_phonemes, 0, 0, 0, text, sizeof text, NULL)                                             \
    X(torv_song, torv_word_set_phonemes, 0, 0, 0, "x")                                                                 \
    X(torv_song, torv_icon_get, 0, 0, TORV_ICON_ATTACK, text, sizeof text, NULL)                                       \
    X(torv_song, torv_icon_set, 0, 0, TORV_ICON_ATTACK, "x")                                                           \
    X(torv_song, torv_score_make, databases, NULL, &new_score)
#define OF_OTHERS(X)                                                                                                   \
    X(torv_databases, torv_databases_count, TORV_ICON_VOICE, &number)                                                  \
    X(torv_databases, torv_databases_get, TORV_ICON_VOICE, 0, &icon, text, sizeof text, NULL)                          \
    X(torv_databases, torv_databases_find, TORV_ICON_VOICE, "x", &number)                                              \
    X(torv_databases, torv_databases_get_messages, text, sizeof text, NULL)                                            \
    X(torv_score, torv_score_get_info, &score_info)                                                                    \
    X(torv_score, torv_score_get_remark, 0, text, sizeof text, NULL)                                                   \
    X(torv_score, torv_score_get_part, 0, &score_part, text, sizeof text, NULL)                                        \
    X(torv_score, torv_score_get_note, 0, 0, &score_note)                                                              \
    X(torv_score, torv_score_get_syllables, 0, 0, text, sizeof text, NULL)                                             \
    X(torv_score, torv_score_get_phonemes, 0, 0, text, sizeof text, NULL)                                              \
    X(torv_score, torv_score_encode, 0, take_event, NULL)                                                              \
    X(torv_score, torv_score_save_midi, "c_test.mid")                                                                  \
    X(torv_score, torv_sing, NULL, &new_sound)                                                                         \
    X(torv_score, torv_sing_blocks, NULL, take_block, NULL)                                                            \
    X(torv_score, torv_sing_file, NULL, "c_test.wav", NULL)                                                            \
    X(torv_sound, torv_sound_get_info, &sound_info)                                                                    \
    X(torv_sound, torv_sound_get_samples, &samples)                                                                    \
    X(torv_sound, torv_sound_save, "c_test.wav", 0, NULL)                                                              \
    X(torv_sound, torv_sound_measure, score, 0, &heard, 1, &number)                                                    \
    X(torv_score, torv_player_new, NULL, &new_player)                                                                  \
    X(torv_player, torv_player_seek, 0)                                                                                \
    X(torv_player, torv_player_set_region, 0, 0, 0)                                                                    \
    X(torv_player, torv_player_set_part, 0, 0, 0, 0)                                                                   \
    X(torv_player, torv_player_set_level, 0)                                                                           \
    X(torv_player, torv_player_get_state, &player_state)                                                               \
    X(torv_player, torv_player_read, frames_read, 1)

#define DEFINE(kind, function, ...)                                                                                    \
    static torv_status call_##function(void* handle) { return function((kind*)handle, __VA_ARGS__); }
OF_SONG(DEFINE)
OF_OTHERS(DEFINE)

static torv_status free_song(void* handle) { return torv_song_free(handle); }
static torv_status free_databases(void* handle) { return torv_databases_free(handle); }
static torv_status free_score(void* handle) { return torv_score_free(handle); }
static torv_status free_sound(void* handle) { return torv_sound_free(handle); }
static torv_status free_player(void* handle) { return torv_player_free(handle); }
static torv_status start_player(void* handle) { return torv_player_start(handle); }
static torv_status stop_player(void* handle) { return torv_player_stop(handle); }
static torv_status make_with(void* handle) { return torv_score_make(song, handle, NULL, &new_score); }
static torv_status measure_with(void* handle) { return torv_sound_measure(sound, handle, 0, &heard, 1, &number); }
static torv_status mix_of(void* handle) {
    torv_mix_track track = {sizeof track, 0, NULL, 0, 0};
    track.sound = handle;
    return torv_mix(&track, 1, &new_sound);
}

enum kind { kSong, kDatabases, kScore, kSound, kPlayer, kKinds };
struct call {
    const char* name;
    torv_status (*function)(void* handle);
    enum kind kind;
};
enum {
    torv_song_kind = kSong,
    torv_databases_kind = kDatabases,
    torv_score_kind = kScore,
    torv_sound_kind = kSound,
    torv_player_kind = kPlayer
};
#define ENTRY(handle_kind, function, ...) {#function, call_##function, (enum kind)handle_kind##_kind},
static const struct call kCalls[] = {OF_SONG(ENTRY) OF_OTHERS(ENTRY){"torv_score_make with", make_with, kDatabases},
                                     {"torv_sound_measure with", measure_with, kScore},
                                     {"torv_mix", mix_of, kSound},
                                     {"torv_song_free", free_song, kSong},
                                     {"torv_databases_free", free_databases, kDatabases},
                                     {"torv_score_free", free_score, kScore},
                                     {"torv_sound_free", free_sound, kSound},
                                     {"torv_player_start", start_player, kPlayer},
                                     {"torv_player_stop", stop_player, kPlayer},
                                     {"torv_player_free", free_player, kPlayer}};

static void expect(const struct call* call, void* handle, const char* what) {
    const torv_status status = call->function(handle);
    const int is_free = strstr(call->name, "_free") != NULL;
    if (status == (handle || !is_free ? TORV_BAD_HANDLE : TORV_OK))
        return;
    printf("%s with %s handle: %s\n", call->name, what, torv_status_name(status));
    ++g_failures;
}

static torv_sound* make_sound(void) {
    const float one = 0.5F;
    torv_sound* made = NULL;
    OK(torv_sound_new(44100, 1, &one, 1, &made));
    return made;
}

static void test_handles(void) {
    void* const good[kKinds] = {song, databases, score, sound, player};
    torv_sound* const freed = make_sound();
    OK(torv_sound_free(freed));
    torv_sound* const after = make_sound(); /* in the freed one's place, or in another */
    for (size_t i = 0; i < sizeof kCalls / sizeof *kCalls; ++i) {
        expect(&kCalls[i], NULL, "a null");
        expect(&kCalls[i], freed, "a freed");
        expect(&kCalls[i], text, "a wild");
        for (int kind = 0; kind < kKinds; ++kind)
            if (kind != (int)kCalls[i].kind)
                expect(&kCalls[i], good[kind], "another kind of");
    }
    OK(torv_sound_free(after));
}

/* Null where something must come back, records without their size, indexes that are not there. */
static void test_arguments(void) {
    torv_note without = {0, 0, 480, 60, 80, 0, 0};
    torv_note outside = {sizeof outside, 0, 480, 128, 80, 0, 0};
    const torv_point back[] = {{480, 1}, {240, 1}};
    const torv_point loud = {0, 128};
    const torv_player_options half = {sizeof half, 0, 0, "\xC3", NULL, NULL};
    char small[2];
    size_t needed = 0;
    CHECK_STATUS(torv_song_new(NULL), TORV_BAD_ARGUMENT);
    CHECK_STATUS(torv_song_get_info(song, NULL), TORV_BAD_ARGUMENT);
    CHECK_STATUS(torv_note_add(song, 0, &without, NULL), TORV_BAD_ARGUMENT);
    CHECK_STATUS(torv_note_add(song, 0, &outside, NULL), TORV_OUT_OF_RANGE);
    CHECK_STATUS(torv_part_set_curve(song, 0, TORV_CURVE_PITCH, back, 2), TORV_OUT_OF_RANGE);
    CHECK_STATUS(torv_part_set_curve(song, 0, TORV_CURVE_DYNAMICS, &loud, 1), TORV_OUT_OF_RANGE);
    CHECK_STATUS(torv_part_set_curve(song, 0, TORV_CURVES, &loud, 1), TORV_BAD_ARGUMENT);
    CHECK_STATUS(torv_part_set_mark(song, 0, (torv_mark_kind)99, 0, "x"), TORV_BAD_ARGUMENT);
    CHECK_STATUS(torv_part_get_mark(song, 0, (torv_mark_kind)99, 0, &tick, text, sizeof text, NULL), TORV_BAD_ARGUMENT);
    CHECK_STATUS(torv_part_set_text(song, 0, TORV_PART_NAME, "\xC3"), TORV_BAD_ARGUMENT); /* half a letter */
    CHECK_STATUS(torv_player_new(score, &half, &new_player), TORV_BAD_ARGUMENT);
    CHECK_STATUS(torv_song_get_text(song, (torv_song_text)99, text, sizeof text, NULL), TORV_BAD_ARGUMENT);
    CHECK_STATUS(torv_song_open("no such file.mid", NULL, &new_song), TORV_FILE_ERROR);
    CHECK(new_song == NULL);
    CHECK_STATUS(torv_song_read("no song", 7, NULL, NULL, &new_song), TORV_BAD_SONG);
    CHECK(strlen(torv_error_text()) > 0);
    CHECK_STATUS(torv_score_encode(score, 0, NULL, NULL), TORV_BAD_ARGUMENT);
    CHECK_STATUS(torv_score_save_midi(score, "no such folder/c_test.mid"), TORV_FILE_ERROR);
    CHECK_STATUS(torv_mix(NULL, 1, &new_sound), TORV_BAD_ARGUMENT);
    OK(torv_part_set_text(song, 0, TORV_PART_NAME, "Alto"));
    CHECK_STATUS(torv_part_get_text(song, 0, TORV_PART_NAME, small, sizeof small, &needed), TORV_TOO_SMALL);
    CHECK(needed == 5);
    OK(torv_part_get_text(song, 0, TORV_PART_NAME, NULL, 0, &needed));
    CHECK(strcmp(torv_status_name(TORV_FAILED), "TORV_FAILED") == 0);
    CHECK(strcmp(torv_status_name((torv_status)77), "unknown") == 0);
    CHECK(strlen(torv_version()) >= 5);
}

/* The duet has two parts of five notes and a word each, and nothing else; what stands behind the last is none. */
static void test_indexes(void) {
    size_t icons = 0;
    size_t devices = 0;
    OK(torv_databases_count(databases, TORV_ICON_VOICE, &icons));
    OK(torv_devices_count(&devices));
    const torv_status behind[] = {torv_song_get_remark(song, 0, text, sizeof text, NULL),
                                  torv_song_get_tempo(song, 1, &tempo),
                                  torv_song_get_meter(song, 1, &meter),
                                  torv_song_get_measure(song, 2, &measure),
                                  torv_part_get(song, 2, &part),
                                  torv_part_remove(song, 2),
                                  torv_part_get_mark(song, 0, TORV_MARK_VOICE, 0, &tick, text, sizeof text, NULL),
                                  torv_part_get_mark(song, 0, TORV_MARK_DYNAMICS, 0, &tick, text, sizeof text, NULL),
                                  torv_note_get(song, 1, 5, &note),
                                  torv_word_get(song, 0, 0, 1, &word),
                                  torv_icon_get(song, 0, 5, TORV_ICON_ATTACK, text, sizeof text, NULL),
                                  torv_score_get_remark(score, 0, text, sizeof text, NULL),
                                  torv_score_get_part(score, 2, &score_part, text, sizeof text, NULL),
                                  torv_score_get_note(score, 2, 0, &score_note),
                                  torv_score_get_note(score, 1, 5, &score_note),
                                  torv_player_set_part(player, 2, 0, 0, 0),
                                  torv_databases_get(databases, TORV_ICON_VOICE, icons, &icon, text, sizeof text, NULL),
                                  torv_devices_get(devices, text, sizeof text, NULL)};
    for (size_t i = 0; i < sizeof behind / sizeof *behind; ++i) {
        if (behind[i] == TORV_OUT_OF_RANGE)
            continue;
        printf("index %zu behind the last: %s\n", i, torv_status_name(behind[i]));
        ++g_failures;
    }
}

static torv_status make(int32_t transpose, int32_t verse, int32_t language, uint32_t presend) {
    const torv_score_options options = {sizeof options, transpose, verse, 0, language, presend, 0};
    torv_score* made = NULL;
    const torv_status status = torv_score_make(song, databases, &options, &made);
    OK(torv_score_free(made));
    return status;
}
static torv_status sing(uint32_t rate, uint32_t channels, uint32_t from, uint32_t to, uint32_t sung) {
    const torv_sing_options options = {sizeof options, rate, channels, from, to, sung, NULL, NULL};
    torv_sound* made = NULL;
    const torv_status status = torv_sing(score, &options, &made);
    OK(torv_sound_free(made));
    return status;
}
static torv_status mix(double level, double pan) {
    torv_mix_track track = {sizeof track, 0, sound, level, pan};
    torv_sound* made = NULL;
    const torv_status status = torv_mix(&track, 1, &made);
    OK(torv_sound_free(made));
    return status;
}
static torv_status set_times(uint32_t microseconds, uint32_t numerator, uint32_t denominator) {
    const torv_tempo fast = {sizeof fast, 0, microseconds};
    const torv_meter odd = {sizeof odd, 0, numerator, denominator};
    const torv_status status = torv_song_set_tempo(song, &fast);
    return status == TORV_OK ? torv_song_set_meter(song, &odd) : status;
}

/* What is just too much, beside the most that is not: the duet transposed so far has notes of no key. */
static void test_ranges(void) {
    const torv_status pairs[][2] = {
        {make(61, 0, 0, 0), make(60, 0, 0, 0)},
        {make(-61, 0, 0, 0), make(-60, 0, 0, 0)},
        {make(0, -1, 0, 0), make(0, 1, 0, 0)},
        {make(0, 0, TORV_LANGUAGE_ENGLISH + 1, 0), make(0, 0, TORV_LANGUAGE_ENGLISH, 0)},
        {make(0, 0, 0, 499), make(0, 0, 0, 500)},
        {make(0, 0, 0, 5001), make(0, 0, 0, 5000)},
        {sing(44101, 0, 0, 1, 0), sing(96000, 0, 0, 1, 0)},
        {sing(0, 3, 0, 1, 0), sing(0, 2, 0, 1, 0)},
        {sing(0, 0, 100, 100, 0), sing(0, 0, 100, 101, 0)},
        {sing(0, 0, 3001, 0, 0), sing(0, 0, 3000, 3001, 0)},
        {sing(0, 0, 0, 1, 3), sing(0, 0, 0, 1, 2)},
        {mix(61, 0), mix(60, 0)},
        {mix(-121, 0), mix(-120, 0)},
        {mix(0, 1.01), mix(0, 1)},
        {mix(0, -1.01), mix(0, -1)},
        {set_times(0, 4, 4), set_times(1, 4, 4)},
        {set_times(16777216, 4, 4), set_times(16777215, 4, 4)},
        {set_times(500000, 256, 4), set_times(500000, 255, 4)},
        {set_times(500000, 0, 4), set_times(500000, 1, 4)},
        {set_times(500000, 4, 256), set_times(500000, 4, 128)},
        {set_times(500000, 4, 3), set_times(500000, 4, 1)},
        {torv_player_set_level(player, 25), torv_player_set_level(player, 24)},
        {torv_player_set_level(player, -121), torv_player_set_level(player, -120)},
        {torv_player_set_part(player, 1, 0, 1.01, 0), torv_player_set_part(player, 1, 0, 1, 0)},
        {torv_player_set_region(player, 5, 5, 0), torv_player_set_region(player, 5, 6, 0)}};
    for (size_t i = 0; i < sizeof pairs / sizeof *pairs; ++i) {
        if (pairs[i][0] == TORV_OUT_OF_RANGE && pairs[i][1] == (i < 2 ? TORV_BAD_SONG : TORV_OK))
            continue;
        printf("range %zu: %s, %s\n", i, torv_status_name(pairs[i][0]), torv_status_name(pairs[i][1]));
        ++g_failures;
    }
}

void test_misuse(void) {
    databases = open_databases();
    song = make_duet();
    sound = make_sound();
    OK(torv_score_make(song, databases, NULL, &score));
    OK(torv_player_new(score, NULL, &player));
    test_handles();
    test_indexes();
    test_ranges();
    test_arguments();
    OK(torv_player_free(player)); /* while it still sings */
    OK(torv_score_free(score));
    OK(torv_song_free(song));
    OK(torv_sound_free(sound));
    OK(torv_databases_free(databases));
}
