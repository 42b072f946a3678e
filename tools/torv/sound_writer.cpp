#include "sound_writer.h"

#include "coded_sound.h"
#include "wave_writer.h"

std::unique_ptr<SoundWriter> MakeSoundWriter(OutputFile& file, const std::string& path, const SoundFormat& format) {
    if (format.ending == "wav")
        return std::make_unique<WaveWriter>(file, path, format);
    return MakeCodedWriter(file, path, format);
}
