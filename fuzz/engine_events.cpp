// Any events in any steps: the engine goes on, stays within its room and within full scale, and falls silent on a
// reset.
#include "singer.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto singer = std::make_unique<rve::Singer>();
    constexpr uint32_t kRates[] = {44100, 48000, 96000};
    singer->Configure(kRates[size % 3]);
    constexpr size_t kRecord = 4;
    std::vector<RVEEvent> events;
    for (size_t i = 0; i + kRecord <= size; i += kRecord) {
        events.push_back({data[i], data[i + 1], data[i + 2], data[i + 3], 0});
        if ((data[i] & 7) != 0 && i + 2 * kRecord <= size)
            continue;
        int16_t samples[558];
        samples[557] = 0x1234;
        const uint32_t count = singer->Step(static_cast<int32_t>(events.size()), events.data(), samples, 557);
        if (count > 557 || samples[557] != 0x1234)
            std::abort();
        events.clear();
    }
    singer->Reset();
    int16_t samples[558];
    const uint32_t count = singer->Step(0, nullptr, samples, 558);
    for (uint32_t i = 0; i < count; ++i)
        if (samples[i] != 0)
            std::abort();
    return 0;
}
