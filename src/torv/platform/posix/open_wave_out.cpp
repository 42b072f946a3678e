#include "torv/platform/posix/open_wave_out.h"

#include "torv/platform/or_fail.h"
#include "torv/platform/posix/message.h"
#include "torv/platform/safe_point.h"
#include "torv/platform/wave_header.h"

namespace torv {
namespace {

/// Others poll the flags.
void ChangeFlags(WAVEHDR& header, DWORD clear, DWORD set) {
    std::atomic_ref<DWORD>(header.dwFlags).store((HeaderFlags(header) & ~clear) | set, std::memory_order_release);
}

} // namespace

MMRESULT OpenWaveOut::Open() {
    m_stream = m_device->Open(m_format, *this);
    if (m_stream && CallsFunction())
        m_thread = std::thread(&OpenWaveOut::CallFunction, this);
    return m_stream ? MMSYSERR_NOERROR : MMSYSERR_ALLOCATED;
}

void OpenWaveOut::Tell(UINT message, DWORD_PTR header) const {
    const auto wParam = reinterpret_cast<WPARAM>(m_handle);
    switch (m_target.type) {
    case CALLBACK_WINDOW:
        PostMessageA(reinterpret_cast<HWND>(m_target.callback), message, wParam, static_cast<LPARAM>(header));
        break;
    case CALLBACK_THREAD:
        PostThreadMessageA(static_cast<DWORD>(m_target.callback), message, wParam, static_cast<LPARAM>(header));
        break;
    case CALLBACK_FUNCTION:
        reinterpret_cast<LPWAVECALLBACK>(m_target.callback)(m_handle, message, m_target.instance, header, 0);
        break;
    default:
        break;
    }
}

MMRESULT OpenWaveOut::Prepare(WAVEHDR& header) {
    const std::lock_guard lock(m_mutex);
    if (m_closed)
        return MMSYSERR_INVALHANDLE;
    if (HeaderFlags(header) & WHDR_INQUEUE)
        return WAVERR_STILLPLAYING;
    ChangeFlags(header, 0, WHDR_PREPARED);
    return MMSYSERR_NOERROR;
}

MMRESULT OpenWaveOut::Unprepare(WAVEHDR& header) {
    const std::lock_guard lock(m_mutex);
    if (m_closed)
        return MMSYSERR_INVALHANDLE;
    if (HeaderFlags(header) & WHDR_INQUEUE)
        return WAVERR_STILLPLAYING;
    ChangeFlags(header, WHDR_PREPARED, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT OpenWaveOut::Write(WAVEHDR& header) {
    const std::lock_guard calls(m_calls);
    WaveBlock block{reinterpret_cast<const BYTE*>(header.lpData), header.dwBufferLength, 0};
    {
        const std::lock_guard lock(m_mutex);
        if (m_closed)
            return MMSYSERR_INVALHANDLE;
        if (!(HeaderFlags(header) & WHDR_PREPARED))
            return WAVERR_UNPREPARED;
        if (HeaderFlags(header) & WHDR_INQUEUE)
            return WAVERR_STILLPLAYING;
        ChangeFlags(header, WHDR_DONE, WHDR_INQUEUE);
        m_queue.Append(header);
        block.number = ++m_written;
    }
    const bool isWritten = OrFail(false, [&] {
        m_stream->Write(block);
        return true;
    });
    if (isWritten)
        return MMSYSERR_NOERROR;
    const std::lock_guard lock(m_mutex); // it is the last one, and the stream has not heard of it
    m_queue.RemoveLast();
    --m_written;
    ChangeFlags(header, WHDR_INQUEUE, 0);
    return MMSYSERR_NOMEM;
}

MMRESULT OpenWaveOut::Pause() {
    const std::lock_guard calls(m_calls);
    if (!m_stream)
        return MMSYSERR_INVALHANDLE;
    m_stream->Pause();
    return MMSYSERR_NOERROR;
}

MMRESULT OpenWaveOut::Restart() {
    const std::lock_guard calls(m_calls);
    if (!m_stream)
        return MMSYSERR_INVALHANDLE;
    m_stream->Restart();
    return MMSYSERR_NOERROR;
}

MMRESULT OpenWaveOut::Reset() {
    ULONGLONG last = 0;
    {
        const std::lock_guard calls(m_calls);
        if (!m_stream)
            return MMSYSERR_INVALHANDLE;
        m_stream->Reset();
        const std::lock_guard lock(m_mutex);
        last = m_done = m_written;
        GiveBackDone();
    }
    // Without the first lock, which a callback may need; what it writes anew is not waited for.
    if (CallsFunction() && !OnOwnThread()) {
        const AtRest rest;
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_told >= last || m_closed; });
    }
    return MMSYSERR_NOERROR;
}

MMRESULT OpenWaveOut::Close() {
    std::unique_ptr<WaveOutStream> stream;
    {
        const std::lock_guard calls(m_calls);
        const std::lock_guard lock(m_mutex);
        if (m_closed)
            return MMSYSERR_INVALHANDLE;
        if (OnOwnThread())
            return MMSYSERR_HANDLEBUSY;
        if (!m_queue.IsEmpty())
            return WAVERR_STILLPLAYING;
        m_closed = true;
        stream = std::move(m_stream);
        m_changed.notify_all();
    }
    const AtRest rest;
    stream.reset();
    if (m_thread.joinable())
        m_thread.join();
    return MMSYSERR_NOERROR;
}

void OpenWaveOut::BlockDone(ULONGLONG number) {
    const std::lock_guard lock(m_mutex);
    if (number <= m_done || number > m_written)
        return;
    m_done = number;
    GiveBackDone();
}

/// The header is the caller's again as soon as its flags say so.
WAVEHDR& OpenWaveOut::TakeFirst() {
    WAVEHDR& header = m_queue.TakeFirst();
    ++m_returned;
    ChangeFlags(header, WHDR_INQUEUE, WHDR_DONE);
    return header;
}

void OpenWaveOut::GiveBackDone() {
    if (CallsFunction()) {
        m_changed.notify_all();
        return;
    }
    while (HasDone())
        Tell(MM_WOM_DONE, reinterpret_cast<DWORD_PTR>(&TakeFirst()));
}

void OpenWaveOut::CallFunction() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return HasDone() || m_closed; });
        if (!HasDone())
            return;
        const auto header = reinterpret_cast<DWORD_PTR>(&TakeFirst());
        lock.unlock();
        Tell(WOM_DONE, header);
        lock.lock();
        m_told = m_returned;
        m_changed.notify_all();
    }
}

} // namespace torv
