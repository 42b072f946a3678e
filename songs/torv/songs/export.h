#pragma once

/// TORV_SONGS_API marks what the library of songs exports; everything else stays hidden. Programs that hold its objects
/// themselves define TORV_SONGS_STATIC.
#if defined(_WIN32)
#if defined(TORV_SONGS_STATIC)
#define TORV_SONGS_API
#elif defined(TORV_SONGS_BUILDING)
#define TORV_SONGS_API __declspec(dllexport)
#else
#define TORV_SONGS_API __declspec(dllimport)
#endif
#else
#define TORV_SONGS_API __attribute__((visibility("default")))
#endif
