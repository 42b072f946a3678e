#include "torv/songs/fermatas.h"

#include <algorithm>

namespace torv::songs {

namespace {

constexpr uint32_t kLongestHeld = 2 * kTicksPerQuarter;
constexpr uint32_t kSlowest = 0xFFFFFF;

struct Span {
    uint32_t begin;
    uint32_t end;
};

/// Fermatas of parts that meet are one.
std::vector<Span> HeldSpans(const Song& song) {
    std::vector<Span> spans;
    const auto add = [&spans](uint32_t tick, uint32_t length) {
        spans.push_back({tick + length - std::min(length, kLongestHeld), tick + length});
    };
    for (const Hold& hold : song.holds)
        add(hold.tick, hold.length);
    for (const Part& part : song.parts)
        for (const Note& note : part.notes)
            if (note.fermata)
                add(note.tick, note.length);
    std::sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.begin < b.begin; });
    std::vector<Span> joined;
    for (const Span& span : spans)
        if (joined.empty() || span.begin >= joined.back().end)
            joined.push_back(span);
        else
            joined.back().end = std::max(joined.back().end, span.end);
    return joined;
}

Tempo Held(Tempo tempo) {
    tempo.microsecondsPerQuarter = std::min(tempo.microsecondsPerQuarter + tempo.microsecondsPerQuarter / 2, kSlowest);
    return tempo;
}

} // namespace

void HoldFermatas(Song& song) {
    const std::vector<Span> spans = HeldSpans(song);
    std::vector<Tempo> tempos;
    auto next = song.tempos.begin();
    Tempo now;
    const auto copyUntil = [&](uint32_t tick, bool isHeld) {
        for (; next != song.tempos.end() && next->tick < tick; ++next) {
            now = *next;
            tempos.push_back(isHeld ? Held(now) : now);
        }
    };
    for (const Span& span : spans) {
        copyUntil(span.begin, false);
        if (next != song.tempos.end() && next->tick == span.begin)
            now = *next++;
        now.tick = span.begin;
        tempos.push_back(Held(now));
        copyUntil(span.end, true);
        if (next == song.tempos.end() || next->tick > span.end) {
            now.tick = span.end;
            tempos.push_back(now);
        }
    }
    copyUntil(kLastTick + 1, false);
    song.tempos = std::move(tempos);
}

} // namespace torv::songs
