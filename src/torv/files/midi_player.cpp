#include "torv/files/midi_player.h"

#include "torv/files/midi_sequence.h"

#include <algorithm>
#include <cstring>

namespace torv {

namespace {

constexpr DWORD kAllNotesOff = 0x7BB0; // controller 123, value 0
constexpr DWORD kChannels = 16;

} // namespace

MidiPlayer& MidiPlayer::TheOne() {
    static MidiPlayer player;
    return player;
}

int MidiPlayer::Start(CxMidiSequence* sequence, HWND window) {
    DWORD idle = 0;
    if (!m_dwSeqStatus.compare_exchange_strong(idle, 1))
        return 0;
    if (!PrepareDevice()) {
        m_dwSeqStatus = 0;
        return 0;
    }
    // A sequence that was stopped goes on with the event that was due next; another one's event is nobody's now.
    if (m_pSequence.exchange(sequence) != sequence)
        m_stSeqEvent = {};
    m_hWndOwner = window;
    m_dwWndCallbackTime = 0;
    m_dwSequenceTime = sequence->GetTimePosition();
    m_dwStartSysTime = m_clock->Now();
    if (!StartTimer()) {
        CloseDevice();
        m_MMResult = TIMERR_NOCANDO;
        m_dwSeqStatus = 0;
        return 0;
    }
    return 1;
}

void MidiPlayer::Stop() {
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

int MidiPlayer::OutMessage(DWORD message, HMIDIOUT device) {
    if (device)
        return Succeeded(midiOutShortMsg(device, message));
    HMIDIOUT opened = nullptr;
    if (!OpenDevice(opened, 0))
        return 0;
    const bool sent = Succeeded(midiOutShortMsg(opened, message));
    midiOutClose(opened);
    return sent;
}

int MidiPlayer::OutAllNoteOff() {
    const HMIDIOUT playing = m_hMidiOut;
    HMIDIOUT device = playing;
    if (!device && !OpenDevice(device, 0))
        return 0;
    bool sent = true;
    for (DWORD channel = 0; sent && channel < kChannels; ++channel)
        sent = OutMessage(kAllNotesOff | channel, device) != 0;
    if (!playing)
        midiOutClose(device);
    return sent;
}

MidiPlayer::Pause::Pause(const CxMidiSequence* sequence) : m_bHolds(TheOne().m_pSequence == sequence) {
    if (m_bHolds)
        TheOne().m_gate.Hold();
}

MidiPlayer::Pause::~Pause() {
    if (m_bHolds)
        TheOne().m_gate.Release();
}

void MidiPlayer::Leave(const CxMidiSequence* sequence) {
    if (m_pSequence != sequence)
        return;
    if (m_dwSeqStatus)
        Stop();
    m_pSequence = nullptr; // whoever starts next drops the pending event
}

void MidiPlayer::Rewind(const CxMidiSequence* sequence) {
    if (m_pSequence != sequence)
        return;
    m_stSeqEvent = {};
    m_bLongMessageBegun = false;
    if (m_dwSeqStatus)
        m_dwSequenceTime = 0;
}

bool MidiPlayer::Succeeded(MMRESULT result) {
    m_MMResult = result;
    return result == MMSYSERR_NOERROR;
}

bool MidiPlayer::OpenDevice(HMIDIOUT& device, DWORD_PTR callback) {
    return Succeeded(midiOutOpen(&device, m_nMidiDeviceID, callback, 0, callback ? CALLBACK_FUNCTION : CALLBACK_NULL));
}

/// Device and header, ready to play.
bool MidiPlayer::PrepareDevice() {
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
    m_stMidiHdr.lpData = m_longMessage;
    m_stMidiHdr.dwBufferLength = kLongestMidiPiece;
    if (Succeeded(midiOutPrepareHeader(m_hMidiOut, &m_stMidiHdr, sizeof(m_stMidiHdr))))
        return true;
    CloseDevice();
    return false;
}

void MidiPlayer::CloseDevice() {
    const HMIDIOUT device = m_hMidiOut.exchange(nullptr);
    if (!device)
        return;
    m_stMidiHdr.dwBufferLength = kLongestMidiPiece;
    midiOutUnprepareHeader(device, &m_stMidiHdr, sizeof(m_stMidiHdr));
    Succeeded(midiOutClose(device));
}

bool MidiPlayer::StartTimer() {
    const DWORD turn = m_gate.Open();
    const UINT timer = m_clock->Start(m_nTimerInterval, &OnTimer, turn);
    if (timer == 0) {
        m_gate.Close();
        return false;
    }
    m_nTimerID = timer;
    if (!m_gate.IsOpen(turn))
        m_nTimerID = 0; // it has come to the end already
    return true;
}

void MidiPlayer::StopTimer() {
    m_gate.Close();
    if (const UINT timer = m_nTimerID.exchange(0))
        Succeeded(m_clock->Stop(timer));
    m_gate.Hold(); // not every system's kill waits for the callback that is running
    m_gate.Release();
}

void CALLBACK MidiPlayer::OnTimer(UINT id, UINT, DWORD_PTR turn, DWORD_PTR, DWORD_PTR) {
    MidiPlayer& player = TheOne();
    const auto number = static_cast<DWORD>(turn);
    if (!player.m_gate.Enter(number))
        return;
    player.Tick(id, number);
    player.m_gate.Release();
}

void CALLBACK MidiPlayer::OnDevice(HMIDIOUT, UINT message, DWORD_PTR, DWORD_PTR, DWORD_PTR) {
    if (message == MOM_DONE)
        TheOne().m_bSendingLongMessage = 0;
}

void MidiPlayer::Tick(UINT timer, DWORD turn) {
    CxMidiSequence& sequence = *m_pSequence;
    if (m_bSendingLongMessage)
        return; // its time is made up for afterwards
    const DWORD now = m_clock->Now();
    const DWORD elapsed = now - m_dwStartSysTime;
    m_dwStartSysTime = now;
    m_dwSequenceTime += elapsed;
    m_dwWndCallbackTime += elapsed;
    while (m_gate.IsOpen(turn)) {
        if (m_stSeqEvent.status == 0 && !sequence.NextPassingEvent(&m_stSeqEvent)) {
            m_stSeqEvent = {};
            EndPlay(timer);
            return;
        }
        if (sequence.GetTimePosition() > m_dwSequenceTime || SendPending())
            break;
    }
    if (m_dwWndCallbackTime >= m_nWndCallbackInterval) {
        Post(kMidiPlayPosition, m_dwSequenceTime);
        m_dwWndCallbackTime -= m_nWndCallbackInterval;
    }
}

/// The device stays open: releasing it may take its time, and that is the host's thread's to spend.
void MidiPlayer::EndPlay(UINT timer) {
    m_gate.Close();
    m_clock->Stop(timer);
    m_nTimerID = 0;
    Post(kMidiPlayEnd, m_dwSequenceTime);
}

/// Uses the pending event up. True when a long message is on its way, after which nothing may be sent for now.
bool MidiPlayer::SendPending() {
    const tagEvent& event = m_stSeqEvent;
    if (event.status == 0xF0 || event.status == 0xF7)
        return SendLongMessage();
    if (event.status < 0xF0)
        OutMessage(static_cast<DWORD>(event.status | event.data1 << 8 | event.data2 << 16), m_hMidiOut);
    else if (event.data1 == kMetaTempo)
        Post(kMidiPlayTempo, m_pSequence.load()->GetSequenceTempo());
    else if (event.data1 == kMetaTimeSignature)
        Post(kMidiPlayTimeSignature, m_pSequence.load()->GetTimeSig());
    m_stSeqEvent = {};
    return false;
}

/// Sends as much as the buffer holds and leaves the rest pending, as a continuation.
bool MidiPlayer::SendLongMessage() {
    tagEvent& event = m_stSeqEvent;
    DWORD count = 0;
    if (event.status == 0xF0)
        m_longMessage[count++] = static_cast<char>(0xF0);
    const DWORD data = std::min(event.length, kLongestMidiPiece - count);
    if (data > 0)
        std::memcpy(m_longMessage + count, event.bytes, data);
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

void MidiPlayer::Post(WPARAM code, DWORD number) {
    if (m_hWndOwner)
        PostMessageA(m_hWndOwner, kMidiPlayMessage, code, static_cast<LPARAM>(number));
}

} // namespace torv
