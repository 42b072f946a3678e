#include "torv/encoding/realtime_info.h"

#include <new>

namespace torv {

namespace {

constexpr DWORD kTerminator = 0xFFFFFFFF;

} // namespace

tagSequenceTimeMap* CreateSequenceTimeMap(CMasterTrack* master) {
    if (!master)
        return nullptr;
    CArray<tagSequenceTimeMap> records;
    if (!master->GetSequenceTimeMap(records) || records.IsEmpty())
        records.Add({torv::kDefaultTempo, 0, 0}); // no events: the tempo that applies without any
    const int count = records.GetSize();
    auto* map = new (std::nothrow) tagSequenceTimeMap[count + 1];
    if (!map)
        return nullptr;
    for (int i = 0; i < count; ++i)
        map[i] = records[i];
    map[count] = {0, kTerminator, kTerminator};
    return map;
}

void ReleaseSequenceTimeMap(tagSequenceTimeMap* map) { delete[] map; }

// The terminator is later than every target but the largest, which the tick and time fields never reach before it.
DWORD FindTripleByTime(DWORD time, const tagSequenceTimeMap* map, DWORD hint) {
    while (map[hint].clock != kTerminator && map[hint + 1].clock != kTerminator && map[hint + 1].time <= time)
        ++hint;
    while (hint > 0 && map[hint].time > time)
        --hint;
    return hint;
}

DWORD FindTripleByTick(DWORD tick, const tagSequenceTimeMap* map, DWORD hint) {
    while (map[hint].clock != kTerminator && map[hint + 1].clock != kTerminator && map[hint + 1].clock <= tick)
        ++hint;
    while (hint > 0 && map[hint].clock > tick)
        --hint;
    return hint;
}

DWORD SearchTickPosition(DWORD time, const tagSequenceTimeMap* map, DWORD hint) {
    const tagSequenceTimeMap& triple = map[FindTripleByTime(time, map, hint)];
    return CMasterTrack::TimeToTicks(time - triple.time, triple.tempo) + triple.clock;
}

DWORD SearchTimePosition(DWORD tick, const tagSequenceTimeMap* map, DWORD hint) {
    const tagSequenceTimeMap& triple = map[FindTripleByTick(tick, map, hint)];
    return CMasterTrack::TicksToTime(tick - triple.clock, triple.tempo) + triple.time;
}

void ResetRealTimeInfo(tagQuillMidiRealtimeInfo* info) { info->index = info->tick = info->time = 0; }

int UpdateRealTimeInfo(tagQuillMidiRealtimeInfo* info, DWORD tick) {
    if (tick < info->tick)
        return 0;
    MoveRealTimeInfo(info, tick);
    return 1;
}

void MoveRealTimeInfo(tagQuillMidiRealtimeInfo* info, DWORD tick) {
    info->index = FindTripleByTick(tick, info->map, info->index);
    info->tick = tick;
    info->time = SearchTimePosition(tick, info->map, info->index);
}

DWORD TickOfSendTime(LONG time, const tagQuillMidiRealtimeInfo* info) {
    return time <= 0 ? 0 : SearchTickPosition(static_cast<DWORD>(time), info->map, info->index);
}

} // namespace torv
