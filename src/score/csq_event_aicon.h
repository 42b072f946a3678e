#pragma once

#include "torv/score/csq_event.h"

/// The cursor over a track's icon placements, which are dynamics icons. Accessors act on the cached record.
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
    DWORD GetIconLength() const { return IconLength(m_record.icon.iconHandle); }
    int SetIconLength(DWORD length) { return SetIconLengthOf(m_record.icon.iconHandle, length); }
};
