#include "torv/icons/icon_dynamics.h"

#include "torv/icons/break_point_export.h"
#include "torv/typed_file/typed_file.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr int kLoudest = 127;
constexpr int kDefaultDynamics = 72;
constexpr int kThresholds[] = {113, 97, 81, 65, 49, 33, 17, 0};

int ClampLevel(int value) { return std::clamp(value, 0, kLoudest); }
int ClampOffset(int value) { return std::clamp(value, -kLoudest, kLoudest); }

} // namespace

namespace torv {

void ReleaseIconRecord(tagDynamicsIconObject* record) {
    if (!record)
        return;
    ReleaseIconRecord(&record->header);
    delete[] record->points;
    record->points = nullptr;
}

} // namespace torv

CIconDynamics::CIconDynamics(int status, int articulation, int variation)
    : CIconObject(status, articulation, variation) {}

CIconDynamics::CIconDynamics(CIconDynamics* other) : CIconDynamics(torv::OrEmpty(other)) {}

int CIconDynamics::IsContinuance() { return !IsLevel(); }

int CIconDynamics::NormalizeValue(int value) const {
    return IsLevel() ? ClampLevel(value) : IsChange() ? ClampOffset(value) : value;
}

void CIconDynamics::NormalizeEnds() {
    m_nStart = NormalizeValue(m_nStart);
    m_nEnd = NormalizeValue(m_nEnd);
}

int CIconDynamics::SetStartDynamics(int dynamics) {
    if (IsLevel())
        return SetEndDynamics(dynamics);
    if (!IsChange())
        return 0;
    m_nStart = dynamics; // no range here, though the end has one: hosts store starts beyond it
    return 1;
}

int CIconDynamics::SetEndDynamics(int dynamics) {
    if ((!IsLevel() && !IsChange()) || NormalizeValue(dynamics) != dynamics)
        return 0;
    m_nEnd = dynamics;
    if (IsLevel())
        m_nStart = dynamics;
    return 1;
}

int CIconDynamics::CalcExportDynamics(int base, int value) {
    return static_cast<int>(std::clamp<long long>(static_cast<long long>(base) + value, 0, kLoudest));
}

int CIconDynamics::GetThreshold(int index) {
    return index >= 0 && index < static_cast<int>(std::size(kThresholds)) ? kThresholds[index] : -1;
}

int CIconDynamics::ScanThresholdIndex(int value) {
    const auto found = std::find_if(std::begin(kThresholds), std::end(kThresholds) - 1,
                                    [value](int threshold) { return threshold <= value; });
    return static_cast<int>(found - std::begin(kThresholds));
}

int CIconDynamics::GetDefaultDynamics() { return kDefaultDynamics; }

int CIconDynamics::ReadKeys(CxTypedFile* file, const char* section) {
    m_nStart = torv::ParseInteger(file->ReadAt(section, "StartDyn", nullptr));
    m_nEnd = torv::ParseInteger(file->ReadAt(section, "EndDyn", nullptr));
    NormalizeEnds();
    return ReadCurve(m_points, file, section, kCurveKeys);
}

int CIconDynamics::LoadPreset(const char* path) {
    CxTypedFile file;
    if (!LoadPresetFile(file, path))
        return 0;
    if (IsLevel())
        m_dwLength = 1;
    if (ReadKeys(&file, kParameterSection) == 0)
        return 1;
    for (POSITION at = m_points.GetHeadPosition(); at;) {
        tagBreakPoint& point = m_points.GetNext(at);
        point.value = static_cast<SHORT>(NormalizeValue(point.value));
    }
    return 1;
}

int CIconDynamics::ConstructParameter(CxTypedFile* file, const char* section) {
    if (!CIconObject::ConstructParameter(file, section))
        return 0;
    m_points.RemoveAll();
    ReadKeys(file, section);
    return 1;
}

int CIconDynamics::DescribeParameter(CxTypedFile* file, const char* section) {
    if (!CIconObject::DescribeParameter(file, section))
        return 0;
    WriteNumber(file, section, "StartDyn", m_nStart);
    WriteNumber(file, section, "EndDyn", m_nEnd);
    WriteCurve(m_points, file, section, kCurveKeys);
    return 1;
}

