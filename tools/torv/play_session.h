#pragma once

#include <torv/torv.h>

#include <optional>
#include <string>
#include <vector>

/// One part of what is played.
struct PlayTrack {
    CQuillMidiBuffer* stream;
    double gain = 1.0; ///< linear
    double pan = 0.0;  ///< -1 left .. 1 right
};

/// One song of several parts on one device, from the host's side: a window that hears how far it is, and the driver. It
/// can be paused and go on, which ends a play and begins another.
class PlaySession {
public:
    struct Settings {
        std::string device; ///< product name
        DWORD rate = 44100; ///< Hz
        DWORD preroll = 0;  ///< milliseconds that the engine must be told of a note ahead
        DWORD start = 0;    ///< of the region, in milliseconds of the stream
        DWORD end = 0;      ///< 0x7FFFFFFF: the song's
        DWORD last = 0;     ///< where there is nothing more to hear
        bool isLooped = false;
    };

    /// Throws InputError when the engine cannot be loaded.
    PlaySession(std::vector<PlayTrack> tracks, const Settings& settings);
    ~PlaySession();
    PlaySession(const PlaySession&) = delete;
    PlaySession& operator=(const PlaySession&) = delete;

    /// Throws InputError when that cannot be.
    void Play(DWORD position);
    /// Goes on where Play sends it.
    void Pause();
    /// Where a seek to this position leads: before the region to its start; behind all that is heard a loop begins
    /// again, and else it is over, which is nothing.
    static std::optional<DWORD> TargetOf(DWORD position, const Settings& settings);
    /// Also while it pauses.
    void Seek(DWORD position);
    void SetVolume(double decibels) { m_driver.SetMasterVolume(CWaveOut::Db2Amplitude(decibels)); }

    /// Hears what the driver has told since the last time.
    void Listen();
    bool IsPaused() const { return m_isPaused; }
    bool IsOver() const { return m_isOver; }
    /// How far it was heard, in milliseconds of the stream.
    DWORD Position() const { return m_position; }

private:
    const std::vector<PlayTrack> m_tracks;
    const Settings m_settings;
    CWnd m_window;
    CRtSynthesis m_driver;
    DWORD m_position;
    bool m_isPaused = false;
    bool m_isOver = false;
};
