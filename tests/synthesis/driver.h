#pragma once

#include "synthesis/fake_engine_library.h"
#include "torv/synthesis/rt_synthesis.h"

/// Lets a test look at what the worker threads go by.
struct Driver : CRtSynthesis {
    Driver() { SetEngineLibrary(FakeEngine::kName); }
    DWORD Current() const { return m_dwCurrentPosition; }
    DWORD Song() const { return m_dwSongPosition; }
    DWORD End() const { return m_dwEndPosition; }
    DWORD RingCapacity() const { return m_dwRingCapacity; }
    double GainL(int track) const { return FindTrack(track)->gainL; }
    double GainR(int track) const { return FindTrack(track)->gainR; }
    WORD Align() const { return m_WaveFormat.nBlockAlign; }
    DWORD OutputRate() const { return m_WaveFormat.nSamplesPerSec; }
    double MixMasterR() const { return m_dMixMasterGainR; }
    bool HasWindow() const { return m_hScoreWnd.Get() != nullptr; }
    bool IsStopAsked() const { return m_nStopRequest != 0; }
    bool IsSynthesizing() const { return m_nSynthesizing != 0; }
    bool HasOutputStarted() const { return m_nOutputStarted != 0; }
    torv::RingIndexes& Ring() { return m_ring; }
    /// As while a play runs: waits are not cut short.
    void PretendToRun() { m_nStopRequest = 0; }
    void PretendToSynthesize(int isSynthesizing) {
        m_nSynthesizing = isSynthesizing;
        m_nSynthesisOver = !isSynthesizing;
    }
    void UseFormat(const WAVEFORMATEX& format) {
        m_WaveFormat = format;
        m_wOutputChannels = format.nChannels;
    }
};
