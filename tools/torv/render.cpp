#include "render.h"

#include "errors.h"
#include "output_file.h"
#include <torv/songs/engine_stream.h>

#include <torv/torv.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

using namespace torv::songs;

namespace {

constexpr int kNoLoop = 0;

/// Has the engine sing a stream into `wave`, in mono.
void Synthesize(CQuillMidiBuffer& stream, CWaveFile& wave, DWORD rate,
                const std::function<void(double, double)>& progress) {
    CRtSynthesis synthesis;
    if (!synthesis.OpenSynthesizer())
        throw InputError{
            "the voice engine RVE cannot be loaded or started: put it beside the program, or name its folder "
            "in TORV_LIBRARY_PATH"};
    synthesis.SetMasterOutputChannels(1);
    synthesis.SetProgressHandler([&progress](DWORD done, DWORD total) {
        progress(done, total);
        return true;
    });
    const int sung = synthesis.DoSynthesis(&stream, &wave, rate);
    synthesis.CloseSynthesizer();
    if (sung)
        return;
    wave.Flush(); // which tells when it was the disk
    throw InputError{"the voice engine RVE gave up while singing: it may be damaged or not fit this program"};
}

DWORD Sample16(float value, size_t& clipped) {
    const double scaled = std::round(value * 32768.0);
    const double cut = std::clamp(scaled, -32768.0, 32767.0);
    if (cut != scaled)
        ++clipped;
    return static_cast<WORD>(static_cast<SHORT>(cut));
}

/// Copies what was sung from the file's time 0 on, with volume and pan.
void Finish(CWaveFile& sung, const char* path, DWORD leadFrames, const RenderOptions& options, RenderResult& result) {
    CWaveFile wave(path);
    WAVEFORMATEX format{};
    sung.GetWaveFormat(format);
    format.nChannels = options.stereo ? 2 : 1;
    format.nBlockAlign = static_cast<WORD>(format.nChannels * 2);
    format.nAvgBytesPerSec = format.nBlockAlign * format.nSamplesPerSec;
    wave.SetWaveFormat(format);
    sung.SetAmplitudes(options.volume, options.volume, options.pan);
    sung.SetPlayDuration(std::min(leadFrames, sung.GetTotalSamples()), 0);
    sung.SeekPlayPointer(0, 0);
    float left;
    float right;
    while (sung.ReadSampleForPlay(left, right, kNoLoop)) {
        const size_t before = result.clippedFrames;
        const DWORD l = Sample16(left, result.clippedFrames);
        const DWORD r = options.stereo ? Sample16(right, result.clippedFrames) : l;
        result.clippedFrames = std::min(result.clippedFrames, before + 1);
        wave.AppendSample(l, r);
    }
    result.seconds = static_cast<double>(wave.GetTotalSamples()) / format.nSamplesPerSec;
    wave.Close();
}

} // namespace

RenderResult Render(const Score& score, const std::string& path, const RenderOptions& options,
                    const std::function<void(double done, double total)>& progress) {
    const std::unique_ptr<CQuillMidiBuffer> stream = MakeEngineStream(score, score.parts.front(), options.presend);
    const OutputFile sungFile(path); // never committed
    OutputFile finished(path);
    RenderResult result;
    try {
        CWaveFile sung(sungFile.GrowingPath());
        Synthesize(*stream, sung, options.rate, progress);
        const DWORD leadFrames =
            static_cast<DWORD>(static_cast<uint64_t>(score.leadMilliseconds) * options.rate / 1000);
        Finish(sung, finished.GrowingPath(), leadFrames, options, result);
        sung.Close();
    } catch (const CFileException& error) {
        finished.Fail(error);
    }
    finished.Commit();
    return result;
}
