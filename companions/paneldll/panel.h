#pragma once

#include "torv/abi/panel.h"

#include <mutex>

namespace panel {

/// A panel without a picture: it keeps the count of every call and the last values told. Takes a constant amount of
/// memory, allocates nothing, and may be used by several threads.
class Panel {
public:
    Panel() { m_record.lastCall = -1; }

    /// False, with nothing but the call recorded, for a null text.
    bool Init(const char* text);
    void SetParent(void* window);
    void SetPlay(int32_t position);
    void SetStop();
    /// False, with nothing but the call recorded, for a null pointer.
    bool SetDeviceData(const WAV_DATAS* data);
    void SetPosition(int32_t ticks);
    /// The position last told: a panel that nobody can touch stands where the host is.
    int32_t Position();
    /// Microseconds per quarter note.
    int32_t Tempo();
    /// A call that carries nothing.
    void Note(int call);
    void SelectTrack(uint32_t track);

    PANELRecord Record();

private:
    void Count(int call);

    std::mutex m_mutex; // held for the few words of a call
    PANELRecord m_record{};
};

} // namespace panel
