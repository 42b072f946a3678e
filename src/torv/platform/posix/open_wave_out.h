#pragma once

#include "torv/platform/posix/output_calls.h"
#include "torv/platform/posix/wave_out.h"
#include "torv/platform/wave_device.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace torv {

/// A wave device while it is open. Results are those of the waveOut calls; after closing every one is
/// MMSYSERR_INVALHANDLE.
class OpenWaveOut : public WaveOutListener {
public:
    /// Whom to tell, as given to waveOutOpen.
    struct Target {
        DWORD type; // CALLBACK_
        DWORD_PTR callback;
        DWORD_PTR instance;
    };

    OpenWaveOut(HWAVEOUT handle, const Target& target, std::shared_ptr<WaveOutDevice> device,
                const WAVEFORMATEX& format)
        : m_handle(handle), m_target(target), m_format(format), m_device(std::move(device)) {}
    /// MMSYSERR_ALLOCATED when the device refuses. Throws when memory or a thread cannot be had.
    MMRESULT Open();
    const WaveOutDevice* Device() const { return m_device.get(); }
    void Tell(UINT message, DWORD_PTR header) const;

    MMRESULT Prepare(WAVEHDR& header);
    MMRESULT Unprepare(WAVEHDR& header);
    MMRESULT Write(WAVEHDR& header);
    MMRESULT Pause();
    MMRESULT Restart();
    MMRESULT Reset();
    MMRESULT Close();

    void BlockDone(ULONGLONG number) override;

private:
    bool CallsFunction() const { return m_target.type == CALLBACK_FUNCTION; }
    bool OnOwnThread() const { return m_thread.get_id() == std::this_thread::get_id(); }
    bool HasDone() const { return !m_queue.IsEmpty() && m_returned < m_done; }
    WAVEHDR& TakeFirst();
    void GiveBackDone();
    void CallFunction();

    const HWAVEOUT m_handle;
    const Target m_target;
    const WAVEFORMATEX m_format;
    const std::shared_ptr<WaveOutDevice> m_device; // which its stream may use to the end

    std::mutex m_calls; // around the stream's calls; taken before the other one, and never by a stream
    std::unique_ptr<WaveOutStream> m_stream; // null: closed

    std::mutex m_mutex;
    std::condition_variable m_changed;
    HeaderQueue<WAVEHDR> m_queue;
    ULONGLONG m_written = 0;  // number of the last header
    ULONGLONG m_done = 0;     // the device is through with these,
    ULONGLONG m_returned = 0; // these have been taken from the queue
    ULONGLONG m_told = 0;     // and of these the callback function has returned
    bool m_closed = false;
    std::thread m_thread; // calls the callback function, if there is one
};

} // namespace torv
