#pragma once

#include "torv/platform/posix/types.h"

constexpr WORD WAVE_FORMAT_PCM = 1;

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
static_assert(sizeof(WAVEFORMATEX) == 18, "eighteen bytes, as on Windows");
