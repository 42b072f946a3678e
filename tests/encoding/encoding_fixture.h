#pragma once

#include "score/chart.h"
#include "torv/encoding/quill_midi_encoder.h"
#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_note_release.h"
#include "torv/icons/icon_note_transit.h"
#include "torv/icons/icon_vibrato.h"
#include "values.h"

#include <doctest/doctest.h>

#include <memory>
#include <vector>

using Bytes = std::vector<BYTE>;

/// Of a curve: a tick, or in icons ten-thousandths of the length.
struct Point {
    long at;
    int value;
    bool operator==(const Point&) const = default;
};
using Points = std::vector<Point>;

inline Points PointsOf(const CBreakPointList& list) {
    Points points;
    for (POSITION at = list.GetHeadPosition(); at;) {
        const tagBreakPoint& point = list.GetNext(at);
        points.push_back({point.position, point.value});
    }
    return points;
}

inline void AddPoint(CBreakPointList* list, LONG position, int value) {
    tagBreakPoint point{position, static_cast<SHORT>(value), 0};
    list->AddTail(point);
}

/// What stands in a stream: where, when, and the bytes.
struct StreamEntry {
    DWORD tick;
    LONG time;
    Bytes bytes;
    bool operator==(const StreamEntry&) const = default;
};

inline std::vector<StreamEntry> EntriesOf(CQuillMidiBuffer& stream) {
    std::vector<StreamEntry> entries;
    tagQuillMidiEntry entry;
    stream.SeekToBegin();
    while (stream.ReadNextEntry(&entry)) {
        Bytes bytes(entry.length);
        stream.ReadEvent(entry.offset, bytes.data(), entry.length);
        entries.push_back({stream.GetPosition(), entry.time, bytes});
    }
    return entries;
}

inline std::unique_ptr<tagSequenceTimeMap[]> MapOf(Chart& chart) {
    return std::unique_ptr<tagSequenceTimeMap[]>(
        CxQuillMidiEncoder::CreateSequenceTimeMap(chart.Sequence().GetMasterTrack()));
}

inline std::unique_ptr<CQuillMidiBuffer> Encode(Chart& chart, CxQuillMidiEncoder& encoder) {
    chart.Close();
    const auto map = MapOf(chart);
    tagQuillMidiEncodeStruct encode{&chart.Track(), map.get()};
    return std::unique_ptr<CQuillMidiBuffer>(encoder.EncodeSequenceTrack(&encode));
}
