#pragma once

#include "audio/wave_test_files.h"
#include "torv/audio/quill_audio.h"

#include <doctest/doctest.h>

/// A file, and its content as text.
struct Scratch : ScratchPath {
    explicit Scratch(const std::string& bytes = "") {
        if (!bytes.empty())
            Put(bytes);
    }
    void Put(const std::string& bytes) const { Write(Bytes(bytes.begin(), bytes.end())); }
    std::string Get() const {
        const Bytes bytes = Content();
        return {bytes.begin(), bytes.end()};
    }
};

/// A buffer in memory.
struct Held : CWaveBuffer {
    Held(int channels, int bits, const std::string& bytes, DWORD rate = 44100) {
        CHECK(Create(1000) == 1);
        SetWaveInfo(channels, bits, rate);
        AddSample(bytes.data(), static_cast<DWORD>(bytes.size()) / GetSampleUnitSize());
        CHECK(GetSize() == bytes.size());
    }
};
