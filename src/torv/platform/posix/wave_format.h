#pragma once

#include "torv/platform/posix/types.h"

constexpr WORD WAVE_FORMAT_PCM = 1;
constexpr WORD WAVE_FORMAT_IEEE_FLOAT = 3;

#pragma pack(push, 1)
struct WAVEFORMATEX {
    WORD wFormatTag;
    WORD nChannels;
    DWORD nSamplesPerSec;
    DWORD nAvgBytesPerSec;
    WORD nBlockAlign;
    WORD wBitsPerSample;
    WORD cbSize;
};
#pragma pack(pop)
using LPWAVEFORMATEX = WAVEFORMATEX*;
using LPCWAVEFORMATEX = const WAVEFORMATEX*;
static_assert(sizeof(WAVEFORMATEX) == 18, "eighteen bytes, as on Windows");

/// A block of samples on its way to a device or from it.
struct WAVEHDR {
    LPSTR lpData;
    DWORD dwBufferLength;  ///< bytes
    DWORD dwBytesRecorded; ///< of a recording
    DWORD_PTR dwUser;      ///< the caller's own
    DWORD dwFlags;         ///< WHDR_...
    DWORD dwLoops;
    WAVEHDR* lpNext;    ///< the device's own
    DWORD_PTR reserved; ///< the device's own
};
using LPWAVEHDR = WAVEHDR*;
static_assert(sizeof(void*) != 4 || (offsetof(WAVEHDR, dwFlags) == 16 && sizeof(WAVEHDR) == 32));
static_assert(sizeof(void*) != 8 || (offsetof(WAVEHDR, dwFlags) == 24 && sizeof(WAVEHDR) == 48));

constexpr DWORD WHDR_DONE = 0x01; ///< back from the device
constexpr DWORD WHDR_PREPARED = 0x02;
constexpr DWORD WHDR_BEGINLOOP = 0x04;
constexpr DWORD WHDR_ENDLOOP = 0x08;
constexpr DWORD WHDR_INQUEUE = 0x10; ///< at the device
