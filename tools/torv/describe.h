#pragma once

#include "sound_reader.h"

#include <torv/songs/song.h>

#include <nlohmann/json.hpp>

#include <iosfwd>
#include <string>
#include <vector>

using Json = nlohmann::ordered_json;

/// Prints what a song file or a sound file holds, as text or as JSON; "-" is standard input. Throws InputError.
void Describe(const std::string& path, bool json);

/// What a MIDI file holds: format, division, length, tempos, signatures, tracks with notes, lyrics and engine blocks.
/// Beats are quarters, counted from 1; a file in SMPTE frames has none.
Json DescribeMidi(const std::string& path, const std::vector<unsigned char>& bytes);

/// What a wave file holds: format, length and chunks, of a damaged one what is there. Only its headers are read.
Json DescribeWave(const std::string& path, std::istream& file);

/// What a sound file of another kind holds.
Json DescribeSound(const std::string& path, const SoundReader& sound);

/// What a song of another format holds, as it is sung, repeats unfolded: parts with ranges and verses, measures,
/// tempos.
Json DescribeSong(const torv::songs::Song& song);

/// "0:31.4".
std::string ClockText(double seconds);
