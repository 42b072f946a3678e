#include "torv/songs/song_clock.h"

#include <algorithm>
#include <cmath>

namespace torv::songs {

SongClock::SongClock(const std::vector<Tempo>& tempos) {
    const auto perTick = [](uint32_t tempo) { return tempo / 1e6 / kTicksPerQuarter; };
    m_changes.push_back({0, 0, perTick(kDefaultTempo)});
    for (const Tempo& tempo : tempos)
        m_changes.push_back({tempo.tick, SecondsAt(tempo.tick), perTick(tempo.microsecondsPerQuarter)});
}

double SongClock::SecondsAt(uint32_t tick) const {
    const auto next = std::upper_bound(m_changes.begin() + 1, m_changes.end(), tick,
                                       [](uint32_t at, const Change& change) { return at < change.tick; });
    const Change& change = *(next - 1);
    return change.seconds + (tick - change.tick) * change.secondsPerTick;
}

uint32_t SongClock::TickAt(double seconds) const {
    const auto next = std::upper_bound(m_changes.begin() + 1, m_changes.end(), seconds,
                                       [](double at, const Change& change) { return at < change.seconds; });
    const Change& change = *(next - 1);
    const double tick = change.tick + std::round((seconds - change.seconds) / change.secondsPerTick);
    return static_cast<uint32_t>(std::clamp(tick, 0.0, static_cast<double>(kLastTick)));
}

} // namespace torv::songs
