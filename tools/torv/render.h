#pragma once

#include <torv/songs/score_builder.h>

#include <functional>
#include <string>

struct RenderOptions {
    DWORD rate = 44100;   ///< Hz
    DWORD presend = 2000; ///< milliseconds
    double volume = 1.0;  ///< linear
    double pan = 0.0;     ///< -1 left .. 1 right
    bool stereo = false;
};

struct RenderResult {
    double seconds = 0;       ///< length of the wave
    size_t clippedFrames = 0; ///< cut at full scale
};

/// Encodes the score's track, has the engine sing it and writes the wave without the score's lead, so that its time 0
/// is the file's. Throws InputError; then `path` is as it was.
RenderResult Render(const torv::songs::Score& score, const std::string& path, const RenderOptions& options,
                    const std::function<void(double done, double total)>& progress);
