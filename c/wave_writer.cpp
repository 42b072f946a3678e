#include "sound_object.h"

#include <torv/audio/sample.h>
#include <torv/audio/wave_file.h>
#include <torv/platform/replaced_file.h>

#include <algorithm>
#include <cmath>

namespace torv::c {

namespace {

constexpr double kFullScale = 32767.0 / 32768.0;

/// The nearest value; what passes the ends stays there.
WORD Sample16(double value, bool& isCut) {
    const double scaled = std::round(value * 32768.0);
    const double cut = std::clamp(scaled, -32768.0, 32767.0);
    isCut = isCut || cut != scaled;
    return static_cast<WORD>(static_cast<SHORT>(cut));
}

[[noreturn]] void Fail(const char* path, bool isDiskFull) {
    throw Failure{TORV_FILE_ERROR,
                  std::string(path) + (isDiskFull
                                           ? ": the disk is full; make room and try again"
                                           : ": cannot be written; check the folder and whether you may write there")};
}

} // namespace

torv_saved SaveWave(const SoundObject& sound, const char* path, bool lower) {
    const double peak = lower ? sound.Peak() : 0.0;
    const double scale = peak > kFullScale ? kFullScale / peak : 1.0;
    torv_saved saved{};
    saved.lowered = scale < 1 ? -20 * std::log10(scale) : 0;
    ReplacedFile file(TakenPath(path).c_str());
    if (!file.IsOpen())
        Fail(path, file.IsDiskFull());
    try {
        CWaveFile wave(file.Path());
        wave.SetWaveFormat(PcmFormat(static_cast<WORD>(sound.channels), 16, sound.rate));
        for (size_t i = 0; i < sound.samples.size(); i += sound.channels) {
            bool isCut = false;
            const DWORD left = Sample16(sound.samples[i] * scale, isCut);
            const DWORD right = sound.channels == 2 ? Sample16(sound.samples[i + 1] * scale, isCut) : left;
            if (!wave.AppendSample(left, right))
                throw Failure{TORV_FILE_ERROR,
                              std::string(path) + ": is longer than a wave file can be; save it in parts"};
            saved.clipped += isCut;
        }
        wave.Close();
    } catch (const CFileException& error) {
        Fail(path, error.m_cause == CFileException::diskFull);
    }
    if (!file.Commit())
        Fail(path, file.IsDiskFull());
    return saved;
}

} // namespace torv::c
