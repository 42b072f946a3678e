// Playing: begin, steer and end the two threads.
#include "torv/platform/or_zero.h"
#include "torv/synthesis/rt_synthesis.h"
#include "torv/synthesis/synthesis_thread.h"
#include "torv/synthesis/thread_messages.h"
#include "torv/synthesis/wave_out_thread.h"

#include <new>

namespace {

constexpr int kWhileSynthesizing = 1; ///< synthesis mode: what is made is heard at once

/// Null when no thread or no memory can be had.
std::shared_ptr<torv::WorkerThread> BeginWorker(std::function<void()> work) {
    return torv::OrZero([&] { return torv::WorkerThread::Begin(std::move(work)); });
}

} // namespace

/// As the wave-output thread knows the driver.
class CRtSynthesis::Host final : public torv::PlayHost {
public:
    explicit Host(CRtSynthesis& driver) : m_driver(driver) {}

    void Notify(WORD code, LONGLONG sample) override { m_driver.PostTo(m_driver.m_hScoreWnd, code, sample); }
    torv::MixGains MasterGains() override { return m_driver.CurrentMaster(); }
    void RestartSynthesis() override { m_driver.AskForRestart(); }

private:
    CRtSynthesis& m_driver;
};

/// Nobody waits for the thread that it runs on, and the synthesis thread, which shows a box, not for the output either,
/// which waits for it.
void CRtSynthesis::Workers::Wait() const {
    if (synthesis && synthesis->IsCurrent())
        return;
    if (synthesis)
        synthesis->Wait();
    if (output)
        output->Wait();
}

CRtSynthesis::Workers CRtSynthesis::TheWorkers() const {
    const std::lock_guard lock(m_mutex);
    return m_workers;
}

/// Waits for the threads of an earlier play.
void CRtSynthesis::EndWorkers() {
    const Workers workers = TheWorkers();
    const bool isHeard = workers.output && !workers.output->Wait(0);
    if (!isHeard || m_state.IsLooping())
        m_state.AskToStop();
    workers.Wait();
}

int CRtSynthesis::RTS_DoSynthesis() {
    return m_nSynthesisMode == kWhileSynthesizing ? RTS_PlayWithSynthesis() : RTS_PlayAfterSynthesis();
}

int CRtSynthesis::RTS_PlayWithSynthesis() {
    if (!RTS_CreateRVE())
        return 0;
    if (RTS_StartSynthesis())
        return 1;
    RTS_DeleteRVE();
    return 0;
}

int CRtSynthesis::RTS_PlayAfterSynthesis() { return 1; }

int CRtSynthesis::RTS_StartSynthesis() {
    EndWorkers();
    m_state.BeginSynthesis();
    if (const auto ring = Ring())
        ring->Restart();
    auto worker = BeginWorker([this] { RTS_SynthesisThread_2(); });
    if (!worker) {
        m_state.EndSynthesis();
        m_state.AskToStop();
    }
    const std::lock_guard lock(m_mutex);
    m_workers.output.reset();
    m_workers.synthesis = std::move(worker);
    return m_workers.synthesis != nullptr;
}

int CRtSynthesis::RTS_Play() {
    if (m_nSynthesisMode != kWhileSynthesizing) {
        m_nMixerPlaying = CWaveOut::Play();
        return m_nMixerPlaying;
    }
    if (TheWorkers().output && m_state.IsPlaying())
        return 1;
    m_state.SetPlaying(true);
    auto worker = BeginWorker([this] { RTS_WaveOutThread_2(); });
    if (!worker)
        m_state.SetPlaying(false);
    const std::lock_guard lock(m_mutex);
    m_workers.output = std::move(worker);
    return m_workers.output != nullptr;
}

int CRtSynthesis::IsPlaying() const {
    const std::lock_guard lock(m_mutex);
    return (m_workers.output && m_state.IsPlaying()) || (m_nMixerPlaying && !IsWaveOutStopped());
}

void CRtSynthesis::RTS_StopSynthesis() {
    m_state.EndLoop();
    m_state.AskToStop();
    TheWorkers().Wait();
}

