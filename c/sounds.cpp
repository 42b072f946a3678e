// Sounds in memory.
#include "score_object.h"
#include "sound_object.h"

#include <torv/songs/song_error.h>
#include <torv/songs/sound_curves.h>

#include <algorithm>
#include <cmath>

using namespace torv::c;

namespace {

constexpr uint32_t kHighestRate = 768000;

std::vector<int16_t> MonoShorts(const SoundObject& sound) {
    std::vector<int16_t> shorts(sound.Frames());
    for (size_t i = 0; i < shorts.size(); ++i) {
        const float left = sound.samples[i * sound.channels];
        const float right = sound.samples[i * sound.channels + sound.channels - 1];
        shorts[i] = static_cast<int16_t>(std::clamp(std::round((left + right) * 0.5F * 32768), -32768.0F, 32767.0F));
    }
    return shorts;
}

} // namespace

namespace torv::c {

float SoundObject::Peak() const {
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::abs(sample));
    return peak;
}

} // namespace torv::c

torv_status torv_sound_new(uint32_t rate, uint32_t channels, const float* samples, uint64_t frames,
                           torv_sound** sound) {
    return Guard([&] {
        Need(sound, "sound") = nullptr;
        if (rate == 0 || rate > kHighestRate || channels < 1 || channels > 2)
            throw Failure{TORV_OUT_OF_RANGE, "a sound has 1 to 768000 frames a second and one or two channels"};
        if (frames > SIZE_MAX / sizeof(float) / 2)
            throw Failure{TORV_NO_MEMORY, "so many frames have no room in memory"};
        const auto count = static_cast<size_t>(frames) * channels;
        auto made = std::make_unique<SoundObject>(rate, channels);
        if (count > 0)
            made->samples.assign(&Need(samples, "samples"), samples + count);
        if (!std::all_of(made->samples.begin(), made->samples.end(),
                         [](float sample) { return std::isfinite(sample); }))
            throw Failure{TORV_BAD_ARGUMENT, "there are samples that are no numbers"};
        GiveOut(sound, std::move(made));
    });
}

torv_status torv_sound_open(const char* path, torv_sound** sound) {
    return Guard([&] {
        Need(sound, "sound") = nullptr;
        try {
            GiveOut(sound, ReadWave(path));
        } catch (const torv::songs::SongError& error) {
            throw Failure{TORV_FILE_ERROR, error.what()};
        }
    });
}

torv_status torv_sound_free(torv_sound* sound) {
    return Guard([&] { TakeObject(sound, Kind::Sound); });
}

torv_status torv_sound_get_info(torv_sound* sound, torv_sound_info* info) {
    return Guard([&] {
        const Held<SoundObject> held(sound);
        NeedRecord(info, "torv_sound_info");
        Give(torv_sound_info{0, held->rate, held->channels, held->Peak(), held->Frames()}, info);
    });
}

torv_status torv_sound_get_samples(torv_sound* sound, const float** samples) {
    return Guard([&] {
        const Held<SoundObject> held(sound);
        Need(samples, "samples") = held->samples.data();
    });
}

torv_status torv_sound_save(torv_sound* sound, const char* path, int32_t lower, torv_saved* saved) {
    return Guard([&] {
        const Held<SoundObject> held(sound);
        if (saved)
            NeedRecord(saved, "torv_saved");
        const torv_saved done = SaveWave(*held, path, lower != 0);
        if (saved)
            Give(done, saved);
    });
}

torv_status torv_sound_measure(torv_sound* sound, torv_score* score, size_t part, torv_heard* points, size_t capacity,
                               size_t* count) {
    return Guard([&] {
        const Held<SoundObject> held(sound);
        const Held<ScoreObject> of(score);
        of->Part(part);
        Need(count, "count");
        std::vector<torv::songs::ExpectedKey> keys;
        for (const torv::songs::PerformedNote& note : of->performance.parts[part].notes)
            keys.push_back({note.start, note.end, note.key});
        const torv::songs::SoundCurves curves = torv::songs::MeasureSound(MonoShorts(*held), held->rate, keys);
        *count = curves.pitch.size();
        if (const size_t taken = std::min(capacity, curves.pitch.size()); taken > 0) {
            Need(points, "points");
            for (size_t i = 0; i < taken; ++i)
                points[i] = {curves.pitch[i], curves.level[i]};
        }
    });
}
