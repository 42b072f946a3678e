// Singing offline: into memory, block by block, into a file.
#include "singing.h"
#include "sound_object.h"

using namespace torv::c;

namespace {

torv_sing_options Checked(const torv_sing_options* options) {
    return options ? Taken(options, "torv_sing_options") : torv_sing_options{};
}

void TellProgress(const torv_sing_options& options, const Singing& singing) {
    if (options.progress && options.progress(singing.Done(), options.user) != 0)
        throw Failure{TORV_CANCELLED, "the callback has cancelled the singing"};
}

template <class Take>
void SingAll(Singing& singing, const torv_sing_options& options, Take take) {
    std::vector<float> block;
    while (const size_t frames = singing.Next(block)) {
        take(block, frames);
        TellProgress(options, singing);
    }
}

std::unique_ptr<SoundObject> SingSound(ScoreObject& score, const torv_sing_options& options, bool& isMix) {
    Singing singing(score, options);
    isMix = singing.IsMix();
    auto sound = std::make_unique<SoundObject>(singing.Rate(), singing.Channels());
    SingAll(singing, options, [&](const std::vector<float>& block, size_t) {
        sound->samples.insert(sound->samples.end(), block.begin(), block.end());
    });
    return sound;
}

} // namespace

torv_status torv_sing(torv_score* score, const torv_sing_options* options, torv_sound** sound) {
    return Guard([&] {
        Need(sound, "sound") = nullptr;
        const Held<ScoreObject> held(score);
        bool isMix = false;
        GiveOut(sound, SingSound(*held, Checked(options), isMix));
    });
}

torv_status torv_sing_blocks(torv_score* score, const torv_sing_options* options, torv_block_callback callback,
                             void* user) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        if (!callback)
            throw Failure{TORV_BAD_ARGUMENT, "callback is null"};
        const torv_sing_options taken = Checked(options);
        Singing singing(*held, taken);
        SingAll(singing, taken, [&](const std::vector<float>& block, size_t frames) {
            if (callback(block.data(), frames, singing.Channels(), user) != 0)
                throw Failure{TORV_CANCELLED, "the callback has cancelled the singing"};
        });
    });
}

torv_status torv_sing_file(torv_score* score, const torv_sing_options* options, const char* path, torv_saved* saved) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        TakenPath(path);
        if (saved)
            NeedRecord(saved, "torv_saved");
        bool isMix = false;
        const auto sound = SingSound(*held, Checked(options), isMix);
        const torv_saved done = SaveWave(*sound, path, isMix);
        if (saved)
            Give(done, saved);
    });
}
