// The eight entry points over a table of instances. Creating and deleting take a lock; stepping does not.
#include "singer.h"
#include "torv/abi/rve.h"

#include <array>
#include <atomic>
#include <mutex>
#include <new>
#include <string_view>

#if defined(_WIN32)
#define RVE_EXPORT extern "C" __declspec(dllexport)
#else
#define RVE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

enum Error : int32_t {
    kNone = 0,
    kNoInstance = -1,
    kCannotCreate = -2,
    kBadSetting = -3,
    kNotConfigured = -4,
    kNoOutput = -5
};

constexpr int32_t kMostInstances = 4096;
constexpr uint32_t kFrameSize = 256;
constexpr std::string_view kStill = "still"; // the option text for what measures

std::array<std::atomic<rve::Singer*>, kMostInstances> g_singers{};
std::mutex g_table;

rve::Singer* SingerOf(int32_t handle) {
    return handle >= 0 && handle < kMostInstances
               ? g_singers[static_cast<size_t>(handle)].load(std::memory_order_acquire)
               : nullptr;
}

} // namespace

RVE_EXPORT int32_t RVE_CALL RVECreate(void) {
    const std::lock_guard lock(g_table);
    for (int32_t handle = 0; handle < kMostInstances; ++handle) {
        std::atomic<rve::Singer*>& place = g_singers[static_cast<size_t>(handle)];
        if (place.load(std::memory_order_relaxed))
            continue;
        auto* const singer = new (std::nothrow) rve::Singer;
        place.store(singer, std::memory_order_release);
        return singer ? handle : kCannotCreate;
    }
    return kCannotCreate;
}

RVE_EXPORT int32_t RVE_CALL RVESetStaticSetting(int32_t handle, RVEStaticSetting setting) {
    rve::Singer* const singer = SingerOf(handle);
    if (!singer)
        return kNoInstance;
    const bool isStill = setting.option && setting.option == kStill;
    return setting.frameSize == kFrameSize && singer->Configure(setting.sampleRate, isStill) ? kNone : kBadSetting;
}

RVE_EXPORT int32_t RVE_CALL RVESetDynamicSetting(int32_t handle, const void*) {
    return SingerOf(handle) ? kNone : kNoInstance;
}

RVE_EXPORT int32_t RVE_CALL RVEReset(int32_t handle) {
    rve::Singer* const singer = SingerOf(handle);
    if (!singer)
        return kNoInstance;
    singer->Reset();
    return kNone;
}

RVE_EXPORT int32_t RVE_CALL RVEStart(int32_t handle) { return RVEReset(handle); }
RVE_EXPORT int32_t RVE_CALL RVEStop(int32_t handle) { return RVEReset(handle); }

RVE_EXPORT int32_t RVE_CALL RVEDelete(int32_t handle) {
    const std::lock_guard lock(g_table);
    rve::Singer* const singer = SingerOf(handle);
    if (!singer)
        return kNoInstance;
    g_singers[static_cast<size_t>(handle)].store(nullptr, std::memory_order_release);
    delete singer;
    return kNone;
}

RVE_EXPORT int32_t RVE_CALL RVEDoStepSynthesis(int32_t handle, int32_t count, const RVEEvent* events,
                                               RVEStepOutput* output) {
    rve::Singer* const singer = SingerOf(handle);
    if (!singer)
        return kNoInstance;
    if (!singer->IsConfigured())
        return kNotConfigured;
    if (!output || (!output->samples && output->count > 0))
        return kNoOutput;
    output->count = singer->Step(events ? count : 0, events, output->samples, output->count);
    return kNone;
}
