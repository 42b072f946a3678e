#include "torv/songs/tempo_trail.h"

#include <torv/score/master_track.h>

#include <algorithm>
#include <cmath>

namespace torv::songs {

namespace {

double Milliseconds(uint32_t ticks, uint32_t tempo) {
    return ticks * static_cast<double>(tempo) / kTicksPerQuarter / 1000;
}

} // namespace

std::vector<Tempo> WithoutDrift(const std::vector<Tempo>& tempos) {
    std::vector<Tempo> steady = tempos;
    if (steady.empty() || steady.front().tick > 0)
        steady.insert(steady.begin(), {0, kDefaultTempo});
    double trueMilliseconds = 0;
    long long keptMilliseconds = 0;
    for (size_t i = 0; i + 1 < steady.size(); ++i) {
        const uint32_t ticks = steady[i + 1].tick - steady[i].tick;
        uint32_t& tempo = steady[i].microsecondsPerQuarter;
        trueMilliseconds += Milliseconds(ticks, tempo);
        const long long wanted = std::max(std::llround(trueMilliseconds) - keptMilliseconds, 0LL);
        if (CMasterTrack::TicksToTime(ticks, tempo) != wanted)
            tempo = static_cast<uint32_t>(std::clamp<long long>((wanted * 480000 + ticks - 1) / ticks, 1, 0xFFFFFF));
        keptMilliseconds += CMasterTrack::TicksToTime(ticks, tempo);
    }
    return steady;
}

double MillisecondsAt(const std::vector<Tempo>& tempos, uint32_t tick) {
    double milliseconds = 0;
    Tempo current{0, kDefaultTempo};
    for (const Tempo& next : tempos) {
        if (next.tick >= tick)
            break;
        milliseconds += Milliseconds(next.tick - current.tick, current.microsecondsPerQuarter);
        current = next;
    }
    return milliseconds + Milliseconds(tick - current.tick, current.microsecondsPerQuarter);
}

} // namespace torv::songs
