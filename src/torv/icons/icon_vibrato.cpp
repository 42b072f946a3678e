#include "torv/icons/icon_vibrato.h"

#include "torv/icons/break_point_export.h"
#include "torv/typed_file/typed_file.h"

#include <algorithm>
#include <memory>
#include <new>

namespace {

constexpr int kLargest = 127;
constexpr const char* kStartDepth = "StartDepth";
constexpr const char* kStartRate = "StartRate";

int Clamp(int value) { return std::clamp(value, 0, kLargest); }

int SetInRange(int& field, int value) {
    if (value != Clamp(value))
        return 0;
    field = value;
    return 1;
}

tagBreakPoint HeadPoint(int start, DWORD clock) {
    return {static_cast<LONG>(clock), static_cast<SHORT>(start), torv::kBreakPointEdge};
}

} // namespace

namespace torv {

void ReleaseIconRecord(tagVibratoIconObject* record) {
    if (!record)
        return;
    ReleaseIconRecord(&record->header);
    delete[] record->originalSingerName;
    delete[] record->developerName;
    delete[] record->depthPoints;
    delete[] record->ratePoints;
    record->originalSingerName = record->developerName = nullptr;
    record->depthPoints = record->ratePoints = nullptr;
}

} // namespace torv

CIconVibrato::CIconVibrato(int status, int articulation, int variation)
    : CIconExpression(status, articulation, variation) {}

CIconVibrato::CIconVibrato(CIconVibrato* other) : CIconVibrato(torv::OrEmpty(other)) {}

int CIconVibrato::IsContinuance() { return 1; }
int CIconVibrato::NormalizeDepth(int depth) { return Clamp(depth); }
int CIconVibrato::NormalizeRate(int rate) { return Clamp(rate); }
int CIconVibrato::SetStartDepth(int depth) { return SetInRange(m_nStartDepth, depth); }
int CIconVibrato::SetStartRate(int rate) { return SetInRange(m_nStartRate, rate); }

int CIconVibrato::LoadPreset(const char* path) { return LoadExpression(path); }

void CIconVibrato::TakeAll(CIconExpression& from) noexcept {
    auto& vibrato = static_cast<CIconVibrato&>(from);
    CIconExpression::TakeAll(from);
    m_depth.Swap(vibrato.m_depth);
    m_rate.Swap(vibrato.m_rate);
    m_nStartDepth = vibrato.m_nStartDepth;
    m_nEndDepth = vibrato.m_nEndDepth;
    m_nStartRate = vibrato.m_nStartRate;
    m_nEndRate = vibrato.m_nEndRate;
}

template <class Work>
int CIconVibrato::ChangeVibrato(Work work) {
    return Change([&work](CIconExpression& copy) { return work(static_cast<CIconVibrato&>(copy)); });
}

int CIconVibrato::ReadKeys(CxTypedFile* file, const char* section) {
    m_nStartDepth = Clamp(torv::ParseInteger(file->ReadAt(section, kStartDepth, nullptr)));
    m_depth.RemoveAll();
    ReadCurve(m_depth, file, section, kDepthKeys);
    m_nStartRate = Clamp(torv::ParseInteger(file->ReadAt(section, kStartRate, nullptr)));
    m_rate.RemoveAll();
    ReadCurve(m_rate, file, section, kRateKeys);
    return 1;
}

int CIconVibrato::WriteKeys(CxTypedFile* file, const char* section) const {
    return WriteNumber(file, section, kStartDepth, m_nStartDepth) && WriteCurve(m_depth, file, section, kDepthKeys) &&
           WriteNumber(file, section, kStartRate, m_nStartRate) && WriteCurve(m_rate, file, section, kRateKeys);
}

int CIconVibrato::ReplaceParameter(CIconObject* other) {
    return ChangeVibrato([other](CIconVibrato& icon) {
        if (!icon.ReplaceExpression(other))
            return 0;
        if (const auto* const vibrato = dynamic_cast<CIconVibrato*>(other)) {
            icon.m_nStartDepth = vibrato->m_nStartDepth;
            icon.m_nEndDepth = vibrato->m_nEndDepth;
            icon.m_nStartRate = vibrato->m_nStartRate;
            icon.m_nEndRate = vibrato->m_nEndRate;
            icon.m_depth = vibrato->m_depth;
            icon.m_rate = vibrato->m_rate;
        }
        return 1;
    });
}

