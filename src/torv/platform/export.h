#pragma once

/// TORV_API marks what the library exports; everything else stays hidden. Programs that hold the library's objects
/// themselves (the tests) define TORV_STATIC.
#if defined(_WIN32)
#if defined(TORV_STATIC)
#define TORV_API
#elif defined(TORV_BUILDING)
#define TORV_API __declspec(dllexport)
#else
#define TORV_API __declspec(dllimport)
#endif
#else
#define TORV_API __attribute__((visibility("default")))
#endif
