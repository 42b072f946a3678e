#include "torv/synthesis/rt_synthesis.h"

#include "torv/synthesis/synthesis_thread.h"
#include "torv/synthesis/thread_messages.h"
#include "torv/synthesis/wave_out_thread.h"

namespace {

constexpr int kWhileSynthesizing = 1; ///< synthesis mode: what is made is heard at once

} // namespace

void CRtSynthesis::Workers::Wait() const {
    if (synthesis)
        synthesis->Wait();
    if (output)
        output->Wait();
}

CRtSynthesis::Workers CRtSynthesis::TheWorkers() const {
    const std::lock_guard lock(m_mutex);
    return m_workers;
}

/// Waits for the threads of an earlier play. On one of them there is nothing to wait for.
void CRtSynthesis::EndWorkers() {
    const Workers workers = TheWorkers();
    const bool isHeard = workers.output && !workers.output->Wait(0);
    if (!isHeard || m_nRegionLoop)
        m_nStopRequest = 1;
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
    m_nStopRequest = 0;
    m_nSynthesisError = 0;
    m_nPositionChanged = 0;
    // Said here, not by the thread: an output that begins before it does must wait for it.
    m_nSynthesizing = 1;
    m_nSynthesisOver = 0;
    m_ring.Clear();
    m_dwRestartsDone = m_dwRestartsAsked.Get();
    auto worker = torv::WorkerThread::Begin([this] { RTS_SynthesisThread_2(); });
    if (!worker) {
        m_nSynthesizing = 0;
        m_nSynthesisOver = 1;
        m_nStopRequest = 1;
    }
    const std::lock_guard lock(m_mutex);
    m_workers.output.reset();
    m_workers.synthesis = std::move(worker);
    return m_workers.synthesis != nullptr;
}

int CRtSynthesis::RTS_Play() {
    if (m_nSynthesisMode != kWhileSynthesizing) {
        m_nPlaying = CWaveOut::Play();
        return m_nPlaying;
    }
    const Workers workers = TheWorkers();
    if (workers.output && !workers.output->Wait(0)) {
        if (m_nPlaying)
            return 1;
        workers.output->Wait();
    }
    m_nPlaying = 1;
    auto worker = torv::WorkerThread::Begin([this] { RTS_WaveOutThread_2(); });
    if (!worker)
        m_nPlaying = 0;
    const std::lock_guard lock(m_mutex);
    m_workers.output = std::move(worker);
    return m_workers.output != nullptr;
}

void CRtSynthesis::RTS_StopSynthesis() {
    m_nRegionLoop = 0;
    m_nStopRequest = 1;
    TheWorkers().Wait();
}

/// Runs on the wave-output thread at a play's end, and on the host's, which then waits for the former.
void CRtSynthesis::RTS_TerminateSynthesis() {
    m_nStopRequest = 1;
    const Workers workers = TheWorkers();
    workers.Wait();
    RTS_DeleteRVE();
    {
        // The output's is kept while it runs, for whoever must know that it is over.
        const std::lock_guard lock(m_mutex);
        m_workers.synthesis.reset();
        if (workers.output && !workers.output->IsCurrent())
            m_workers.output.reset();
    }
    // Told last: the host may begin the next play as soon as it hears of it.
    const HWND window = m_hScoreWnd;
    ClearScoreWndPtr();
    if (m_wEndCode != 0)
        PostTo(window, m_wEndCode, RTS_MsToSample(m_dwEndPosition, m_dwRate));
}

void CRtSynthesis::RTS_SynthesisThread_2() {
    torv::SynthesisThread(*this).Run();
    m_nSynthesizing = 0;
    m_nSynthesisOver = 1;
    if (const auto output = TheWorkers().output)
        output->Post(torv::kSynthesisEnded);
}

void CRtSynthesis::RTS_WaveOutThread_2() { torv::WaveOutThread(*this).Run(); }

/// Before anything is heard there is no thread to tell the synthesis of a change: it is told from here.
void CRtSynthesis::AskForRestart() {
    const auto synthesis = TheWorkers().synthesis;
    if (!synthesis)
        return;
    m_ring.Clear();
    m_dwRestartsAsked = m_dwRestartsAsked + 1;
    synthesis->Post(torv::kOutputRestarted);
}
