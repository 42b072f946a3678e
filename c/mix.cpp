// Mixing sounds.
#include "level.h"
#include "sound_object.h"

#include <torv/audio/gain.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <map>

using namespace torv::c;

namespace {

constexpr double kLoudestTrack = 60; // dB

struct Track {
    const SoundObject* sound;
    size_t start;
    double left;
    double right;
};

/// One sound may stand in several tracks.
class Tracks {
public:
    void Add(const torv_mix_track& track) {
        if (!(track.level >= kQuietest && track.level <= kLoudestTrack) || !(track.pan >= -1 && track.pan <= 1))
            throw Failure{TORV_OUT_OF_RANGE, "a track has a level of -120 to 60 dB and a pan of -1 to 1"};
        const auto found = m_held.try_emplace(track.sound, nullptr).first;
        if (!found->second)
            found->second = &m_claims.emplace_back(track.sound);
        const SoundObject& sound = **found->second;
        if (!m_tracks.empty() && sound.rate != m_tracks.front().sound->rate)
            throw Failure{TORV_BAD_ARGUMENT, "the sounds have " + std::to_string(m_tracks.front().sound->rate) +
                                                 " and " + std::to_string(sound.rate) +
                                                 " frames a second: mix those of one rate"};
        const double gain = std::pow(10, track.level / 20);
        const torv::StereoGain sides = torv::GainsAt(gain, gain, track.pan);
        m_tracks.push_back({&sound, track.start, sides.left, sides.right});
    }

    std::unique_ptr<SoundObject> Mix() const {
        auto mix = std::make_unique<SoundObject>(m_tracks.front().sound->rate, 2);
        size_t frames = 0;
        for (const Track& track : m_tracks)
            frames = std::max(frames, track.start + static_cast<size_t>(track.sound->Frames()));
        mix->samples.resize(2 * frames);
        for (const Track& track : m_tracks)
            AddTo(mix->samples, track);
        return mix;
    }

private:
    static void AddTo(std::vector<float>& mix, const Track& track) {
        const SoundObject& sound = *track.sound;
        const size_t frames = static_cast<size_t>(sound.Frames());
        float* out = mix.data() + 2 * track.start;
        const float* in = sound.samples.data();
        for (size_t i = 0; i < frames; ++i, in += sound.channels, out += 2) {
            out[0] += static_cast<float>(track.left * in[0]);
            out[1] += static_cast<float>(track.right * in[sound.channels - 1]);
        }
    }

    std::deque<Held<SoundObject>> m_claims;
    std::map<const void*, Held<SoundObject>*> m_held;
    std::vector<Track> m_tracks;
};

} // namespace

torv_status torv_mix(const torv_mix_track* tracks, size_t count, torv_sound** sound) {
    return Guard([&] {
        Need(sound, "sound") = nullptr;
        Need(tracks, "tracks");
        if (count == 0)
            throw Failure{TORV_BAD_ARGUMENT, "there are no tracks to mix"};
        Tracks all;
        const size_t stride = NeedRecord(tracks, "torv_mix_track").size;
        const auto* at = reinterpret_cast<const unsigned char*>(tracks);
        for (size_t i = 0; i < count; ++i, at += stride)
            all.Add(Taken(reinterpret_cast<const torv_mix_track*>(at), "torv_mix_track"));
        GiveOut(sound, all.Mix());
    });
}
