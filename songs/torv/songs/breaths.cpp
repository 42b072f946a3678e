#include "torv/songs/breaths.h"

#include <algorithm>

namespace torv::songs {

namespace {

// In seconds.
constexpr double kFaded = 0.22;         // after the end of a note it is not heard any more
constexpr double kShortestBreath = 0.2; // a shorter one is a gasp
constexpr double kLongestBreath = 0.45;
constexpr double kHeld = 0.12; // until the note begins, whose first consonants may stand there

constexpr double kLeadSecond = 960; // ticks: what leads to a song goes at 120 beats a minute

} // namespace

std::vector<Breath> BreathsBefore(const std::vector<SungNote>& notes, uint32_t lead, const SongClock& clock) {
    std::vector<Breath> breaths(notes.size());
    for (size_t i = 0; i < notes.size(); ++i) {
        const uint32_t tick = notes[i].tick;
        const uint32_t pause = i == 0 ? tick + lead : tick - std::min(tick, notes[i - 1].tick + notes[i - 1].length);
        const double second = tick == 0 ? kLeadSecond : clock.TickAt(clock.SecondsAt(tick) + 1) - tick;
        const double room = pause - (kFaded + kHeld) * second;
        if (notes[i].joined || room < kShortestBreath * second)
            continue;
        const auto length = static_cast<uint32_t>(std::min(room, kLongestBreath * second));
        breaths[i] = {length + static_cast<uint32_t>(kHeld * second), length};
    }
    return breaths;
}

} // namespace torv::songs
