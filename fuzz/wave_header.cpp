// Any bytes as a wave file: opened, or refused by an exception; what opens is read to its end.
#include "torv/audio/wave_file.h"

#include <cstdio>
#include <string>

#ifndef _WIN32
#include <unistd.h>
#endif

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
#ifdef _WIN32
    const std::string path = "fuzz_wave_header.wav";
#else
    const std::string path = "fuzz_wave_header_" + std::to_string(getpid()) + ".wav";
#endif
    if (std::FILE* const file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    try {
        CWaveFile wave(path.c_str(), 256);
        DWORD left;
        DWORD right;
        for (int i = 0; i < 4096 && wave.ReadSample(left, right); ++i) {
        }
        float l;
        float r;
        wave.SetPrePostBlanks(3, 2);
        wave.SeekPlayPointer(0, 0);
        for (int i = 0; i < 4096 && wave.ReadSampleForPlay(l, r, 0); ++i) {
        }
        wave.AppendSample(1, 2);
        wave.Close();
    } catch (const CFileException&) {
        // refused
    } catch (const CMemoryException&) {
        // refused
    }
    std::remove(path.c_str());
    return 0;
}
