#pragma once

#include "torv/score/csq_event.h"

/// The cursor over a track's icon placements, which are dynamics icons. Accessors act on the cached record, which Write
/// stores; on an event of another kind there is no icon: null, 0, and nothing is set.
class TORV_API CCsqEventAicon : public CCsqEvent {
public:
    ~CCsqEventAicon() override;
    int GetNext() override;
    int GetPrev() override;
    int Insert(DWORD id, int after) override;
    virtual int Write();
    virtual int Remove(int deleteObject);

    /// Places an icon and sets its length. The cursor's cache stays what it was: callers step to the placement to read
    /// it.
    int Insert(void* handle, DWORD length, int after);
    static int IsValidIcon(int status);
    int IsValidIcon(void* handle) const;

    void* GetIconHandle() const;
    int SetIconHandle(void* handle, int deleteOld);
    DWORD GetIconLength() const { return IconLength(CachedHandle()); }
    int SetIconLength(DWORD length) { return SetIconLengthOf(CachedHandle(), length); }

private:
    DWORD CachedHandle() const { return IsValidEvent(torv::kEventAicon, 0) ? m_record.icon.iconHandle : 0; }
};
