/* A song made from nothing, and what a score makes of it. */
#include "check.h"

static void add_note(torv_song* song, uint32_t tick, int32_t key, const char* text, uint32_t flags) {
    torv_note note = {sizeof note, tick, 480, key, 80, 0, 0};
    torv_word word = {sizeof word, 1, flags};
    size_t index = 99;
    OK(torv_note_add(song, 0, &note, &index));
    OK(torv_word_add(song, 0, index, &word, text, NULL));
}

/* Two notes, put in out of order: "a" on 64 at tick 480, "men" on 60 at 960. */
static torv_song* make_amen(void) {
    torv_song* song = NULL;
    OK(torv_song_new(&song));
    OK(torv_part_add(song, "Soprano", NULL));
    add_note(song, 960, 60, "men", TORV_WORD_HYPHEN_BEFORE);
    add_note(song, 480, 64, "a", TORV_WORD_HYPHEN_AFTER);
    return song;
}

static void test_notes_stand_by_time(void) {
    torv_song* const song = make_amen();
    torv_note note = {sizeof note, 0, 0, 0, 0, 0, 0};
    char text[8];
    size_t index = 0;
    OK(torv_note_get(song, 0, 0, &note));
    CHECK(note.tick == 480);
    CHECK(note.words == 1);
    OK(torv_word_get_text(song, 0, 0, 0, text, sizeof text, NULL));
    CHECK(strcmp(text, "a") == 0);

    /* Moved behind the other, it keeps its word and its icon. */
    OK(torv_icon_set(song, 0, 0, TORV_ICON_VIBRATO, "none"));
    note.tick = 1440;
    OK(torv_note_set(song, 0, 0, &note, &index));
    CHECK(index == 1);
    OK(torv_word_get_text(song, 0, 1, 0, text, sizeof text, NULL));
    CHECK(strcmp(text, "a") == 0);
    OK(torv_icon_get(song, 0, 1, TORV_ICON_VIBRATO, text, sizeof text, NULL));
    CHECK(strcmp(text, "none") == 0);
    OK(torv_icon_get(song, 0, 0, TORV_ICON_VIBRATO, text, sizeof text, NULL));
    CHECK(strcmp(text, "") == 0);
    OK(torv_song_free(song));
}

static void test_times(void) {
    torv_song* const song = make_amen();
    const torv_tempo slow = {sizeof slow, 480, 1000000};
    const torv_meter three = {sizeof three, 0, 3, 4};
    torv_song_info info = {sizeof info, 0, 0, 0, 0, 0, 0, 0};
    torv_measure measure = {sizeof measure, 0, 0, 0};
    double seconds = 0;
    uint32_t tick = 0;
    OK(torv_song_set_tempo(song, &slow));
    OK(torv_song_seconds_at(song, 960, &seconds));
    CHECK(seconds == 1.5); /* a quarter of half a second, then one of a whole */
    OK(torv_song_set_meter(song, &three));
    add_note(song, 1440, 62, "la", 0);
    OK(torv_song_get_info(song, &info));
    CHECK(info.end == 1920);
    CHECK(info.measures == 2);
    OK(torv_song_get_measure(song, 1, &measure));
    CHECK(measure.tick == 1440);
    CHECK(measure.number == 2);
    OK(torv_song_find_measure(song, 2, &tick));
    CHECK(tick == 1440);
    CHECK_STATUS(torv_song_find_measure(song, 9, &tick), TORV_NOT_FOUND);
    OK(torv_song_free(song));
}

static void test_parts_and_marks(void) {
    torv_song* const song = make_amen();
    const torv_part part = {sizeof part, 9, 2, 3, 4, TORV_SING_NEVER, -5, 0.5};
    torv_part back = {sizeof back, 0, 0, 0, 0, 0, 0, 0};
    OK(torv_part_set(song, 0, &part));
    OK(torv_part_get(song, 0, &back));
    CHECK(back.notes == 2); /* which no host sets */
    CHECK(back.track == 2);
    CHECK(back.channel == 3);
    CHECK(back.program == 4);
    CHECK(back.sing == TORV_SING_NEVER);
    CHECK(back.level == -5);
    CHECK(back.pan == 0.5);
    for (int of = 0; of < 2; ++of) {
        const torv_mark_kind kind = of == 0 ? TORV_MARK_VOICE : TORV_MARK_DYNAMICS;
        static const uint32_t ticks[] = {960, 0, 480, 960}; /* the last replaces the first */
        size_t count = 0;
        for (size_t i = 0; i < 4; ++i)
            OK(torv_part_set_mark(song, 0, kind, ticks[i], i < 3 ? "p" : "f"));
        OK(torv_part_count_marks(song, 0, kind, &count));
        CHECK(count == 3);
        for (size_t i = 0; i < 3; ++i) {
            char name[8];
            uint32_t tick = 0;
            OK(torv_part_get_mark(song, 0, kind, i, &tick, name, sizeof name, NULL));
            CHECK(tick == 480 * i);
            CHECK(strcmp(name, i < 2 ? "p" : "f") == 0);
        }
    }
    OK(torv_song_free(song));
}

