#include "torv/score/grid_manager.h"
#include "torv/score/sequence_object.h"

#include <algorithm>
#include <limits>

namespace {

const tagTimeSignatureMap kNoChange{0, {}};

LONG ClockIn(const torv::SignatureStretch& stretch, int measure, int beat, int tick) {
    return static_cast<LONG>(std::clamp<LONGLONG>(stretch.ClockOf(measure, beat, tick),
                                                  std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()));
}

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

void CGridManager::BuildIndex() {
    m_entries.clear();
    m_byMeasures.clear();
    const int count = m_map.GetSize();
    const torv::SignatureStretch first(count > 0 ? m_map[0] : kNoChange);
    m_entries.push_back({first, first.start, first.firstMeasure});
    for (int i = 1; i < count; ++i) {
        const Entry& before = m_entries.back();
        const torv::SignatureStretch stretch = before.stretch.Next(m_map[i]);
        m_entries.push_back({stretch, std::max(before.latestStart, stretch.start),
                             std::max(before.highestMeasure, stretch.firstMeasure)});
    }

    for (int i = 0; i < count; ++i)
        m_byMeasures.push_back({m_map[i].measure, i, 0});
    std::stable_sort(m_byMeasures.begin(), m_byMeasures.end(),
                     [](const MeasureEntry& a, const MeasureEntry& b) { return a.measure < b.measure; });
    int latest = 0;
    for (MeasureEntry& entry : m_byMeasures)
        entry.latestRecord = latest = std::max(latest, entry.record);
}

tagTimeSignature CGridManager::GetTimeSignature(int measure) const {
    if (m_map.IsEmpty())
        return {};
    const auto at = std::lower_bound(m_byMeasures.begin(), m_byMeasures.end(), measure,
                                     [](const MeasureEntry& entry, int value) { return entry.measure < value; });
    if (at != m_byMeasures.end() && at->measure == measure)
        return m_map[at->record].signature;
    return m_map[at != m_byMeasures.begin() ? (at - 1)->latestRecord : 0].signature;
}

void CGridManager::ClockToSongPosition(DWORD clock, tagSongPosition& position) const {
    const LONG target = static_cast<LONG>(clock);
    const auto after = std::partition_point(m_entries.begin() + 1, m_entries.end(),
                                            [target](const Entry& entry) { return entry.latestStart <= target; });
    const torv::SignatureStretch& stretch = (after - 1)->stretch;
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

/// The stretch that ends where a measure starts, or goes on beyond it. So a measure that starts with a change counts
/// its beats as the stretch before does: positions that hosts have stored mean these clocks.
const torv::SignatureStretch& CGridManager::StretchBefore(int measure) const {
    const auto at = std::partition_point(m_entries.begin() + 1, m_entries.end(),
                                         [measure](const Entry& entry) { return entry.highestMeasure < measure; });
    return (at - 1)->stretch;
}

LONG CGridManager::SongPositionToClock(int measure, int beat, int tick) const {
    return ClockIn(StretchBefore(measure), measure, beat, tick);
}

LONG CGridManager::SongPositionToClock(const tagSongPosition& position) const {
    return SongPositionToClock(static_cast<int>(position.measure), static_cast<int>(position.beat),
                               static_cast<int>(position.tick));
}

LONG CGridManager::SongPositionToClock(const CArray<tagTimeSignatureMap>* map, int measure, int beat, int tick) {
    const int count = map ? map->GetSize() : 0;
    torv::SignatureStretch stretch(count > 0 ? map->GetAt(0) : kNoChange);
    for (int i = 1; i < count && map->GetAt(i).measure < measure; ++i)
        stretch = stretch.Next(map->GetAt(i));
    return ClockIn(stretch, measure, beat, tick);
}
