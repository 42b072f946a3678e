#pragma once

#include "torv/platform/platform.h"
#include "torv/score/master_track.h"

/// The running position of the encoder within one track.
struct tagQuillMidiRealtimeInfo {
    DWORD index;                   ///< the time map's triple that holds the position
    const tagSequenceTimeMap* map; ///< borrowed; closed by {0, 0xFFFFFFFF, 0xFFFFFFFF}
    DWORD tick;                    ///< where the encoder is
    DWORD time;                    ///< milliseconds
    DWORD lastSegmentTick;         ///< where the last segment of the last note written starts
    DWORD channel;                 ///< MIDI channel of the track, 0..15
    LONG dynamics;                 ///< level left by the last dynamics icon
};

namespace torv {

/// The master track's time map as an array closed by {0, 0xFFFFFFFF, 0xFFFFFFFF}. The caller frees it with delete[], or
/// with ReleaseSequenceTimeMap from another runtime. Null without a master track and when memory is short. Moves the
/// master track's cursor.
TORV_API tagSequenceTimeMap* CreateSequenceTimeMap(CMasterTrack* master);
/// Frees such an array; null is left alone.
TORV_API void ReleaseSequenceTimeMap(tagSequenceTimeMap* map);

/// @cond not exported
// What follows trusts its map and its hint: a triple of the map, from which it seeks.

/// Milliseconds to ticks and back, through the last triple that starts at or before the target. 0 in a map of nothing
/// but its end.
DWORD SearchTickPosition(DWORD time, const tagSequenceTimeMap* map, DWORD hint);
/// See SearchTickPosition.
DWORD SearchTimePosition(DWORD tick, const tagSequenceTimeMap* map, DWORD hint);

/// Back to the start of the track: index, tick and time 0.
void ResetRealTimeInfo(tagQuillMidiRealtimeInfo& info);
/// Advances to `tick`. A tick before the current one is refused: returns 0 and changes nothing.
int UpdateRealTimeInfo(tagQuillMidiRealtimeInfo& info, DWORD tick);

/// The tick at which a block sent at `time` stands. Times before the song's start stand at tick 0.
DWORD TickOfSendTime(LONG time, const tagQuillMidiRealtimeInfo& info);
/// @endcond

} // namespace torv
