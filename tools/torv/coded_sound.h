#pragma once

#include "sound_reader.h"
#include "sound_writer.h"

#include <memory>
#include <string>
#include <vector>

/// Sound files of other kinds than plain waves, by the system's sound file library where there is one.

/// The endings that can be written; none without the library.
std::vector<std::string> CodedEndings();
/// Why there are none: "this torv was built without ...".
std::string WhyNothingIsCoded();
/// The same behind what cannot be read, from a colon on; empty with the library.
inline std::string ButPlainWaves() { return CodedEndings().empty() ? ": " + WhyNothingIsCoded() : std::string(); }

/// Writes into `file` from its beginning. Throws WrongUse for a format that the ending cannot hold.
std::unique_ptr<SoundWriter> MakeCodedWriter(OutputFile& file, const std::string& path, const SoundFormat& format);

/// Null for what the library cannot read. `file` is read as long as the reader lives.
std::unique_ptr<SoundReader> OpenCodedSound(std::istream& file);
