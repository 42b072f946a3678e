#pragma once

#include "torv/platform/platform.h"
#include "torv/score/master_track.h"

/// The running position of the encoder within one track.
struct tagQuillMidiRealtimeInfo {
    DWORD index;                   ///< the time map's triple that holds the position
    const tagSequenceTimeMap* map; ///< borrowed; closed by {0, 0xFFFFFFFF, 0xFFFFFFFF}
    DWORD tick;
    DWORD time;            ///< milliseconds
    DWORD lastSegmentTick; ///< where the last segment of the last note written starts
    DWORD channel;         ///< MIDI channel of the track, 0..15
    LONG dynamics;         ///< level left by the last dynamics icon
};

namespace torv {

/// The master track's time map as an array closed by {0, 0xFFFFFFFF, 0xFFFFFFFF}. The caller frees it with delete[], or
/// with ReleaseSequenceTimeMap from another runtime. Null without a master track. Moves the master track's cursor.
TORV_API tagSequenceTimeMap* CreateSequenceTimeMap(CMasterTrack* master);
TORV_API void ReleaseSequenceTimeMap(tagSequenceTimeMap* map);

/// The last triple that starts at or before a time in milliseconds (a tick), sought from the triple `hint`.
DWORD FindTripleByTime(DWORD time, const tagSequenceTimeMap* map, DWORD hint);
DWORD FindTripleByTick(DWORD tick, const tagSequenceTimeMap* map, DWORD hint);

/// Milliseconds to ticks and back through a closed map. The walk starts at the triple `hint`, so a near hint is cheap.
TORV_API DWORD SearchTickPosition(DWORD time, const tagSequenceTimeMap* map, DWORD hint);
TORV_API DWORD SearchTimePosition(DWORD tick, const tagSequenceTimeMap* map, DWORD hint);

/// Back to the start of the track: index, tick and time 0.
TORV_API void ResetRealTimeInfo(tagQuillMidiRealtimeInfo* info);
/// Advances to `tick`. A tick before the current one is refused: returns 0 and changes nothing.
TORV_API int UpdateRealTimeInfo(tagQuillMidiRealtimeInfo* info, DWORD tick);
/// What ResetRealTimeInfo and then UpdateRealTimeInfo(tick) give, without walking the map from its start.
void MoveRealTimeInfo(tagQuillMidiRealtimeInfo* info, DWORD tick);

/// The tick at which a block sent at `time` stands. Times before the song's start stand at tick 0.
DWORD TickOfSendTime(LONG time, const tagQuillMidiRealtimeInfo* info);

} // namespace torv
