#pragma once

#include "torv/icons/icon_expression.h"

/// Host record of the vibrato icon. Both arrays are in ten-thousandths of the length; null counts as empty.
struct tagVibratoIconObject {
    tagIconHeader header; ///< what every icon record begins with
    /// As tagExpressionEntry has them.
    /// @{
    DWORD database;
    DWORD idHigh;
    DWORD idLow;
    DWORD itemValue;
    /// @}
    /// NUL-terminated; described ones are new[].
    /// @{
    char* originalSingerName;
    char* developerName;
    /// @}
    DWORD length; ///< ticks
    /// 0 to 127; the end is the host's own.
    /// @{
    WORD startDepth;
    WORD endDepth;
    /// @}
    WORD depthPointCount;       ///< of `depthPoints`
    tagBreakPoint* depthPoints; ///< values 0 to 127
    /// 0 to 127; the end is the host's own.
    /// @{
    WORD startRate;
    WORD endRate;
    /// @}
    WORD ratePointCount;       ///< of `ratePoints`
    tagBreakPoint* ratePoints; ///< values 0 to 127
};
static_assert(sizeof(void*) != 4 ||
              (offsetof(tagVibratoIconObject, developerName) == 168 && offsetof(tagVibratoIconObject, length) == 172 &&
               offsetof(tagVibratoIconObject, startDepth) == 176 &&
               offsetof(tagVibratoIconObject, depthPoints) == 184 && offsetof(tagVibratoIconObject, startRate) == 188 &&
               offsetof(tagVibratoIconObject, ratePoints) == 196 && sizeof(tagVibratoIconObject) == 200));

namespace torv {

/// As for tagIconHeader, with both names and both curves.
TORV_API void ReleaseIconRecord(tagVibratoIconObject* record);

} // namespace torv

/// A vibrato over a note, status 4: a start depth and a start rate (0..127), each with a curve that changes it. Curves
/// are kept in ten-thousandths of the length, so that a vibrato keeps its shape when it is stretched.
class TORV_API CIconVibrato : public CIconExpression {
public:
    /// The icon as newly made.
    CIconVibrato(int status, int articulation, int variation);
    /// Copies id and all; null as an icon of id 0.
    explicit CIconVibrato(CIconVibrato* other);

    int IsContinuance() override; ///< 1: a vibrato goes on into the next note
    int LoadPreset(const char* path) override;
    int ReplaceParameter(CIconObject* other) override;
    /// Points keep their ticks; one at the cut itself becomes 10000. 1.
    int TrimIconTail(DWORD clock) override;
    /// From and into a host's record; 0 for null. The second allocates texts and curves: torv::ReleaseIconRecord.
    /// @{
    using CIconExpression::ConstructParameter;
    using CIconExpression::DescribeParameter;
    int ConstructParameter(const tagVibratoIconObject* record);
    int DescribeParameter(tagVibratoIconObject* record) const;
    /// @}

    /// 0 to 127, up to the curve's first point.
    /// @{
    int GetStartDepth() const { return m_nStartDepth; }
    int GetStartRate() const { return m_nStartRate; }
    /// @}
    /// A value outside 0..127 is refused.
    int SetStartDepth(int depth);
    /// See SetStartDepth.
    int SetStartRate(int rate);
    /// Ends are kept for hosts' records only: they read as 0 and cannot be set.
    int GetEndDepth() const { return 0; }
    /// See GetEndDepth.
    /// @{
    int GetEndRate() const { return 0; }
    int SetEndDepth(int) { return 0; }
    int SetEndRate(int) { return 0; }
    /// @}
    static int NormalizeDepth(int depth); ///< clamped to 0..127
    /// Clamped as a depth.
    static int NormalizeRate(int rate);

    /// The curves after the start values, in ten-thousandths of the length; the icon's.
    /// @{
    CBreakPointList* GetDepthBPList() { return &m_depth; }
    CBreakPointList* GetRateBPList() { return &m_rate; }
    /// @}
    /// Appends the curve of an icon that begins at `clock`, after a head point with the start value; returns the list's
    /// count.
    int ExportDepthBreakPoint(CBreakPointList* list, DWORD clock);
    /// The same of the rate.
    int ExportRateBreakPoint(CBreakPointList* list, DWORD clock);
    /// The same into an array, which is resized to the points and the head; returns its size.
    int NormalizeDepthBreakPointArray(DWORD clock, CBreakPointArray& array);
    /// The same of the rate.
    int NormalizeRateBreakPointArray(DWORD clock, CBreakPointArray& array);

private:
    static constexpr CurveKeys kDepthKeys{"DepthBPNum", "DepthBPX", "DepthBPY"};
    static constexpr CurveKeys kRateKeys{"RateBPNum", "RateBPX", "RateBPY"};

    int ReadKeys(CxTypedFile* file, const char* section) override;
    int WriteKeys(CxTypedFile* file, const char* section) const override;
    void TakeAll(CIconExpression& from) noexcept override;
    /// Makes a change of curves and numbers as CIconExpression::Change does.
    template <class Work>
    int ChangeVibrato(Work work);
    int ExportCurve(const CBreakPointList& curve, int start, DWORD clock, CBreakPointList* list) const;
    int NormalizeCurve(const CBreakPointList& curve, int start, DWORD clock, CBreakPointArray& array) const;
    void TrimCurveTail(CBreakPointList& curve, int start, DWORD clock);

    int m_nStartDepth = 0;
    int m_nEndDepth = 0;
    int m_nStartRate = 0;
    int m_nEndRate = 0;
    CBreakPointList m_depth{torv::kBreakPointListBlock};
    CBreakPointList m_rate{torv::kBreakPointListBlock};
};
