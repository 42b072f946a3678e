#pragma once

#include "output_file.h"
#include "song_score.h"
#include "sound_reader.h"
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

struct MixLevels {
    std::vector<PartLevel> parts;
    double band = 1.0; ///< linear: 1 is as loud as the voices
};

struct RenderOptions {
    DWORD rate = 44100;   ///< Hz
    DWORD presend = 2000; ///< milliseconds
    DWORD from = 0;       ///< milliseconds of the file
    DWORD to = 0;         ///< milliseconds of the file; 0: the end
    /// Seconds that are kept before `from`; none: as long as something is sung before the file's beginning, where that
    /// is where it begins.
    std::optional<double> leadIn;
    bool stereo = false;
};

/// A score's parts as the engine has sung them, each in a temporary wave beside an output, to be mixed any number of
/// times. What fails throws InputError, which names the output.
class Rendering {
public:
    Rendering(const torv::songs::Score& score, const std::string& output, const RenderOptions& options,
              const std::function<void(double done, double total)>& progress);
    ~Rendering();

    /// Keeps what accompanies the parts, which is stereo and begins with the wave. With these levels the parts are what
    /// it is compared with.
    void AddBand(torv::songs::SoundSource& band, const MixLevels& levels);

    /// What is kept before `from`, seconds.
    double LeadIn() const { return static_cast<double>(m_leadIn) / m_options.rate; }

    /// Writes the parts together without the score's lead, but with what of it is kept. A single part is
    /// written as it is; several are made softer where they would pass full scale. Then `path` is whole or as it was.
    WrittenSound Mix(const std::string& path, const MixLevels& levels, const SoundOptions& sound);

    /// The parts' sound one by one, and the band's after them, as it is in such a mix that is louder by so many dB.
    std::vector<torv::songs::KeptSound> Keep(const MixLevels& levels, double decibels);

private:
    struct SungWave;
    class Together;
    void Rewind(const MixLevels& levels);
    DWORD FramesBeforeFile();

    const RenderOptions m_options;
    const DWORD m_leadFrames;
    DWORD m_leadIn = 0; ///< frames
    std::deque<SungWave> m_waves;
    const std::string m_output;
    std::unique_ptr<OutputFile> m_bandFile; ///< never committed
    std::unique_ptr<SoundReader> m_band;
    double m_bandBalance = 0; ///< what makes it as loud as the voices
};
