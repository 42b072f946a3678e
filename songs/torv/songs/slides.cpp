#include "torv/songs/slides.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>

namespace torv::songs {

namespace {

constexpr double kShortestSlide = 0.3; // seconds
constexpr double kWay = 0.07;          // which the engine takes from one joined note to the next, around its beginning
constexpr double kStep = 0.01;
constexpr double kFineStep = 0.002; // on that way, which is steep
constexpr int kWidestBend = 24;     // semitones
constexpr double kFullBend = 8192;

/// By tick, how many semitones the bend goes up there.
using Changes = std::map<uint32_t, double>;

/// How far the engine is on its way.
double WayBehind(double seconds) {
    const double x = std::clamp(seconds / kWay + 0.5, 0.0, 1.0);
    return x * x * (3 - 2 * x);
}

/// What lacks from where the engine is to the straight line between the notes.
void Slide(double begin, double end, int semitones, const SongClock& clock, Changes& changes) {
    double before = 0;
    const auto moveTo = [&](double seconds, double bend) {
        changes[clock.TickAt(seconds)] += bend - before;
        before = bend;
    };
    double at = begin;
    while (at < end + kWay / 2) {
        const double step = at < end - kWay / 2 ? kStep : kFineStep;
        const double middle = at + step / 2;
        moveTo(at, semitones * (std::min((middle - begin) / (end - begin), 1.0) - WayBehind(middle - end)));
        at += step;
    }
    moveTo(end + kWay / 2, 0);
}

} // namespace

std::vector<bool> BendSlides(const std::vector<SungNote>& notes, const SongClock& clock, Curves& curves) {
    std::vector<bool> areBent(notes.size());
    Changes changes;
    int widest = 0;
    for (size_t i = 0; i + 1 < notes.size(); ++i) {
        const double begin = clock.SecondsAt(notes[i].tick);
        const double end = clock.SecondsAt(notes[i + 1].tick);
        const int semitones = notes[i + 1].key - notes[i].key;
        if (!notes[i].slides || !notes[i + 1].joined || end - begin < kShortestSlide ||
            std::abs(semitones) > kWidestBend)
            continue;
        Slide(begin, end, semitones, clock, changes);
        widest = std::max(widest, std::abs(semitones));
        areBent[i] = true;
    }
    if (changes.empty())
        return areBent;
    double before = 0;
    for (const CurvePoint& point : curves.bends) {
        const double bend = point.value / kFullBend * curves.bendRange;
        changes[point.tick] += bend - before;
        before = bend;
        widest = std::max(widest, curves.bendRange);
    }
    curves.bends.clear();
    curves.bendRange = std::max(widest, 1);
    double bend = 0;
    for (const auto& [tick, change] : changes) {
        bend += change;
        const double value = std::clamp(bend / curves.bendRange * kFullBend, -kFullBend, kFullBend - 1);
        curves.bends.push_back({tick, static_cast<int>(std::lround(value))});
    }
    return areBent;
}

} // namespace torv::songs
