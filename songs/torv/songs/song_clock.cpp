#include "torv/songs/song_clock.h"

#include <algorithm>

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

} // namespace torv::songs
