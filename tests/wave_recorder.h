#pragma once

#include "torv/platform/platform.h"
#include "torv/platform/wave_device.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// A wave device in the test's hand: it keeps what it is given, and a block is done when the test says so. Of what is
/// open at the same time it follows the last.
template <class Block>
class RecordedBlocks {
public:
    size_t Queued() const {
        const std::lock_guard lock(m_mutex);
        return m_queue.size();
    }
    /// The bytes of all finished blocks.
    std::vector<BYTE> Played() const {
        const std::lock_guard lock(m_mutex);
        return m_played;
    }
    /// As last opened.
    WAVEFORMATEX Format() const {
        const std::lock_guard lock(m_mutex);
        return m_format;
    }

    static constexpr const char* kName = "A recorder with a name of more than thirty-one bytes";
    std::atomic<bool> refuse = false; ///< to be opened; on Windows, to take blocks as well
    std::atomic<bool> paused = false;
    std::atomic<int> opened = 0;
    std::atomic<int> closed = 0;
    std::atomic<int> resets = 0;
    void (*writeHook)() = nullptr;
    std::function<void()> resetHook; ///< on the resetting thread; set while nothing is open

protected:
    RecordedBlocks() { m_queue.reserve(64); } // a player may count its allocations

    void Begin(const WAVEFORMATEX& asked) {
        m_format = asked;
        m_queue.clear();
        paused = false;
        ++opened;
    }
    /// The oldest block, with its bytes played; false when there is none, or while paused.
    bool Take(Block& block) {
        if (paused || m_queue.empty())
            return false;
        block = m_queue.front();
        m_queue.erase(m_queue.begin());
        return true;
    }

    mutable std::mutex m_mutex;
    std::vector<Block> m_queue;
    std::vector<BYTE> m_played;
    WAVEFORMATEX m_format{};
};

#if defined(_WIN32)
/// Where the system has no place to add one, the test program's own wave output calls stand before the system's, and
/// know of no other device (wave_recorder_windows.cpp).
class WaveRecorder : public RecordedBlocks<WAVEHDR*> {
public:
    const char* Name() const { return kName; }
    /// The oldest blocks are done; returns how many there were. None while paused.
    int Finish(int count);

    // The system's calls.
    MMRESULT Open(LPHWAVEOUT handle, const WAVEFORMATEX& asked, DWORD_PTR callback, DWORD_PTR instance, DWORD flags);
    MMRESULT Close();
    MMRESULT Write(WAVEHDR& header);
    MMRESULT Reset();

private:
    void GiveBack(WAVEHDR& header) const;
    void Tell(UINT message, WAVEHDR* header) const;

    DWORD_PTR m_callback = 0;
    DWORD_PTR m_instance = 0;
    DWORD m_type = 0;
};

namespace torv {
void AddWaveOutDevice(const std::shared_ptr<WaveRecorder>& recorder);
void RemoveWaveOutDevice(const WaveRecorder* recorder);
} // namespace torv
#else
class WaveRecorder : public RecordedBlocks<torv::WaveBlock>, public torv::WaveOutDevice {
public:
    const char* Name() const override { return kName; }
    bool Plays(const WAVEFORMATEX& asked) const override { return asked.wBitsPerSample != 32; }
    std::unique_ptr<torv::WaveOutStream> Open(const WAVEFORMATEX& asked, torv::WaveOutListener& listener) override {
        return refuse ? nullptr : std::make_unique<Stream>(*this, asked, listener);
    }

    /// The oldest blocks are done; returns how many there were. None while paused.
    int Finish(int count) {
        const std::lock_guard telling(m_telling);
        for (int finished = 0; finished < count; ++finished) {
            torv::WaveOutListener* listener = nullptr;
            torv::WaveBlock block;
            {
                const std::lock_guard lock(m_mutex);
                listener = m_listener;
                if (!listener || !Take(block))
                    return finished;
                m_played.insert(m_played.end(), block.bytes, block.bytes + block.count);
            }
            listener->BlockDone(block.number);
        }
        return count;
    }
    /// As a device does that has lost count.
    void Claim(ULONGLONG number) {
        torv::WaveOutListener* listener = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            listener = m_listener;
        }
        listener->BlockDone(number);
    }

private:
    class Stream : public torv::WaveOutStream {
    public:
        Stream(WaveRecorder& recorder, const WAVEFORMATEX& asked, torv::WaveOutListener& listener)
            : m_of(recorder), m_listener(listener) {
            const std::lock_guard lock(m_of.m_mutex);
            m_of.m_listener = &listener;
            m_of.Begin(asked);
        }
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;
        ~Stream() override {
            const std::lock_guard telling(m_of.m_telling); // the listener hears no more
            const std::lock_guard lock(m_of.m_mutex);
            if (m_of.m_listener == &m_listener)
                m_of.m_listener = nullptr;
            ++m_of.closed;
        }
        void Write(const torv::WaveBlock& block) override {
            if (m_of.writeHook)
                m_of.writeHook();
            const std::lock_guard lock(m_of.m_mutex);
            m_of.m_queue.push_back(block);
        }
        void Pause() override { m_of.paused = true; }
        void Restart() override { m_of.paused = false; }
        void Reset() override {
            if (m_of.resetHook)
                m_of.resetHook();
            const std::lock_guard lock(m_of.m_mutex);
            m_of.m_queue.clear();
            m_of.paused = false;
            ++m_of.resets;
        }

    private:
        WaveRecorder& m_of;
        torv::WaveOutListener& m_listener;
    };

    std::mutex m_telling; // while the listener is told; taken before the other one
    torv::WaveOutListener* m_listener = nullptr;
};
#endif

/// A recorder in the list of devices, as the first of them, while this lives.
struct WaveRecorderInList {
    WaveRecorderInList() { torv::AddWaveOutDevice(recorder); }
    ~WaveRecorderInList() { torv::RemoveWaveOutDevice(recorder.get()); }
    WaveRecorderInList(const WaveRecorderInList&) = delete;
    WaveRecorderInList& operator=(const WaveRecorderInList&) = delete;
    WaveRecorder* operator->() const { return recorder.get(); }

    const std::shared_ptr<WaveRecorder> recorder = std::make_shared<WaveRecorder>();
};
