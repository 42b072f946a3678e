#pragma once

#include <torv/songs/sound_source.h>

/// How loud a source is where something is to be heard: the root of the mean square of those tenths of a second that
/// are above -50 dB, all channels together, full scale 1; 0 when there are none. Reads all of it.
double LoudnessOf(torv::songs::SoundSource& source);
