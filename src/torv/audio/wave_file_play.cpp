#include "torv/audio/wave_file.h"

#include "torv/audio/sample.h"

#include <algorithm>

void CWaveFile::UpdateGains() {
    const auto gain = torv::GainsAt(m_dVolumeL, m_dVolumeR, m_dPan);
    m_dGainL = gain.left;
    m_dGainR = gain.right;
}

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
    return ReadFramesForPlay(&left, &right, 1, loop) != 0;
}

DWORD CWaveFile::ReadFramesForPlay(float* left, float* right, DWORD count, int loop) {
    const ULONGLONG dataEnd = static_cast<ULONGLONG>(m_dwLeadIn) + std::max(m_dwPlayStart, m_dwPlayEnd);
    const ULONGLONG timelineEnd = dataEnd + m_dwTail;
    DWORD done = 0;
    while (done < count) {
        if (m_qwPlayPointer >= timelineEnd) {
            if (!loop || GetPlaySamples() == 0)
                break;
            m_qwPlayPointer = 0;
            SkipUnplayedFrames();
        }
        const bool isData = m_qwPlayPointer >= m_dwLeadIn && m_qwPlayPointer < dataEnd;
        const ULONGLONG partEnd = isData ? dataEnd : m_qwPlayPointer < m_dwLeadIn ? m_dwLeadIn : timelineEnd;
        const auto piece = static_cast<DWORD>(std::min<ULONGLONG>(count - done, partEnd - m_qwPlayPointer));
        if (isData)
            ReadData(static_cast<DWORD>(m_qwPlayPointer - m_dwLeadIn), left + done, right + done, piece);
        else
            Silence(left + done, right + done, piece);
        done += piece;
        m_qwPlayPointer += piece;
        SkipUnplayedFrames();
    }
    m_Level.AddFrames(left, right, done, 1.0, 1.0);
    Silence(left + done, right + done, count - done);
    return done;
}

void CWaveFile::Silence(float* left, float* right, DWORD count) {
    std::fill_n(left, count, 0.0F);
    std::fill_n(right, count, 0.0F);
}

/// Frames of the data as they are played; silence behind its end.
void CWaveFile::ReadData(DWORD frame, float* left, float* right, DWORD count) {
    m_dwCurrentSample = frame + count;
    // Bits per sample over channels: only mono files are read by their own width.
    const int bits = m_Format.wBitsPerSample / m_Format.nChannels;
    const DWORD align = m_Format.nBlockAlign;
    const torv::StereoGain gain = Gains();
    while (count > 0 && !m_nMute && IsReady() && frame < m_dwFrames) {
        LoadWindowOf(frame);
        const DWORD piece = std::min({count, m_dwFrames - frame, m_dwWindowFrame + m_dwBufferFrames - frame});
        const BYTE* at = m_pBuffer.get() + static_cast<size_t>(frame - m_dwWindowFrame) * align;
        if (bits == 16 && m_Format.nChannels == 1) {
            torv::ScaleShorts(at, piece, gain, left, right);
        } else {
            for (DWORD i = 0; i < piece; ++i, at += align) {
                const auto values = torv::LoadFrame(at, m_Format.nChannels, align);
                left[i] = torv::ScaleValue(values.left, bits, gain.left);
                right[i] = torv::ScaleValue(values.right, bits, gain.right);
            }
        }
        frame += piece;
        left += piece;
        right += piece;
        count -= piece;
    }
    Silence(left, right, count);
}
