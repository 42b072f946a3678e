// Playing.
#include "device_play.h"

using namespace torv::c;

namespace {

constexpr uint32_t kUsualRate = 44100;

torv_player_options Checked(const torv_player_options* options) {
    torv_player_options taken{};
    if (options)
        taken = Taken(options, "torv_player_options");
    taken.rate = taken.rate ? taken.rate : kUsualRate;
    TakenOrEmpty(taken.device, "device");
    return taken;
}

} // namespace

torv_status torv_devices_count(size_t* count) {
    return Guard([&] { Need(count, "count") = DeviceNames().size(); });
}

torv_status torv_devices_get(size_t index, char* buffer, size_t capacity, size_t* needed) {
    return Guard([&] {
        const std::vector<std::string> names = DeviceNames();
        CheckIndex(index, names.size(), "wave output");
        Give(names[index], {buffer, capacity, needed});
    });
}

torv_status torv_player_new(torv_score* score, const torv_player_options* options, torv_player** player) {
    return Guard([&] {
        Need(player, "player") = nullptr;
        const Held<ScoreObject> held(score);
        GiveOut(player, std::make_unique<PlayerObject>(*held, Checked(options)));
    });
}

torv_status torv_player_free(torv_player* player) {
    return Guard([&] {
        if (player && Held<PlayerObject>(player)->IsOnOwnThread())
            throw Failure{TORV_BUSY, "a player is not freed from inside its callback"};
        TakeObject(player, Kind::Player);
    });
}

torv_status torv_player_start(torv_player* player) {
    return Guard([&] { Held<PlayerObject>(player)->Start(); });
}

torv_status torv_player_stop(torv_player* player) {
    return Guard([&] { Held<PlayerObject>(player)->Stop(); });
}

torv_status torv_player_seek(torv_player* player, uint32_t milliseconds) {
    return Guard([&] { Held<PlayerObject>(player)->Seek(milliseconds); });
}

torv_status torv_player_set_region(torv_player* player, uint32_t start, uint32_t end, int32_t loop) {
    return Guard([&] { Held<PlayerObject>(player)->SetRegion(start, end, loop != 0); });
}

torv_status torv_player_set_part(torv_player* player, size_t part, double level, double pan, int32_t mute) {
    return Guard([&] { Held<PlayerObject>(player)->SetPart(part, level, pan, mute != 0); });
}

torv_status torv_player_set_level(torv_player* player, double level) {
    return Guard([&] { Held<PlayerObject>(player)->SetLevel(level); });
}

torv_status torv_player_get_state(torv_player* player, torv_player_state* state) {
    return Guard([&] {
        const Held<PlayerObject> held(player);
        NeedRecord(state, "torv_player_state");
        Give(held->State(), state);
    });
}

torv_status torv_player_read(torv_player* player, float* samples, size_t frames) {
    return Guard([&] {
        const Held<PlayerObject> held(player, Claim::Use::Read);
        if (!held->IsPulled())
            throw Failure{TORV_WRONG_ORDER, "this player has a device: make it with pull to read from it"};
        if (frames > 0)
            held->Read(&Need(samples, "samples"), frames);
    });
}
