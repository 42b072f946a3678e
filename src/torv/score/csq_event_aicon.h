#pragma once

#include "torv/score/kind_cursor.h"

/// The cursor over a track's icon placements, which are dynamics icons.
class TORV_API CCsqEventAicon
    : public torv::KindCursor<tagCsqEventAicon, torv::kStatusDynamics, torv::kStatusDynamics> {
public:
    ~CCsqEventAicon() override;
    /// Removes the placement, and its icon when asked; 0 on another kind.
    virtual int Remove(int deleteObject);

    using KindCursor::Insert;
    /// Places an icon and sets its length. The cursor's cache stays what it was: callers step to the placement to read
    /// it.
    int Insert(void* handle, DWORD length, int after);

    /// The icon's handle in its track.
    void* GetIconHandle() const { return torv::PointerOf(Get(&tagCsqEventAicon::iconHandle)); }
    /// With `deleteOld` the icon under the old handle is deleted, unless it is the new one.
    int SetIconHandle(void* handle, int deleteOld);
    /// Ticks; the length is the icon's own. 0 without an icon.
    /// @{
    DWORD GetIconLength() const { return IconLength(Get(&tagCsqEventAicon::iconHandle)); }
    int SetIconLength(DWORD length) { return SetIconLengthOf(Get(&tagCsqEventAicon::iconHandle), length); }
    /// @}
};