/* An event is one block of a parameter, whose number is the first message's value. */
struct count {
    uint8_t number;
    size_t found;
};

static int count_blocks(const torv_event* event, void* user) {
    struct count* const count = user;
    count->found += event->length > 2 && event->bytes[2] == count->number;
    return 0;
}

static size_t blocks_of(torv_score* score, uint8_t number) {
    struct count count = {number, 0};
    OK(torv_score_encode(score, 0, count_blocks, &count));
    return count.found;
}

static void test_what_a_host_gives_is_sung(torv_databases* databases) {
    enum { kPitchBend = 0x54 };
    torv_song* const song = make_amen();
    const torv_point points[] = {{480, 0.0F}, {600, 0.5F}, {720, -1.5F}};
    torv_point back[3];
    torv_score* plain = NULL;
    torv_score* bent = NULL;
    char text[64];
    size_t count = 0;
    OK(torv_score_make(song, databases, NULL, &plain));
    OK(torv_score_get_phonemes(plain, 0, 1, text, sizeof text, NULL));
    CHECK(strcmp(text, "m e n") == 0);
    OK(torv_score_get_syllables(plain, 0, 1, text, sizeof text, NULL));
    CHECK(strcmp(text, "men") == 0);

    OK(torv_part_set_curve(song, 0, TORV_CURVE_PITCH, points, 3));
    OK(torv_part_get_curve(song, 0, TORV_CURVE_PITCH, back, 3, &count));
    CHECK(count == 3);
    CHECK(back[2].value == -1.5F);
    OK(torv_word_set_phonemes(song, 0, 1, 0, "m aI n"));
    OK(torv_score_make(song, databases, NULL, &bent));
    OK(torv_score_get_phonemes(bent, 0, 1, text, sizeof text, NULL));
    CHECK(strcmp(text, "m aI n") == 0);
    OK(torv_score_get_phonemes(bent, 0, 0, text, sizeof text, NULL));
    CHECK(strcmp(text, "m aI n") != 0);
    CHECK(blocks_of(bent, kPitchBend) == blocks_of(plain, kPitchBend) + 3);
    OK(torv_score_free(plain));
    OK(torv_score_free(bent));
    OK(torv_song_free(song));
}

static void test_names_are_looked_up(torv_databases* databases) {
    torv_song* const song = make_amen();
    torv_score* score = NULL;
    torv_score_part part = {sizeof part, 0, 0, 0, 0, 0};
    torv_icon voice = {sizeof voice, 0, 0, 0};
    char name[64];
    size_t index = 0;
    OK(torv_databases_find(databases, TORV_ICON_VOICE, "thomas", &index));
    OK(torv_databases_get(databases, TORV_ICON_VOICE, index, &voice, name, sizeof name, NULL));
    CHECK(strcmp(name, "Thomas") == 0);
    CHECK(voice.language == TORV_LANGUAGE_ENGLISH);
    OK(torv_part_set_mark(song, 0, TORV_MARK_VOICE, 0, "Thomas"));
    OK(torv_part_set_mark(song, 0, TORV_MARK_DYNAMICS, 960, "f"));
    OK(torv_score_make(song, databases, NULL, &score));
    OK(torv_score_get_part(score, 0, &part, name, sizeof name, NULL));
    CHECK(part.voice == voice.id);
    OK(torv_score_free(score));

    OK(torv_part_set_mark(song, 0, TORV_MARK_VOICE, 0, "Thmas"));
    CHECK_STATUS(torv_score_make(song, databases, NULL, &score), TORV_NOT_FOUND);
    CHECK(strstr(torv_error_text(), "Thomas") != NULL); /* the nearest name */
    CHECK(score == NULL);
    OK(torv_part_set_mark(song, 0, TORV_MARK_VOICE, 0, NULL));
    OK(torv_icon_set(song, 0, 1, TORV_ICON_ATTACK, "nosuch"));
    CHECK_STATUS(torv_score_make(song, databases, NULL, &score), TORV_NOT_FOUND);
    OK(torv_song_free(song));
}

void test_editing(void) {
    torv_databases* const databases = open_databases();
    test_notes_stand_by_time();
    test_times();
    test_parts_and_marks();
    test_what_a_host_gives_is_sung(databases);
    test_names_are_looked_up(databases);
    OK(torv_databases_free(databases));
}
