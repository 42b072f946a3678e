#include "torv/synthesis/offline_render.h"

#include <bit>

namespace torv {

namespace {

constexpr LONGLONG kStepsPerReport = 16;

bool Append(CWaveFile& file, const short* samples, DWORD count) {
    WAVEFORMATEX format;
    file.GetWaveFormat(format);
    if (std::endian::native == std::endian::little && format.nBlockAlign == sizeof *samples && format.nChannels == 1)
        return file.AppendFrames(reinterpret_cast<const BYTE*>(samples), count);
    for (DWORD i = 0; i < count; ++i)
        if (!file.AppendSample(static_cast<DWORD>(static_cast<LONG>(samples[i]))))
            return false;
    return true;
}

} // namespace

bool RenderOffline(StreamSinger& singer, CWaveFile& file, const ProgressHandler& progress) {
    const auto report = [&] { return !progress || progress(singer.SungMilliseconds(), singer.TotalMilliseconds()); };
    while (!singer.Finished()) {
        if (!singer.Sing() || !Append(file, singer.Samples(), singer.Count()))
            return false;
        if (singer.Steps() % kStepsPerReport == 0 && !report())
            return false;
    }
    return report();
}

} // namespace torv
