#pragma once

#include "platform/temp_folder.h"
#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_note_release.h"
#include "torv/icons/icon_note_transit.h"
#include "torv/icons/icon_singer.h"
#include "torv/icons/icon_vibrato.h"

#include "typed_file/file_text.h"
#include "values.h"

#include <doctest/doctest.h>

#include <vector>

/// A curve as numbers: position, value and, where it matters, flags.
using Rows = std::vector<std::vector<int>>;

inline Rows RowsOf(const CBreakPointList& list) {
    Rows rows;
    for (POSITION at = list.GetHeadPosition(); at;) {
        const tagBreakPoint& point = list.GetNext(at);
        rows.push_back({point.position, point.value, point.flags});
    }
    return rows;
}

inline Rows RowsOf(const CBreakPointArray& array) {
    Rows rows;
    for (int i = 0; i < array.GetSize(); ++i)
        rows.push_back({array[i].position, array[i].value, array[i].flags});
    return rows;
}

inline void Fill(CBreakPointList& list, const Rows& rows) {
    list.RemoveAll();
    for (const auto& row : rows) {
        tagBreakPoint point{row[0], static_cast<SHORT>(row[1]), static_cast<WORD>(row.size() > 2 ? row[2] : 0)};
        list.AddTail(point);
    }
}

/// The icon as a section "S" of a file.
inline std::string Described(CIconObject& icon) {
    CxTypedFile file;
    CHECK(icon.DescribeParameter(&file, "S") == 1);
    return Compact(file);
}

inline void Construct(CIconObject& icon, const std::string& text) {
    CxTypedFile file;
    LoadText(file, text);
    CHECK(icon.ConstructParameter(&file, "S") == 1);
}
