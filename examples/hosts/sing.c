/* Sings a song into a wave file and says who sings what.    sing SONG WAVE */
#include <stdio.h>
#include <torv/c/torv.h>

static int fail(const char* what) {
    fprintf(stderr, "%s: %s\n", what, torv_error_text());
    return 1;
}

static int show_progress(double done, void* user) {
    (void)user;
    fprintf(stderr, "\r%3.0f %%", 100 * done);
    return 0; /* anything else cancels */
}

int main(int count, char** arguments) {
    torv_song* song = NULL;
    torv_databases* databases = NULL;
    torv_score* score = NULL;
    if (count != 3)
        return fprintf(stderr, "sing SONG WAVE\n"), 2;
    if (torv_song_open(arguments[1], NULL, &song) != TORV_OK)
        return fail("the song");
    if (torv_databases_open(&databases) != TORV_OK)
        return fail("the voices");
    if (torv_score_make(song, databases, NULL, &score) != TORV_OK)
        return fail("the score");

    torv_score_info info = {.size = sizeof info};
    torv_score_get_info(score, &info);
    for (size_t i = 0; i < info.parts; ++i) {
        torv_score_part part = {.size = sizeof part};
        char voice[64] = "", syllables[64] = "", phonemes[64] = "";
        torv_score_get_part(score, i, &part, voice, sizeof voice, NULL);
        torv_score_get_syllables(score, i, 0, syllables, sizeof syllables, NULL);
        torv_score_get_phonemes(score, i, 0, phonemes, sizeof phonemes, NULL);
        printf("%s sings %u notes, the first one \"%s\": %s\n", voice, part.notes, syllables, phonemes);
    }

    torv_sing_options options = {.size = sizeof options, .progress = show_progress};
    torv_saved saved = {.size = sizeof saved};
    if (torv_sing_file(score, &options, arguments[2], &saved) != TORV_OK)
        return fail("singing");
    fprintf(stderr, "\n");

    torv_score_free(score);
    torv_databases_free(databases);
    torv_song_free(song);
    return 0;
}
