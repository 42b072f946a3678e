#pragma once

#include "torv/audio/shared_value.h"
#include "torv/platform/platform.h"

/// The wave output: its format and device, the master gains, and the window that is told about positions. Settings may
/// be changed while another thread plays; they take effect with the next frame.
class TORV_API CWaveOut {
public:
    CWaveOut();
    CWaveOut(const CWaveOut&) = default;
    CWaveOut& operator=(const CWaveOut&) = default;
    virtual ~CWaveOut() = default;

    /// Decibels to a linear gain and back; 0 has no decibels and gives minus infinity.
    static double Db2Amplitude(double decibels);
    static double Amplitude2Db(double amplitude);

    /// Where and how to play: the device's product name, the window that gets notifications (may be null), the message
    /// posted to it and the wParam of positions, the rate in Hz, whether files are looped. Buffers hold 100 ms.
    void SetPlayParameters(const CString& device, CWnd* window, UINT message, WORD positionCode, DWORD rate, int loop);
    /// wParam of the end notification; 0, as at first, posts none.
    void SetPlayEndNortify(WORD code) { m_wEndCode = code; }
    /// No notification is posted any more.
    void ClearScoreWndPtr() { m_hScoreWnd = nullptr; }

    /// Linear volume, 1.0 at first. A pan outside -1.0..+1.0 becomes the centre, and so does every pan while there is
    /// one output channel.
    void SetMasterVolume(double volume, double pan);
    void SetMasterVolume(double volume);
    void SetMasterPanpot(double pan);
    /// 1 or 2; any other number is passed over. Always returns 1.
    int SetMasterOutputChannels(WORD channels);
    void SetMute(int mute) { m_nMasterMute = mute; }
    void SetLoop(int loop) { m_nLoop = loop; }

protected:
    double ValidOutputPan(double pan) const;
    void UpdateMasterGains();
    /// The rate of the output format and of the positions in messages.
    void SetOutputRate(DWORD rate);
    /// Brings the output format to the chosen number of channels; its bits stay.
    void ApplyOutputChannels();

    WAVEFORMATEX m_WaveFormat;
    CString m_strDevice;
    DWORD m_dwSampleRate; ///< turns sample positions into milliseconds in messages
    DWORD m_dwBufferFrames = 4410;
    torv::Shared<int> m_nLoop = 0;
    WORD m_wOutputChannels = 2;

    torv::Shared<double> m_dMasterGainL = 1.0;
    torv::Shared<double> m_dMasterGainR = 1.0;
    torv::Shared<double> m_dMasterPan = 0.0;
    torv::Shared<double> m_dMasterVolumeL = 1.0;
    torv::Shared<double> m_dMasterVolumeR = 1.0;
    torv::Shared<int> m_nMasterMute = 0;

    /// A handle, not the window object: it can be asked about after the window has gone.
    torv::Shared<HWND> m_hScoreWnd = nullptr;
    UINT m_nMessage = 0;
    WORD m_wPositionCode = 0;
    WORD m_wEndCode = 0;
};
