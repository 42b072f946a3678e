// The playing half of CxMidiSequence: a periodic timer takes events from the sequence as they fall due and hands them
// to the device. The timer's callback allocates nothing.
#include "torv/files/midi_player.h"

#include "torv/files/midi_sequence.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr DWORD kAllNotesOff = 0x7BB0; // controller 123, value 0
constexpr DWORD kChannels = 16;

std::array<char, torv::kLongestMidiPiece> g_longMessage;

} // namespace

std::atomic<DWORD> CxMidiSequence::m_dwSeqStatus = 0;
HWND CxMidiSequence::m_hWndOwner = nullptr;
std::atomic<HMIDIOUT> CxMidiSequence::m_hMidiOut = nullptr;
std::atomic<UINT> CxMidiSequence::m_nTimerID = 0;
UINT CxMidiSequence::m_nTimerInterval = 10;
UINT CxMidiSequence::m_nWndCallbackInterval = 100;
std::atomic<UINT> CxMidiSequence::m_nMidiDeviceID = MIDI_MAPPER;
std::atomic<MMRESULT> CxMidiSequence::m_MMResult = MMSYSERR_NOERROR;
MIDIHDR CxMidiSequence::m_stMidiHdr = {};
std::atomic<int> CxMidiSequence::m_bSendingLongMessage = 0;
std::atomic<DWORD> CxMidiSequence::m_dwSequenceTime = 0;
DWORD CxMidiSequence::m_dwStartSysTime = 0;
DWORD CxMidiSequence::m_dwWndCallbackTime = 0;
tagEvent CxMidiSequence::m_stSeqEvent = {};
std::atomic<CxMidiSequence*> CxMidiSequence::m_pSequence = nullptr;
bool CxMidiSequence::m_bLongMessageBegun = false;
torv::TimerGate CxMidiSequence::m_gate;

int CxMidiSequence::StartPlay(HWND window) {
    DWORD idle = 0;
    if (!m_dwSeqStatus.compare_exchange_strong(idle, 1))
        return 0;
    if (!PrepareDevice()) {
        m_dwSeqStatus = 0;
        return 0;
    }
    // A sequence that was stopped goes on with the event that was due next; another one's event is nobody's now.
    if (m_pSequence.exchange(this) != this)
        m_stSeqEvent = {};
    m_hWndOwner = window;
    m_dwWndCallbackTime = 0;
    m_dwSequenceTime = GetTimePosition();
    m_dwStartSysTime = timeGetTime();
    if (!StartTimer()) {
        CloseDevice();
        m_dwSeqStatus = 0;
        return 0;
    }
    return 1;
}

void CxMidiSequence::StopPlay() {
    // The timer first: an event that it sends after the notes were ended would go on sounding.
    StopTimer();
    if (m_bSendingLongMessage) {
        midiOutReset(m_hMidiOut); // the header comes back, so that it can be unprepared
        m_bSendingLongMessage = 0;
    }
    if (m_bLongMessageBegun) {
        m_stSeqEvent = {}; // its rest means nothing without its beginning
        m_bLongMessageBegun = false;
    }
    OutAllNoteOff();
    CloseDevice();
    m_dwSeqStatus = 0;
}

int CxMidiSequence::OutMidiMessage(DWORD message, HMIDIOUT device) {
    if (device)
        return Succeeded(midiOutShortMsg(device, message));
    HMIDIOUT opened = nullptr;
    if (!OpenDevice(opened, 0))
        return 0;
    const bool sent = Succeeded(midiOutShortMsg(opened, message));
    midiOutClose(opened);
    return sent;
}

int CxMidiSequence::OutAllNoteOff() {
    const HMIDIOUT playing = m_hMidiOut;
    HMIDIOUT device = playing;
    if (!device && !OpenDevice(device, 0))
        return 0;
    bool sent = true;
    for (DWORD channel = 0; sent && channel < kChannels; ++channel)
        sent = OutMidiMessage(kAllNotesOff | channel, device) != 0;
    if (!playing)
        midiOutClose(device);
    return sent;
}

