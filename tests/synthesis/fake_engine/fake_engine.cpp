#include "fake_engine.h"

#include <cstdlib>
#include <cstring>

/// An engine whose every sample can be told beforehand: a note-on sounds at 100 x its velocity from its very sample on,
/// a note-off leaves a release of 512 samples at 7. The option text asks for trouble:
/// "refuse" the static setting, "error N" in step N, "bad reset", "none": no samples, "flood": 500 more than fit,
/// "endless": never silent.

#if defined(_WIN32)
#define ENTRY extern "C" __declspec(dllexport)
#else
#define ENTRY extern "C" __attribute__((visibility("default")))
#endif

namespace {

constexpr int kMostInstances = 4;
constexpr long long kStep = 256;
constexpr long long kTimeBase = 44100;
constexpr long long kRelease = 512;

struct Instance {
    bool used;
    long long silentAt = -1;
    long long rate = 0;
    long long clock = 0; // of the engine's time base
    char option[64] = "";
    int steps = 0;
    short level = 0;
};

Instance g_instances[kMostInstances];
FakeLog g_log;

bool Is(const Instance& instance, const char* option) { return std::strcmp(instance.option, option) == 0; }

/// What follows the word, -1 without it.
int Number(const Instance& instance, const char* word) {
    const size_t length = std::strlen(word);
    return std::strncmp(instance.option, word, length) == 0 ? std::atoi(instance.option + length) : -1;
}

void Hear(Instance& instance, const RVEEvent& event, long long now) {
    if (event.status == 0x90) {
        instance.level = static_cast<short>(event.data2 * 100);
        instance.silentAt = -1;
    } else if (event.status == 0x80) {
        instance.level = 7;
        instance.silentAt = now + kRelease;
    }
}

} // namespace

ENTRY FakeLog* RVE_CALL FakeEngineLog() { return &g_log; }

ENTRY int32_t RVE_CALL RVECreate() {
    for (int handle = 0; handle < kMostInstances; ++handle)
        if (!g_instances[handle].used) {
            g_instances[handle] = {true};
            ++g_log.live;
            return handle;
        }
    return -1;
}

ENTRY int32_t RVE_CALL RVEDelete(int32_t handle) {
    g_instances[handle].used = false;
    --g_log.live;
    return 0;
}

ENTRY int32_t RVE_CALL RVESetStaticSetting(int32_t handle, RVEStaticSetting setting) {
    Instance& instance = g_instances[handle];
    instance.rate = setting.sampleRate;
    std::strncpy(instance.option, setting.option, sizeof instance.option - 1);
    g_log.setting = setting;
    std::memcpy(g_log.option, instance.option, sizeof g_log.option);
    return Is(instance, "refuse") ? 1 : 0;
}

ENTRY int32_t RVE_CALL RVESetDynamicSetting(int32_t, const void*) { return 0; }

ENTRY int32_t RVE_CALL RVEStart(int32_t) { return ++g_log.starts; }
ENTRY int32_t RVE_CALL RVEStop(int32_t) { return ++g_log.stops; }

#if !defined(FAKE_WITHOUT_RESET)
ENTRY int32_t RVE_CALL RVEReset(int32_t handle) {
    Instance& instance = g_instances[handle];
    instance.clock = 0;
    instance.level = 0;
    instance.silentAt = -1;
    ++g_log.resets;
    return Is(instance, "bad reset") ? 78 : 0;
}
#endif

ENTRY int32_t RVE_CALL RVEDoStepSynthesis(int32_t handle, int32_t count, const RVEEvent* events,
                                          RVEStepOutput* output) {
    Instance& instance = g_instances[handle];
    ++g_log.steps;
    if (g_log.stepHook)
        g_log.stepHook();
    if (instance.steps++ == Number(instance, "error "))
        return 77;

    const long long first = instance.clock * instance.rate / kTimeBase;
    const long long end = (instance.clock + kStep) * instance.rate / kTimeBase;
    uint32_t samples = Is(instance, "none") ? 0 : static_cast<uint32_t>(end - first);
    if (Is(instance, "flood"))
        samples = output->count + 500;
    int next = 0;
    for (uint32_t i = 0; i < samples; ++i) {
        const long long now = instance.clock + i * kTimeBase / instance.rate;
        for (; next < count && instance.clock + events[next].delta <= now; ++next)
            Hear(instance, events[next], now);
        if (now == instance.silentAt)
            instance.level = 0;
        output->samples[i] = Is(instance, "endless") ? short{5} : instance.level;
    }
    output->count = samples;
    instance.clock += kStep;
    return 0;
}
