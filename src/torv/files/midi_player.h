#pragma once

#include "torv/files/midi_clock.h"
#include "torv/files/midi_track.h"
#include "torv/files/timer_gate.h"

#include <atomic>
#include <utility>

class CxMidiSequence;

namespace torv {

/// Bytes of a system-exclusive message that go to the device at a time.
constexpr DWORD kLongestMidiPiece = 65536;

/// Plays one sequence at a time: a periodic timer takes events from it as they fall due and hands them to the device.
/// There is one player for the process; the timer's and the device's threads share it with the host's. The timer's
/// callback allocates nothing.
class MidiPlayer {
public:
    static MidiPlayer& TheOne();

    /// What CxMidiSequence offers under its own names.
    int Start(CxMidiSequence* sequence, HWND window);
    void Stop();
    bool IsPlaying() const { return m_dwSeqStatus != 0; }
    DWORD GetSequenceTime() const { return m_dwSequenceTime; }
    int OutMessage(DWORD message, HMIDIOUT device);
    int OutAllNoteOff();
    void ChangeDevice(UINT id) { m_nMidiDeviceID = id; }

    /// The player's hold on a sequence, its tracks and their bytes ends.
    void Leave(const CxMidiSequence* sequence);
    /// The sequence has gone back to its beginning.
    void Rewind(const CxMidiSequence* sequence);

    /// Keeps the timer out of a sequence for a while.
    class Pause {
    public:
        explicit Pause(const CxMidiSequence* sequence);
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        const bool m_bHolds;
    };

    /// For who plays by a clock of his own, while nothing plays; gives the one before back.
    MidiClock* ChangeClock(MidiClock* clock) { return std::exchange(m_clock, clock); }
    HMIDIOUT Device() const { return m_hMidiOut; }
    UINT Timer() const { return m_nTimerID; }
    MMRESULT Result() const { return m_MMResult; }
    bool IsSendingLongMessage() const { return m_bSendingLongMessage != 0; }

private:
    bool Succeeded(MMRESULT result);
    bool OpenDevice(HMIDIOUT& device, DWORD_PTR callback);
    bool PrepareDevice();
    void CloseDevice();
    bool StartTimer();
    void StopTimer();
    static void CALLBACK OnTimer(UINT id, UINT message, DWORD_PTR turn, DWORD_PTR, DWORD_PTR);
    static void CALLBACK OnDevice(HMIDIOUT device, UINT message, DWORD_PTR, DWORD_PTR, DWORD_PTR);
    void Tick(UINT timer, DWORD turn);
    void EndPlay(UINT timer);
    bool SendPending();
    bool SendLongMessage();
    void Post(WPARAM code, DWORD number);

    std::atomic<DWORD> m_dwSeqStatus = 0; ///< 1 while playing
    HWND m_hWndOwner = nullptr;
    std::atomic<HMIDIOUT> m_hMidiOut = nullptr; ///< null when closed
    std::atomic<UINT> m_nTimerID = 0;           ///< 0 when none
    UINT m_nTimerInterval = 10;                 ///< ms
    UINT m_nWndCallbackInterval = 100;          ///< ms between position messages
    std::atomic<UINT> m_nMidiDeviceID = MIDI_MAPPER;
    std::atomic<MMRESULT> m_MMResult = MMSYSERR_NOERROR; ///< of the device or timer call made last
    MIDIHDR m_stMidiHdr{};
    std::atomic<int> m_bSendingLongMessage = 0; ///< the header is with the device
    std::atomic<DWORD> m_dwSequenceTime = 0;    ///< ms
    DWORD m_dwStartSysTime = 0;                 ///< the clock at the tick before
    DWORD m_dwWndCallbackTime = 0;              ///< ms since the last position message
    tagEvent m_stSeqEvent{};                    ///< taken from the sequence and not sent yet
    bool m_bLongMessageBegun = false;           ///< the pending event is the rest of a longer message

    std::atomic<CxMidiSequence*> m_pSequence = nullptr; ///< the one started last, while it lives
    TimerGate m_gate;
    MidiClock* m_clock = &SystemMidiClock();
    char m_longMessage[kLongestMidiPiece];
};

} // namespace torv
