#pragma once

#include "torv/score/csq_event.h"

/// The cursor over a track's singer changes.
class TORV_API CCsqEventSinger : public CCsqEvent {
public:
    ~CCsqEventSinger() override;
    int GetNext() override;
    int GetPrev() override;
    int Insert(DWORD id, int after) override;
    virtual int Write();
    virtual int Remove(int deleteObject);

    /// Inserts a change to the singer icon under `handle`; `value` is kept in the record, 16 bits.
    int Insert(void* handle, int value, int after);
    static int IsValidIcon(int status);
    int IsValidIcon(void* handle) const;

    void* GetIconHandle() const; ///< null on an event of another kind
};
