/* A player in the host's hand, and one with a device. */
#include "check.h"

#include <math.h>
#include <stdatomic.h>
#if defined(_WIN32)
#include <windows.h>
static void pause_briefly(void) { Sleep(1); }
#else
#include <threads.h>
static void pause_briefly(void) {
    const struct timespec millisecond = {0, 1000000};
    thrd_sleep(&millisecond, NULL);
}
#endif

enum { kRate = 44100, kTenth = kRate / 10 };

static torv_player_state state_of(torv_player* player) {
    torv_player_state state = {sizeof state, 0, 0, 0, 0, 0, 0, 0};
    OK(torv_player_get_state(player, &state));
    return state;
}

static void await_all_sung(torv_player* player) {
    while (state_of(player).sung < state_of(player).length)
        pause_briefly();
}

static float difference(const float* a, const float* b, size_t count) {
    float most = 0;
    for (size_t i = 0; i < count; ++i)
        most = fmaxf(most, fabsf(a[i] - b[i]));
    return most;
}

/* From a second on, once a first read has faded to what was asked for. */
static void read_again(torv_player* player, float* read) {
    OK(torv_player_seek(player, 1000));
    OK(torv_player_read(player, read, 64));
    OK(torv_player_seek(player, 1000));
    OK(torv_player_read(player, read, kTenth));
}

static void test_what_is_read(torv_score* score) {
    static float read[4 * kTenth];
    static float tenth[2 * kTenth];
    const torv_player_options options = {sizeof options, 0, 1, NULL, NULL, NULL};
    const torv_sing_options stereo = {sizeof stereo, 0, 2, 0, 0, 0, NULL, NULL};
    torv_player* player = NULL;
    torv_sound* sound = NULL;
    const float* sung = NULL;
    OK(torv_sing(score, &stereo, &sound));
    OK(torv_sound_get_samples(sound, &sung));
    OK(torv_player_new(score, &options, &player));
    await_all_sung(player);

    OK(torv_player_read(player, read, kTenth)); /* before it plays */
    CHECK(read[0] == 0 && read[2 * kTenth - 1] == 0);
    OK(torv_player_start(player));
    OK(torv_player_seek(player, 1000));
    CHECK(state_of(player).position == 1000);
    OK(torv_player_read(player, read, kTenth));
    CHECK(difference(read, sung + 2 * kRate, 2 * kTenth) < 1e-5F); /* as it is sung offline */
    CHECK(state_of(player).position == 1100);

    /* Twenty decibels less are a tenth: of all, and of each part. */
    for (size_t i = 0; i < 2 * kTenth; ++i)
        tenth[i] = 0.1F * sung[2 * kRate + i];
    OK(torv_player_set_level(player, -20));
    read_again(player, read);
    CHECK(difference(read, tenth, 2 * kTenth) < 1e-6F);
    OK(torv_player_set_level(player, 0));
    for (int down = 1; down >= 0; --down) {
        for (size_t part = 0; part < 2; ++part) {
            torv_score_part of = {sizeof of, 0, 0, 0, 0, 0};
            OK(torv_score_get_part(score, part, &of, NULL, 0, NULL));
            OK(torv_player_set_part(player, part, of.level - 20 * down, of.pan, 0));
        }
        read_again(player, read);
        CHECK(difference(read, down ? tenth : sung + 2 * kRate, 2 * kTenth) < 1e-5F);
    }

    /* A loop's second pass follows at once on its first. */
    OK(torv_player_set_region(player, 1000, 1100, 1));
    OK(torv_player_seek(player, 1000));
    OK(torv_player_read(player, read, 2 * kTenth));
    CHECK(difference(read, read + 2 * kTenth, 2 * kTenth) == 0);
    CHECK(state_of(player).playing == 1);

    /* Without the loop it ends there, and the rest is silence. */
    OK(torv_player_set_region(player, 1000, 1050, 0));
    OK(torv_player_seek(player, 1000));
    OK(torv_player_read(player, read, kTenth));
    CHECK(difference(read, sung + 2 * kRate, kTenth) < 1e-5F);
    CHECK(read[2 * kTenth - 1] == 0);
    CHECK(state_of(player).ended == 1);
    CHECK(state_of(player).playing == 0);

    /* Begun again it plays from the region's start; a muted part fades within one read. */
    OK(torv_player_start(player));
    OK(torv_player_set_region(player, 0, 0, 0));
    for (size_t part = 0; part < 2; ++part)
        OK(torv_player_set_part(player, part, 0, 0, 1));
    OK(torv_player_read(player, read, 64));
    OK(torv_player_read(player, read, kTenth));
    CHECK(read[0] == 0 && read[2 * kTenth - 1] == 0);
    CHECK(state_of(player).position > 1000);
    OK(torv_player_stop(player));
    OK(torv_player_free(player));
    OK(torv_sound_free(sound));
}

struct heard {
    torv_player* player;
    atomic_int positions;
    atomic_int ends;
};

static void hear(torv_player_event event, uint32_t position, void* user) {
    struct heard* const heard = user;
    atomic_fetch_add(event == TORV_PLAYER_ENDED ? &heard->ends : &heard->positions, 1);
    if (position >= 1000 && event == TORV_PLAYER_POSITION)
        CHECK_STATUS(torv_player_free(heard->player), TORV_BUSY); /* it is on its own thread */
}

static void test_device(torv_score* score) {
    struct heard heard = {NULL, 0, 0};
    torv_player_options options = {sizeof options, 0, 0, "Null Output", hear, &heard};
    float read[2];
    char name[128];
    size_t count = 0;
    OK(torv_devices_count(&count));
    for (size_t i = 0; i < count; ++i)
        OK(torv_devices_get(i, name, sizeof name, NULL));
    if (count == 0 || strcmp(name, "Null Output") != 0) {
        printf("SKIPPED: there is no Null Output\n");
        return;
    }
    OK(torv_player_new(score, &options, &heard.player));
    CHECK_STATUS(torv_player_read(heard.player, read, 1), TORV_WRONG_ORDER);
    await_all_sung(heard.player);
    OK(torv_player_set_region(heard.player, 1000, 1300, 0));
    OK(torv_player_seek(heard.player, 1000));
    OK(torv_player_start(heard.player));
    while (atomic_load(&heard.ends) == 0)
        pause_briefly();
    CHECK(atomic_load(&heard.positions) > 0);
    CHECK(state_of(heard.player).ended == 1);
    CHECK(state_of(heard.player).position == 1300);
    CHECK(state_of(heard.player).failed == 0);
    OK(torv_player_start(heard.player)); /* again, and ended by the host */
    OK(torv_player_stop(heard.player));
    CHECK(atomic_load(&heard.ends) == 1);
    OK(torv_player_free(heard.player));

    options.device = "no such device";
    OK(torv_player_new(score, &options, &heard.player));
    CHECK_STATUS(torv_player_start(heard.player), TORV_NO_DEVICE);
    OK(torv_player_free(heard.player));
}

void test_playing(void) {
    torv_databases* const databases = open_databases();
    torv_song* const song = make_duet();
    torv_score* score = NULL;
    OK(torv_score_make(song, databases, NULL, &score));
    test_what_is_read(score);
    test_device(score);
    OK(torv_score_free(score));
    OK(torv_song_free(song));
    OK(torv_databases_free(databases));
}
