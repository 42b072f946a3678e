#pragma once

#include <torv/songs/song.h>
#include <torv/songs/sound_source.h>

#include <memory>
#include <string>
#include <vector>

/// What the band plays, and when.
struct BandPlan {
    std::vector<size_t> parts; ///< into Song::parts
    std::string soundFont;     ///< a file; empty: the system's
    int transpose = 0;         ///< semitones; drums stay
    unsigned rate = 44100;     ///< Hz
    double start = 0;          ///< seconds of the song where the sound begins; negative: silence before it
    double end = 0;            ///< seconds of the song; 0: when all has died away
};

/// Parts of a song played by the system's synthesizer of instruments, in stereo, by the song's own clock. Throws
/// InputError, which says what to install, where there is no such library or no sound font.
std::unique_ptr<torv::songs::SoundSource> MakeBand(const torv::songs::Song& song, const BandPlan& plan);
