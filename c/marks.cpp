// Voices and dynamics of a part, which stand at ticks by name; its icons and its notes', by name too.
#include "song_object.h"

#include <algorithm>

using namespace torv::c;

namespace {

using torv::songs::Dynamic;

void CheckKind(torv_mark_kind kind) {
    if (kind != TORV_MARK_VOICE && kind != TORV_MARK_DYNAMICS)
        throw Failure{TORV_BAD_ARGUMENT, "there is no mark of kind " + std::to_string(kind)};
}

/// The dynamics that stand there by name, hairpins left out: by their index among all.
std::vector<size_t> Levels(const torv::songs::Part& part) {
    std::vector<size_t> levels;
    for (size_t i = 0; i < part.dynamics.size(); ++i)
        if (part.dynamics[i].kind == Dynamic::Kind::Level)
            levels.push_back(i);
    return levels;
}

/// Replaces what `isThere` finds by `item` where there is one, in order of ticks.
template <class Item, class IsThere>
void Replace(std::vector<Item>& items, uint32_t tick, const Item* item, IsThere isThere) {
    items.reserve(items.size() + 1);
    std::erase_if(items, isThere);
    const auto place =
        std::find_if(items.begin(), items.end(), [tick](const Item& other) { return other.tick > tick; });
    if (item)
        items.insert(place, *item);
}

std::string& IconOf(SongObject& song, size_t part, size_t note, torv_icon_kind kind) {
    PartPlanning& planning = song.Planning(part);
    if (kind < TORV_ICON_ATTACK || kind > TORV_ICON_VIBRATO)
        throw Failure{TORV_BAD_ARGUMENT, "notes have no icon of kind " + std::to_string(kind)};
    if (note == TORV_ALL_NOTES)
        return planning.icons[static_cast<size_t>(kind)];
    CheckIndex(note, planning.noteIcons.size(), "note");
    return planning.noteIcons[note][static_cast<size_t>(kind)];
}

} // namespace

torv_status torv_part_count_marks(torv_song* song, size_t part, torv_mark_kind kind, size_t* count) {
    return Guard([&] {
        const Held<SongObject> held(song);
        const PartPlanning& planning = held->Planning(part);
        CheckKind(kind);
        Need(count, "count") = kind == TORV_MARK_VOICE ? planning.voices.size() : Levels(held->Part(part)).size();
    });
}

torv_status torv_part_get_mark(torv_song* song, size_t part, torv_mark_kind kind, size_t index, uint32_t* tick,
                               char* buffer, size_t capacity, size_t* needed) {
    return Guard([&] {
        const Held<SongObject> held(song);
        const torv::songs::Part& of = held->Part(part);
        CheckKind(kind);
        Need(tick, "tick");
        const OutText out{buffer, capacity, needed};
        if (kind == TORV_MARK_VOICE) {
            const std::vector<VoiceMark>& voices = held->Planning(part).voices;
            CheckIndex(index, voices.size(), "voice");
            *tick = voices[index].tick;
            Give(voices[index].name, out);
            return;
        }
        const std::vector<size_t> levels = Levels(of);
        CheckIndex(index, levels.size(), "dynamics");
        *tick = of.dynamics[levels[index]].tick;
        Give(of.dynamics[levels[index]].level, out);
    });
}

torv_status torv_part_set_mark(torv_song* song, size_t part, torv_mark_kind kind, uint32_t tick, const char* name) {
    return Guard([&] {
        const Held<SongObject> held(song);
        torv::songs::Part& of = held->Part(part);
        CheckKind(kind);
        const std::string taken = TakenOrEmpty(name, "name");
        if (tick > torv::songs::kLastTick)
            throw Failure{TORV_OUT_OF_RANGE, "the tick is beyond the last one"};
        if (kind == TORV_MARK_VOICE) {
            const VoiceMark mark{tick, taken};
            Replace(held->Planning(part).voices, tick, taken.empty() ? nullptr : &mark,
                    [tick](const VoiceMark& other) { return other.tick == tick; });
            return;
        }
        const Dynamic mark{tick, Dynamic::Kind::Level, taken, 0};
        held->Planning(part).hasOwnDynamics = true;
        Replace(of.dynamics, tick, taken.empty() ? nullptr : &mark,
                [tick](const Dynamic& other) { return other.tick == tick && other.kind == Dynamic::Kind::Level; });
    });
}

torv_status torv_icon_get(torv_song* song, size_t part, size_t note, torv_icon_kind kind, char* buffer, size_t capacity,
                          size_t* needed) {
    return Guard([&] {
        const Held<SongObject> held(song);
        Give(IconOf(*held, part, note, kind), {buffer, capacity, needed});
    });
}

torv_status torv_icon_set(torv_song* song, size_t part, size_t note, torv_icon_kind kind, const char* name) {
    return Guard([&] {
        const Held<SongObject> held(song);
        IconOf(*held, part, note, kind) = TakenOrEmpty(name, "name");
    });
}
