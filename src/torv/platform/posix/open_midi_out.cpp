#include "torv/platform/posix/open_midi_out.h"

#include "torv/platform/or_fail.h"

namespace torv {

OpenMidiOut::OpenMidiOut(HMIDIOUT handle, std::shared_ptr<MidiOutDevice> device, LPMIDICALLBACK callback,
                         DWORD_PTR instance)
    : m_handle(handle), m_device(std::move(device)), m_callback(callback), m_instance(instance) {}

MMRESULT OpenMidiOut::Open() {
    if (!m_device->Open())
        return MIDIERR_NODEVICE;
    const std::lock_guard lock(m_mutex); // the thread asks for its own identity
    const MMRESULT result = OrFail(MMSYSERR_NOMEM, [&] {
        m_thread = std::thread(&OpenMidiOut::SendQueue, this);
        return MMSYSERR_NOERROR;
    });
    if (result != MMSYSERR_NOERROR)
        m_device->Close();
    return result;
}

void OpenMidiOut::Tell(UINT message, DWORD_PTR header) const {
    if (m_callback)
        m_callback(m_handle, message, m_instance, header, 0);
}

MMRESULT OpenMidiOut::Short(DWORD message, DWORD count) {
    if (count == 0)
        return MMSYSERR_INVALPARAM;
    const BYTE bytes[] = {static_cast<BYTE>(message), static_cast<BYTE>(message >> 8),
                          static_cast<BYTE>(message >> 16)};
    const std::lock_guard lock(m_mutex);
    if (m_closed)
        return MMSYSERR_INVALHANDLE;
    if (IsSending())
        return MIDIERR_NOTREADY;
    const bool isSent = OrFail(false, [&] { return m_device->ShortMessage(bytes, count); });
    return isSent ? MMSYSERR_NOERROR : MMSYSERR_ERROR;
}

MMRESULT OpenMidiOut::Prepare(MIDIHDR& header) {
    const std::lock_guard lock(m_mutex);
    if (m_closed)
        return MMSYSERR_INVALHANDLE;
    header.dwFlags |= MHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT OpenMidiOut::Unprepare(MIDIHDR& header) {
    const std::lock_guard lock(m_mutex);
    if (m_closed)
        return MMSYSERR_INVALHANDLE;
    if (header.dwFlags & MHDR_INQUEUE)
        return MIDIERR_STILLPLAYING;
    header.dwFlags &= ~MHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT OpenMidiOut::Long(MIDIHDR& header) {
    const std::lock_guard lock(m_mutex);
    if (m_closed)
        return MMSYSERR_INVALHANDLE;
    if (!(header.dwFlags & MHDR_PREPARED))
        return MIDIERR_UNPREPARED;
    if (header.dwFlags & MHDR_INQUEUE)
        return MIDIERR_STILLPLAYING;
    if (m_resetting)
        return MIDIERR_NOTREADY; // else a callback that sends again would keep a reset from its end
    header.dwFlags = (header.dwFlags & ~MHDR_DONE) | MHDR_INQUEUE;
    m_queue.Append(header);
    m_changed.notify_all();
    return MMSYSERR_NOERROR;
}

MMRESULT OpenMidiOut::Reset() {
    std::unique_lock lock(m_mutex);
    if (m_closed)
        return MMSYSERR_INVALHANDLE;
    m_resetting = true;
    if (!OnOwnThread())
        m_changed.wait(lock, [&] { return !IsSending() && !m_calling; });
    m_resetting = !m_queue.IsEmpty();
    for (BYTE channel = 0; channel < 16; ++channel) {
        for (const BYTE controller : {BYTE{64}, BYTE{123}}) { // pedal up, all notes off
            const BYTE bytes[] = {static_cast<BYTE>(0xB0 | channel), controller, 0};
            OrFail(false, [&] { return m_device->ShortMessage(bytes, 3); });
        }
    }
    return MMSYSERR_NOERROR;
}

MMRESULT OpenMidiOut::Close() {
    {
        std::unique_lock lock(m_mutex);
        if (!m_closed && OnOwnThread())
            return MMSYSERR_HANDLEBUSY;
        m_changed.wait(lock, [&] { return !m_calling; });
        if (m_closed)
            return MMSYSERR_INVALHANDLE;
        if (IsSending())
            return MIDIERR_STILLPLAYING;
        m_closed = true;
        m_changed.notify_all();
    }
    m_thread.join();
    m_device->Close();
    return MMSYSERR_NOERROR;
}

void OpenMidiOut::SendQueue() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return !m_queue.IsEmpty() || m_closed; });
        if (m_queue.IsEmpty())
            return;
        MIDIHDR& header = m_queue.TakeFirst();
        if (!m_resetting && header.dwBufferLength > 0) {
            m_sending = true;
            lock.unlock();
            OrFail(false, [&] {
                return m_device->LongMessage(reinterpret_cast<const BYTE*>(header.lpData), header.dwBufferLength);
            });
            lock.lock();
            m_sending = false;
        }
        m_resetting = m_resetting && !m_queue.IsEmpty();
        header.dwFlags = (header.dwFlags & ~MHDR_INQUEUE) | MHDR_DONE;
        m_calling = true;
        lock.unlock();
        Tell(MOM_DONE, reinterpret_cast<DWORD_PTR>(&header));
        lock.lock();
        m_calling = false;
        m_changed.notify_all();
    }
}

} // namespace torv
