// Sixteen mono files of 60 s, each with its level and pan, mixed down to stereo in one process; beside it the same
// bytes read and written without looking at them, and moved in memory. And the arithmetic alone, over blocks in the
// cache.
#include "bench_file.h"

#include "torv/audio/mix_block.h"
#include "torv/audio/sample.h"
#include "torv/audio/wave_out.h"

#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr DWORD kTracks = 16;
constexpr DWORD kRate = 44100;
constexpr DWORD kFrames = 60 * kRate;
constexpr DWORD kBufferFrames = 16384;
constexpr size_t kBytesIn = size_t{kTracks} * kFrames * 2;
constexpr size_t kBytesOut = size_t{kFrames} * 4;

struct Input {
    explicit Input(DWORD number) : file("torv_mix_bench_" + std::to_string(number) + ".wav") {
        std::vector<SHORT> samples(kFrames);
        std::mt19937 random(number);
        for (SHORT& sample : samples)
            sample = static_cast<SHORT>(random() & 0xFFFF);
        std::filesystem::remove(file.Path());
        wave = std::make_unique<CWaveFile>(CString(file.Path().c_str()), kBufferFrames);
        wave->SetWaveFormat(torv::PcmFormat(1, 16, kRate));
        wave->AppendFrames(reinterpret_cast<const BYTE*>(samples.data()), kFrames);
        wave->Flush();
    }

    const bench::TemporaryFile file;
    std::unique_ptr<CWaveFile> wave;
};

std::vector<std::unique_ptr<Input>> Inputs() {
    std::vector<std::unique_ptr<Input>> inputs;
    for (DWORD i = 0; i < kTracks; ++i)
        inputs.push_back(std::make_unique<Input>(i));
    return inputs;
}

void ShowBytes(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * (kBytesIn + kBytesOut)));
}

[[gnu::noinline]] int MeasuredMixDown(CWaveOut& mixer, const std::string& path, std::vector<tagMixDownTrack>& tracks) {
    return mixer.AudioMixDown(path.c_str(), tracks.data(), static_cast<int>(tracks.size()), kRate);
}

void MixDown(benchmark::State& state) {
    const auto inputs = Inputs();
    const bench::TemporaryFile output("torv_mix_bench_out.wav");
    std::vector<tagMixDownTrack> tracks;
    for (DWORD i = 0; i < kTracks; ++i)
        tracks.push_back({0, torv::kWholeFile, -26.0F, (static_cast<float>(i) - 7.5F) / 8.0F, inputs[i]->wave.get()});
    CWaveOut mixer;
    int isMixed = 1;
    for ([[maybe_unused]] auto _ : state)
        isMixed &= MeasuredMixDown(mixer, output.Path(), tracks);
    bench::Expect(state, isMixed && mixer.GetWrappedFrames() == 0);
    ShowBytes(state);
}
BENCHMARK(MixDown)->Unit(benchmark::kMillisecond);

[[gnu::noinline]] void MeasuredCopyFiles(const std::vector<std::unique_ptr<Input>>& inputs, const std::string& path,
                                         std::vector<BYTE>& block) {
    CFile out(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    for (const auto& input : inputs) {
        CFile in(input->file.Path().c_str(), CFile::modeRead);
        while (in.Read(block.data(), static_cast<UINT>(block.size())) == block.size()) {
        }
    }
    for (size_t done = 0; done < kBytesOut; done += block.size())
        out.Write(block.data(), static_cast<UINT>(block.size()));
    out.Close();
}

void CopyFiles(benchmark::State& state) {
    const auto inputs = Inputs();
    const bench::TemporaryFile output("torv_mix_bench_out.wav");
    std::vector<BYTE> block(size_t{kBufferFrames} * 2);
    for ([[maybe_unused]] auto _ : state)
        MeasuredCopyFiles(inputs, output.Path(), block);
    ShowBytes(state);
}
BENCHMARK(CopyFiles)->Unit(benchmark::kMillisecond);

[[gnu::noinline]] void MeasuredCopyMemory(const std::vector<BYTE>& from, std::vector<BYTE>& to) {
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::ClobberMemory();
}

void CopyMemory(benchmark::State& state) {
    const std::vector<BYTE> from(kBytesIn + kBytesOut, 1);
    std::vector<BYTE> to(from.size(), 2);
    for ([[maybe_unused]] auto _ : state)
        MeasuredCopyMemory(from, to);
    ShowBytes(state);
}
BENCHMARK(CopyMemory)->Unit(benchmark::kMillisecond);

/// Sums of sixteen tracks' frames, and their samples: what a block costs behind the reading.
[[gnu::noinline]] void MeasuredMixBlock(const std::vector<float>& left, const std::vector<float>& right, BYTE* out,
                                        const WAVEFORMATEX& format, torv::MixPeak& peak) {
    torv::MixBlock block(torv::MixBlock::kFrames, false);
    for (DWORD i = 0; i < kTracks; ++i)
        block.Add(left.data(), right.data());
    block.Write(out, format, {1.0, 1.0}, peak);
    benchmark::ClobberMemory();
}

void MixBlocks(benchmark::State& state) {
    const std::vector<float> left(torv::MixBlock::kFrames, 0.01F);
    const std::vector<float> right(torv::MixBlock::kFrames, -0.01F);
    std::vector<BYTE> out(size_t{torv::MixBlock::kFrames} * 4);
    const WAVEFORMATEX format = torv::PcmFormat(2, 16, kRate);
    torv::MixPeak peak;
    for ([[maybe_unused]] auto _ : state)
        MeasuredMixBlock(left, right, out.data(), format, peak);
    bench::Expect(state, out[0] == 0x7A && out[1] == 0x14); // 0.16 x 32768 = 5242.88, cut
    bench::CountEach(state, "s/frame", torv::MixBlock::kFrames);
}
BENCHMARK(MixBlocks)->Unit(benchmark::kMicrosecond);

} // namespace
