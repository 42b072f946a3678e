#pragma once

#include "analysis.h"
#include "companions/rve/engine_text.h"
#include "singer.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

/// What an instance makes of a stream that arrives at once, -1..1.
inline std::vector<double> Sing(const Stream& stream, double seconds = 0.8, uint32_t rate = 44100,
                                bool isStill = false) {
    const auto singer = std::make_unique<rve::Singer>();
    singer->Configure(rate, isStill);
    std::vector<double> sound;
    const auto steps = static_cast<int>(seconds * 44100 / 256);
    for (int i = 0; i < steps; ++i) {
        int16_t samples[558];
        const uint32_t count =
            singer->Step(i ? 0 : static_cast<int32_t>(stream.Events().size()), stream.Events().data(), samples, 558);
        for (uint32_t k = 0; k < count; ++k)
            sound.push_back(samples[k] / 32768.0);
    }
    return sound;
}
