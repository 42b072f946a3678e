#include "torv/synthesis/wave_out_thread.h"

#include "torv/audio/output_device.h"
#include "torv/synthesis/thread_messages.h"

#include <algorithm>

namespace torv {
namespace {

constexpr WORD kPlayBegins = 4; ///< the host's notification that a play is about to begin
constexpr double kBufferSeconds = 0.1;
constexpr DWORD kBuffersToBegin = 2;
constexpr DWORD kWait = 1; // milliseconds, as is the next one
constexpr DWORD kDelayWait = 5;
constexpr int kPatience = 5000; ///< turns, of a millisecond at least, that a device may give nothing back

DWORD BufferBlocks(DWORD rate, DWORD frameSize) {
    return std::max<DWORD>(static_cast<DWORD>(rate * kBufferSeconds) / frameSize, 1);
}

} // namespace

WaveOutThread::WaveOutThread(CRtSynthesis& driver) : m_driver(driver), m_set(driver.Tracks()) {
    if (m_set)
        m_bufferBlocks = BufferBlocks(m_set->format.nSamplesPerSec, m_set->frameSize);
}

void WaveOutThread::Run() {
    AwaitStart();
    while (m_set && !m_driver.m_nStopRequest && PlayFromHere() == Outcome::Restart)
        m_driver.AskForRestart();
    End();
}

void WaveOutThread::AwaitStart() const {
    const DWORD begin = timeGetTime();
    while (timeGetTime() - begin < m_driver.m_dwStartDelay && !m_driver.m_nStopRequest)
        Sleep(kDelayWait);
}

WaveOutThread::Outcome WaveOutThread::PlayFromHere() {
    m_isReseeking = false;
    m_isFinished = false;
    if (!OpenDevice() || !AwaitData())
        return Outcome::Ended;
    Prime();
    return Feed();
}

bool WaveOutThread::OpenDevice() {
    const int device = FindOutputDevice(m_driver.m_strDevice);
    if (device < 0)
        return false;
    const MMRESULT error =
        waveOutOpen(&m_device, static_cast<UINT>(device), &m_set->format, GetCurrentThreadId(), 0, CALLBACK_THREAD);
    if (error == MMSYSERR_NOERROR)
        return true;
    m_device = nullptr;
    m_hasDeviceFailed = true;
    ShowOutputError(error);
    return false;
}

/// Two buffers' worth, or all there is: the rest of the song, or a loop that is shorter. False when a stop is asked
/// for.
bool WaveOutThread::AwaitData() {
    m_position = SampleAt(m_driver.m_dwCurrentPosition);
    m_driver.PostMessageToMsgDestination(m_driver.m_nMessage, kPlayBegins, m_position);
    PostPosition(m_position);
    for (;;) {
        if (m_driver.m_nStopRequest)
            return false;
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
            if (message.message == kPositionChanged) {
                m_driver.AskForRestart();
                m_position = SampleAt(m_driver.m_dwCurrentPosition);
            }
        if (!m_driver.IsRestartDue() &&
            (m_driver.RTS_IsBlkOk(kBuffersToBegin * m_bufferBlocks) || m_driver.m_ring.HasMark()))
            return true;
        if (m_driver.HasSynthesisStopped())
            return true;
        Sleep(kWait);
    }
}

void WaveOutThread::Prime() {
    for (Buffer& buffer : *m_buffers) {
        buffer.place = Place::Here;
        if (Fill(buffer) == Content::None)
            FillWithSilence(buffer);
        Queue(buffer);
    }
    waveOutRestart(m_device);
    m_driver.m_nOutputStarted = 1;
}

WaveOutThread::Outcome WaveOutThread::Feed() {
    for (m_idleTurns = 0;; Sleep(kWait)) {
        if (m_driver.m_nStopRequest || !TakeMessages())
            return Outcome::Ended;
        if (m_isReseeking && AreBothBack()) {
            CloseDevice();
            return Outcome::Restart;
        }
        if (!m_isReseeking && !Refill())
            return Outcome::Ended;
        if (!AreBothBack() && ++m_idleTurns > kPatience) {
            m_hasDeviceFailed = true;
            ShowOutputError(m_deviceError);
            return Outcome::Ended;
        }
    }
}

/// False when the play is over.
bool WaveOutThread::TakeMessages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == kPositionChanged && !m_isReseeking) {
            m_isReseeking = true;
            waveOutReset(m_device);
        }
        if (message.message == MM_WOM_DONE && !TakeBack(reinterpret_cast<const WAVEHDR*>(message.lParam)))
            return false;
    }
    return true;
}

