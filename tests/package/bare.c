#include <torv/c/torv.h>

/* A host of a compiler whose runtime is not here: it has the interface alone. Its exit status is the first failure. */
int sing(void) {
    torv_song* song = NULL;
    torv_databases* databases = NULL;
    torv_score* score = NULL;
    torv_status status = torv_song_open("doc/examples/twinkle.mid", NULL, &song);
    if (status == TORV_OK)
        status = torv_databases_open(&databases);
    if (status == TORV_OK)
        status = torv_score_make(song, databases, NULL, &score);
    if (status == TORV_OK)
        status = torv_sing_file(score, NULL, "bare.wav", NULL);
    torv_score_free(score);
    torv_databases_free(databases);
    torv_song_free(song);
    return (int)status;
}
