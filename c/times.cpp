// Tempo, meter and measures of songs.
#include "song_object.h"

#include <torv/songs/song_clock.h>
#include <torv/songs/song_error.h>

#include <algorithm>
#include <bit>

using namespace torv::c;

namespace {

constexpr uint32_t kSlowest = 0xFFFFFF; // microseconds to a quarter note
constexpr uint32_t kHighestNumerator = 255;
constexpr uint32_t kHighestDenominator = 128;

void CheckTick(uint32_t tick) {
    if (tick > torv::songs::kLastTick)
        throw Failure{TORV_OUT_OF_RANGE, "tick " + std::to_string(tick) + " is beyond the last one, " +
                                             std::to_string(torv::songs::kLastTick)};
}

/// Puts a change in its place, or in that of the one at its tick.
template <class Change>
void Put(std::vector<Change>& changes, const Change& change) {
    const auto place = std::lower_bound(changes.begin(), changes.end(), change,
                                        [](const Change& a, const Change& b) { return a.tick < b.tick; });
    if (place != changes.end() && place->tick == change.tick)
        *place = change;
    else
        changes.insert(place, change);
}

template <class Change>
void RemoveAt(std::vector<Change>& changes, size_t index, const char* what) {
    CheckIndex(index, changes.size(), what);
    changes.erase(changes.begin() + static_cast<std::ptrdiff_t>(index));
}

} // namespace

torv_status torv_song_get_tempo(torv_song* song, size_t index, torv_tempo* tempo) {
    return Guard([&] {
        const Held<SongObject> held(song);
        NeedRecord(tempo, "torv_tempo");
        CheckIndex(index, held->song.tempos.size(), "tempo");
        const torv::songs::Tempo& found = held->song.tempos[index];
        Give(torv_tempo{0, found.tick, found.microsecondsPerQuarter}, tempo);
    });
}

torv_status torv_song_set_tempo(torv_song* song, const torv_tempo* tempo) {
    return Guard([&] {
        const Held<SongObject> held(song);
        const torv_tempo taken = Taken(tempo, "torv_tempo");
        CheckTick(taken.tick);
        if (taken.microseconds == 0 || taken.microseconds > kSlowest)
            throw Failure{TORV_OUT_OF_RANGE, "a tempo has 1 to 16777215 microseconds to a quarter note"};
        Put(held->song.tempos, {taken.tick, taken.microseconds});
    });
}

torv_status torv_song_remove_tempo(torv_song* song, size_t index) {
    return Guard([&] { RemoveAt(Held<SongObject>(song)->song.tempos, index, "tempo"); });
}

torv_status torv_song_get_meter(torv_song* song, size_t index, torv_meter* meter) {
    return Guard([&] {
        const Held<SongObject> held(song);
        NeedRecord(meter, "torv_meter");
        CheckIndex(index, held->song.meters.size(), "meter");
        const torv::songs::Meter& found = held->song.meters[index];
        Give(torv_meter{0, found.tick, static_cast<uint32_t>(found.numerator), 1U << found.denominatorExponent}, meter);
    });
}

torv_status torv_song_set_meter(torv_song* song, const torv_meter* meter) {
    return Guard([&] {
        const Held<SongObject> held(song);
        const torv_meter taken = Taken(meter, "torv_meter");
        CheckTick(taken.tick);
        if (taken.numerator == 0 || taken.numerator > kHighestNumerator || !std::has_single_bit(taken.denominator) ||
            taken.denominator > kHighestDenominator)
            throw Failure{TORV_OUT_OF_RANGE, "a meter is 1 to 255 over 1, 2, 4, 8, 16, 32, 64 or 128"};
        Put(held->song.meters, {taken.tick, static_cast<int>(taken.numerator), std::countr_zero(taken.denominator)});
        held->RemakeMeasures();
    });
}

torv_status torv_song_remove_meter(torv_song* song, size_t index) {
    return Guard([&] {
        const Held<SongObject> held(song);
        RemoveAt(held->song.meters, index, "meter");
        held->RemakeMeasures();
    });
}

torv_status torv_song_get_measure(torv_song* song, size_t index, torv_measure* measure) {
    return Guard([&] {
        const Held<SongObject> held(song);
        NeedRecord(measure, "torv_measure");
        CheckIndex(index, held->song.measures.size(), "measure");
        const torv::songs::Measure& found = held->song.measures[index];
        Give(torv_measure{0, found.tick, found.length, found.number}, measure);
    });
}

torv_status torv_song_find_measure(torv_song* song, int32_t number, uint32_t* tick) {
    return Guard([&] {
        const Held<SongObject> held(song);
        try {
            Need(tick, "tick") = torv::songs::TickOfMeasure(held->song, number);
        } catch (const torv::songs::SongError& error) {
            throw Failure{TORV_NOT_FOUND, error.what()};
        }
    });
}

torv_status torv_song_seconds_at(torv_song* song, uint32_t tick, double* seconds) {
    return Guard([&] {
        const Held<SongObject> held(song);
        Need(seconds, "seconds") = torv::songs::SongClock(held->song.tempos).SecondsAt(tick);
    });
}
