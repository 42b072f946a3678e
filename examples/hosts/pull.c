/* Plays the first seconds of a song as an audio callback would, and shows how loud it is.    pull SONG */
#include <math.h>
#include <stdio.h>
#include <torv/c/torv.h>
#if defined(_WIN32)
#include <windows.h>
static void await_tenth(void) { Sleep(100); }
#else
#include <threads.h>
static void await_tenth(void) { thrd_sleep(&(struct timespec){.tv_nsec = 100000000}, NULL); }
#endif

enum { kFrames = 4410 }; /* a tenth of a second */

/* What a sound card asks for: always all frames, silence where nothing plays. */
static void audio_callback(float* out, size_t frames, void* user) { torv_player_read(user, out, frames); }

int main(int count, char** arguments) {
    static float block[2 * kFrames];
    torv_song* song = NULL;
    torv_databases* databases = NULL;
    torv_score* score = NULL;
    torv_player* player = NULL;
    torv_player_options options = {.size = sizeof options, .pull = 1};
    if (count != 2 || torv_song_open(arguments[1], NULL, &song) != TORV_OK ||
        torv_databases_open(&databases) != TORV_OK || torv_score_make(song, databases, NULL, &score) != TORV_OK ||
        torv_player_new(score, &options, &player) != TORV_OK)
        return fprintf(stderr, "pull: %s\n", torv_error_text()), 1;

    torv_player_start(player);
    torv_player_state state = {.size = sizeof state};
    for (; state.position < 3500 && !state.ended && !state.failed;
         await_tenth()) { /* as a card that plays what it gets */
        audio_callback(block, kFrames, player);
        torv_player_get_state(player, &state);
        float peak = 0;
        for (size_t i = 0; i < 2 * kFrames; ++i)
            peak = fmaxf(peak, fabsf(block[i]));
        printf("%4u ms  %.3f\n", state.position, peak);
    }

    torv_player_free(player);
    torv_score_free(score);
    torv_databases_free(databases);
    torv_song_free(song);
    return 0;
}
