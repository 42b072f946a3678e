#pragma once

#include "torv/score/kind_cursor.h"

/// The cursor over a track's singer changes.
class TORV_API CCsqEventSinger : public torv::KindCursor<tagCsqEventSinger, torv::kStatusSinger, torv::kStatusSinger> {
public:
    ~CCsqEventSinger() override;
    /// Removes the change, and its icon when asked; 0 on another kind.
    virtual int Remove(int deleteObject);

    using KindCursor::Insert;
    /// Inserts a change to the singer icon under `handle`; `value` is kept in the record, 16 bits.
    int Insert(void* handle, int value, int after);

    /// The singer icon's handle in its track.
    void* GetIconHandle() const { return torv::PointerOf(Get(&tagCsqEventSinger::iconHandle)); }
};
