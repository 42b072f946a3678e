#include "torv/audio/wave_file.h"

#include "torv/audio/sample.h"

#include <algorithm>

void CWaveFile::UpdateGains() { m_Gain = torv::GainsAt(m_dVolumeL, m_dVolumeR, m_dPan); }

void CWaveFile::SetAmplitudes(double volumeLeft, double volumeRight, double pan) {
    m_dVolumeL = torv::ValidVolume(volumeLeft);
    m_dVolumeR = torv::ValidVolume(volumeRight);
    m_dPan = torv::ValidPan(pan);
    UpdateGains();
}

void CWaveFile::SetVolume(double volume) { SetAmplitudes(volume, volume, m_dPan); }

void CWaveFile::SetPanpot(double pan) { SetAmplitudes(m_dVolumeL, m_dVolumeR, pan); }

void CWaveFile::SetLevelNotify(CWnd* left, CWnd* right, UINT message, WORD code, DWORD interval) {
    m_Level.Set(left, right, message, code, interval);
}

void CWaveFile::SetPrePostBlanks(DWORD leadIn, DWORD tail) {
    m_dwLeadIn = leadIn;
    m_dwTail = tail;
    SkipUnplayedFrames();
}

void CWaveFile::SetPlayDuration(DWORD start, DWORD endFrame) {
    m_dwPlayStart = start;
    if (endFrame != 0)
        m_dwPlayEnd = endFrame;
    SkipUnplayedFrames();
}

DWORD CWaveFile::GetPlaySamples() const {
    return (m_dwPlayEnd > m_dwPlayStart ? m_dwPlayEnd - m_dwPlayStart : 0) + m_dwLeadIn + m_dwTail;
}

/// After the lead-in comes the play start: a pointer between the two stands for it.
void CWaveFile::SkipUnplayedFrames() {
    if (m_qwPlayPointer >= m_dwLeadIn)
        m_qwPlayPointer = std::max(m_qwPlayPointer, static_cast<ULONGLONG>(m_dwLeadIn) + m_dwPlayStart);
}

int CWaveFile::SeekPlayPointer(LONG position, int whence) {
    if (whence != 0 && whence != 1)
        return 0;
    const LONGLONG target = position + (whence == 1 ? static_cast<LONGLONG>(m_qwPlayPointer) : 0);
    m_qwPlayPointer = static_cast<ULONGLONG>(std::max<LONGLONG>(target, 0));
    SkipUnplayedFrames();
    return 1;
}

int CWaveFile::ReadSampleForPlay(float& left, float& right, int loop) {
    left = 0;
    right = 0;
    const ULONGLONG dataEnd = static_cast<ULONGLONG>(m_dwLeadIn) + std::max(m_dwPlayStart, m_dwPlayEnd);
    const ULONGLONG timelineEnd = dataEnd + m_dwTail;
    if (m_qwPlayPointer >= timelineEnd) {
        if (!loop || GetPlaySamples() == 0)
            return 0;
        m_qwPlayPointer = 0;
        SkipUnplayedFrames();
    }
    if (m_qwPlayPointer >= m_dwLeadIn && m_qwPlayPointer < dataEnd) {
        m_dwCurrentSample = static_cast<DWORD>(m_qwPlayPointer - m_dwLeadIn);
        DWORD valueLeft;
        DWORD valueRight;
        if (ReadSample(valueLeft, valueRight) && !m_nMute) {
            // Bits per sample over channels: only mono files are read by their own width.
            const int bits = m_Format.wBitsPerSample / m_Format.nChannels;
            left = torv::ScaleValue(valueLeft, bits, m_Gain.left);
            right = torv::ScaleValue(valueRight, bits, m_Gain.right);
        }
    }
    ++m_qwPlayPointer;
    SkipUnplayedFrames();
    m_Level.Add(left, right);
    return 1;
}
