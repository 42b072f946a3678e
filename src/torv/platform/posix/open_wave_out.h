#pragma once

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

    OpenWaveOut(HWAVEOUT handle, const Target& target) : m_handle(handle), m_target(target) {}
    /// False when the device refuses. Throws when memory or a thread cannot be had.
    bool Open(std::shared_ptr<WaveOutDevice> device, const WAVEFORMATEX& format);
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
    bool HasDone() const { return m_first && m_returned < m_done; }
    void Unqueue(WAVEHDR& header);
    WAVEHDR& TakeFirst();
    void GiveBackDone();
    void CallFunction();

    const HWAVEOUT m_handle;
    const Target m_target;

    std::mutex m_calls; // around the stream's calls; taken before the other one, and never by a stream
    std::shared_ptr<WaveOutDevice> m_device; // which its stream may use to the end
    std::unique_ptr<WaveOutStream> m_stream; // null: closed

    std::mutex m_mutex;
    std::condition_variable m_changed;
    WAVEHDR* m_first = nullptr; // the queue, chained through the headers
    WAVEHDR* m_last = nullptr;
    ULONGLONG m_written = 0;  // number of the last header
    ULONGLONG m_done = 0;     // the device is through with these,
    ULONGLONG m_returned = 0; // these have been taken from the queue
    ULONGLONG m_told = 0;     // and of these the callback function has returned
    bool m_closed = false;
    std::thread m_thread; // calls the callback function, if there is one
};

} // namespace torv