/// False when the play is over, as it is when the device gives back what it was not given.
bool WaveOutThread::TakeBack(const WAVEHDR* header) {
    const auto found = std::find_if(m_buffers->begin(), m_buffers->end(),
                                    [header](const Buffer& buffer) { return &buffer.header == header; });
    if (found == m_buffers->end())
        return false;
    waveOutUnprepareHeader(m_device, &found->header, sizeof found->header);
    found->place = Place::Here;
    m_idleTurns = 0;
    if (m_isReseeking)
        return true;
    m_position += static_cast<LONGLONG>(found->blocks) * m_set->frameSize;
    const LONGLONG end = SampleAt(m_driver.OpenRegionEnd());
    if (m_position >= end && !m_driver.m_nRegionLoop) {
        PostPosition(end);
        return false;
    }
    m_position = found->endFlag ? SampleAt(m_driver.m_dwRegionStart) : std::min(m_position, end);
    PostPosition(m_position);
    return true;
}

/// False when the play is over: nothing more comes, and the device has given back all there was.
bool WaveOutThread::Refill() {
    for (Buffer& buffer : *m_buffers) {
        if (buffer.place == Place::Here && !m_isFinished && Fill(buffer) == Content::None) {
            m_isFinished = EndsWithSong();
            if (!m_isFinished)
                FillWithSilence(buffer);
        }
        Queue(buffer);
    }
    return !m_isFinished || !AreBothBack();
}

WaveOutThread::Content WaveOutThread::Fill(Buffer& buffer) {
    BYTE* bytes = nullptr;
    const auto content = static_cast<Content>(
        m_driver.MixBlocks(*m_set, m_bufferBlocks, Number(buffer), bytes, buffer.blocks, buffer.endFlag));
    if (content != Content::Data)
        return content;
    // The next pass follows at once, so that nothing is missing at a loop's turn, and may go on to be made.
    if (buffer.endFlag)
        m_driver.m_ring.TakeMark();
    SetContent(buffer, bytes);
    return content;
}

void WaveOutThread::FillWithSilence(Buffer& buffer) {
    BYTE* const bytes = m_driver.Stage(Number(buffer), m_bufferBlocks * m_set->BlockBytes());
    buffer.blocks = bytes ? m_bufferBlocks : 0;
    buffer.endFlag = 0;
    SetContent(buffer, bytes);
}

void WaveOutThread::SetContent(Buffer& buffer, BYTE* bytes) const {
    buffer.header = {};
    buffer.header.lpData = reinterpret_cast<char*>(bytes);
    buffer.header.dwBufferLength = buffer.blocks * m_set->BlockBytes();
    buffer.place = Place::Filled;
}

/// A buffer that the device does not take is offered again on the next turn.
void WaveOutThread::Queue(Buffer& buffer) {
    if (buffer.place != Place::Filled)
        return;
    waveOutPrepareHeader(m_device, &buffer.header, sizeof buffer.header);
    const MMRESULT error = waveOutWrite(m_device, &buffer.header, sizeof buffer.header);
    if (error != MMSYSERR_NOERROR) {
        m_deviceError = error;
        return;
    }
    buffer.place = Place::Queued;
    m_idleTurns = 0;
}

int WaveOutThread::Number(const Buffer& buffer) const { return &buffer == &m_buffers->front() ? 1 : 2; }

bool WaveOutThread::AreBothBack() const {
    return std::none_of(m_buffers->begin(), m_buffers->end(), [this](const Buffer& buffer) {
        return buffer.place == Place::Queued || (buffer.place == Place::Filled && !m_isReseeking);
    });
}

bool WaveOutThread::EndsWithSong() const {
    const DWORD end = m_driver.OpenRegionEnd();
    return end == kOpenRegionEnd || end <= m_driver.m_dwEndPosition;
}

LONGLONG WaveOutThread::SampleAt(DWORD position) const {
    return m_driver.RTS_MsToSample(position, m_set ? m_set->format.nSamplesPerSec : m_driver.m_dwRate.Get());
}

void WaveOutThread::PostPosition(LONGLONG sample) const {
    m_driver.PostMessageToMsgDestination(m_driver.m_nMessage, m_driver.m_wPositionCode, sample);
}

/// What a device will not let go of stays in its hands: memory that it may still read is not freed.
void WaveOutThread::CloseDevice() {
    waveOutReset(m_device);
    for (Buffer& buffer : *m_buffers)
        waveOutUnprepareHeader(m_device, &buffer.header, sizeof buffer.header);
    if (waveOutClose(m_device) != MMSYSERR_NOERROR) {
        static_cast<void>(m_buffers.release());
        m_buffers = std::make_unique<Buffers>();
        for (auto& staging : m_driver.m_staging.buffers) {
            static_cast<void>(staging.bytes.release());
            staging.size = 0;
        }
    }
    m_device = nullptr;
}

void WaveOutThread::End() {
    if (m_device)
        CloseDevice();
    if (!m_driver.m_nStopRequest && !m_hasDeviceFailed)
        PostPosition(SampleAt(m_driver.OpenRegionEnd()));
    m_set.reset(); // the instances go with the driver's
    m_driver.m_staging.buffers = {};
    m_driver.m_ring.Clear();
    m_driver.m_nOutputStarted = 0;
    m_driver.m_nPlaying = 0;
    if (const auto synthesis = m_driver.TheWorkers().synthesis)
        synthesis->Post(kOutputEnded);
    m_driver.RTS_TerminateSynthesis();
}

} // namespace torv