int CIconDynamics::ReplaceParameter(CIconObject* other) {
    if (!CIconObject::ReplaceParameter(other))
        return 0;
    if (const auto* const dynamics = dynamic_cast<CIconDynamics*>(other)) {
        m_nStart = dynamics->m_nStart;
        m_nEnd = dynamics->m_nEnd;
        m_points = dynamics->m_points;
    }
    return 1;
}

int CIconDynamics::ConstructParameter(const tagDynamicsIconObject* record) {
    if (!record || !CIconObject::ConstructParameter(&record->header))
        return 0;
    m_dwLength = record->length;
    m_nStart = record->startDynamics;
    m_nEnd = record->endDynamics;
    torv::TakePointArray(m_points, record->points, record->pointCount);
    return 1;
}

int CIconDynamics::DescribeParameter(tagDynamicsIconObject* record) const {
    if (!record || !CIconObject::DescribeParameter(&record->header))
        return 0;
    record->length = m_dwLength;
    record->startDynamics = static_cast<SHORT>(m_nStart);
    record->endDynamics = static_cast<SHORT>(m_nEnd);
    record->points = torv::NewPointArray(m_points, record->pointCount);
    return 1;
}

int CIconDynamics::ExportBreakPoint(CBreakPointList* list, DWORD clock) {
    if (!list)
        return 0;
    int left = m_points.GetCount(); // counted first: a host may pass the icon's own list
    tagBreakPoint point{static_cast<LONG>(clock), static_cast<SHORT>(m_nStart), torv::kBreakPointEdge};
    list->AddTail(point);
    for (POSITION at = m_points.GetHeadPosition(); left > 0; --left) {
        point = torv::ExportPoint(m_points.GetNext(at), clock, m_dwLength);
        list->AddTail(point);
    }
    point = {static_cast<LONG>(clock + m_dwLength), static_cast<SHORT>(m_nEnd), torv::kBreakPointEdge};
    list->AddTail(point);
    return list->GetCount();
}

int CIconDynamics::NormalizeBreakPointArray(DWORD clock, CBreakPointArray& array, int base) {
    if (m_points.IsEmpty() || m_points.GetHead().position >= 1) {
        const WORD flags = m_points.IsEmpty() ? WORD{0} : m_points.GetHead().flags;
        tagBreakPoint head{static_cast<LONG>(clock), static_cast<SHORT>(base), flags};
        array.Add(head);
    }
    for (POSITION at = m_points.GetHeadPosition(); at;) {
        tagBreakPoint point = torv::ExportPoint(m_points.GetNext(at), clock, m_dwLength);
        point.value = static_cast<SHORT>(CalcExportDynamics(base, point.value));
        array.Add(point);
    }
    tagBreakPoint end{static_cast<LONG>(clock + m_dwLength), static_cast<SHORT>(CalcExportDynamics(base, m_nEnd)),
                      torv::kBreakPointEdge};
    array.Add(end);
    return array.GetSize();
}

int CIconDynamics::TrimIconHead(DWORD clock) {
    CBreakPointList working;
    ExportBreakPoint(&working, 0);
    TrimBreakPointListHead(working, torv::SignedTicks(clock));
    working.RemoveHead();
    working.RemoveTail();
    m_dwLength = m_dwLength > clock ? m_dwLength - clock : 0;
    torv::StoreExported(m_points, working, m_dwLength);
    return 1;
}

int CIconDynamics::TrimIconTail(DWORD clock) {
    CBreakPointList working;
    ExportBreakPoint(&working, 0);
    TrimBreakPointListTail(working, torv::SignedTicks(clock));
    m_nEnd = working.IsEmpty() ? m_nStart : working.GetTail().value;
    working.RemoveHead();
    working.RemoveTail();
    torv::StoreExported(m_points, working, clock);
    m_dwLength = clock;
    return 1;
}
