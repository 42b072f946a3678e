#pragma once

#include "sung_parts.h"

#include <torv/audio/gain.h>

namespace torv::c {

class DevicePlay;

/// Plays what SungParts sing. One thread steers, another one reads; what they share are atomics, and the reader neither
/// waits nor allocates.
class PlayerObject final : public Object {
public:
    static constexpr Kind kKind = Kind::Player;

    PlayerObject(ScoreObject& score, const torv_player_options& options);
    ~PlayerObject() override;

    // Who steers.

    void Start();
    void Stop();
    void Seek(uint32_t milliseconds);
    /// An end of 0 is the song's.
    void SetRegion(uint32_t start, uint32_t end, bool isLooped);
    void SetPart(size_t part, double level, double pan, bool isMuted);
    void SetLevel(double level);
    torv_player_state State() const;
    /// Called from inside its callback.
    bool IsOnOwnThread() const;

    // Who reads.

    /// Fills as many frames of two channels, with silence where nothing is played. Behind the end it stops.
    void Read(float* frames, size_t count) noexcept;
    bool IsPulled() const { return m_isPulled; }
    bool IsPlaying() const { return m_isPlaying; }
    uint32_t Rate() const { return m_sung.Rate(); }
    /// Where the next frame is read.
    uint64_t Frame() const { return m_frame; }
    /// What a device has played so far, and that it is in trouble.
    void SetHeard(uint64_t frame) { m_heard = frame; }
    void FailDevice() { m_hasDeviceFailed = true; }

private:
    struct Gain {
        std::atomic<float> left{1.0F};
        std::atomic<float> right{1.0F};
        float lastLeft = 0; ///< the reader's: a change is no step in the sound
        float lastRight = 0;
    };
    struct Region {
        uint64_t start;
        uint64_t end;
    };

    uint64_t FrameAt(uint32_t milliseconds) const { return uint64_t{milliseconds} * m_sung.Rate() / 1000; }
    Region TheRegion() const;
    void Silence(float* frames, size_t count);
    void Mix(float* frames, size_t count);

    const torv_player_callback m_callback;
    void* const m_user;
    const CString m_device;
    const bool m_isPulled;
    const uint32_t m_milliseconds; ///< of the song
    SungParts m_sung;
    std::vector<Gain> m_gains;
    std::atomic<float> m_level{1.0F};
    std::atomic<uint64_t> m_region{0}; ///< milliseconds: the end in the upper half, 0 for the song's
    std::atomic<bool> m_isLooped = false;
    std::atomic<bool> m_isPlaying = false;
    std::atomic<bool> m_hasEnded = false;
    std::atomic<bool> m_hasDeviceFailed = false;
    std::atomic<uint64_t> m_seek; ///< where to, and kNoSeek
    std::atomic<uint64_t> m_frame{0};
    std::atomic<uint64_t> m_heard{0};
    std::atomic<uint32_t> m_waited{0};
    std::unique_ptr<DevicePlay> m_play;
};

} // namespace torv::c