/// Runs on the wave-output thread at a play's end, and on the host's, which then waits for the former.
void CRtSynthesis::RTS_TerminateSynthesis() {
    m_state.AskToStop();
    const Workers workers = TheWorkers();
    workers.Wait();
    RTS_DeleteRVE();
    const auto isOver = [](const auto& worker) { return !worker || worker->Wait(0); };
    const bool isSynthesisOver = isOver(workers.synthesis);
    const bool isOutputOver = isOver(workers.output);
    // The end is told and IsPlaying answers it at one moment: the host may begin the next play as soon as it knows.
    const std::lock_guard lock(m_mutex);
    const HWND window = m_hScoreWnd;
    ClearScoreWndPtr();
    if (m_wEndCode != 0)
        PostTo(window, m_wEndCode, RTS_MsToSample(m_state.SongEnd(), m_dwRate));
    if (isOutputOver)
        m_state.SetPlaying(false);
    // Those that still run, this one for one, are kept for whoever must know that they are over.
    if (isSynthesisOver && !(workers.synthesis && workers.synthesis->IsCurrent()))
        m_workers.synthesis.reset();
    if (isOutputOver && !(workers.output && workers.output->IsCurrent()))
        m_workers.output.reset();
}

void CRtSynthesis::RTS_SynthesisThread_2() {
    try {
        if (const auto ring = Ring())
            torv::SynthesisThread(ring, Streams(ring->Tracks().size()), m_state, m_preroll).Run();
    } catch (const std::bad_alloc&) {
        m_state.Fail();
    }
    m_state.EndSynthesis();
    if (const auto output = TheWorkers().output)
        output->Post(torv::kSynthesisEnded);
}

void CRtSynthesis::RTS_WaveOutThread_2() {
    if (auto ring = Ring()) {
        Host host(*this);
        try {
            torv::WaveOutThread(ring, m_state, host, {m_strDevice, m_wPositionCode, m_dwStartDelay, m_nDevicePatience})
                .Run();
        } catch (const std::bad_alloc&) {
            m_state.Fail();
        }
        ring->Clear();
    } // the instances go with the driver's
    m_state.SetOutputStarted(false);
    if (const auto synthesis = TheWorkers().synthesis)
        synthesis->Post(torv::kOutputEnded);
    RTS_TerminateSynthesis();
}

/// Before anything is heard there is no thread to tell the synthesis of a change: it is told from here.
void CRtSynthesis::AskForRestart() {
    const auto synthesis = TheWorkers().synthesis;
    const auto ring = Ring();
    if (!synthesis || !ring)
        return;
    ring->Clear();
    m_state.AskForRestart();
    synthesis->Post(torv::kOutputRestarted);
}

/// While the threads are stopped, wherever that is, the change only stores: what they may hold meanwhile, the heap's
/// lock for one, must not be waited for.
template <class Change>
void CRtSynthesis::ChangeWhileStopped(Change change, bool isOutputFirst) {
    const Workers workers = TheWorkers();
    const auto& first = isOutputFirst ? workers.output : workers.synthesis;
    const auto& second = isOutputFirst ? workers.synthesis : workers.output;
    if (workers.synthesis)
        workers.synthesis->Suspend();
    if (workers.output)
        workers.output->Suspend();
    change();
    if (first)
        first->Resume();
    if (second)
        second->Resume();
    if (!workers.output)
        AskForRestart();
    else
        workers.output->Post(torv::kPositionChanged);
}

void CRtSynthesis::RTS_ChangePlayRegion(DWORD start, DWORD end, DWORD position) {
    ChangeWhileStopped([&] { m_state.ChangeRegion(start, end, position); }, false);
}

void CRtSynthesis::RTS_ChangeLoop(int loop, DWORD position) {
    ChangeWhileStopped([&] { m_state.ChangeLoop(loop, position); }, true);
}

void CRtSynthesis::RTS_ChangeSongPosition(DWORD position) {
    PostMessageToMsgDestination(m_nMessage, m_wPositionCode, RTS_MsToSample(position, m_dwRate));
    ChangeWhileStopped([&] { m_state.Seek(position); }, false);
}
