#pragma once

#include "torv/platform/platform.h"

#if defined(_WIN32)
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// A wave device in the test's hand where the system has no place to add one: the test program's own wave output calls
/// stand before the system's (wave_recorder_windows.cpp), which they ask while there is no recorder.
class WaveRecorder {
public:
    static constexpr const char* kName = "A recorder with a name of more than thirty-one bytes";
    WaveRecorder() { m_queue.reserve(64); } // a player may count its allocations
    const char* Name() const { return kName; }

    /// The oldest blocks are done; returns how many there were. None while paused.
    int Finish(int count);
    size_t Queued() const;
    /// The bytes of all finished blocks.
    std::vector<BYTE> Played() const;
    /// As last opened.
    WAVEFORMATEX Format() const;

    std::atomic<bool> refuse = false;
    std::atomic<bool> refuseBlocks = false;
    std::atomic<bool> paused = false;
    std::atomic<int> opened = 0;
    std::atomic<int> closed = 0;
    std::atomic<int> resets = 0;
    void (*writeHook)() = nullptr;
    std::function<void()> resetHook; ///< on the resetting thread; set while nothing is open

    // The system's calls.
    MMRESULT Open(LPHWAVEOUT handle, const WAVEFORMATEX& asked, DWORD_PTR callback, DWORD_PTR instance, DWORD flags);
    MMRESULT Close();
    MMRESULT Write(WAVEHDR& header);
    MMRESULT Reset();

private:
    void GiveBack(WAVEHDR& header) const;
    void Tell(UINT message, WAVEHDR* header) const;

    mutable std::mutex m_mutex;
    std::vector<WAVEHDR*> m_queue;
    std::vector<BYTE> m_played;
    WAVEFORMATEX m_format{};
    DWORD_PTR m_callback = 0;
    DWORD_PTR m_instance = 0;
    DWORD m_type = 0;
};

/// A recorder as the only device while this lives.
struct WaveRecorderInList {
    WaveRecorderInList();
    ~WaveRecorderInList();
    WaveRecorderInList(const WaveRecorderInList&) = delete;
    WaveRecorderInList& operator=(const WaveRecorderInList&) = delete;
    WaveRecorder* operator->() const { return recorder.get(); }

    const std::shared_ptr<WaveRecorder> recorder = std::make_shared<WaveRecorder>();
};
#endif
