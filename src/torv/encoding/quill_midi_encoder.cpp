#include "torv/encoding/quill_midi_encoder.h"

#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_id.h"
#include "torv/icons/icon_singer.h"
#include "torv/score/csq_event.h"
#include "torv/score/sequence_object.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

namespace {

constexpr DWORD kDefaultPresend = 2000;
constexpr DWORD kMinPresend = 500;
constexpr DWORD kMaxPresend = 5000;
constexpr DWORD kIntervalLimit = 256;
constexpr int kResolutions[] = {1, 2, 4, 8, 16, 30, 60, 90, 120, 240, 480};
constexpr int kDefaultResolutionIndex = 5;
constexpr DWORD kEovmBytes = 16;
constexpr int kDynaffArticulation = 1;
constexpr int kDynamicsFromIcons = 0;
constexpr int kDynamicsFromTrack = 1;

template <class Icon>
Icon* IconOf(CSequenceObject* track, DWORD handle) {
    return dynamic_cast<Icon*>(track->LookupIconObject(torv::PointerOf(handle)));
}

} // namespace

CxQuillMidiEncoder::CxQuillMidiEncoder()
    : m_dwInterval(GetDefaultEventInterval()), m_dwPresend(GetDefaultPresendTime()) {
    std::fill(std::begin(m_nResolutions), std::end(m_nResolutions), GetDefaultExtractResolution());
}

CxQuillMidiEncoder::~CxQuillMidiEncoder() = default;

int CxQuillMidiEncoder::IsValidPresendTime(DWORD milliseconds) {
    return milliseconds >= kMinPresend && milliseconds <= kMaxPresend;
}
int CxQuillMidiEncoder::IsValidEventInterval(DWORD ticks) { return ticks < kIntervalLimit; }
int CxQuillMidiEncoder::IsValidOutMode(int mode) { return mode == kFileMode || mode == kRealTimeMode; }
int CxQuillMidiEncoder::IsValidExtractResolution(int ticks) {
    return ticks == kPointsOnly ||
           std::find(std::begin(kResolutions), std::end(kResolutions), ticks) != std::end(kResolutions);
}
DWORD CxQuillMidiEncoder::GetDefaultPresendTime() { return kDefaultPresend; }
DWORD CxQuillMidiEncoder::GetDefaultEventInterval() { return 0; }
int CxQuillMidiEncoder::GetDefaultExtractResolution() { return kResolutions[kDefaultResolutionIndex]; }
int CxQuillMidiEncoder::GetExtractResolution(int index) {
    return index >= 0 && index < static_cast<int>(std::size(kResolutions)) ? kResolutions[index] : -1;
}

int CxQuillMidiEncoder::SetExtractResolutionAt(int slot, int ticks) {
    if (slot < 0 || slot >= kResolutionSlots || !IsValidExtractResolution(ticks))
        return 0;
    m_nResolutions[slot] = ticks;
    return 1;
}

int CxQuillMidiEncoder::GetExtractResolutionAt(int slot) const {
    return slot >= 0 && slot < kResolutionSlots ? m_nResolutions[slot] : -1;
}

tagSequenceTimeMap* CxQuillMidiEncoder::CreateSequenceTimeMap(CMasterTrack* master) {
    return torv::CreateSequenceTimeMap(master);
}
DWORD CxQuillMidiEncoder::SearchTickPosition(DWORD time, const tagSequenceTimeMap* map, DWORD /*hint*/) {
    return map ? torv::SearchTickPosition(time, map, 0) : 0;
}
DWORD CxQuillMidiEncoder::SearchTimePosition(DWORD tick, const tagSequenceTimeMap* map, DWORD /*hint*/) {
    return map ? torv::SearchTimePosition(tick, map, 0) : 0;
}
void CxQuillMidiEncoder::ResetRealTimeInfo(tagQuillMidiRealtimeInfo* info) {
    if (info)
        torv::ResetRealTimeInfo(*info);
}
int CxQuillMidiEncoder::UpdateRealTimeInfo(tagQuillMidiRealtimeInfo* info, DWORD tick) {
    if (!info || !info->map || tick < info->tick)
        return 0;
    info->index = 0;
    return torv::UpdateRealTimeInfo(*info, tick);
}

