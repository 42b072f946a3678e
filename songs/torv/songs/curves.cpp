#include "torv/songs/curves.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace torv::songs {

namespace {

constexpr int kUsualDynamics = 72;
constexpr int kUsualVelocity = 80;
constexpr double kUnitsPerVelocity = 0.6; // 0.12 dB: the engine adds 0.08
constexpr double kUnitsPerDecade = 40 / 0.2;
constexpr int kFadeBelow = 12;    // of the engine's dynamics: there they go to silence at 0
constexpr int kUsualVolume = 100; // of controller 7, as General MIDI has it
constexpr int kFullExpression = 127;
constexpr int kStep = 16;             // from one mark to the next, of a hairpin that leads nowhere
constexpr double kAccent = 18;        // of "sfz" and the like
constexpr uint32_t kHairpinStep = 30; // ticks
constexpr int kWidestBend = 24;
constexpr const char* kSoftest = "ppp";
constexpr const char* kLoudest = "fff";

using Levels = std::map<std::string, int>;

Levels LevelsOf(const Databases& databases) {
    Levels levels;
    for (const Databases::Entry& entry : databases.List(kDynamics))
        if (const auto* const icon =
                dynamic_cast<const CIconDynamics*>(databases.Manager().GetModelIconObject(entry.id));
            icon && torv::ArticulationFromID(entry.id) == 1)
            levels[entry.name] = icon->GetStartDynamics();
    return levels;
}

/// The level that a mark leaves: of "sfp" the p; none for "sfz" and what is not known.
std::optional<int> LevelOf(const Levels& levels, std::string mark) {
    if (mark.starts_with("pppp") || mark.starts_with("ffff"))
        mark = mark[0] == 'p' ? kSoftest : kLoudest;
    if ((mark.starts_with("sf") || mark.starts_with("fp")) && mark.find('p') != std::string::npos)
        mark = mark.substr(mark.find('p'));
    const auto found = levels.find(mark);
    return found == levels.end() ? std::nullopt : std::optional(found->second);
}

bool IsAccent(const std::string& mark) {
    return mark.starts_with("sf") || mark.starts_with("rf") || mark.starts_with("fp") || mark == "fz";
}

/// What the marks and hairpins say, from tick to tick.
std::map<uint32_t, double> WrittenLevels(const std::vector<Dynamic>& dynamics, const Levels& levels) {
    std::map<uint32_t, double> written{{0, kUsualDynamics}};
    double now = kUsualDynamics;
    for (size_t i = 0; i < dynamics.size(); ++i) {
        const Dynamic& each = dynamics[i];
        if (each.kind == Dynamic::Kind::Level) {
            now = LevelOf(levels, each.level).value_or(now);
            written[each.tick] = now;
            continue;
        }
        const double step = each.kind == Dynamic::Kind::Crescendo ? kStep : -kStep;
        const double from = now;
        const double to = LevelOf(levels, each.level).value_or(from + step);
        const uint32_t next = i + 1 < dynamics.size() ? dynamics[i + 1].tick : kLastTick;
        const uint32_t end = std::min(each.tick + each.length, std::max(next, each.tick));
        for (uint32_t tick = each.tick; tick < end; tick += kHairpinStep)
            written[tick] = from + (to - from) * (tick - each.tick) / each.length;
        now = from + (to - from) * (end - each.tick) / std::max(each.length, 1U);
        written[end] = now;
    }
    return written;
}

/// What the notes say for themselves.
std::map<uint32_t, double> NoteLevels(const Part& part, const VoiceLine& line) {
    std::vector<int> velocities;
    for (const SungNote& note : line.notes)
        velocities.push_back(note.velocity);
    const auto isLevel = [](const Dynamic& dynamic) { return dynamic.kind == Dynamic::Kind::Level; };
    int usual = kUsualVelocity;
    if (!velocities.empty() && std::any_of(part.dynamics.begin(), part.dynamics.end(), isLevel)) {
        const auto middle = velocities.begin() + static_cast<std::ptrdiff_t>(velocities.size() / 2);
        std::nth_element(velocities.begin(), middle, velocities.end());
        usual = *middle;
    }
    std::map<uint32_t, double> levels{{0, 0.0}};
    auto mark = part.dynamics.begin();
    for (const SungNote& note : line.notes) {
        double level = kUnitsPerVelocity * (note.velocity - usual);
        while (mark != part.dynamics.end() && mark->tick < note.tick)
            ++mark;
        for (auto at = mark; at != part.dynamics.end() && at->tick < note.tick + note.length / 2; ++at)
            if (IsAccent(at->level)) {
                level += kAccent;
                break;
            }
        levels[note.tick] = level;
    }
    return levels;
}

std::map<uint32_t, double> ControllerLevels(const std::vector<Controller>& controllers) {
    const auto units = [](int value, int usual) {
        return value == 0 ? -1000.0 : kUnitsPerDecade * std::log10(static_cast<double>(value) / usual);
    };
    std::map<uint32_t, double> levels{{0, 0.0}};
    double volume = 0;
    double expression = 0;
    for (const Controller& controller : controllers) {
        if (controller.number == 7)
            volume = units(controller.value, kUsualVolume);
        else if (controller.number == 11)
            expression = units(controller.value, kFullExpression);
        levels[controller.tick] = volume + expression;
    }
    return levels;
}

/// The engine's dynamics for a level in its units, which is as many decibels below the others where these fade.
int DynamicsFor(double level) {
    if (level >= kFadeBelow)
        return static_cast<int>(std::lround(std::min(level, 127.0)));
    int dynamics = kFadeBelow - 1;
    while (dynamics > 0 &&
           level < dynamics + kUnitsPerDecade / 2 * std::log10(static_cast<double>(dynamics) / kFadeBelow))
        --dynamics;
    return dynamics;
}

/// The sum of steps.
std::vector<CurvePoint> Sum(const std::vector<std::map<uint32_t, double>>& parts) {
    std::map<uint32_t, double> changes;
    for (const auto& part : parts) {
        double before = 0;
        for (const auto& [tick, value] : part) {
            changes[tick] += value - before;
            before = value;
        }
    }
    std::vector<CurvePoint> points;
    double now = 0;
    for (const auto& [tick, change] : changes) {
        now += change;
        const int value = DynamicsFor(now);
        if (points.empty() || points.back().value != value)
            points.push_back({tick, value});
    }
    if (points.size() == 1 && points[0].value == kUsualDynamics)
        points.clear();
    return points;
}

void AddBends(const std::vector<PitchBend>& bends, Curves& curves) {
    double widest = 0;
    for (const PitchBend& bend : bends)
        widest = std::max(widest, std::abs(bend.semitones));
    if (widest == 0)
        return;
    curves.bendRange = std::clamp(static_cast<int>(std::ceil(widest)), 1, kWidestBend);
    for (const PitchBend& bend : bends)
        curves.bends.push_back(
            {bend.tick,
             static_cast<int>(std::lround(std::clamp(bend.semitones / curves.bendRange * 8192, -8192.0, 8191.0)))});
}

} // namespace

Curves MakeCurves(const Part& part, const VoiceLine& line, const Databases& databases) {
    Curves curves;
    curves.dynamics = Sum({WrittenLevels(part.dynamics, LevelsOf(databases)), NoteLevels(part, line),
                           ControllerLevels(part.controllers)});
    AddBends(part.bends, curves);
    return curves;
}

} // namespace torv::songs
