#include "torv/audio/wave_out.h"

#include "torv/audio/gain.h"
#include "torv/audio/sample.h"

#include <cmath>
#include <new>

CWaveOut::CWaveOut()
    : m_WaveFormat(torv::PcmFormat(2, 16, torv::kDefaultSampleRate)), m_dwSampleRate(torv::kDefaultSampleRate) {}

double CWaveOut::Db2Amplitude(double decibels) { return std::pow(10.0, decibels * 0.05); }
double CWaveOut::Amplitude2Db(double amplitude) { return 20.0 * std::log10(amplitude); }

int CWaveOut::EnumWaveOutDevices(CStringList& names) {
    names.RemoveAll();
    try {
        const UINT count = waveOutGetNumDevs();
        for (UINT number = 0; number < count; ++number) {
            WAVEOUTCAPSA capabilities{};
            waveOutGetDevCapsA(number, &capabilities, sizeof capabilities); // one that is gone since has no name
            names.AddTail(capabilities.szPname);
        }
    } catch (const std::bad_alloc&) {
        names.RemoveAll();
    }
    return names.GetCount();
}

CStringList* CWaveOut::EnumWaveOutDevices() {
    auto* const names = new (std::nothrow) CStringList(10);
    if (names)
        EnumWaveOutDevices(*names);
    return names;
}

void CWaveOut::SetPlayParameters(const CString& device, CWnd* window, UINT message, WORD positionCode, DWORD rate,
                                 int loop) {
    m_strDevice = device;
    m_hScoreWnd = window ? window->m_hWnd : nullptr;
    m_nMessage = message;
    m_wPositionCode = positionCode;
    m_dwSampleRate = rate;
    m_dwBufferFrames = rate / 10;
    m_nLoop = loop;
}

void CWaveOut::SetLevelNotify(CWnd* left, CWnd* right, UINT message, WORD code, DWORD interval) {
    m_level.Set(left, right, message, code, interval);
}

double CWaveOut::ValidOutputPan(double pan) const { return m_wOutputChannels == 1 ? 0.0 : torv::ValidPan(pan); }

void CWaveOut::UpdateMasterGains() {
    const auto gain = torv::GainsAt(m_dMasterVolumeL, m_dMasterVolumeR, m_dMasterPan);
    m_dMasterGainL = gain.left;
    m_dMasterGainR = gain.right;
}

void CWaveOut::SetMasterVolume(double volume, double pan) {
    m_dMasterPan = ValidOutputPan(pan);
    SetMasterVolume(volume);
}

void CWaveOut::SetMasterVolume(double volume) {
    m_dMasterVolumeL = torv::ValidVolume(volume);
    m_dMasterVolumeR = torv::ValidVolume(volume);
    UpdateMasterGains();
}

void CWaveOut::SetMasterPanpot(double pan) {
    m_dMasterPan = ValidOutputPan(pan);
    UpdateMasterGains();
}

int CWaveOut::SetMasterOutputChannels(WORD channels) {
    if (channels == 1 || channels == 2)
        m_wOutputChannels = channels;
    return 1;
}

void CWaveOut::SetOutputRate(DWORD rate) {
    m_dwSampleRate = rate;
    m_WaveFormat.nSamplesPerSec = rate;
    m_WaveFormat.nAvgBytesPerSec = rate * m_WaveFormat.nBlockAlign;
}

void CWaveOut::ApplyOutputChannels() {
    if (m_WaveFormat.nChannels != m_wOutputChannels)
        m_WaveFormat = torv::PcmFormat(m_wOutputChannels, m_WaveFormat.wBitsPerSample, m_WaveFormat.nSamplesPerSec);
}
