#pragma once

#include "player_object.h"

#include <torv/platform/worker_thread.h>

#include <array>

namespace torv::c {

/// The wave outputs' names in their order.
std::vector<std::string> DeviceNames();

/// A player's way to a wave output: a thread that keeps a few short buffers there.
class DevicePlay {
public:
    /// Opens the device, the first one where the name is empty. Throws Failure.
    DevicePlay(PlayerObject& player, const CString& device, torv_player_callback callback, void* user);
    ~DevicePlay();
    DevicePlay(const DevicePlay&) = delete;
    DevicePlay& operator=(const DevicePlay&) = delete;

    void Begin();
    bool IsCurrent() const { return m_thread && m_thread->IsCurrent(); }
    /// Waits for the thread, unless it is the thread that asks: then it ends as soon as that returns.
    void End();

private:
    static constexpr size_t kBuffers = 3;
    struct Buffer {
        std::vector<int16_t> samples;
        WAVEHDR header{};
        uint64_t frame = 0; ///< where it begins in the song
        bool isQueued = false;
    };

    void Run();
    bool Feed();
    bool Fill(Buffer& buffer);
    void Tell(torv_player_event event) const;
    void CloseDevice();

    PlayerObject& m_player;
    const torv_player_callback m_callback;
    void* const m_user;
    HWAVEOUT m_device = nullptr;
    std::array<Buffer, kBuffers> m_buffers;
    std::vector<float> m_mixed;
    std::atomic<bool> m_isEnded = false;
    std::shared_ptr<WorkerThread> m_thread;
};

} // namespace torv::c
