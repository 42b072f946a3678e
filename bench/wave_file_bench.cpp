// 4,000,000 frames of 16-bit stereo written and read, one by one and 1,024 at a time: CWaveFile and libsndfile, libsox
// for blocks (whose samples have 32 bits, so that its callers widen and cut them), and a plain copy of the bytes to a
// file.
#include "bench_file.h"

#include "torv/audio/wave_file.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#ifdef TORV_HAS_SNDFILE
#include <sndfile.h>
#endif
#ifdef TORV_HAS_SOX
#include <sox.h>
#endif

namespace {

constexpr size_t kFrames = 4000000;
constexpr size_t kBlock = 1024;
constexpr DWORD kLargeWindow = 16384; // frames, which a host may ask for
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

/// Of what InBlocksRead looks at.
bench::Digest ExpectedOfBlocks() {
    bench::Digest digest;
    for (size_t i = 0; i < kFrames; i += kBlock / 4)
        digest.Add(Packed(Frames()[i].left, Frames()[i].right));
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

/// `put` is handed the frames, and `take` asked for them, a block at a time.
template <class Put>
void InBlocks(Put put) {
    for (size_t at = 0; at < kFrames; at += kBlock)
        put(&Frames()[at].left, std::min(kBlock, kFrames - at));
}
template <class Take>
bench::Digest InBlocksRead(Take take) {
    std::vector<Frame> block(kBlock);
    bench::Digest digest;
    while (const size_t count = take(&block.front().left))
        for (size_t i = 0; i < count; i += kBlock / 4) // a look, for what is measured is the reading
            digest.Add(Packed(block[i].left, block[i].right));
    return digest;
}

[[gnu::noinline]] void MeasuredWriteBlocks(const std::string& path, DWORD window) {
    CWaveFile file(CString(path.c_str()), window);
    InBlocks([&](const SHORT* frames, size_t count) {
        file.AppendFrames(reinterpret_cast<const BYTE*>(frames), static_cast<DWORD>(count));
    });
    file.Close();
}

[[gnu::noinline]] bench::Digest MeasuredReadBlocks(const std::string& path) {
    CWaveFile file(CString(path.c_str()));
    return InBlocksRead([&](SHORT* frames) { return file.ReadFrames(reinterpret_cast<BYTE*>(frames), kBlock); });
}

#ifdef TORV_HAS_SNDFILE
[[gnu::noinline]] void MeasuredWriteBlocksSndfile(const std::string& path) {
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    InBlocks([&](const SHORT* frames, size_t count) { sf_writef_short(file, frames, static_cast<sf_count_t>(count)); });
    sf_close(file);
}

[[gnu::noinline]] bench::Digest MeasuredReadBlocksSndfile(const std::string& path) {
    SF_INFO info{};
    SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
    const bench::Digest digest =
        InBlocksRead([&](SHORT* frames) { return static_cast<size_t>(sf_readf_short(file, frames, kBlock)); });
    sf_close(file);
    return digest;
}

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

#ifdef TORV_HAS_SOX
constexpr size_t kSoxBlock = 2 * kBlock; // samples

[[gnu::noinline]] void MeasuredWriteBlocksSox(const std::string& path) {
    const sox_signalinfo_t form{kRate, 2, 16, 2 * kFrames, nullptr};
    sox_format_t* const file = sox_open_write(path.c_str(), &form, nullptr, "wav", nullptr, nullptr);
    std::vector<sox_sample_t> block(kSoxBlock);
    InBlocks([&](const SHORT* frames, size_t count) {
        for (size_t i = 0; i < 2 * count; ++i)
            block[i] = static_cast<sox_sample_t>(frames[i]) * 65536;
        sox_write(file, block.data(), 2 * count);
    });
    sox_close(file);
}

[[gnu::noinline]] bench::Digest MeasuredReadBlocksSox(const std::string& path) {
    sox_format_t* const file = sox_open_read(path.c_str(), nullptr, nullptr, "wav");
    std::vector<sox_sample_t> block(kSoxBlock);
    const bench::Digest digest = InBlocksRead([&](SHORT* frames) {
        const size_t read = sox_read(file, block.data(), kSoxBlock);
        for (size_t i = 0; i < read; ++i)
            frames[i] = static_cast<SHORT>(block[i] / 65536);
        return read / 2;
    });
    sox_close(file);
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
void ReadRow(benchmark::State& state, Read read, const bench::Digest& expected) {
    const bench::TemporaryFile file("torv_wave_bench_read.wav");
    MeasuredWrite(file.Path());
    bench::Digest digest;
    for ([[maybe_unused]] auto _ : state)
        digest = read(file.Path());
    bench::Expect(state, digest == expected);
    bench::CountEach(state, "s/frame", kFrames);
}

void WriteTorv(benchmark::State& state) { WriteRow(state, MeasuredWrite, kHeaderBytes); }
BENCHMARK(WriteTorv)->Unit(benchmark::kMillisecond);
void CopyBytes(benchmark::State& state) { WriteRow(state, MeasuredCopy, 0); }
BENCHMARK(CopyBytes)->Unit(benchmark::kMillisecond);
void ReadTorv(benchmark::State& state) { ReadRow(state, MeasuredRead, Expected()); }
BENCHMARK(ReadTorv)->Unit(benchmark::kMillisecond);
void WriteBlocksTorv(benchmark::State& state) {
    const auto window = static_cast<DWORD>(state.range(0));
    WriteRow(
        state, [window](const std::string& path) { MeasuredWriteBlocks(path, window); }, kHeaderBytes);
}
BENCHMARK(WriteBlocksTorv)->Arg(0)->Arg(kLargeWindow)->Unit(benchmark::kMillisecond);
void ReadBlocksTorv(benchmark::State& state) { ReadRow(state, MeasuredReadBlocks, ExpectedOfBlocks()); }
BENCHMARK(ReadBlocksTorv)->Unit(benchmark::kMillisecond);

#ifdef TORV_HAS_SNDFILE
void WriteBlocksSndfile(benchmark::State& state) { WriteRow(state, MeasuredWriteBlocksSndfile, kHeaderBytes); }
BENCHMARK(WriteBlocksSndfile)->Unit(benchmark::kMillisecond);
void ReadBlocksSndfile(benchmark::State& state) { ReadRow(state, MeasuredReadBlocksSndfile, ExpectedOfBlocks()); }
BENCHMARK(ReadBlocksSndfile)->Unit(benchmark::kMillisecond);
void WriteSndfile(benchmark::State& state) { WriteRow(state, MeasuredWriteSndfile, kHeaderBytes); }
BENCHMARK(WriteSndfile)->Unit(benchmark::kMillisecond);
void ReadSndfile(benchmark::State& state) { ReadRow(state, MeasuredReadSndfile, Expected()); }
BENCHMARK(ReadSndfile)->Unit(benchmark::kMillisecond);
#endif

#ifdef TORV_HAS_SOX
void WriteBlocksSox(benchmark::State& state) {
    sox_format_init();
    WriteRow(state, MeasuredWriteBlocksSox, kHeaderBytes);
}
BENCHMARK(WriteBlocksSox)->Unit(benchmark::kMillisecond);
void ReadBlocksSox(benchmark::State& state) {
    sox_format_init();
    ReadRow(state, MeasuredReadBlocksSox, ExpectedOfBlocks());
}
BENCHMARK(ReadBlocksSox)->Unit(benchmark::kMillisecond);
#endif

} // namespace
