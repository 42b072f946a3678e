#include "torv/audio/quill_audio.h"

#include "torv/audio/double_buffered_output.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr const char* kErrorTexts[] = {"No Error Information.", "Internal Error !\nPlease Report."};
constexpr int kInternalError = 1;

constinit torv::DoubleBufferedOutput g_output;

} // namespace

HWAVEOUT& CxQuillAudio::m_hWaveOut = g_output.device;
torv::Shared<HWND> CxQuillAudio::m_hWndCallback = nullptr;
CWaveBuffer* CxQuillAudio::m_pBuff = nullptr;
WAVEHDR (&CxQuillAudio::m_stWaveHdr)[2] = g_output.headers;
torv::Shared<int> CxQuillAudio::m_nStatus = torv::kAudioIdle;
UINT CxQuillAudio::m_nMMeError = MMSYSERR_NOERROR;
int CxQuillAudio::m_nError = 0;
char CxQuillAudio::m_szMsg[128] = "";

int CxQuillAudio::OpenAudio() { return m_hWaveOut ? 0 : AudioReset(); }

int CxQuillAudio::CloseAudio() { return AudioReset(); }

int CxQuillAudio::AudioPlay(HWND owner, CWaveBuffer* buffer, DWORD start, DWORD end, int loop, int source) {
    if (m_hWndCallback || m_hWaveOut || !IsWindow(owner))
        return 0;
    const int isPlaying = buffer && buffer->SetPlayParam(start, end, loop, source) && StartPlay(owner, *buffer);
    SendMessageA(owner, torv::kAudioMessage, torv::kAudioPlaying, isPlaying);
    return isPlaying;
}

int CxQuillAudio::StartPlay(HWND owner, CWaveBuffer& buffer) {
    m_pBuff = &buffer;
    const int isLoaded = buffer.InitialLoadDataBlock(m_stWaveHdr);
    const auto blocks = std::count_if(std::begin(m_stWaveHdr), std::end(m_stWaveHdr),
                                      [](const WAVEHDR& header) { return header.dwBufferLength > 0; });
    if (!isLoaded || !blocks) {
        AudioReset();
        SetAoudioError(kInternalError);
        return 0;
    }
    ClearAudioError();
    WAVEFORMATEX format;
    buffer.MakeWaveFormat(format);
    MMRESULT error = g_output.Open(WAVE_MAPPER, format, reinterpret_cast<DWORD_PTR>(&waveOutProc), CALLBACK_FUNCTION);
    if (error == MMSYSERR_NOERROR)
        error = waveOutPause(m_hWaveOut);
    for (int index = 0; index < torv::DoubleBufferedOutput::kHeaders; ++index)
        if (error == MMSYSERR_NOERROR && m_stWaveHdr[index].dwBufferLength > 0)
            error = g_output.Queue(index);
    if (error == MMSYSERR_NOERROR) {
        // Before the device goes on: what it tells without an owner is lost.
        m_nStatus = blocks == 2 ? torv::kAudioLoading : torv::kAudioLastData;
        m_hWndCallback = owner;
        error = waveOutRestart(m_hWaveOut);
    }
    if (error == MMSYSERR_NOERROR)
        return 1;
    AudioReset();
    SetMMeError(error);
    return 0;
}

/// On a thread of the device's.
void CALLBACK CxQuillAudio::waveOutProc(HWAVEOUT /*device*/, UINT message, DWORD_PTR /*instance*/, DWORD_PTR header,
                                        DWORD_PTR /*parameter*/) {
    const int status = m_nStatus;
    const HWND owner = m_hWndCallback;
    if (message == WOM_DONE && (status == torv::kAudioLoading || status == torv::kAudioLastData) && owner)
        PostMessageA(owner, torv::kAudioMessage, torv::kAudioBlockBack, static_cast<LPARAM>(header));
}

int CxQuillAudio::OnAudioCallback(HWND owner, LPARAM header) {
    return WatchWaveOut(owner, reinterpret_cast<WAVEHDR*>(header));
}

int CxQuillAudio::WatchWaveOut(HWND owner, WAVEHDR* header) {
    const int index = g_output.IndexOf(header);
    // A message of an earlier play names the same headers, which may be at the device again.
    if (!m_hWaveOut || owner != m_hWndCallback || index < 0 || !g_output.TakeBack(index))
        return 0;
    if (m_nStatus == torv::kAudioLoading) {
        if (!m_pBuff->LoadDataBlock(header)) {
            m_nStatus = torv::kAudioLastData; // the other block plays on
            return 1;
        }
        const MMRESULT error = g_output.Queue(index);
        if (error == MMSYSERR_NOERROR)
            return 1;
        SetMMeError(error);
        return -1;
    }
    if (m_nStatus != torv::kAudioLastData)
        return 0;
    WaitReleaseCue();
    return AudioStop(owner);
}

int CxQuillAudio::WaitReleaseCue(DWORD milliseconds) { return g_output.AwaitBoth(milliseconds); }

int CxQuillAudio::AudioStop(HWND owner) {
    if (!owner || !IsAudioPlaying(owner))
        return 0;
    AudioReset();
    SendMessageA(owner, torv::kAudioMessage, torv::kAudioPlaying, 0);
    return 1;
}

int CxQuillAudio::AudioAbort(HWND window) {
    const HWND owner = m_hWndCallback;
    const int isFree = AudioReset();
    if (owner && owner != window && IsWindow(owner))
        SendMessageA(owner, torv::kAudioMessage, torv::kAudioPlaying, 0);
    return isFree;
}

int CxQuillAudio::AudioReset() {
    ClearAudioError();
    m_nStatus = torv::kAudioIdle; // first: the blocks that a reset returns are nobody's news
    m_hWndCallback = nullptr;
    if (!g_output.Close()) {
        SetAoudioError(kInternalError);
        return 0;
    }
    std::fill(std::begin(m_stWaveHdr), std::end(m_stWaveHdr), WAVEHDR{}); // of a play that has opened nothing
    if (m_pBuff)
        m_pBuff->ReleaseDataCue();
    m_pBuff = nullptr;
    return 1;
}

int CxQuillAudio::IsAudioPlaying(HWND window) {
    const int status = m_nStatus;
    return (status == torv::kAudioLoading || status == torv::kAudioLastData) && (!window || window == m_hWndCallback);
}

const char* CxQuillAudio::GetAudioErrorMessage() {
    if (m_nMMeError != MMSYSERR_NOERROR &&
        waveOutGetErrorTextA(m_nMMeError, m_szMsg, sizeof m_szMsg) == MMSYSERR_NOERROR)
        return m_szMsg;
    return kErrorTexts[m_nError];
}

void CxQuillAudio::ClearAudioError() {
    m_nMMeError = MMSYSERR_NOERROR;
    m_nError = 0;
}

void CxQuillAudio::SetAoudioError(int error) {
    m_nStatus = torv::kAudioError;
    m_nError = error >= 0 && error < static_cast<int>(std::size(kErrorTexts)) ? error : kInternalError;
}

void CxQuillAudio::SetMMeError(UINT error) {
    m_nStatus = torv::kAudioError;
    m_nMMeError = error;
    if (const HWND owner = m_hWndCallback)
        SendMessageA(owner, torv::kAudioMessage, torv::kAudioFailed, 0);
}