void CxMidiSequence::ChangeMidiDeviseID(UINT id) { m_nMidiDeviceID = id; }

CxMidiSequence::Pause::Pause(const CxMidiSequence* sequence) : m_bHolds(m_pSequence == sequence) {
    if (m_bHolds)
        m_gate.Hold();
}

CxMidiSequence::Pause::~Pause() {
    if (m_bHolds)
        m_gate.Release();
}

/// The player's hold on this sequence, its tracks and their bytes ends.
void CxMidiSequence::LeavePlayer() {
    if (m_pSequence == this && m_dwSeqStatus)
        StopPlay();
    CxMidiSequence* leaving = this;
    m_pSequence.compare_exchange_strong(leaving, nullptr); // whoever starts next drops the pending event
}

void CxMidiSequence::RewindPlayer() {
    if (m_pSequence != this)
        return;
    m_stSeqEvent = {};
    m_bLongMessageBegun = false;
    if (m_dwSeqStatus)
        m_dwSequenceTime = 0;
}

bool CxMidiSequence::Succeeded(MMRESULT result) {
    m_MMResult = result;
    return result == MMSYSERR_NOERROR;
}

bool CxMidiSequence::OpenDevice(HMIDIOUT& device, DWORD_PTR callback) {
    return Succeeded(midiOutOpen(&device, m_nMidiDeviceID, callback, 0, callback ? CALLBACK_FUNCTION : CALLBACK_NULL));
}

/// Timer period, device and header, ready to play.
bool CxMidiSequence::PrepareDevice() {
    TIMECAPS timer{};
    if (!Succeeded(timeGetDevCaps(&timer, sizeof(timer))))
        return false;
    m_nTimerInterval = std::min(std::max(m_nTimerInterval, timer.wPeriodMin), timer.wPeriodMax);
    MIDIOUTCAPSA capabilities{};
    if (!Succeeded(midiOutGetDevCapsA(m_nMidiDeviceID, &capabilities, sizeof(capabilities))))
        return false;
    if (!m_hMidiOut) {
        HMIDIOUT device = nullptr;
        if (!OpenDevice(device, reinterpret_cast<DWORD_PTR>(&OnDevice)))
            return false;
        m_hMidiOut = device;
    }
    m_bSendingLongMessage = 0;
    m_stMidiHdr = {};
    m_stMidiHdr.lpData = g_longMessage.data();
    m_stMidiHdr.dwBufferLength = torv::kLongestMidiPiece;
    if (Succeeded(midiOutPrepareHeader(m_hMidiOut, &m_stMidiHdr, sizeof(m_stMidiHdr))))
        return true;
    CloseDevice();
    return false;
}

void CxMidiSequence::CloseDevice() {
    const HMIDIOUT device = m_hMidiOut.exchange(nullptr);
    if (!device)
        return;
    m_stMidiHdr.dwBufferLength = torv::kLongestMidiPiece;
    midiOutUnprepareHeader(device, &m_stMidiHdr, sizeof(m_stMidiHdr));
    Succeeded(midiOutClose(device));
}

bool CxMidiSequence::StartTimer() {
    // Raised and never lowered: the next start, often an instant away, finds the resolution as it was.
    timeBeginPeriod(m_nTimerInterval);
    const DWORD turn = m_gate.Open();
    const UINT timer =
        timeSetEvent(m_nTimerInterval, m_nTimerInterval, &OnTimer, turn, TIME_PERIODIC | TIME_CALLBACK_FUNCTION);
    if (timer == 0) {
        m_gate.Close();
        m_MMResult = TIMERR_NOCANDO;
        return false;
    }
    m_nTimerID = timer;
    if (!m_gate.IsOpen(turn))
        m_nTimerID = 0; // it has come to the end already
    return true;
}

void CxMidiSequence::StopTimer() {
    m_gate.Close();
    if (const UINT timer = m_nTimerID.exchange(0))
        Succeeded(timeKillEvent(timer));
    m_gate.Hold(); // not every system's kill waits for the callback that is running
    m_gate.Release();
}

