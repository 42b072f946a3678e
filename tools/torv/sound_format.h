#pragma once

#include <optional>
#include <string>
#include <vector>

/// How a sound file is to be written, as the user asks for it.
struct SoundOptions {
    std::string format;              ///< an ending, as in "flac"; empty: the one of the file's name
    unsigned bits = 16;              ///< of a sample: 16, 24, or 32 as floats; what is compressed with loss has none
    std::optional<double> normalize; ///< dB that the loudest sample is brought to, 0 full scale; none: as it is
};

/// What a sound writer makes.
struct SoundFormat {
    std::string ending; ///< "wav", "flac", ... in small letters
    unsigned bits = 16;
    unsigned channels = 1;
    unsigned rate = 44100; ///< Hz
};

/// The ending that says how `path` is written: the one that is asked for, else the name's own, else "wav". Throws
/// WrongUse for one that cannot be written here.
std::string EndingFor(const std::string& path, const SoundOptions& options);

/// Whether a name looks like that of a sound file, by its ending.
bool HasSoundEnding(const std::string& path);
