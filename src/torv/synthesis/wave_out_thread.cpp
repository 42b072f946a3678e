#include "torv/synthesis/wave_out_thread.h"

#include "torv/audio/output_device.h"
#include "torv/synthesis/step_feeder.h"
#include "torv/synthesis/thread_messages.h"

#include <algorithm>
#include <cstring>

namespace torv {
namespace {

constexpr WORD kPlayBegins = 4; ///< the host's notification that a play is about to begin
constexpr double kBufferSeconds = 0.1;
constexpr DWORD kBuffersToBegin = 2;
constexpr DWORD kDelayWait = 5; // milliseconds

DWORD BufferBlocks(const SynthRing& ring) {
    return std::max<DWORD>(static_cast<DWORD>(ring.Format().nSamplesPerSec * kBufferSeconds) / ring.FrameSize(), 1);
}

} // namespace

WaveOutThread::WaveOutThread(std::shared_ptr<SynthRing> ring, PlayState& state, PlayHost& host, OutputSettings settings)
    : m_ring(std::move(ring)), m_state(state), m_host(host), m_settings(std::move(settings)),
      m_bufferBlocks(BufferBlocks(*m_ring)), m_output(std::make_unique<Output>(m_bufferBlocks * m_ring->BlockBytes())) {
}

void WaveOutThread::Run() {
    AwaitStart();
    while (!m_state.IsStopAsked() && PlayFromHere() == Outcome::Restart)
        m_host.RestartSynthesis();
    CloseDevice();
    if (!m_state.IsStopAsked() && !m_hasDeviceFailed)
        PostPosition(SampleAt(m_state.RegionEnd()));
}

void WaveOutThread::AwaitStart() const {
    const DWORD begin = timeGetTime();
    while (timeGetTime() - begin < m_settings.delay && !m_state.IsStopAsked())
        Sleep(kDelayWait);
}

WaveOutThread::Outcome WaveOutThread::PlayFromHere() {
    m_isReseeking = false;
    m_isFinished = false;
    m_buffers = {};
    if (!OpenDevice() || !AwaitData())
        return Outcome::Ended;
    Prime();
    return Feed();
}

bool WaveOutThread::OpenDevice() {
    const int device = FindOutputDevice(m_settings.device);
    if (device < 0)
        return false;
    const MMRESULT error =
        m_output->Open(static_cast<UINT>(device), m_ring->Format(), GetCurrentThreadId(), CALLBACK_THREAD);
    if (error == MMSYSERR_NOERROR)
        return true;
    m_hasDeviceFailed = true;
    ShowOutputError(error);
    return false;
}

/// Two buffers' worth, or all there is: the rest of the song, or a loop that is shorter. False when a stop is asked
/// for.
bool WaveOutThread::AwaitData() {
    const LONGLONG position = SampleAt(m_state.Position());
    m_host.Notify(kPlayBegins, position);
    PostPosition(position);
    m_position = SampleAt(m_state.FirstPassBegin());
    for (;; Sleep(kLookInterval)) {
        if (m_state.IsStopAsked())
            return false;
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
            if (message.message == kPositionChanged) {
                m_host.RestartSynthesis();
                m_position = SampleAt(m_state.FirstPassBegin());
            }
        const bool isEnough = m_ring->Buffered() >= kBuffersToBegin * m_bufferBlocks || m_ring->HasMark();
        if (m_state.HasSynthesisStopped() || (isEnough && !m_state.IsRestartDue()))
            return true;
    }
}

void WaveOutThread::Prime() {
    for (int i = 0; i < Output::kHeaders; ++i) {
        if (Fill(i) == SynthRing::Content::None)
            FillWithSilence(i);
        Queue(i);
    }
    waveOutRestart(m_output->device);
    m_state.SetOutputStarted(true);
}

WaveOutThread::Outcome WaveOutThread::Feed() {
    for (m_idleTurns = 0;; Sleep(kLookInterval)) {
        if (m_state.IsStopAsked() || !TakeMessages())
            return Outcome::Ended;
        if (m_isReseeking && AreBothBack()) {
            CloseDevice();
            return Outcome::Restart;
        }
        if (!m_isReseeking && !Refill())
            return Outcome::Ended;
        if (!AreBothBack() && ++m_idleTurns > m_settings.patience) {
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
            m_output->Reset();
        }
        if (message.message == MM_WOM_DONE && !TakeBack(reinterpret_cast<const WAVEHDR*>(message.lParam)))
            return false;
    }
    return true;
}

/// False when the play is over, as it is when the device gives back what it was not given.
bool WaveOutThread::TakeBack(const WAVEHDR* header) {
    const int index = m_output->IndexOf(header);
    if (index < 0)
        return false;
    if (!m_output->TakeBack(index))
        return true;
    Buffer& buffer = m_buffers[static_cast<size_t>(index)];
    buffer.place = Place::Here;
    m_idleTurns = 0;
    if (m_isReseeking)
        return true;
    m_position += static_cast<LONGLONG>(buffer.blocks) * m_ring->FrameSize();
    const LONGLONG end = SampleAt(m_state.RegionEnd());
    if (m_position >= end && !m_state.IsLooping()) {
        PostPosition(end);
        return false;
    }
    m_position = buffer.endsPass ? SampleAt(m_state.RegionStart()) : std::min(m_position, end);
    PostPosition(m_position);
    return true;
}

/// False when the play is over: nothing more comes, and the device has given back all there was.
bool WaveOutThread::Refill() {
    for (int i = 0; i < Output::kHeaders; ++i) {
        const bool isFree = m_buffers[static_cast<size_t>(i)].place == Place::Here;
        if (isFree && !m_isFinished && Fill(i) == SynthRing::Content::None) {
            m_isFinished = m_state.EndsWithSong();
            if (!m_isFinished)
                FillWithSilence(i);
        }
        Queue(i);
    }
    return !m_isFinished || !AreBothBack();
}

SynthRing::Content WaveOutThread::Fill(int index) {
    const SynthRing::Portion portion = m_ring->Next(m_bufferBlocks, !m_state.HasSynthesisStopped());
    if (portion.content == SynthRing::Content::Data) {
        SetContent(index, portion.blocks, portion.endsPass);
        m_ring->Read(m_output->Bytes(index), portion.blocks, m_host.MasterGains());
    } else if (portion.endsPass) {
        EndPass();
    }
    // The next pass follows at once, so that nothing is missing at a loop's turn, and may go on to be made.
    if (portion.endsPass)
        m_ring->TakeMark();
    return portion.content;
}

/// The pass was over with the blocks that were read last, before its mark was set.
void WaveOutThread::EndPass() {
    Buffer& last = m_buffers[m_lastFilled];
    if (last.place == Place::Here)
        m_position = SampleAt(m_state.RegionStart());
    else
        last.endsPass = true;
}

void WaveOutThread::FillWithSilence(int index) {
    SetContent(index, m_bufferBlocks, false);
    std::memset(m_output->Bytes(index), 0, m_output->bufferBytes);
}

void WaveOutThread::SetContent(int index, DWORD blocks, bool endsPass) {
    m_lastFilled = static_cast<size_t>(index);
    m_buffers[m_lastFilled] = {Place::Filled, blocks, endsPass};
    WAVEHDR& header = m_output->headers[index];
    header = {};
    header.lpData = reinterpret_cast<char*>(m_output->Bytes(index));
    header.dwBufferLength = blocks * m_ring->BlockBytes();
}

/// A buffer that the device does not take is offered again on the next turn.
void WaveOutThread::Queue(int index) {
    Buffer& buffer = m_buffers[static_cast<size_t>(index)];
    if (buffer.place != Place::Filled)
        return;
    if (const MMRESULT error = m_output->Queue(index); error != MMSYSERR_NOERROR) {
        m_deviceError = error;
        return;
    }
    buffer.place = Place::Queued;
    m_idleTurns = 0;
}

/// Nothing is at the device, nor waits to go there.
bool WaveOutThread::AreBothBack() const {
    return std::none_of(m_buffers.begin(), m_buffers.end(), [this](const Buffer& buffer) {
        return buffer.place == Place::Queued || (buffer.place == Place::Filled && !m_isReseeking);
    });
}

LONGLONG WaveOutThread::SampleAt(DWORD position) const { return MsToSample(position, m_ring->Format().nSamplesPerSec); }

/// What a device will not let go of stays in its hands: memory that it may still read is not freed.
void WaveOutThread::CloseDevice() {
    if (m_output->Close())
        return;
    static_cast<void>(m_output.release());
    m_output = std::make_unique<Output>(m_bufferBlocks * m_ring->BlockBytes());
}

} // namespace torv
