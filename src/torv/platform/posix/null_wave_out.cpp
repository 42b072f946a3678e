#include "torv/platform/posix/null_wave_out.h"

#include "torv/platform/posix/wave_blocks.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace torv {
namespace {

using Clock = std::chrono::steady_clock;

class NullStream : public WaveOutStream {
public:
    /// Throws std::system_error when no thread can be had.
    NullStream(const WAVEFORMATEX& format, WaveOutListener& listener)
        : m_frameBytes(format.nBlockAlign), m_rate(format.nSamplesPerSec), m_listener(listener),
          m_thread(&NullStream::KeepTime, this) {}
    NullStream(const NullStream&) = delete;
    NullStream& operator=(const NullStream&) = delete;
    ~NullStream() override {
        {
            const std::lock_guard lock(m_mutex);
            m_closed = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }

    void Write(const WaveBlock& block) override {
        const std::lock_guard lock(m_mutex);
        if (m_blocks.IsEmpty())
            Begin();
        m_blocks.Push(block);
        m_changed.notify_all();
    }
    void Pause() override {
        const std::lock_guard lock(m_mutex);
        if (!m_paused)
            m_pausedAt = Clock::now();
        m_paused = true;
        m_changed.notify_all();
    }
    void Restart() override {
        const std::lock_guard lock(m_mutex);
        if (m_paused)
            m_start += Clock::now() - m_pausedAt;
        m_paused = false;
        m_changed.notify_all();
    }
    void Reset() override {
        const std::lock_guard lock(m_mutex);
        m_blocks.Clear();
        m_paused = false;
        m_changed.notify_all();
    }

private:
    void Begin() {
        m_start = m_paused ? m_pausedAt : Clock::now();
        m_frames = 0;
    }
    /// When the front block ends. Counted from the start, so that nothing is lost to rounding.
    Clock::time_point Deadline() const {
        const ULONGLONG frames = m_frames + m_blocks.Front().count / m_frameBytes;
        return m_start + std::chrono::seconds(frames / m_rate) +
               std::chrono::nanoseconds(frames % m_rate * 1000000000 / m_rate);
    }
    void KeepTime() {
        std::unique_lock lock(m_mutex);
        while (!m_closed) {
            if (m_blocks.IsEmpty() || m_paused) {
                m_changed.wait(lock);
            } else if (const auto deadline = Deadline(); Clock::now() < deadline) {
                m_changed.wait_until(lock, deadline);
            } else {
                const WaveBlock done = m_blocks.Front();
                m_frames += done.count / m_frameBytes;
                m_blocks.Pop();
                lock.unlock();
                m_listener.BlockDone(done.number);
                lock.lock();
            }
        }
    }

    const DWORD m_frameBytes;
    const DWORD m_rate;
    WaveOutListener& m_listener;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    WaveBlocks m_blocks;
    Clock::time_point m_start; // of the frames that were played without a gap
    ULONGLONG m_frames = 0;    // of these, those that are through
    bool m_paused = false;
    Clock::time_point m_pausedAt;
    bool m_closed = false;
    std::thread m_thread; // last: it uses all of the above
};

} // namespace

std::unique_ptr<WaveOutStream> NullWaveOut::Open(const WAVEFORMATEX& format, WaveOutListener& listener) {
    return std::make_unique<NullStream>(format, listener);
}

} // namespace torv
