// Playing: begin, steer and end the thread that plays.
#include "torv/audio/output_device.h"
#include "torv/audio/sample.h"
#include "torv/audio/wave_out_player.h"
#include "torv/platform/or_zero.h"

#include <utility>

namespace {

constexpr WORD kBits = 16;
constexpr DWORD kBuffersASecond = 10;
constexpr DWORD kMostBufferFrames = 10000000; ///< a rate of 100 MHz

} // namespace

CWaveOut::CWaveOut(const CWaveOut&) = default;
CWaveOut& CWaveOut::operator=(const CWaveOut&) = default;

CWaveOut::~CWaveOut() { EndPlay(); }

int CWaveOut::Play(const CString& device, CWnd* window, UINT message, WORD positionCode, DWORD bufferFrames, int loop) {
    return StartPlay(device, window ? window->m_hWnd : nullptr, message, positionCode, bufferFrames, loop);
}

int CWaveOut::Play() {
    return StartPlay(m_strDevice, m_hScoreWnd, m_nMessage, m_wPositionCode, m_dwBufferFrames, m_nLoop);
}

int CWaveOut::StartPlay(const CString& device, HWND window, UINT message, WORD positionCode, DWORD bufferFrames,
                        int loop) {
    torv::MixPass pass;
    pass.format = torv::PcmFormat(m_wOutputChannels, kBits, bufferFrames * kBuffersASecond);
    pass.frames = bufferFrames;
    pass.isMono = pass.format.nChannels == 1;
    pass.mayLoop = true;
    pass.masterTrack = FirstTrack();
    if (pass.masterTrack < 0 || bufferFrames == 0 || bufferFrames > kMostBufferFrames)
        return 0;
    CString name;
    std::shared_ptr<Player> player;
    torv::OrZero([&] {
        name = device;
        if (const int number = torv::FindOutputDevice(name); number >= 0) {
            EndPlay();
            player = Player::Begin(*this, static_cast<UINT>(number), pass);
        }
        return 0;
    });
    if (!player)
        return 0;
    m_WaveFormat = pass.format;
    m_dwBufferFrames = bufferFrames;
    m_strDevice = std::move(name);
    m_nLoop = loop;
    CheckRewireOut();
    m_hScoreWnd = window;
    m_nMessage = message;
    m_wPositionCode = positionCode;
    PublishPeak(pass);
    player->OpenDevice();
    m_player.swap(player);
    return 1;
}

void CWaveOut::EndPlay() {
    if (m_player)
        m_player->End();
    m_player.reset();
}

void CWaveOut::Stop() {
    EndPlay();
    m_hScoreWnd = nullptr;
}

int CWaveOut::IsWaveOutStopped() const { return !m_player || m_player->IsOver(); }

void CWaveOut::SetTrack(int slot, CWaveFile* file) {
    m_tracks[static_cast<size_t>(slot)] = file;
    if (m_player)
        m_player->AwaitBlock();
}

int CWaveOut::SeekPlayPointer(LONG position, int whence) {
    bool isPosted = false;
    if (!m_player || !m_player->Seek(position, whence, isPosted))
        return SeekTracks(position, whence);
    const int moved = isPosted && (whence == 0 || whence == 1); // what every file will answer
    return FirstTrack() < 0 ? whence : whence & moved;
}
