#include "loudness_meter.h"

#include <cmath>
#include <vector>

double LoudnessOf(torv::songs::SoundSource& source) {
    constexpr double kHeard = 1e-5; // mean square
    std::vector<double> samples(source.Rate() / 10 * source.Channels());
    double sum = 0;
    size_t blocks = 0;
    source.Rewind();
    for (size_t frames = 1; frames > 0;) {
        double square = 0;
        size_t got = 0;
        do {
            frames = source.Read(samples.data(), samples.size() / source.Channels() - got);
            for (size_t i = 0; i < frames * source.Channels(); ++i)
                square += samples[i] * samples[i];
            got += frames;
        } while (frames > 0 && got * source.Channels() < samples.size());
        const double mean = square / static_cast<double>(samples.size());
        sum += mean > kHeard ? mean : 0;
        blocks += mean > kHeard;
    }
    return blocks ? std::sqrt(sum / static_cast<double>(blocks)) : 0;
}
