// Where there is no sound file library.
#include "coded_sound.h"

#include "errors.h"

std::vector<std::string> CodedEndings() { return {}; }

std::string WhyNothingIsCoded() {
#ifdef _WIN32
    return "on Windows only plain waves are";
#else
    return "this torv was built without libsndfile; install libsndfile1-dev and build it again";
#endif
}

std::unique_ptr<SoundWriter> MakeCodedWriter(OutputFile&, const std::string& path, const SoundFormat& format) {
    throw WrongUse{path + ": \"." + format.ending + "\" cannot be written: " + WhyNothingIsCoded()};
}

std::unique_ptr<SoundReader> OpenCodedSound(std::istream&) { return nullptr; }
