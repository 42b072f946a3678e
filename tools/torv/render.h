#pragma once

#include "song_score.h"
#include "write_sound.h"

#include <torv/songs/sound_keeper.h>

#include <deque>
#include <functional>
#include <string>

/// How loud a part is in a mix, and where it stands.
struct PartLevel {
    double gain = 1.0; ///< linear
    double pan = 0.0;  ///< -1 left .. 1 right
};

struct RenderOptions {
    DWORD rate = 44100;   ///< Hz
    DWORD presend = 2000; ///< milliseconds
    DWORD from = 0;       ///< milliseconds of the file
    DWORD to = 0;         ///< milliseconds of the file; 0: the end
    bool stereo = false;
};

/// A score's parts as the engine has sung them, each in a temporary wave beside an output, to be mixed any number of
/// times. What fails throws InputError, which names the output.
class Rendering {
public:
    Rendering(const torv::songs::Score& score, const std::string& output, const RenderOptions& options,
              const std::function<void(double done, double total)>& progress);
    ~Rendering();

    /// Writes the parts together without the score's lead, so that the wave's time 0 is the file's. A single part is
    /// written as it is; several are made softer where they would pass full scale. Then `path` is whole or as it was.
    WrittenSound Mix(const std::string& path, const std::vector<PartLevel>& levels, const SoundOptions& sound);

    /// The parts' sound one by one, as it is in such a mix that is louder by so many dB.
    std::vector<torv::songs::KeptSound> Keep(const std::vector<PartLevel>& levels, double decibels);

private:
    struct SungWave;
    class Together;
    void Rewind(const std::vector<PartLevel>& levels);

    const RenderOptions m_options;
    const DWORD m_leadFrames;
    std::deque<SungWave> m_waves;
};
