// 4,000,000 frames of 16-bit stereo written and read frame by frame: CWaveFile and libsndfile, and a plain copy of the
// bytes to a file.
#include "bench_file.h"

#include "torv/audio/wave_file.h"

#include <cstring>
#include <random>
#include <vector>

#ifdef TORV_HAS_SNDFILE
#include <sndfile.h>
#endif

namespace {

constexpr size_t kFrames = 4000000;
constexpr size_t kHeaderBytes = 44;
constexpr int kRate = 44100;

struct Frame {
    SHORT left;
    SHORT right;
};

const std::vector<Frame>& Frames() {
    static const std::vector<Frame> frames = [] {
        std::vector<Frame> made(kFrames);
        std::mt19937 random(20);
        for (Frame& frame : made)
            frame = {static_cast<SHORT>(random() & 0xFFFF), static_cast<SHORT>(random() & 0xFFFF)};
        return made;
    }();
    return frames;
}

uint64_t Packed(SHORT left, SHORT right) {
    return static_cast<uint64_t>(static_cast<WORD>(left)) << 16 | static_cast<WORD>(right);
}

bench::Digest Expected() {
    bench::Digest digest;
    for (const Frame& frame : Frames())
        digest.Add(Packed(frame.left, frame.right));
    return digest;
}

[[gnu::noinline]] void MeasuredWrite(const std::string& path) {
    CWaveFile file(CString(path.c_str()));
    for (const Frame& frame : Frames())
        file.AppendSample(static_cast<WORD>(frame.left), static_cast<WORD>(frame.right));
    file.Close();
}

[[gnu::noinline]] bench::Digest MeasuredRead(const std::string& path) {
    CWaveFile file(CString(path.c_str()));
    bench::Digest digest;
    DWORD left;
    DWORD right;
    while (file.ReadSample(left, right))
        digest.Add(Packed(static_cast<SHORT>(left), static_cast<SHORT>(right)));
    return digest;
}

#ifdef TORV_HAS_SNDFILE
[[gnu::noinline]] void MeasuredWriteSndfile(const std::string& path) {
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    for (const Frame& frame : Frames())
        sf_writef_short(file, &frame.left, 1);
    sf_close(file);
}

[[gnu::noinline]] bench::Digest MeasuredReadSndfile(const std::string& path) {
    SF_INFO info{};
    SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
    bench::Digest digest;
    Frame frame;
    while (sf_readf_short(file, &frame.left, 1) == 1)
        digest.Add(Packed(frame.left, frame.right));
    sf_close(file);
    return digest;
}
#endif

[[gnu::noinline]] void MeasuredCopy(const std::string& path) {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    file.Write(Frames().data(), static_cast<UINT>(kFrames * sizeof(Frame)));
    file.Close();
}

/// Every round makes the file anew.
template <class Write>
void WriteRow(benchmark::State& state, Write write, size_t headerBytes) {
    const bench::TemporaryFile file("torv_wave_bench_written.wav");
    Frames();
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        std::filesystem::remove(file.Path());
        state.ResumeTiming();
        write(file.Path());
    }
    const std::string bytes = file.Bytes();
    constexpr size_t kDataBytes = kFrames * sizeof(Frame);
    bench::Expect(state, bytes.size() == headerBytes + kDataBytes &&
                             std::memcmp(bytes.data() + headerBytes, Frames().data(), kDataBytes) == 0);
    bench::CountEach(state, "s/frame", kFrames);
}

template <class Read>
void ReadRow(benchmark::State& state, Read read) {
    const bench::TemporaryFile file("torv_wave_bench_read.wav");
    MeasuredWrite(file.Path());
    bench::Digest digest;
    for ([[maybe_unused]] auto _ : state)
        digest = read(file.Path());
    bench::Expect(state, digest == Expected());
    bench::CountEach(state, "s/frame", kFrames);
}

void WriteTorv(benchmark::State& state) { WriteRow(state, MeasuredWrite, kHeaderBytes); }
BENCHMARK(WriteTorv)->Unit(benchmark::kMillisecond);
void CopyBytes(benchmark::State& state) { WriteRow(state, MeasuredCopy, 0); }
BENCHMARK(CopyBytes)->Unit(benchmark::kMillisecond);
void ReadTorv(benchmark::State& state) { ReadRow(state, MeasuredRead); }
BENCHMARK(ReadTorv)->Unit(benchmark::kMillisecond);

#ifdef TORV_HAS_SNDFILE
void WriteSndfile(benchmark::State& state) { WriteRow(state, MeasuredWriteSndfile, kHeaderBytes); }
BENCHMARK(WriteSndfile)->Unit(benchmark::kMillisecond);
void ReadSndfile(benchmark::State& state) { ReadRow(state, MeasuredReadSndfile); }
BENCHMARK(ReadSndfile)->Unit(benchmark::kMillisecond);
#endif

} // namespace
