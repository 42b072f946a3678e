// The mixer: what plays and what is rendered into files takes this way, and what is told on it.
#include "torv/audio/mix_pass.h"
#include "torv/audio/wave_out.h"

#include <algorithm>

int CWaveOut::MixOut(BYTE* buffer, torv::MixPass& pass) {
    int result = 0;
    for (DWORD done = 0; done < pass.frames;) {
        const DWORD frames = std::min(pass.frames - done, torv::MixBlock::kFrames);
        result |= MixFrames(buffer + static_cast<size_t>(done) * pass.format.nBlockAlign, frames, pass);
        done += frames;
    }
    PublishPeak(pass);
    PostMessageToScoreWnd(m_nMessage, m_wPositionCode, static_cast<LONG>(pass.starts[pass.next]));
    pass.starts[pass.next] = pass.position;
    pass.next ^= 1;
    return result;
}

int CWaveOut::MixFrames(BYTE* out, DWORD frames, torv::MixPass& pass) {
    const bool isHeard = m_nDeviceType != torv::kSilentDevice;
    const int loop = pass.mayLoop && m_nLoop;
    torv::MixBlock block(frames, pass.isMono);
    std::array<float, torv::MixBlock::kFrames> left;
    std::array<float, torv::MixBlock::kFrames> right;
    int result = 0;
    for (int slot = 0; slot < torv::kMixerTracks; ++slot) {
        CWaveFile* const file = GetTrack(slot);
        if (!file)
            continue;
        try {
            result |= file->ReadFramesForPlay(left.data(), right.data(), frames, loop) > 0;
        } catch (...) { // the file cannot be read; nothing may leave the thread that plays
            pass.hasFailed = true;
            continue;
        }
        if (isHeard && m_routing[static_cast<size_t>(slot)] == torv::kDeviceRoute)
            block.Add(left.data(), right.data());
    }
    // One master mute for meters and sound would freeze the meters, which hosts show moving.
    const torv::StereoGain master{m_dMasterGainL, m_dMasterGainR};
    LevelNotify(block.Left(), block.Right(), frames, master);
    const double mute = m_nMasterMute ? 0.0 : 1.0;
    block.Write(out, pass.format, {master.left * mute, master.right * mute}, pass.peak);
    if (const CWaveFile* const file = GetTrack(pass.masterTrack))
        pass.position = file->GetCurrentPlayPointer();
    return result;
}

void CWaveOut::LevelNotify(const double* left, const double* right, DWORD frames, const torv::StereoGain& master) {
    m_level.AddFrames(left, right, frames, master.left, master.right);
}

void CWaveOut::PublishPeak(const torv::MixPass& pass) {
    m_dPeakLevel = pass.peak.level;
    m_dwWrappedFrames = pass.peak.wrappedFrames;
}

void CWaveOut::PostMessageToScoreWnd(UINT message, WPARAM code, LONG samplePosition) {
    const HWND window = m_hScoreWnd;
    if (!window || m_nRewireMode)
        return;
    if (const int wait = m_nMessageWait) {
        if (wait > 0)
            m_nMessageWait = wait - 1;
        return;
    }
    // A window may go at any time; the post is then refused.
    PostMessageA(window, message, code, torv::MulDiv(samplePosition, 1000, static_cast<int>(m_dwSampleRate.Get())));
}

void CWaveOut::REWIRE_WaveOut(LONG position) {
    const HWND window = m_hScoreWnd;
    if (window && m_nRewireMode)
        PostMessageA(window, m_nMessage, m_wPositionCode, position);
}

void CWaveOut::REWIRE_WaveOutEnd() {
    const HWND window = m_hScoreWnd;
    if (window && m_nRewireMode && m_wEndCode != 0)
        PostMessageA(window, m_nMessage, m_wEndCode, -1);
}
