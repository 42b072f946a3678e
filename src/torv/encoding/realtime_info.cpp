#include "torv/encoding/realtime_info.h"

#include <new>

namespace torv {

namespace {

constexpr DWORD kTerminator = 0xFFFFFFFF;

/// The last triple whose `start` is at or before the target, sought from `hint`; the first one at least.
DWORD FindTriple(DWORD target, DWORD tagSequenceTimeMap::*start, const tagSequenceTimeMap* map, DWORD hint) {
    while (map[hint].clock != kTerminator && map[hint + 1].clock != kTerminator && map[hint + 1].*start <= target)
        ++hint;
    while (hint > 0 && map[hint].*start > target)
        --hint;
    return hint;
}

DWORD TimeIn(const tagSequenceTimeMap& triple, DWORD tick) {
    return triple.clock == kTerminator ? 0 : CMasterTrack::TicksToTime(tick - triple.clock, triple.tempo) + triple.time;
}

} // namespace

tagSequenceTimeMap* CreateSequenceTimeMap(CMasterTrack* master) {
    if (!master)
        return nullptr;
    try {
        CArray<tagSequenceTimeMap> records;
        if (!master->IsCreated())
            records.Add({torv::kDefaultTempo, 0, 0}); // no events: the tempo that applies without any
        else if (!master->GetSequenceTimeMap(records))
            return nullptr;
        const int count = records.GetSize();
        auto* const map = new tagSequenceTimeMap[static_cast<size_t>(count) + 1];
        for (int i = 0; i < count; ++i)
            map[i] = records[i];
        map[count] = {0, kTerminator, kTerminator};
        return map;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void ReleaseSequenceTimeMap(tagSequenceTimeMap* map) { delete[] map; }

DWORD SearchTickPosition(DWORD time, const tagSequenceTimeMap* map, DWORD hint) {
    const tagSequenceTimeMap& triple = map[FindTriple(time, &tagSequenceTimeMap::time, map, hint)];
    return triple.clock == kTerminator ? 0 : CMasterTrack::TimeToTicks(time - triple.time, triple.tempo) + triple.clock;
}

DWORD SearchTimePosition(DWORD tick, const tagSequenceTimeMap* map, DWORD hint) {
    return TimeIn(map[FindTriple(tick, &tagSequenceTimeMap::clock, map, hint)], tick);
}

void ResetRealTimeInfo(tagQuillMidiRealtimeInfo& info) { info.index = info.tick = info.time = 0; }

int UpdateRealTimeInfo(tagQuillMidiRealtimeInfo& info, DWORD tick) {
    if (tick < info.tick)
        return 0;
    info.index = FindTriple(tick, &tagSequenceTimeMap::clock, info.map, info.index);
    info.tick = tick;
    info.time = TimeIn(info.map[info.index], tick);
    return 1;
}

DWORD TickOfSendTime(LONG time, const tagQuillMidiRealtimeInfo& info) {
    return time <= 0 ? 0 : SearchTickPosition(static_cast<DWORD>(time), info.map, info.index);
}

} // namespace torv
