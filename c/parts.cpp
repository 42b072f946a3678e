// Parts of songs: what is known of one, and how it is sung.
#include "level.h"
#include "song_object.h"

#include <algorithm>
#include <cmath>

using namespace torv::c;

namespace {

std::string& TextOf(torv::songs::Part& part, torv_part_text which) {
    switch (which) {
    case TORV_PART_NAME:
        return part.name;
    case TORV_PART_INSTRUMENT:
        return part.instrument;
    case TORV_PART_CLEF:
        return part.clef;
    }
    throw Failure{TORV_BAD_ARGUMENT, "a part has no text " + std::to_string(which)};
}

void Check(const torv_part& part) {
    const auto need = [](bool isGood, const char* what) {
        if (!isGood)
            throw Failure{TORV_OUT_OF_RANGE, what};
    };
    need(part.channel >= -1 && part.channel <= 15, "a channel is 0 to 15, or -1 for none");
    need(part.program >= -1 && part.program <= 127, "a program is 0 to 127, or -1 for none");
    need(part.sing >= TORV_SING_WITH_WORDS && part.sing <= TORV_SING_NEVER, "sing is a torv_choice");
    CheckLevel(part.level);
    need((part.pan >= -1 && part.pan <= 1) || part.pan == TORV_PAN_STAGE, "a pan is -1 to 1, or TORV_PAN_STAGE");
}

struct CurveRange {
    float lowest;
    float highest;
};
CurveRange RangeOf(int32_t curve) { return curve == TORV_CURVE_PITCH ? CurveRange{-24, 24} : CurveRange{0, 127}; }

void CheckCurve(int32_t curve) {
    if (curve < 0 || curve >= TORV_CURVES)
        throw Failure{TORV_BAD_ARGUMENT, "there is no curve " + std::to_string(curve)};
}

} // namespace

torv_status torv_part_add(torv_song* song, const char* name, size_t* index) {
    return Guard([&] {
        const Held<SongObject> held(song);
        torv::songs::Part part;
        part.name = Taken(name, "name");
        held->planning.reserve(held->planning.size() + 1);
        held->song.parts.push_back(std::move(part));
        held->planning.emplace_back();
        if (index)
            *index = held->planning.size() - 1;
    });
}

torv_status torv_part_remove(torv_song* song, size_t part) {
    return Guard([&] {
        const Held<SongObject> held(song);
        CheckIndex(part, held->planning.size(), "part");
        held->song.parts.erase(held->song.parts.begin() + static_cast<std::ptrdiff_t>(part));
        held->planning.erase(held->planning.begin() + static_cast<std::ptrdiff_t>(part));
    });
}

torv_status torv_part_get(torv_song* song, size_t part, torv_part* record) {
    return Guard([&] {
        const Held<SongObject> held(song);
        NeedRecord(record, "torv_part");
        const torv::songs::Part& of = held->Part(part);
        const PartPlanning& planning = held->Planning(part);
        Give(torv_part{0, static_cast<uint32_t>(of.notes.size()), of.track, of.channel, of.program, planning.sing,
                       planning.level, planning.pan},
             record);
    });
}

torv_status torv_part_set(torv_song* song, size_t part, const torv_part* record) {
    return Guard([&] {
        const Held<SongObject> held(song);
        const torv_part taken = Taken(record, "torv_part");
        torv::songs::Part& of = held->Part(part);
        Check(taken);
        of.track = taken.track;
        of.channel = taken.channel;
        of.program = taken.program;
        PartPlanning& planning = held->Planning(part);
        planning.sing = taken.sing;
        planning.level = taken.level;
        planning.pan = taken.pan;
    });
}

torv_status torv_part_get_text(torv_song* song, size_t part, torv_part_text which, char* buffer, size_t capacity,
                               size_t* needed) {
    return Guard([&] {
        const Held<SongObject> held(song);
        Give(TextOf(held->Part(part), which), {buffer, capacity, needed});
    });
}

torv_status torv_part_set_text(torv_song* song, size_t part, torv_part_text which, const char* text) {
    return Guard([&] {
        const Held<SongObject> held(song);
        TextOf(held->Part(part), which) = Taken(text, "text");
    });
}

torv_status torv_part_get_curve(torv_song* song, size_t part, int32_t curve, torv_point* points, size_t capacity,
                                size_t* count) {
    return Guard([&] {
        const Held<SongObject> held(song);
        const PartPlanning& planning = held->Planning(part);
        CheckCurve(curve);
        const auto found = planning.curves.find(curve);
        const size_t all = found == planning.curves.end() ? 0 : found->second.size();
        Need(count, "count") = all;
        if (const size_t taken = std::min(capacity, all); taken > 0)
            std::copy_n(found->second.begin(), taken, &Need(points, "points"));
    });
}

torv_status torv_part_set_curve(torv_song* song, size_t part, int32_t curve, const torv_point* points, size_t count) {
    return Guard([&] {
        const Held<SongObject> held(song);
        PartPlanning& planning = held->Planning(part);
        CheckCurve(curve);
        if (count == 0) {
            planning.curves.erase(curve);
            return;
        }
        Need(points, "points");
        const CurveRange range = RangeOf(curve);
        for (size_t i = 0; i < count; ++i) {
            if (!(points[i].value >= range.lowest && points[i].value <= range.highest))
                throw Failure{TORV_OUT_OF_RANGE, "point " + std::to_string(i) + " has the value " +
                                                     std::to_string(points[i].value) + ", and the curve is from " +
                                                     std::to_string(range.lowest) + " to " +
                                                     std::to_string(range.highest)};
            if (points[i].tick > torv::songs::kLastTick || (i > 0 && points[i].tick <= points[i - 1].tick))
                throw Failure{TORV_OUT_OF_RANGE, "point " + std::to_string(i) + ": points ascend by tick, one a tick"};
        }
        planning.curves[curve].assign(points, points + count);
    });
}
