#include "check.h"

int g_failures = 0;
const char* g_examples = ".";

torv_song* open_example(const char* name) {
    char path[1024];
    torv_song* song = NULL;
    snprintf(path, sizeof path, "%s/%s", g_examples, name);
    OK(torv_song_open(path, NULL, &song));
    return song;
}

torv_song* make_duet(void) {
    static const char* const kWords[] = {"so", "fa", "la", "mi", "do"};
    torv_song* song = NULL;
    OK(torv_song_new(&song));
    for (uint32_t i = 0; i < 10; ++i) {
        const size_t part = i / 5;
        const torv_note note = {
            sizeof note, i % 5 * 480, i % 5 < 4 ? 480 : 960, (part ? 48 : 67) + (int32_t)i % 3, 80, 0, 0};
        const torv_word word = {sizeof word, 1, 0};
        size_t index = 0;
        if (i % 5 == 0)
            OK(torv_part_add(song, part ? "Bass" : "Soprano", NULL));
        OK(torv_note_add(song, part, &note, &index));
        OK(torv_word_add(song, part, index, &word, kWords[i % 5], NULL));
    }
    return song;
}

torv_databases* open_databases(void) {
    torv_databases* databases = NULL;
    OK(torv_databases_open(&databases));
    return databases;
}

int main(int count, char** arguments) {
    if (count > 1)
        g_examples = arguments[1];
    test_editing();
    test_singing();
    test_playing();
    test_misuse();
    printf("%d failures\n", g_failures);
    return g_failures != 0;
}