int CxQuillMidiEncoder::IntersectTime(DWORD* start, DWORD* end, DWORD a0, DWORD a1, DWORD b0, DWORD b1) {
    const DWORD first = std::max(a0, b0);
    const DWORD last = std::min(a1, b1);
    if (start)
        *start = first;
    if (end)
        *end = last;
    return first < last;
}

DWORD CxQuillMidiEncoder::WriteStartNPRNEvents(BYTE* out, int channel, BYTE numberMsb, tagQuillNPRNBlock* block) {
    return torv::WriteStartNPRNEvents(out, channel, numberMsb, block);
}
DWORD CxQuillMidiEncoder::WriteStartNPRNEvents(BYTE* out, int channel, BYTE numberMsb, DWORD delay,
                                               tagQuillNPRNBlock* block) {
    return torv::WriteStartNPRNEvents(out, channel, numberMsb, delay, block);
}
DWORD CxQuillMidiEncoder::WriteNextNPRNEvents(BYTE* out, BYTE dataMsb, BYTE dataLsb, tagQuillNPRNBlock* block) {
    return torv::WriteNextNPRNEvents(out, dataMsb, dataLsb, block);
}

BYTE CxQuillMidiEncoder::Transpose(int note, int shift) {
    long long shifted = static_cast<long long>(note) + shift;
    if (shifted < 0)
        shifted += (11 - shifted) / 12 * 12;
    else if (shifted >= 128)
        shifted -= (shifted - 116) / 12 * 12;
    return static_cast<BYTE>(shifted);
}

void CxQuillMidiEncoder::RepairPresendTime() {
    if (!IsValidPresendTime(m_dwPresend))
        m_dwPresend = GetDefaultPresendTime();
}

CxQuillMidiEncoder::TrackRun::TrackRun(CxQuillMidiEncoder& encoder, CQuillMidiBuffer& buffer,
                                       const CSequenceObject* track)
    : m_encoder(encoder), m_pBefore(encoder.m_pBuffer) {
    encoder.m_pBuffer = &buffer;
    encoder.m_nTranspose = track ? track->GetTranspose() : 0;
}

CxQuillMidiEncoder::TrackRun::~TrackRun() { m_encoder.m_pBuffer = m_pBefore; }

int CxQuillMidiEncoder::Lack() {
    m_isWhole = false;
    return 0;
}

bool CxQuillMidiEncoder::CanWrite(const CCsqEvent* event, const tagQuillMidiRealtimeInfo* info) const {
    return m_pBuffer && event && info && info->map;
}

int CxQuillMidiEncoder::Place(const torv::BlockWriter& block, const tagQuillMidiRealtimeInfo* info, LONG time) {
    return block.Place(*m_pBuffer, *info, time) ? 1 : Lack();
}

CQuillMidiBuffer* CxQuillMidiEncoder::EncodeSequenceTrack(tagQuillMidiEncodeStruct* encode) {
    if (!encode || !encode->track || !encode->timeMap)
        return nullptr;
    RepairPresendTime();
    m_nOutMode = kRealTimeMode;
    auto buffer = std::unique_ptr<CQuillMidiBuffer>(new (std::nothrow) CQuillMidiBuffer);
    if (!buffer || !buffer->Create(m_nOutMode, m_dwPresend, static_cast<int>(m_dwInterval)))
        return nullptr;
    const TrackRun run(*this, *buffer, encode->track);
    if (!WriteQuillMidiTrack(encode->track, encode->timeMap))
        return nullptr;
    buffer->SeekToEnd();
    return buffer.release();
}

