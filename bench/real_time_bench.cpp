// What one block of 256 frames costs on its way from an engine to the device: written into a track's ring, mixed out of
// sixteen rings, told to the host. Beside the mix, a plain copy of as many bytes as it reads and writes.
#include "torv/synthesis/rt_synthesis.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace {

constexpr int kTracks = 16;
constexpr DWORD kFrames = 256;
constexpr DWORD kBlockBytes = kFrames * 4;
constexpr DWORD kBufferBlocks = 17; // 100 ms

int32_t RVE_CALL Handle() {
    static int32_t next = 0;
    return next++;
}
int32_t RVE_CALL Set(int32_t, RVEStaticSetting) { return 0; }
int32_t RVE_CALL Nothing(int32_t) { return 0; }

/// A driver with rings, without threads and without a voice engine.
struct Rings : CRtSynthesis {
    Rings() {
        if (!OpenSynthesizer())
            return;
        m_pLibrary->Create = &Handle;
        m_pLibrary->SetStaticSetting = &Set;
        m_pLibrary->Delete = &Nothing;
        RTS_SetSynthesisParam(1, kTracks, 0, 44100, 0, 0);
        isReady = RTS_CreateRVE() != 0;
        RTS_SetMasterPlayParam();
        for (int i = 0; i < kTracks && isReady; ++i) {
            RTS_SetTrackVolume(i, 1.0 / kTracks);
            RTS_SetTrackPanpot(i, i / 8.0 - 1.0);
            std::memset(RTS_GetOutBuffer(i)->samples, i + 1, kBlockBytes * torv::kRingBlocks);
        }
    }
    void Empty() { Ring()->Restart(); }

    bool isReady = false;
};

bool IsReady(benchmark::State& state, const Rings& rings) {
    if (!rings.isReady)
        state.SkipWithError("the voice engine RVE is not beside this program");
    return rings.isReady;
}

void AppendBlock(benchmark::State& state) {
    Rings rings;
    if (!IsReady(state, rings))
        return;
    const std::vector<short> samples(kFrames, 1000);
    for ([[maybe_unused]] auto _ : state) {
        rings.RTS_AppendSample(kTracks - 1, samples.data(), kFrames, 0);
        rings.Empty();
    }
}

void MixSixteenBlocks(benchmark::State& state) {
    Rings rings;
    if (!IsReady(state, rings))
        return;
    std::vector<BYTE> out(kBufferBlocks * kBlockBytes);
    DWORD block = 0;
    for ([[maybe_unused]] auto _ : state) {
        std::memset(out.data(), 0, out.size());
        for (int i = 0; i < kTracks; ++i)
            rings.RTS_WaveDataTrackMix(i, out.data(), static_cast<DWORD>(out.size()), block * kBlockBytes);
        benchmark::DoNotOptimize(out.data());
        block = (block + kBufferBlocks) % torv::kRingBlocks;
    }
    state.counters["us/block"] = benchmark::Counter(kBufferBlocks / 1e6, benchmark::Counter::kIsIterationInvariantRate |
                                                                             benchmark::Counter::kInvert);
    state.counters["bytes/s"] =
        benchmark::Counter(static_cast<double>(out.size()) * kTracks, benchmark::Counter::kIsIterationInvariantRate);
}

void CopySixteenBlocks(benchmark::State& state) {
    const size_t ring = static_cast<size_t>(kBlockBytes) * torv::kRingBlocks;
    std::vector<BYTE> rings(ring * kTracks, 1);
    std::vector<BYTE> out(kBufferBlocks * kBlockBytes);
    size_t block = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (size_t i = 0; i < kTracks; ++i) {
            std::memcpy(out.data(), rings.data() + i * ring + block % (torv::kRingBlocks - kBufferBlocks) * kBlockBytes,
                        out.size());
            benchmark::DoNotOptimize(out.data());
        }
        block += kBufferBlocks;
    }
    state.counters["bytes/s"] =
        benchmark::Counter(static_cast<double>(out.size()) * kTracks, benchmark::Counter::kIsIterationInvariantRate);
}

void Notify(benchmark::State& state) {
    CRtSynthesis driver;
    driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 0, 0);
    CWnd window(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
    driver.SetPlayParameters("", &window, WM_USER + 1, 1, 44100, 0);
    LONGLONG sample = 0;
    for ([[maybe_unused]] auto _ : state) {
        driver.PostMessageToMsgDestination(WM_USER + 1, 1, sample += kFrames);
        MSG message;
        PeekMessageA(&message, window.m_hWnd, 0, 0, PM_REMOVE);
    }
    DestroyWindow(window.m_hWnd);
}

BENCHMARK(AppendBlock);
BENCHMARK(MixSixteenBlocks);
BENCHMARK(CopySixteenBlocks);
BENCHMARK(Notify);

} // namespace
