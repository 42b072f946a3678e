// Sixteen tracks of the reference engine in real time on the paced null device: real_time_load [MINUTES] [TRACKS]
// [PROGRAM], whose voices are program 0, synthetic, or 96 and on, people. Reports the processor's use, the longest step
// of one engine, how far the synthesis was ahead at the least, and whether the device ever ran dry.
#include "bench_song.h"

#include "torv/encoding/quill_midi_encoder.h"
#include "torv/synthesis/rt_synthesis.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <sys/resource.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr UINT kMessage = WM_USER + 1;
constexpr WORD kPosition = 1;
constexpr WORD kEnd = 2;
constexpr DWORD kPresend = 2000; // milliseconds
constexpr DWORD kNotesAMinute = 240;
constexpr auto kSettled = std::chrono::seconds(2); ///< the output begins with just what it needs

RVEDoStepSynthesisProc g_step = nullptr;
std::atomic<long long> g_longest = 0; // nanoseconds
std::atomic<long long> g_total = 0;
std::atomic<long long> g_steps = 0;

int32_t RVE_CALL TimedStep(int32_t handle, int32_t count, const RVEEvent* events, RVEStepOutput* output) {
    const auto begin = Clock::now();
    const int32_t result = g_step(handle, count, events, output);
    const long long took = (Clock::now() - begin).count();
    g_longest = std::max(g_longest.load(), took);
    g_total += took;
    ++g_steps;
    return result;
}

struct Driver : CRtSynthesis {
    bool Open() {
        if (!OpenSynthesizer())
            return false;
        g_step = m_pLibrary->DoStepSynthesis;
        m_pLibrary->DoStepSynthesis = &TimedStep;
        return true;
    }
    bool IsAhead() const { return m_state.IsSynthesizing() && m_state.HasOutputStarted(); }
    DWORD Buffered() const {
        const auto ring = Ring();
        return ring ? ring->Buffered() : 0;
    }
};

double ProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) { return static_cast<double>(time.tv_sec) + time.tv_usec * 1e-6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::unique_ptr<CQuillMidiBuffer> MakeStream(CSequence& song) {
    const std::unique_ptr<tagSequenceTimeMap[]> map(CxQuillMidiEncoder::CreateSequenceTimeMap(song.GetMasterTrack()));
    tagQuillMidiEncodeStruct encode{song.GetHeadObject(), map.get()};
    CxQuillMidiEncoder encoder;
    encoder.SetPresendTime(kPresend);
    return std::unique_ptr<CQuillMidiBuffer>(encoder.EncodeSequenceTrack(&encode));
}

} // namespace

int main(int argc, char** argv) {
    const double minutes = argc > 1 ? std::atof(argv[1]) : 10.0;
    const int tracks = argc > 2 ? std::atoi(argv[2]) : 16;
    const int program = argc > 3 ? std::atoi(argv[3]) : 0;
    const auto song = bench::MakeSong(std::max<DWORD>(static_cast<DWORD>(minutes * kNotesAMinute), 1000), program);
    std::vector<std::unique_ptr<CQuillMidiBuffer>> streams;
    Driver driver;
    if (!driver.Open()) {
        std::fprintf(stderr, "real_time_load: the voice engine RVE is not beside this program\n");
        return 1;
    }
    CWnd window(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
    driver.SetPlayParameters("Null Output", &window, kMessage, kPosition, 44100, 0);
    driver.SetPlayEndNortify(kEnd);
    driver.RTS_SetSynthesisParam(1, tracks, 0, 44100, kPresend, 1);
    for (int i = 0; i < tracks; ++i) {
        streams.push_back(MakeStream(*song));
        driver.RTS_SetQuillMidiBuffer(i, streams.back().get());
    }
    const auto length = static_cast<DWORD>(minutes * 60000);
    driver.RTS_SetPlayParam(0, length, 0, 0);
    const double processorBegin = ProcessorSeconds();
    if (!driver.RTS_DoSynthesis() || !driver.RTS_Play()) {
        std::fprintf(stderr, "real_time_load: cannot play\n");
        return 1;
    }
    driver.SetMasterVolume(1.0 / tracks);

    Clock::time_point begin{};
    Clock::time_point last{};
    double longestTurn = 0; // milliseconds between two positions
    DWORD least = torv::kRingBlocks;
    for (bool isOver = false; !isOver; Sleep(1)) {
        if (driver.IsAhead() && begin != Clock::time_point() && Clock::now() - begin > kSettled)
            least = std::min(least, driver.Buffered());
        MSG message;
        while (PeekMessageA(&message, window.m_hWnd, kMessage, kMessage, PM_REMOVE)) {
            isOver = isOver || message.wParam == kEnd;
            if (message.wParam != kPosition || message.lParam == 0)
                continue;
            const auto now = Clock::now();
            if (begin == Clock::time_point())
                begin = now - std::chrono::milliseconds(message.lParam);
            else
                longestTurn = std::max(longestTurn, std::chrono::duration<double, std::milli>(now - last).count());
            last = now;
        }
    }
    const double wall = std::chrono::duration<double>(last - begin).count();
    const double steps = static_cast<double>(g_steps);
    std::printf("%d tracks, %.1f min: %.1f s of sound in %.1f s\n", tracks, minutes, length / 1000.0, wall);
    std::printf("processor: %.1f %% of one core\n", (ProcessorSeconds() - processorBegin) / wall * 100.0);
    std::printf("a step of one engine: %.1f us, at most %.2f ms; all tracks' have %.1f ms\n",
                static_cast<double>(g_total) / steps / 1000.0, static_cast<double>(g_longest) / 1e6,
                torv::kStepSamples * 1000.0 / torv::kEngineTimeBase);
    std::printf("least ahead: %.0f ms; longest time between two buffers of 99 ms: %.0f ms\n",
                least * torv::kStepSamples * 1000.0 / torv::kEngineTimeBase, longestTurn);
    std::printf("the device %s\n", wall - length / 1000.0 < 0.2 ? "never ran dry" : "RAN DRY");
    return 0;
}