int CIconVibrato::ConstructParameter(const tagVibratoIconObject* record) {
    if (!record)
        return 0;
    return ChangeVibrato([record](CIconVibrato& icon) {
        icon.ReadRecord(*record);
        icon.m_dwLength = record->length;
        icon.m_nStartDepth = record->startDepth;
        icon.m_nEndDepth = record->endDepth;
        icon.m_nStartRate = record->startRate;
        icon.m_nEndRate = record->endRate;
        torv::TakePointArray(icon.m_depth, record->depthPoints, record->depthPointCount);
        torv::TakePointArray(icon.m_rate, record->ratePoints, record->ratePointCount);
        return 1;
    });
}

int CIconVibrato::DescribeParameter(tagVibratoIconObject* record) const {
    if (!record)
        return 0;
    return torv::OrZero([&] {
        WORD depthCount = 0;
        WORD rateCount = 0;
        std::unique_ptr<tagBreakPoint[]> depth(torv::NewPointArray(m_depth, depthCount));
        std::unique_ptr<tagBreakPoint[]> rate(torv::NewPointArray(m_rate, rateCount));
        if (!WriteRecord(*record))
            return 0;
        record->length = m_dwLength;
        record->startDepth = static_cast<WORD>(m_nStartDepth);
        record->endDepth = static_cast<WORD>(m_nEndDepth);
        record->startRate = static_cast<WORD>(m_nStartRate);
        record->endRate = static_cast<WORD>(m_nEndRate);
        record->depthPointCount = depthCount;
        record->depthPoints = depth.release();
        record->ratePointCount = rateCount;
        record->ratePoints = rate.release();
        return 1;
    });
}

int CIconVibrato::ExportCurve(const CBreakPointList& curve, int start, DWORD clock, CBreakPointList* list) const {
    return torv::AppendPoints(list, [&](CBreakPointList& exported) {
        tagBreakPoint point = HeadPoint(start, clock);
        exported.AddTail(point);
        for (POSITION at = curve.GetHeadPosition(); at;) {
            point = torv::ExportPoint(curve.GetNext(at), clock, m_dwLength);
            exported.AddTail(point);
        }
    });
}

int CIconVibrato::NormalizeCurve(const CBreakPointList& curve, int start, DWORD clock, CBreakPointArray& array) const {
    return torv::OrZero([&] {
        array.SetSize(curve.GetCount() + 1);
        array[0] = HeadPoint(start, clock);
        int i = 1;
        for (POSITION at = curve.GetHeadPosition(); at; ++i)
            array[i] = torv::ExportPoint(curve.GetNext(at), clock, m_dwLength);
        return array.GetSize();
    });
}

int CIconVibrato::ExportDepthBreakPoint(CBreakPointList* list, DWORD clock) {
    return ExportCurve(m_depth, m_nStartDepth, clock, list);
}
int CIconVibrato::ExportRateBreakPoint(CBreakPointList* list, DWORD clock) {
    return ExportCurve(m_rate, m_nStartRate, clock, list);
}
int CIconVibrato::NormalizeDepthBreakPointArray(DWORD clock, CBreakPointArray& array) {
    return NormalizeCurve(m_depth, m_nStartDepth, clock, array);
}
int CIconVibrato::NormalizeRateBreakPointArray(DWORD clock, CBreakPointArray& array) {
    return NormalizeCurve(m_rate, m_nStartRate, clock, array);
}

void CIconVibrato::TrimCurveTail(CBreakPointList& curve, int start, DWORD clock) {
    CBreakPointList working;
    if (!ExportCurve(curve, start, 0, &working))
        throw std::bad_alloc();
    TrimBreakPointListTail(working, torv::SignedTicks(clock));
    working.RemoveHead();
    torv::StoreExported(curve, working, clock);
}

int CIconVibrato::TrimIconTail(DWORD clock) {
    return ChangeVibrato([clock](CIconVibrato& icon) {
        icon.TrimCurveTail(icon.m_depth, icon.m_nStartDepth, clock);
        icon.TrimCurveTail(icon.m_rate, icon.m_nStartRate, clock);
        icon.m_dwLength = clock;
        return 1;
    });
}
