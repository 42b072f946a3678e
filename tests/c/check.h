#ifndef TORV_TESTS_C_CHECK_H
#define TORV_TESTS_C_CHECK_H

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <torv/c/torv.h>

/* What a test needs in C: a count of what failed, and lines that say so. */
extern int g_failures;

#define CHECK(condition)                                                                                               \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            printf("%s:%d: %s\n", __FILE__, __LINE__, #condition);                                                     \
            ++g_failures;                                                                                              \
        }                                                                                                              \
    } while (0)

#define CHECK_STATUS(call, wanted)                                                                                     \
    do {                                                                                                               \
        const torv_status got_ = (call);                                                                               \
        if (got_ != (wanted)) {                                                                                        \
            printf("%s:%d: %s: %s (%s)\n", __FILE__, __LINE__, #call, torv_status_name(got_), torv_error_text());      \
            ++g_failures;                                                                                              \
        }                                                                                                              \
    } while (0)
#define OK(call) CHECK_STATUS(call, TORV_OK)

/* The songs that a test may use: a folder of examples. */
extern const char* g_examples;
torv_song* open_example(const char* name);
/* Two parts, "Soprano" and "Bass", of five notes each: three seconds. */
torv_song* make_duet(void);
torv_databases* open_databases(void);

void test_editing(void);
void test_singing(void);
void test_playing(void);
void test_misuse(void);

#endif
