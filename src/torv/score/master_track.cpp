#include "torv/score/master_track.h"

#include "torv/score/sequence_object.h"

#include <new>

namespace {

using torv::kDefaultTempo;
using torv::kTicksPerQuarter;

constexpr DWORD kMicrosecondsPerMillisecond = 1000;
constexpr DWORD kTimeScale = kTicksPerQuarter * kMicrosecondsPerMillisecond;

tagTimeSignature SignatureOf(const tagMasterEventEntry& entry) {
    tagTimeSignature signature;
    signature.numerator = static_cast<BYTE>(entry.value);
    signature.denominatorExponent = static_cast<BYTE>(entry.value >> 8);
    return signature;
}

/// Counts measures from change to change.
class MeasureCounter {
public:
    explicit MeasureCounter(tagTimeSignature signature) { UseLengthOf(signature); }
    /// The measure at a later clock, which becomes the place to count from. A measure without a length counts nothing.
    WORD AdvanceTo(DWORD clock) {
        if (m_length != 0)
            m_measure = static_cast<WORD>(m_measure + (clock - m_clock) / m_length);
        m_clock = clock;
        return m_measure;
    }
    void UseLengthOf(tagTimeSignature signature) {
        const int length = CSequenceObject::CalcMeasureClock(signature.numerator, signature.denominatorExponent);
        if (length > 0)
            m_length = static_cast<DWORD>(length);
    }
    DWORD Clock() const { return m_clock; }

private:
    DWORD m_clock = 0;
    DWORD m_length = 0;
    WORD m_measure = 0;
};

/// The walk of both searches over one field of the map.
const tagSequenceTimeMap* FindRecord(DWORD target, DWORD tagSequenceTimeMap::*field, CArray<tagSequenceTimeMap>& map,
                                     int& index) {
    const int count = map.GetSize();
    if (index >= count)
        index = count - 1;
    if (index < 0) {
        index = count > 0 ? 0 : -1;
        if (count == 0)
            return nullptr;
    }
    for (; index < count; ++index) {
        const DWORD start = map[index].*field;
        if (start == target)
            return &map[index];
        if (start > target) {
            if (index == 0)
                return nullptr; // before a map that does not begin at 0
            --index;
            return &map[index];
        }
    }
    index = count - 1;
    return &map[index];
}

/// A hint more than one record too far leaves a record that starts after the target: it counts as starting there.
DWORD Distance(DWORD target, DWORD start) { return target > start ? target - start : 0; }

} // namespace

CMasterTrack::CMasterTrack() = default;
CMasterTrack::~CMasterTrack() = default;

int CMasterTrack::Create() {
    if (m_pEvents)
        return 0;
    auto events = std::unique_ptr<CStreamBuffer>(new (std::nothrow) CStreamBuffer);
    if (!events || !events->Create(sizeof(tagMasterEventEntry), torv::kStreamBlockSize, torv::kHeapBlocks))
        return 0;
    m_pEvents = std::move(events);
    return 1;
}

void CMasterTrack::RemoveAll() {
    if (m_pEvents)
        m_pEvents->Empty();
}

void CMasterTrack::SeekToBegin() {
    if (m_pEvents)
        m_pEvents->SeekToBegin();
}

void CMasterTrack::SeekToEnd() {
    if (m_pEvents)
        m_pEvents->SeekToEnd();
}

DWORD CMasterTrack::SeekNext() {
    tagMasterEventEntry entry;
    return m_pEvents && m_pEvents->ReadNextEntry(&entry) ? entry.type : torv::kEndMarkTag;
}

DWORD CMasterTrack::SeekPrev() {
    tagMasterEventEntry entry;
    return m_pEvents && m_pEvents->ReadPrevEntry(&entry) ? entry.type : torv::kTopTag;
}

DWORD CMasterTrack::MoveTo(DWORD clock) { return m_pEvents ? m_pEvents->MoveTo(clock) : 0; }
DWORD CMasterTrack::GetPosition() { return m_pEvents ? m_pEvents->GetPosition() : 0; }

DWORD CMasterTrack::GetLength() {
    SeekToEnd();
    return GetPosition();
}

int CMasterTrack::AddEvent(tagMasterEventEntry* entry) { return m_pEvents ? m_pEvents->AddEntry(entry) : 0; }
int CMasterTrack::InsertEvent(tagMasterEventEntry* entry) { return m_pEvents ? m_pEvents->InsertEntry(entry, 1) : 0; }
int CMasterTrack::RemoveEvent() { return m_pEvents ? m_pEvents->RemoveEntry() : 0; }
int CMasterTrack::ReadEvent(tagMasterEventEntry* entry) { return m_pEvents ? m_pEvents->ReadEntry(entry) : 0; }
int CMasterTrack::WriteEvent(tagMasterEventEntry* entry) { return m_pEvents ? m_pEvents->WriteEntry(entry) : 0; }

void CMasterTrack::StoreLocation(tagLocateMarker* marker) {
    if (m_pEvents)
        m_pEvents->StoreLocation(marker);
}

void CMasterTrack::RestoreLocation(const tagLocateMarker* marker) {
    if (m_pEvents)
        m_pEvents->RestoreLocation(marker, 1);
}

