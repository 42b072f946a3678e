/* Singing into memory, by blocks and into a file; mixing; who ends what, and from where. */
#include "check.h"

#include <math.h>

struct gathered {
    float* samples;
    size_t count;
    size_t most; /* frames after which it cancels */
    torv_score* score;
};

static int gather(const float* samples, size_t frames, uint32_t channels, void* user) {
    struct gathered* const all = user;
    const size_t count = frames * channels;
    all->samples = realloc(all->samples, (all->count + count) * sizeof(float));
    memcpy(all->samples + all->count, samples, count * sizeof(float));
    all->count += count;
    CHECK_STATUS(torv_score_free(all->score), TORV_BUSY); /* from inside its own callback */
    return all->count > all->most;
}

static int cancel_half_way(double done, void* user) {
    *(double*)user = done;
    return done > 0.1;
}

static void test_blocks_are_the_memory(torv_score* score) {
    struct gathered all = {NULL, 0, SIZE_MAX, score};
    torv_sing_options options = {sizeof options, 48000, 2, 500, 2500, 0, NULL, NULL};
    torv_sound* sound = NULL;
    torv_sound_info info = {sizeof info, 0, 0, 0, 0};
    const float* samples = NULL;
    OK(torv_sing(score, &options, &sound));
    OK(torv_sound_get_info(sound, &info));
    CHECK(info.rate == 48000);
    CHECK(info.frames == 96000); /* two seconds */
    CHECK(info.peak > 0.01F);
    OK(torv_sound_get_samples(sound, &samples));
    OK(torv_sing_blocks(score, &options, gather, &all));
    CHECK(all.count == 2 * 96000);
    CHECK(memcmp(all.samples, samples, all.count * sizeof(float)) == 0);
    all.count = 0;
    all.most = 50000;
    CHECK_STATUS(torv_sing_blocks(score, &options, gather, &all), TORV_CANCELLED);
    free(all.samples);
    OK(torv_sound_free(sound));
}

static void test_cancelled_file_leaves_the_old_one(torv_score* score) {
    static const char kPath[] = "c_test_old.wav";
    double done = 0;
    torv_sing_options options = {sizeof options, 0, 0, 0, 0, 0, cancel_half_way, &done};
    char held[4] = "";
    FILE* file = fopen(kPath, "wb");
    fwrite("old", 1, 3, file);
    fclose(file);
    CHECK_STATUS(torv_sing_file(score, &options, kPath, NULL), TORV_CANCELLED);
    CHECK(done > 0.1);
    file = fopen(kPath, "rb");
    CHECK(fread(held, 1, 4, file) == 3);
    fclose(file);
    CHECK(strcmp(held, "old") == 0);
    remove(kPath);
}

static void test_mix(void) {
    const float left[] = {0.5F, 0.25F};
    const float both[] = {0.1F, -0.1F};
    torv_sound* mono = NULL;
    torv_sound* stereo = NULL;
    torv_sound* other = NULL;
    torv_sound* mix = NULL;
    torv_sound_info info = {sizeof info, 0, 0, 0, 0};
    const float* samples = NULL;
    torv_mix_track tracks[2];
    memset(tracks, 0, sizeof tracks);
    OK(torv_sound_new(8000, 1, left, 2, &mono));
    OK(torv_sound_new(8000, 2, both, 1, &stereo));
    OK(torv_sound_new(44100, 1, left, 2, &other));
    tracks[0].size = tracks[1].size = sizeof tracks[0];
    tracks[0].sound = mono;
    tracks[0].pan = -1;
    tracks[1].sound = stereo;
    tracks[1].start = 2;
    tracks[1].level = -20;
    OK(torv_mix(tracks, 2, &mix));
    OK(torv_sound_get_info(mix, &info));
    OK(torv_sound_get_samples(mix, &samples));
    CHECK(info.frames == 3);
    CHECK(samples[0] == 1.0F); /* a hard pan doubles its side */
    CHECK(samples[1] == 0.0F);
    CHECK(fabsf(samples[5] + 0.01F) < 1e-6F); /* -20 dB is a tenth */
    tracks[1].sound = other;
    OK(torv_sound_free(mix));
    CHECK_STATUS(torv_mix(tracks, 2, &mix), TORV_BAD_ARGUMENT);
    tracks[1].sound = mono; /* one sound in two tracks */
    OK(torv_mix(tracks, 2, &mix));
    OK(torv_sound_free(mix));
    OK(torv_sound_free(mono));
    OK(torv_sound_free(stereo));
    OK(torv_sound_free(other));
}