void CALLBACK CxMidiSequence::OnTimer(UINT id, UINT, DWORD_PTR turn, DWORD_PTR, DWORD_PTR) {
    const auto number = static_cast<DWORD>(turn);
    if (!m_gate.Enter(number))
        return;
    m_pSequence.load()->Tick(id, number);
    m_gate.Release();
}

void CALLBACK CxMidiSequence::OnDevice(HMIDIOUT, UINT message, DWORD_PTR, DWORD_PTR, DWORD_PTR) {
    if (message == MOM_DONE)
        m_bSendingLongMessage = 0;
}

void CxMidiSequence::Tick(UINT timer, DWORD turn) {
    if (m_bSendingLongMessage)
        return; // its time is made up for afterwards
    const DWORD now = timeGetTime();
    const DWORD elapsed = now - m_dwStartSysTime;
    m_dwStartSysTime = now;
    m_dwSequenceTime += elapsed;
    m_dwWndCallbackTime += elapsed;
    while (m_gate.IsOpen(turn)) {
        if (m_stSeqEvent.status == 0 && !NextPassingEvent(&m_stSeqEvent)) {
            m_stSeqEvent = {};
            EndPlay(timer);
            return;
        }
        if (GetTimePosition() > m_dwSequenceTime || SendPending())
            break;
    }
    if (m_dwWndCallbackTime >= m_nWndCallbackInterval) {
        Post(torv::kMidiPlayPosition, m_dwSequenceTime);
        m_dwWndCallbackTime -= m_nWndCallbackInterval;
    }
}

/// The device stays open: releasing it may take its time, and that is the host's thread's to spend.
void CxMidiSequence::EndPlay(UINT timer) {
    m_gate.Close();
    timeKillEvent(timer);
    m_nTimerID = 0;
    Post(torv::kMidiPlayEnd, m_dwSequenceTime);
}

/// Uses the pending event up. True when a long message is on its way, after which nothing may be sent for now.
bool CxMidiSequence::SendPending() {
    const tagEvent& event = m_stSeqEvent;
    if (event.status == 0xF0 || event.status == 0xF7)
        return SendLongMessage();
    if (event.status < 0xF0)
        OutMidiMessage(static_cast<DWORD>(event.status | event.data1 << 8 | event.data2 << 16), m_hMidiOut);
    else if (event.data1 == torv::kMetaTempo)
        Post(torv::kMidiPlayTempo, GetSequenceTempo());
    else if (event.data1 == torv::kMetaTimeSignature)
        Post(torv::kMidiPlayTimeSignature, GetTimeSig());
    m_stSeqEvent = {};
    return false;
}

/// Sends as much as the buffer holds and leaves the rest pending, as a continuation.
bool CxMidiSequence::SendLongMessage() {
    tagEvent& event = m_stSeqEvent;
    DWORD count = 0;
    if (event.status == 0xF0)
        g_longMessage[count++] = static_cast<char>(0xF0);
    const DWORD data = std::min(event.length, torv::kLongestMidiPiece - count);
    if (data > 0)
        std::memcpy(g_longMessage.data() + count, event.bytes, data);
    count += data;
    event.bytes += data;
    event.length -= data;
    event.status = event.length > 0 ? 0xF7 : 0;
    m_bLongMessageBegun = event.length > 0;
    if (count == 0)
        return false; // an empty continuation
    m_stMidiHdr.dwBufferLength = count;
    m_stMidiHdr.dwBytesRecorded = count;
    m_bSendingLongMessage = 1; // before the call, within which it may be done already
    if (!Succeeded(midiOutLongMsg(m_hMidiOut, &m_stMidiHdr, sizeof(m_stMidiHdr)))) {
        m_bSendingLongMessage = 0;
        m_bLongMessageBegun = false;
        event = {}; // refused: its rest would mean nothing
    }
    return true;
}

void CxMidiSequence::Post(WPARAM code, DWORD number) {
    if (m_hWndOwner)
        PostMessageA(m_hWndOwner, torv::kMidiPlayMessage, code, static_cast<LPARAM>(number));
}
