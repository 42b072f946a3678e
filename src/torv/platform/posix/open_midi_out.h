#pragma once

#include "torv/platform/midi_device.h"
#include "torv/platform/posix/midi_out.h"
#include "torv/platform/posix/output_calls.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace torv {

/// A MIDI device while it is open, with the thread that sends its long messages and calls back. Results are those of
/// the midiOut calls; after closing every one is MMSYSERR_INVALHANDLE.
class OpenMidiOut {
public:
    OpenMidiOut(HMIDIOUT handle, std::shared_ptr<MidiOutDevice> device, LPMIDICALLBACK callback, DWORD_PTR instance);
    /// Opens the device and begins the thread.
    MMRESULT Open();

    const MidiOutDevice* Device() const { return m_device.get(); }
    void Tell(UINT message, DWORD_PTR header) const;

    /// The message's lowest `count` bytes; 0 is refused.
    MMRESULT Short(DWORD message, DWORD count);
    MMRESULT Prepare(MIDIHDR& header);
    MMRESULT Unprepare(MIDIHDR& header);
    MMRESULT Long(MIDIHDR& header);
    MMRESULT Reset();
    /// Ends the thread and closes the device.
    MMRESULT Close();

private:
    void SendQueue();
    bool IsSending() const { return m_sending || !m_queue.IsEmpty(); }
    bool OnOwnThread() const { return m_thread.get_id() == std::this_thread::get_id(); }

    const HMIDIOUT m_handle;
    const std::shared_ptr<MidiOutDevice> m_device;
    const LPMIDICALLBACK m_callback; // may be null
    const DWORD_PTR m_instance;

    std::mutex m_mutex; // also around every call of the device, but for long messages
    std::condition_variable m_changed;
    HeaderQueue<MIDIHDR> m_queue;
    bool m_sending = false;
    bool m_calling = false; // the callback runs
    bool m_resetting = false;
    bool m_closed = false;
    std::thread m_thread; // last: it uses all of the above
};

} // namespace torv
