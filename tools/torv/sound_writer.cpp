#include "sound_writer.h"

#include "coded_sound.h"
#include "wave_writer.h"

#include <algorithm>
#include <cmath>

std::unique_ptr<SoundWriter> MakeSoundWriter(OutputFile& file, const std::string& path, const SoundFormat& format) {
    if (format.ending == "wav")
        return std::make_unique<WaveWriter>(file, path, format);
    return MakeCodedWriter(file, path, format);
}

int WholeSample(double sample, unsigned bits, bool& isCut) {
    const double full = std::ldexp(1.0, static_cast<int>(bits) - 1);
    const double whole = std::round(sample * full);
    const double kept = std::clamp(whole, -full, full - 1);
    isCut = isCut || kept != whole;
    return static_cast<int>(kept);
}
