#pragma once

#include "torv/icons/icon_object.h"

/// Host record of the dynamics icon; the points are in ten-thousandths of the length.
struct tagDynamicsIconObject {
    tagIconHeader header; ///< what every icon record begins with
    DWORD length;         ///< ticks
    /// 0 to 127 of a level, -127 to 127 of a change.
    /// @{
    SHORT startDynamics;
    SHORT endDynamics;
    /// @}
    WORD pointCount;       ///< of `points`
    tagBreakPoint* points; ///< null when there are none
};
static_assert(sizeof(void*) != 4 ||
              (offsetof(tagDynamicsIconObject, length) == 148 &&
               offsetof(tagDynamicsIconObject, startDynamics) == 152 &&
               offsetof(tagDynamicsIconObject, pointCount) == 156 && offsetof(tagDynamicsIconObject, points) == 160 &&
               sizeof(tagDynamicsIconObject) == 164));

namespace torv {

/// As for tagIconHeader, with the points.
TORV_API void ReleaseIconRecord(tagDynamicsIconObject* record);

} // namespace torv

/// Loudness over time, status 5. Articulation 1 sets a level (0..127); 2 and 3 change the level in force where the icon
/// begins: their numbers are offsets, -127..127.
class TORV_API CIconDynamics : public CIconObject {
public:
    /// The icon as newly made: 0 from start to end, without a length.
    CIconDynamics(int status, int articulation, int variation);
    /// Copies id and all; null as an icon of id 0.
    explicit CIconDynamics(CIconDynamics* other);

    int IsContinuance() override; ///< 1 for every articulation but 1
    /// A level has no span in preset files, and every value is brought into range.
    int LoadPreset(const char* path) override;
    /// A song's icon is read as it was written: its length and its points' values are not touched.
    int ConstructParameter(CxTypedFile* file, const char* section) override;
    /// Writes what ConstructParameter reads; points only when there are any.
    int DescribeParameter(CxTypedFile* file, const char* section) override;
    int ReplaceParameter(CIconObject* other) override;
    /// Start and end stay as they were: the value at the cut goes with the point that stood there.
    int TrimIconHead(DWORD clock) override;
    /// The end becomes the value at the cut.
    int TrimIconTail(DWORD clock) override;
    /// From and into a host's record; 0 for null. The second allocates texts and points: torv::ReleaseIconRecord.
    /// @{
    using CIconObject::ConstructParameter;
    using CIconObject::DescribeParameter;
    int ConstructParameter(const tagDynamicsIconObject* record);
    int DescribeParameter(tagDynamicsIconObject* record) const;
    /// @}

    /// Level or offset at the icon's begin and end.
    /// @{
    int GetStartDynamics() const { return m_nStart; }
    int GetEndDynamics() const { return m_nEnd; }
    /// @}
    /// A level sets both, in 0..127. For a change any start is stored, while an end beyond -127..127 is refused.
    int SetStartDynamics(int dynamics);
    /// See SetStartDynamics.
    int SetEndDynamics(int dynamics);
    /// The value brought into the range of the icon's articulation.
    int NormalizeValue(int value) const;
    /// Brings start and end into the range that files have.
    void NormalizeEnds();
    /// The curve between start and end, in ten-thousandths of the length; the icon's.
    CBreakPointList* GetDynamicsBPList() { return &m_points; }

    /// Appends start, curve and end as they stand when the icon begins at `clock`, with the icon's own values; returns
    /// the list's count.
    int ExportBreakPoint(CBreakPointList* list, DWORD clock);
    /// Appends the curve from the level `base` on to the end, as levels; returns the array's size.
    int NormalizeBreakPointArray(DWORD clock, CBreakPointArray& array, int base);

    /// base + value, clamped to 0..127.
    static int CalcExportDynamics(int base, int value);
    /// Eight levels, highest first; -1 for an index beyond them.
    static int GetThreshold(int index);
    /// The first level at or below `value`; 7 when none is.
    static int ScanThresholdIndex(int value);
    /// The level at a song's start, before any dynamics icon.
    static int GetDefaultDynamics();

    /// Dynamics carry no names: always "non" and "".
    CString GetOriginalSingerName() const { return "non"; }
    /// See GetOriginalSingerName.
    CString GetDevelopperName() const { return ""; }

private:
    static constexpr CurveKeys kCurveKeys{"DynBPNum", "DynBPX", "DynBPY"};

    bool IsLevel() const { return m_nArticulation == torv::kDynaff; }
    bool IsChange() const { return m_nArticulation == torv::kCrescendo || m_nArticulation == torv::kDecrescendo; }
    friend class CIconObject; // for ChangeWhole
    /// Appends the points; the number of them that the file states.
    int ReadKeys(CxTypedFile* file, const char* section);
    void TakeAll(CIconDynamics& from) noexcept;

    int m_nStart = 0;
    int m_nEnd = 0;
    CBreakPointList m_points{torv::kBreakPointListBlock};
};
