// Writes a song of its own, sings it in two voices and mixes them.    compose WAVE
#include <torv/c/torv.hpp>

#include <cstdio>

int main(int count, char** arguments) try {
    const char* const path = count > 1 ? arguments[1] : "composed.wav";
    torv::c::Song song = torv::c::Song::Make();
    const char* const words[] = {"sing", "with", "me", "now"};
    for (const int key : {67, 55}) {
        const std::size_t part = song.AddPart(key > 60 ? "Soprano" : "Bass");
        for (std::uint32_t i = 0; i < 4; ++i)
            song.AddNote(part, 480 * i, i < 3 ? 480 : 1440, key + 2 * static_cast<int>(i), words[i]);
    }
    // The soprano slides up into her last note, from a whole tone below.
    std::vector<torv_point> slide;
    for (std::uint32_t tick = 1440; tick <= 1680; tick += 24)
        slide.push_back({tick, -2.0F * static_cast<float>(1680 - tick) / 240});
    song.SetCurve(0, TORV_CURVE_PITCH, slide);

    const torv::c::Databases databases = torv::c::Databases::Open();
    const torv::c::Score score = torv::c::Score::Make(song, databases);
    torv_sing_options one{};
    std::vector<torv::c::Sound> sounds;
    std::vector<torv_mix_track> tracks;
    for (one.part = 1; one.part <= 2; ++one.part) {
        sounds.push_back(score.Sing(one));
        auto track = torv::c::Sized<torv_mix_track>();
        track.sound = sounds.back();
        track.pan = one.part == 1 ? -0.5 : 0.5;
        tracks.push_back(track);
    }
    torv_sound* mixed = nullptr;
    torv::c::Check(torv_mix(tracks.data(), tracks.size(), &mixed));
    const torv_saved saved = torv::c::Sound(mixed).Save(path);
    std::printf("%s: %.1f dB softer, so that nothing is cut\n", path, saved.lowered);
    return 0;
} catch (const torv::c::Failure& failure) {
    std::fprintf(stderr, "%s: %s\n", torv_status_name(failure.Status()), failure.what());
    return 1;
}