/* Saved and read again: 16 bits of it. */
static void test_wave_file(void) {
    const float samples[] = {0.5F, -0.25F, 2.0F, 0.0F};
    torv_sound* sound = NULL;
    torv_sound* back = NULL;
    torv_saved saved = {sizeof saved, 0, 0};
    const float* read = NULL;
    OK(torv_sound_new(22050, 2, samples, 2, &sound));
#if !defined(_WIN32) /* whose code page may lack the letter */
    static const char kPath[] = "c_test \xE6\xAD\x8C.wav";
    OK(torv_sound_save(sound, kPath, 0, &saved));
    CHECK(saved.clipped == 1);
    OK(torv_sound_open(kPath, &back));
    OK(torv_sound_get_samples(back, &read));
    CHECK(read[0] == 0.5F);
    CHECK(read[1] == -0.25F);
    CHECK(read[2] == 32767.0F / 32768.0F);
    OK(torv_sound_free(back));
    remove(kPath);
#endif
    OK(torv_sound_save(sound, "c_test.wav", 1, &saved));
    CHECK(saved.clipped == 0);
    CHECK(fabs(saved.lowered - 6.02) < 0.01); /* 2.0 comes to 1.0 */
    OK(torv_sound_open("c_test.wav", &back));
    OK(torv_sound_get_samples(back, &read));
    CHECK(fabsf(read[0] - 0.25F) < 1e-4F);
    OK(torv_sound_free(back));
    remove("c_test.wav");
    CHECK_STATUS(torv_sound_save(sound, "no such folder/c_test.wav", 0, NULL), TORV_FILE_ERROR);
    OK(torv_sound_free(sound));
}

/* What is heard is what stands in the score: the pitch of the first long note, within a semitone's half. */
static void test_measured_pitch(torv_score* score) {
    torv_sing_options options = {sizeof options, 0, 0, 0, 7500, 1, NULL, NULL};
    torv_score_note note = {sizeof note, 0, 0, 0, 0, 0, 0, 0};
    torv_sound* sound = NULL;
    torv_heard* heard = NULL;
    size_t count = 0;
    OK(torv_sing(score, &options, &sound));
    OK(torv_sound_measure(sound, score, 0, NULL, 0, &count));
    CHECK(count > 100);
    heard = calloc(count, sizeof *heard);
    OK(torv_sound_measure(sound, score, 0, heard, count, &count));
    OK(torv_score_get_note(score, 0, 6, &note));
    const size_t middle = (size_t)((note.start + note.end) / 2 / 0.02);
    CHECK(fabsf(heard[middle].pitch - (float)note.key) < 0.5F);
    free(heard);
    OK(torv_sound_free(sound));
}

void test_singing(void) {
    torv_databases* const databases = open_databases();
    torv_databases* second = NULL;
    torv_song* const duet = make_duet();
    torv_song* const twinkle = open_example("twinkle.mid");
    torv_score* two = NULL;
    torv_score* one = NULL;
    OK(torv_score_make(duet, databases, NULL, &two));
    OK(torv_score_make(twinkle, databases, NULL, &one));
    OK(torv_song_free(duet));
    OK(torv_song_free(twinkle));

    CHECK_STATUS(torv_databases_open(&second), TORV_BUSY);
    OK(torv_databases_free(databases));
    CHECK_STATUS(torv_databases_open(&second), TORV_BUSY); /* the scores keep them open */

    test_blocks_are_the_memory(two);
    test_cancelled_file_leaves_the_old_one(one);
    test_measured_pitch(one);
    OK(torv_score_free(two));
    OK(torv_score_free(one));
    OK(torv_databases_open(&second));
    OK(torv_databases_free(second));
    test_mix();
    test_wave_file();
}
