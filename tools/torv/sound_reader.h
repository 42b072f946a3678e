#pragma once

#include <torv/songs/sound_reader.h>

#include <memory>
#include <string>

using torv::songs::SoundReader;

/// Opens a wave of whole numbers or floats, or what else the system's sound file library reads; "-" is standard input.
/// Throws InputError and SongError for what cannot be read.
std::unique_ptr<SoundReader> OpenSound(const std::string& path);
