// The curve inside an icon: as text in files, and cut to a shorter span.
#include "torv/icons/icon_object.h"
#include "torv/typed_file/typed_file.h"

#include <limits>

namespace {

constexpr int kFieldBytes = 16; // fifteen characters and a NUL

/// The first point at `t` or later, and the one before it; either may be null.
struct Cut {
    POSITION before = nullptr;
    POSITION point = nullptr;
};

Cut FindCut(const CBreakPointList& list, LONG t) {
    Cut cut;
    cut.point = list.GetHeadPosition();
    while (cut.point && list.GetAt(cut.point).position < t) {
        cut.before = cut.point;
        list.GetNext(cut.point);
    }
    return cut;
}

/// Puts a point at `t` between the two of a cut; it takes the flags of the later one.
POSITION Interpolate(CBreakPointList& list, const Cut& cut, LONG t) {
    const tagBreakPoint before = list.GetAt(cut.before);
    const tagBreakPoint after = list.GetAt(cut.point);
    // A host's or a file's positions may lie further apart than 31 bits.
    const long long span = static_cast<long long>(after.position) - before.position;
    const long long part = static_cast<long long>(t) - before.position;
    const int scale = span > std::numeric_limits<int>::max() ? 2 : 1;
    const int value = before.value + torv::MulDiv(static_cast<int>(part / scale), after.value - before.value,
                                                  static_cast<int>(span / scale));
    tagBreakPoint point{t, static_cast<SHORT>(value), after.flags};
    return list.InsertAfter(cut.before, point);
}

} // namespace

void CIconObject::FormatBreakPoint(const CBreakPointList& list, DWORD length, CString& positions, CString& values) {
    bool first = true;
    for (POSITION at = list.GetHeadPosition(); at;) {
        const tagBreakPoint& point = list.GetNext(at);
        if (!first) {
            positions += ',';
            values += ',';
        }
        first = false;
        positions += torv::FormatReal(length ? static_cast<double>(point.position) / length : 0.0);
        CString value;
        value.Format("%d", point.value);
        values += value;
    }
}

int CIconObject::UnformatBreakPoint(CBreakPointList& list, int count, DWORD length, const char* positions,
                                    const char* values) {
    for (int i = 0; i < count && *positions; ++i) {
        char field[kFieldBytes];
        positions = CxTypedFile::ExtractString(field, sizeof field, positions, ',');
        const LONG position = torv::TruncateToLong(torv::ParseReal(field) * length);
        if (position >= static_cast<long long>(length) || !*values)
            break;
        values = CxTypedFile::ExtractString(field, sizeof field, values, ',');
        tagBreakPoint point{position, static_cast<SHORT>(torv::ParseInteger(field)), 0};
        list.AddTail(point);
    }
    return count;
}

int CIconObject::ReadCurve(CBreakPointList& list, CxTypedFile* file, const char* section, const CurveKeys& keys) {
    const int count = torv::ParseInteger(file->ReadAt(section, keys.count, nullptr)) & 0xFFFF;
    if (count != 0)
        UnformatBreakPoint(list, count, torv::kIconUnits, file->ReadAt(section, keys.positions, nullptr),
                           file->ReadAt(section, keys.values, nullptr));
    return count;
}

int CIconObject::WriteCurve(const CBreakPointList& list, CxTypedFile* file, const char* section,
                            const CurveKeys& keys) {
    if (!WriteNumber(file, section, keys.count, list.GetCount()))
        return 0;
    if (list.IsEmpty())
        return 1;
    CString positions;
    CString values;
    FormatBreakPoint(list, torv::kIconUnits, positions, values);
    return file->WriteAt(section, keys.positions, positions) && file->WriteAt(section, keys.values, values);
}

int CIconObject::TrimBreakPointListHead(CBreakPointList& list, LONG t) {
    const Cut cut = FindCut(list, t);
    if (!cut.point) {
        list.RemoveAll();
        return 1;
    }
    // A curve that starts at or after the cut keeps its positions: its owner's trim relies on finding it where it was.
    if (!cut.before)
        return 1;
    const bool exact = list.GetAt(cut.point).position == t;
    RemoveBreakPointBefore(list, exact ? cut.point : Interpolate(list, cut, t));
    for (POSITION at = list.GetHeadPosition(); at;) {
        tagBreakPoint& point = list.GetNext(at);
        point.position = static_cast<LONG>(static_cast<DWORD>(point.position) - static_cast<DWORD>(t));
    }
    return 1;
}

int CIconObject::TrimBreakPointListTail(CBreakPointList& list, LONG t) {
    const Cut cut = FindCut(list, t);
    if (!cut.point)
        return 1;
    if (!cut.before) {
        list.RemoveAll();
        return 1;
    }
    const bool exact = list.GetAt(cut.point).position == t;
    RemoveBreakPointAfter(list, exact ? cut.point : Interpolate(list, cut, t));
    return 1;
}

void CIconObject::RemoveBreakPointBefore(CBreakPointList& list, POSITION position) {
    for (POSITION at = list.GetHeadPosition(); at && at != position;) {
        const POSITION removed = at;
        list.GetNext(at);
        list.RemoveAt(removed);
    }
}

void CIconObject::RemoveBreakPointAfter(CBreakPointList& list, POSITION position) {
    for (POSITION at = list.GetTailPosition(); at && at != position;) {
        const POSITION removed = at;
        list.GetPrev(at);
        list.RemoveAt(removed);
    }
}