int CxQuillMidiEncoder::WriteQuillMidiTrack(CSequenceObject* track, const tagSequenceTimeMap* map) {
    if (!m_pBuffer || !track || !map)
        return 0;
    tagQuillMidiRealtimeInfo info{};
    info.map = map;
    info.channel = static_cast<DWORD>(track->GetChannel()) & 0x0F;
    info.dynamics = CIconDynamics::GetDefaultDynamics();
    m_isWhole = true;

    CCsqEvent event;
    if (!event.Attach(track))
        return 0;
    for (int kind = event.GetNext(); kind != torv::kEventEnd; kind = event.GetNext()) {
        if (event.GetPosition() > info.tick)
            torv::UpdateRealTimeInfo(info, event.GetPosition());
        if (kind == torv::kEventAicon) {
            if (track->GetDynamicsMode() == kDynamicsFromIcons)
                WriteQsqDynamicsEvent(&event, &info);
        } else if (kind == torv::kEventAnote) {
            WriteCsqAnoteEvent(&event, &info);
        } else if (kind == torv::kEventSinger) {
            WriteCsqSingerEvent(&event, &info);
        }
    }

    if (track->GetDynamicsMode() == kDynamicsFromTrack)
        InsertContinuousDynamics(track, &info);
    InsertContinuousVoiceControl(track, &info);
    InsertContinuousTremoloDepth(track, &info);
    InsertContinuousPitchBend(track, &info);
    InsertContinuousPitchBendSens(track, &info);
    return m_isWhole;
}

int CxQuillMidiEncoder::WriteCsqSingerEvent(CCsqEvent* event, tagQuillMidiRealtimeInfo* info) {
    const tagCsqEventSinger* record = CanWrite(event, info) ? event->GetSingerEventParam() : nullptr;
    if (!record)
        return 0;
    const CIconSinger* icon = IconOf<CIconSinger>(event->GetSequence(), record->iconHandle);
    if (!icon)
        return 1;
    // A singer named within the first presend milliseconds still arrives in time, with a delay that is shorter.
    const DWORD delay = std::min(info->time, m_dwPresend);
    torv::BlockWriter blocks;
    blocks.Open(info->channel, torv::kNprnSingerLanguage, delay).Put(icon->GetLanguageCode());
    blocks.Open(info->channel, torv::kNprnSingerProgram, delay).Put(icon->GetProgramCode());
    const int placed = Place(blocks, info, static_cast<LONG>(info->time - delay));
    m_pBuffer->RaiseLast(info->tick, info->time);
    return placed;
}

int CxQuillMidiEncoder::WriteQsqDynamicsEvent(CCsqEvent* event, tagQuillMidiRealtimeInfo* info) {
    const tagCsqEventAicon* record = CanWrite(event, info) ? event->GetAiconEventParam() : nullptr;
    if (!record)
        return 0;
    CIconDynamics* icon = IconOf<CIconDynamics>(event->GetSequence(), record->iconHandle);
    if (!icon)
        return 1;
    if (info->time < m_dwPresend)
        return 0;
    if (torv::ArticulationFromID(icon->GetIconID()) != kDynaffArticulation) {
        const int written = InsertContinuousDynamics(event->GetPosition(), icon, info);
        info->dynamics = CIconDynamics::CalcExportDynamics(info->dynamics, icon->GetEndDynamics());
        return written;
    }
    torv::BlockWriter block;
    block.Open(info->channel, torv::kNprnDynamics, m_dwPresend).Put(icon->GetStartDynamics());
    const int placed = Place(block, info, static_cast<LONG>(info->time - m_dwPresend));
    info->dynamics = icon->GetStartDynamics();
    m_pBuffer->RaiseLast(info->tick, info->time);
    return placed;
}

int CxQuillMidiEncoder::WriteQuillMidiMessage(DWORD tick, DWORD interval, const BYTE* bytes, DWORD count) {
    return m_pBuffer && m_pBuffer->InsertMessagesAt(tick, interval, bytes, count);
}

int CxQuillMidiEncoder::WriteChMessage(BYTE status, BYTE data1) {
    const BYTE bytes[] = {status, data1};
    return m_pBuffer && m_pBuffer->InsertEvent(bytes, sizeof bytes, 0, 1);
}

int CxQuillMidiEncoder::WriteChMessage(BYTE status, BYTE data1, BYTE data2) {
    const BYTE bytes[] = {status, data1, data2};
    return m_pBuffer && m_pBuffer->InsertEvent(bytes, sizeof bytes, 0, 1);
}

int CxQuillMidiEncoder::WriteEOVM(DWORD delta, int channel, DWORD delay) {
    BYTE bytes[kEovmBytes] = {}; // the last four are filler
    tagQuillNPRNBlock block;
    torv::WriteStartNPRNEvents(bytes, channel, torv::kNprnEovm, &block);
    return m_pBuffer && m_pBuffer->AddEvent(delta, bytes, sizeof bytes, static_cast<LONG>(delay));
}
