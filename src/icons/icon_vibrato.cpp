#include "torv/icons/icon_vibrato.h"

#include "torv/database/typed_file.h"
#include "torv/icons/break_point_export.h"

#include <algorithm>

namespace {

constexpr int kLargest = 127;

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
    ReleaseIconRecord(&record->header);
    delete[] record->originalSingerName;
    delete[] record->developerName;
    delete[] record->depthPoints;
    delete[] record->ratePoints;
    record->originalSingerName = record->developerName = nullptr;
    record->depthPoints = record->ratePoints = nullptr;
}

} // namespace torv

CIconVibrato::CIconVibrato(CIconVibrato* other) : CIconVibrato(*other) {}

int CIconVibrato::IsContinuance() { return 1; }
int CIconVibrato::LoadPreset(const char* path) { return LoadPresetFile(path); }
int CIconVibrato::NormalizeDepth(int depth) { return Clamp(depth); }
int CIconVibrato::NormalizeRate(int rate) { return Clamp(rate); }
int CIconVibrato::SetStartDepth(int depth) { return SetInRange(m_nStartDepth, depth); }
int CIconVibrato::SetStartRate(int rate) { return SetInRange(m_nStartRate, rate); }

int CIconVibrato::DescribeUserExpression(CxTypedFile* file) {
    return CIconExpression::DescribeUserExpression(file) && WriteParameterSection(file, "Parameter");
}

int CIconVibrato::ReadParameterSection(CxTypedFile* file, const char* section) {
    CIconObject::ReadParameterSection(file, section);
    const auto read = [&](const char* startKey, int& start, const char* countKey, const char* xKey, const char* yKey,
                          CBreakPointList& curve) {
        start = Clamp(torv::ParseInteger(file->ReadAt(section, startKey, nullptr)));
        curve.RemoveAll();
        const int count = torv::ParseInteger(file->ReadAt(section, countKey, nullptr)) & 0xFFFF;
        if (count != 0)
            UnformatBreakPoint(curve, count, torv::kIconUnits, file->ReadAt(section, xKey, nullptr),
                               file->ReadAt(section, yKey, nullptr));
    };
    read("StartDepth", m_nStartDepth, "DepthBPNum", "DepthBPX", "DepthBPY", m_depth);
    read("StartRate", m_nStartRate, "RateBPNum", "RateBPX", "RateBPY", m_rate);
    return 1;
}

int CIconVibrato::WriteParameterSection(CxTypedFile* file, const char* section) const {
    CIconObject::WriteParameterSection(file, section);
    const auto write = [&](const char* startKey, int start, const char* countKey, const char* xKey, const char* yKey,
                           const CBreakPointList& curve) {
        WriteNumber(file, section, startKey, start);
        WriteNumber(file, section, countKey, curve.GetCount());
        if (curve.IsEmpty())
            return;
        CString positions;
        CString values;
        FormatBreakPoint(curve, torv::kIconUnits, positions, values);
        file->WriteAt(section, xKey, positions);
        file->WriteAt(section, yKey, values);
    };
    write("StartDepth", m_nStartDepth, "DepthBPNum", "DepthBPX", "DepthBPY", m_depth);
    write("StartRate", m_nStartRate, "RateBPNum", "RateBPX", "RateBPY", m_rate);
    return 1;
}

int CIconVibrato::ReplaceParameter(CIconObject* other) {
    if (!CIconExpression::ReplaceParameter(other))
        return 0;
    if (const auto* const vibrato = dynamic_cast<CIconVibrato*>(other)) {
        m_nStartDepth = vibrato->m_nStartDepth;
        m_nEndDepth = vibrato->m_nEndDepth;
        m_nStartRate = vibrato->m_nStartRate;
        m_nEndRate = vibrato->m_nEndRate;
        m_depth = vibrato->m_depth;
        m_rate = vibrato->m_rate;
    }
    return 1;
}

int CIconVibrato::ConstructParameter(const tagVibratoIconObject* record) {
    if (!record)
        return 0;
    tagNoteIconObject common{};
    common.header = record->header;
    common.database = record->database;
    common.idHigh = record->idHigh;
    common.idLow = record->idLow;
    common.itemValue = record->itemValue;
    common.originalSingerName = record->originalSingerName;
    common.developerName = record->developerName;
    CIconExpression::ConstructParameter(&common);
    m_dwLength = record->length;
    m_nStartDepth = record->startDepth;
    m_nEndDepth = record->endDepth;
    m_nStartRate = record->startRate;
    m_nEndRate = record->endRate;
    torv::TakePointArray(m_depth, record->depthPoints, record->depthPointCount);
    torv::TakePointArray(m_rate, record->ratePoints, record->ratePointCount);
    return 1;
}

int CIconVibrato::DescribeParameter(tagVibratoIconObject* record) const {
    tagNoteIconObject common{};
    if (!record || !CIconExpression::DescribeParameter(&common))
        return 0;
    common.header.reserved = record->header.reserved; // the host's own stays
    record->header = common.header;
    record->database = common.database;
    record->idHigh = common.idHigh;
    record->idLow = common.idLow;
    record->itemValue = common.itemValue;
    record->originalSingerName = common.originalSingerName;
    record->developerName = common.developerName;
    record->length = m_dwLength;
    record->startDepth = static_cast<WORD>(m_nStartDepth);
    record->endDepth = static_cast<WORD>(m_nEndDepth);
    record->startRate = static_cast<WORD>(m_nStartRate);
    record->endRate = static_cast<WORD>(m_nEndRate);
    record->depthPoints = torv::NewPointArray(m_depth, record->depthPointCount);
    record->ratePoints = torv::NewPointArray(m_rate, record->ratePointCount);
    return 1;
}

int CIconVibrato::ExportCurve(const CBreakPointList& curve, int start, DWORD clock, CBreakPointList* list) const {
    if (!list)
        return 0;
    tagBreakPoint point = HeadPoint(start, clock);
    list->AddTail(point);
    for (POSITION at = curve.GetHeadPosition(); at;) {
        point = torv::ExportPoint(curve.GetNext(at), clock, m_dwLength);
        list->AddTail(point);
    }
    return list->GetCount();
}

int CIconVibrato::NormalizeCurve(const CBreakPointList& curve, int start, DWORD clock, CBreakPointArray& array) const {
    array.SetSize(curve.GetCount() + 1);
    array[0] = HeadPoint(start, clock);
    int i = 1;
    for (POSITION at = curve.GetHeadPosition(); at; ++i)
        array[i] = torv::ExportPoint(curve.GetNext(at), clock, m_dwLength);
    return array.GetSize();
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
    ExportCurve(curve, start, 0, &working);
    TrimBreakPointListTail(working, static_cast<LONG>(clock));
    working.RemoveHead();
    torv::StoreExported(curve, working, clock);
}

int CIconVibrato::TrimIconTail(DWORD clock) {
    TrimCurveTail(m_depth, m_nStartDepth, clock);
    TrimCurveTail(m_rate, m_nStartRate, clock);
    m_dwLength = clock;
    return 1;
}
