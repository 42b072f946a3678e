#include "torv/score/grid_manager.h"
#include "torv/score/sequence_object.h"

#include <algorithm>
#include <limits>

namespace {

const tagTimeSignatureMap kNoChange{0, {}};

} // namespace

namespace torv {

SignatureStretch::SignatureStretch(const tagTimeSignatureMap& first)
    : firstMeasure(first.measure),
      measureLength(CSequenceObject::CalcMeasureClock(first.signature.numerator, first.signature.denominatorExponent)),
      beatLength(CSequenceObject::CalcNoteLength(first.signature.denominatorExponent, 0, 0)) {}

SignatureStretch SignatureStretch::Next(const tagTimeSignatureMap& record) const {
    SignatureStretch next(record);
    next.start = start + static_cast<LONGLONG>(next.firstMeasure - firstMeasure) * measureLength;
    if (next.measureLength == 0)
        next.measureLength = measureLength; // as the master track counts: what has no length changes none
    return next;
}

LONGLONG SignatureStretch::ClockOf(int measure, int beat, int tick) const {
    return (static_cast<LONGLONG>(measure) - firstMeasure) * measureLength + start +
           static_cast<LONGLONG>(beatLength) * beat + tick;
}

} // namespace torv

tagTimeSignature CGridManager::GetTimeSignature(int measure) const {
    tagTimeSignature signature = m_map.IsEmpty() ? tagTimeSignature{} : m_map[0].signature;
    for (int i = 0; i < m_map.GetSize(); ++i) {
        if (m_map[i].measure <= measure)
            signature = m_map[i].signature; // measure numbers begin again after 65535: a lower one may follow a higher
        if (m_map[i].measure == measure)
            break;
    }
    return signature;
}

void CGridManager::ClockToSongPosition(DWORD clock, tagSongPosition& position) const {
    const LONG target = static_cast<LONG>(clock);
    torv::SignatureStretch stretch(m_map.IsEmpty() ? kNoChange : m_map[0]);
    for (int i = 1; i < m_map.GetSize(); ++i) {
        const torv::SignatureStretch next = stretch.Next(m_map[i]);
        if (target < next.start)
            break;
        stretch = next;
    }
    const LONGLONG offset = target - stretch.start;
    if (stretch.measureLength == 0) {
        position = {static_cast<DWORD>(stretch.firstMeasure), 0, static_cast<DWORD>(offset)};
        return;
    }
    const LONGLONG inMeasure = offset % stretch.measureLength;
    const LONGLONG beat = stretch.beatLength ? inMeasure / stretch.beatLength : 0;
    position = {static_cast<DWORD>(offset / stretch.measureLength + stretch.firstMeasure), static_cast<DWORD>(beat),
                static_cast<DWORD>(inMeasure - beat * stretch.beatLength)};
}

LONG CGridManager::SongPositionToClock(int measure, int beat, int tick) const {
    return SongPositionToClock(&m_map, measure, beat, tick);
}

LONG CGridManager::SongPositionToClock(const tagSongPosition& position) const {
    return SongPositionToClock(static_cast<int>(position.measure), static_cast<int>(position.beat),
                               static_cast<int>(position.tick));
}

/// The stretch that ends where the measure starts, or goes on beyond it. So a measure that starts with a change counts
/// its beats as the stretch before does: positions that hosts have stored mean these clocks.
LONG CGridManager::SongPositionToClock(const CArray<tagTimeSignatureMap>* map, int measure, int beat, int tick) {
    const int count = map ? map->GetSize() : 0;
    torv::SignatureStretch stretch(count > 0 ? map->GetAt(0) : kNoChange);
    for (int i = 1; i < count && map->GetAt(i).measure < measure; ++i)
        stretch = stretch.Next(map->GetAt(i));
    const LONGLONG clock = stretch.ClockOf(measure, beat, tick);
    return static_cast<LONG>(
        std::clamp<LONGLONG>(clock, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()));
}
