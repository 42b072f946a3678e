#include "torv/icons/icon_dynamics.h"

#include "torv/icons/break_point_export.h"
#include "torv/typed_file/typed_file.h"

#include <algorithm>
#include <iterator>
#include <memory>

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

void CIconDynamics::TakeAll(CIconDynamics& from) noexcept {
    CIconObject::TakeAll(from);
    m_points.Swap(from.m_points);
    m_nStart = from.m_nStart;
    m_nEnd = from.m_nEnd;
}

int CIconDynamics::LoadPreset(const char* path) {
    CxTypedFile file;
    return OpenPresetFile(file, path) && ChangeWhole(*this, [&file](CIconDynamics& icon) {
               icon.ReadPreset(file);
               if (icon.IsLevel())
                   icon.m_dwLength = 1;
               if (icon.ReadKeys(&file, kParameterSection) == 0)
                   return 1;
               for (POSITION at = icon.m_points.GetHeadPosition(); at;) {
                   tagBreakPoint& point = icon.m_points.GetNext(at);
                   point.value = static_cast<SHORT>(icon.NormalizeValue(point.value));
               }
               return 1;
           });
}

int CIconDynamics::ConstructParameter(CxTypedFile* file, const char* section) {
    return ChangeWhole(*this, [&](CIconDynamics& icon) {
        if (!icon.ReadSection(file, section))
            return 0;
        icon.m_points.RemoveAll();
        icon.ReadKeys(file, section);
        return 1;
    });
}

int CIconDynamics::DescribeParameter(CxTypedFile* file, const char* section) {
    return torv::OrZero([&] {
        return WriteSection(file, section) && WriteNumber(file, section, "StartDyn", m_nStart) &&
               WriteNumber(file, section, "EndDyn", m_nEnd) && WriteCurve(m_points, file, section, kCurveKeys);
    });
}

int CIconDynamics::ReplaceParameter(CIconObject* other) {
    return ChangeWhole(*this, [other](CIconDynamics& icon) {
        if (!icon.CIconObject::ReplaceParameter(other))
            return 0;
        if (const auto* const dynamics = dynamic_cast<CIconDynamics*>(other)) {
            icon.m_nStart = dynamics->m_nStart;
            icon.m_nEnd = dynamics->m_nEnd;
            icon.m_points = dynamics->m_points;
        }
        return 1;
    });
}

int CIconDynamics::ConstructParameter(const tagDynamicsIconObject* record) {
    return record && ChangeWhole(*this, [record](CIconDynamics& icon) {
               icon.ReadRecord(&record->header);
               icon.m_dwLength = record->length;
               icon.m_nStart = record->startDynamics;
               icon.m_nEnd = record->endDynamics;
               torv::TakePointArray(icon.m_points, record->points, record->pointCount);
               return 1;
           });
}

int CIconDynamics::DescribeParameter(tagDynamicsIconObject* record) const {
    return torv::OrZero([&] {
        WORD count = 0;
        std::unique_ptr<tagBreakPoint[]> points(torv::NewPointArray(m_points, count));
        if (!record || !CIconObject::DescribeParameter(&record->header))
            return 0;
        record->length = m_dwLength;
        record->startDynamics = static_cast<SHORT>(m_nStart);
        record->endDynamics = static_cast<SHORT>(m_nEnd);
        record->pointCount = count;
        record->points = points.release();
        return 1;
    });
}

int CIconDynamics::ExportBreakPoint(CBreakPointList* list, DWORD clock) {
    return torv::AppendPoints(list, [&](CBreakPointList& exported) {
        tagBreakPoint point{static_cast<LONG>(clock), static_cast<SHORT>(m_nStart), torv::kBreakPointEdge};
        exported.AddTail(point);
        for (POSITION at = m_points.GetHeadPosition(); at;) {
            point = torv::ExportPoint(m_points.GetNext(at), clock, m_dwLength);
            exported.AddTail(point);
        }
        point = {static_cast<LONG>(clock + m_dwLength), static_cast<SHORT>(m_nEnd), torv::kBreakPointEdge};
        exported.AddTail(point);
    });
}

int CIconDynamics::NormalizeBreakPointArray(DWORD clock, CBreakPointArray& array, int base) {
    return torv::OrZero([&] {
        const bool hasHead = m_points.IsEmpty() || m_points.GetHead().position >= 1;
        int at = array.GetSize();
        array.SetSize(at + m_points.GetCount() + (hasHead ? 2 : 1)); // all that may fail
        if (hasHead) {
            const WORD flags = m_points.IsEmpty() ? WORD{0} : m_points.GetHead().flags;
            array[at++] = {static_cast<LONG>(clock), static_cast<SHORT>(base), flags};
        }
        for (POSITION point = m_points.GetHeadPosition(); point; ++at) {
            array[at] = torv::ExportPoint(m_points.GetNext(point), clock, m_dwLength);
            array[at].value = static_cast<SHORT>(CalcExportDynamics(base, array[at].value));
        }
        array[at] = {static_cast<LONG>(clock + m_dwLength), static_cast<SHORT>(CalcExportDynamics(base, m_nEnd)),
                     torv::kBreakPointEdge};
        return array.GetSize();
    });
}

int CIconDynamics::TrimIconHead(DWORD clock) {
    return ChangeWhole(*this, [clock](CIconDynamics& icon) {
        CBreakPointList working;
        if (!icon.ExportBreakPoint(&working, 0))
            return 0;
        TrimBreakPointListHead(working, torv::SignedTicks(clock));
        working.RemoveHead();
        working.RemoveTail();
        icon.m_dwLength = icon.m_dwLength > clock ? icon.m_dwLength - clock : 0;
        torv::StoreExported(icon.m_points, working, icon.m_dwLength);
        return 1;
    });
}

int CIconDynamics::TrimIconTail(DWORD clock) {
    return ChangeWhole(*this, [clock](CIconDynamics& icon) {
        CBreakPointList working;
        if (!icon.ExportBreakPoint(&working, 0))
            return 0;
        TrimBreakPointListTail(working, torv::SignedTicks(clock));
        icon.m_nEnd = working.IsEmpty() ? icon.m_nStart : working.GetTail().value;
        working.RemoveHead();
        working.RemoveTail();
        torv::StoreExported(icon.m_points, working, clock);
        icon.m_dwLength = clock;
        return 1;
    });
}
