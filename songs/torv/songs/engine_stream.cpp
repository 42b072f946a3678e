#include "torv/songs/engine_stream.h"

#include <new>

namespace torv::songs {

namespace {

struct TimeMapDeleter {
    void operator()(tagSequenceTimeMap* map) const { torv::ReleaseSequenceTimeMap(map); }
};
using TimeMap = std::unique_ptr<tagSequenceTimeMap, TimeMapDeleter>;

TimeMap MakeTimeMap(const Score& score) {
    TimeMap map(CxQuillMidiEncoder::CreateSequenceTimeMap(score.song->GetMasterTrack()));
    if (!map)
        throw std::bad_alloc();
    return map;
}

} // namespace

std::unique_ptr<CQuillMidiBuffer> MakeEngineStream(const Score& score, const ScorePart& part, DWORD presend) {
    const TimeMap map = MakeTimeMap(score);
    CxQuillMidiEncoder encoder;
    encoder.SetPresendTime(presend);
    tagQuillMidiEncodeStruct encode{part.track, map.get()};
    std::unique_ptr<CQuillMidiBuffer> stream(encoder.EncodeSequenceTrack(&encode));
    if (!stream)
        throw std::bad_alloc();
    return stream;
}

DWORD StreamTimeOfTick(const Score& score, DWORD tick) {
    return CxQuillMidiEncoder::SearchTimePosition(tick + score.leadTicks, MakeTimeMap(score).get(), 0);
}

} // namespace torv::songs