/// Empties the map and calls visit(clock, entry), which adds to it, for every event of the type in time order. Where
/// the visits leave a record open, it is `last` and comes in the end.
template <class Record, class Visit>
int CMasterTrack::BuildMap(CArray<Record>& map, DWORD type, const Record* last, Visit visit) {
    map.RemoveAll();
    if (!m_pEvents)
        return 0;
    m_pEvents->SeekToBegin();
    tagMasterEventEntry entry;
    try {
        while (m_pEvents->ReadNextEntry(&entry))
            if (entry.type == type)
                visit(m_pEvents->GetPosition(), entry);
        if (last)
            map.Add(*last);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return 1;
}

int CMasterTrack::GetTempoMap(CArray<tagTempoMap>& map) {
    tagTempoMap current{0, 0, kDefaultTempo};
    return BuildMap(map, torv::kEventTempo, &current, [&](DWORD clock, const tagMasterEventEntry& entry) {
        if (clock > current.clock) {
            map.Add(current);
            current = {clock, entry.auxiliary, entry.value};
        } else {
            current.tempo = entry.value; // the auxiliary word stays the first event's
        }
    });
}

int CMasterTrack::GetTempoMap2(CArray<tagTempoMap>& map) {
    return BuildMap<tagTempoMap>(map, torv::kEventTempo, nullptr, [&](DWORD clock, const tagMasterEventEntry& entry) {
        map.Add({clock, entry.auxiliary, entry.value});
    });
}

int CMasterTrack::GetSequenceTimeMap(CArray<tagSequenceTimeMap>& map) {
    tagSequenceTimeMap current{kDefaultTempo, 0, 0};
    return BuildMap(map, torv::kEventTempo, &current, [&](DWORD clock, const tagMasterEventEntry& entry) {
        if (clock > current.clock) {
            map.Add(current);
            current.time += TicksToTime(clock - current.clock, current.tempo);
            current.clock = clock;
        }
        current.tempo = entry.value;
    });
}

int CMasterTrack::GetSequenceTimeMap2(CArray<tagSequenceTimeMap>& map) {
    tagSequenceTimeMap current{kDefaultTempo, 0, 0};
    return BuildMap<tagSequenceTimeMap>(map, torv::kEventTempo, nullptr,
                                        [&](DWORD clock, const tagMasterEventEntry& entry) {
                                            current.time += TicksToTime(clock - current.clock, current.tempo);
                                            current.clock = clock;
                                            current.tempo = entry.value;
                                            map.Add(current);
                                        });
}

int CMasterTrack::GetTimeSignatureMap(CArray<tagTimeSignatureMap>& map) {
    tagTimeSignatureMap current{0, m_initialTimeSig};
    MeasureCounter measures(m_initialTimeSig);
    return BuildMap(map, torv::kEventTimeSignature, &current, [&](DWORD clock, const tagMasterEventEntry& entry) {
        const tagTimeSignature signature = SignatureOf(entry);
        if (clock > measures.Clock()) {
            map.Add(current);
            current.measure = measures.AdvanceTo(clock);
            measures.UseLengthOf(signature);
        }
        // A change at the clock of the one before (at 0 too) shows in the map, but the measures up to the next change
        // are still counted by the length before it: bar numbers of existing songs depend on that.
        current.signature = signature;
    });
}

int CMasterTrack::GetTimeSignatureMap2(CArray<tagTimeSignatureMap>& map) {
    MeasureCounter measures(m_initialTimeSig);
    WORD measure = 0;
    return BuildMap<tagTimeSignatureMap>(
        map, torv::kEventTimeSignature, nullptr, [&](DWORD clock, const tagMasterEventEntry& entry) {
            const tagTimeSignature signature = SignatureOf(entry);
            if (clock > measures.Clock()) { // the same rule of lengths as in the map with a starting record
                measure = measures.AdvanceTo(clock);
                measures.UseLengthOf(signature);
            }
            map.Add({measure, signature});
        });
}

DWORD CMasterTrack::TicksToTime(DWORD ticks, DWORD tempo) {
    const uint64_t microseconds = (static_cast<uint64_t>(ticks) * tempo + kTicksPerQuarter / 2) / kTicksPerQuarter;
    return static_cast<DWORD>(microseconds / kMicrosecondsPerMillisecond);
}

DWORD CMasterTrack::TimeToTicks(DWORD milliseconds, DWORD tempo) {
    return tempo ? static_cast<DWORD>((static_cast<uint64_t>(milliseconds) * kTimeScale + tempo / 2) / tempo) : 0;
}

DWORD CMasterTrack::TicksToTime2(DWORD ticks, DWORD tempo) {
    return static_cast<DWORD>(static_cast<uint64_t>(ticks) * tempo / kTicksPerQuarter / kMicrosecondsPerMillisecond);
}

DWORD CMasterTrack::TimeToTicks2(DWORD milliseconds, DWORD tempo) {
    return tempo ? static_cast<DWORD>(static_cast<uint64_t>(milliseconds) * kTimeScale / tempo) : 0;
}

DWORD CMasterTrack::SearchTimePosition(DWORD tick, CArray<tagSequenceTimeMap>& map, int& index) {
    const tagSequenceTimeMap* const record = FindRecord(tick, &tagSequenceTimeMap::clock, map, index);
    if (!record)
        return TicksToTime(tick, kDefaultTempo);
    return TicksToTime(Distance(tick, record->clock), record->tempo) + record->time;
}

DWORD CMasterTrack::SearchTickPosition(DWORD milliseconds, CArray<tagSequenceTimeMap>& map, int& index) {
    const tagSequenceTimeMap* const record = FindRecord(milliseconds, &tagSequenceTimeMap::time, map, index);
    if (!record)
        return TimeToTicks(milliseconds, kDefaultTempo);
    return TimeToTicks(Distance(milliseconds, record->time), record->tempo) + record->clock;
}
