#include "device_play.h"

#include <torv/audio/sample.h>
#include <torv/platform/wave_header.h>
#include <torv/songs/nearest_names.h>
#include <torv/songs/text_encoding.h>
#include <torv/songs/wave_outputs.h>

#include <algorithm>
#include <cmath>

namespace torv::c {

namespace {

constexpr uint32_t kBuffersASecond = 20;
constexpr DWORD kTurn = 5;     // milliseconds
constexpr int kPatience = 600; // turns that a device may give nothing back

int16_t Sample16(float value) {
    return static_cast<int16_t>(std::clamp(std::round(value * 32768), -32768.0F, 32767.0F));
}

} // namespace

std::vector<std::string> DeviceNames() {
    std::vector<std::string> names = songs::WaveOutputNames();
    for (std::string& name : names)
        name = songs::ToUtf8(name, songs::DetectEncoding(name));
    return names;
}

DevicePlay::DevicePlay(PlayerObject& player, const CString& device, torv_player_callback callback, void* user)
    : m_player(player), m_callback(callback), m_user(user) {
    const std::vector<std::string> names = DeviceNames();
    const auto found = device.IsEmpty() ? std::optional<size_t>(0) : songs::FindName(names, device.GetStdString());
    if (!found || names.empty())
        throw Failure{TORV_NO_DEVICE, names.empty() ? "there is no wave output to play on"
                                                    : "there is no wave output \"" + device.GetStdString() +
                                                          "\": " + songs::SuggestNames(names, device.GetStdString())};
    const uint32_t rate = player.Rate();
    const WAVEFORMATEX format = PcmFormat(2, 16, rate);
    m_mixed.resize(2 * size_t{rate / kBuffersASecond});
    for (Buffer& buffer : m_buffers)
        buffer.samples.resize(m_mixed.size());
    if (waveOutOpen(&m_device, static_cast<UINT>(*found), &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR)
        throw Failure{TORV_NO_DEVICE,
                      "the wave output \"" + names[*found] + "\" refuses: it may be in use, or not play at this rate"};
}

DevicePlay::~DevicePlay() {
    End();
    CloseDevice();
}

void DevicePlay::Begin() {
    m_thread = WorkerThread::Begin([this] { Run(); }, THREAD_PRIORITY_TIME_CRITICAL);
    if (!m_thread)
        throw std::bad_alloc();
}

void DevicePlay::End() {
    m_isEnded = true;
    if (m_thread && !m_thread->IsCurrent())
        m_thread->Wait();
}

void DevicePlay::Run() {
    int idle = 0;
    for (; !m_isEnded && idle < kPatience; Sleep(kTurn)) {
        const bool isOver = !m_player.IsPlaying() && std::none_of(m_buffers.begin(), m_buffers.end(),
                                                                  [](const Buffer& b) { return b.isQueued; });
        if (isOver)
            break;
        idle = Feed() ? 0 : idle + 1;
    }
    if (idle == kPatience)
        m_player.FailDevice();
    CloseDevice();
    if (!m_isEnded) {
        m_player.SetHeard(m_player.Frame());
        Tell(TORV_PLAYER_ENDED);
    }
}

/// Takes buffers back and fills them anew; false when the device has none to give.
bool DevicePlay::Feed() {
    bool hasMoved = false;
    for (Buffer& buffer : m_buffers) {
        if (buffer.isQueued && (HeaderFlags(buffer.header) & WHDR_DONE) == 0)
            continue;
        if (buffer.isQueued) {
            waveOutUnprepareHeader(m_device, &buffer.header, sizeof buffer.header);
            buffer.isQueued = false;
            hasMoved = true;
        }
        if (m_player.IsPlaying())
            hasMoved |= Fill(buffer);
    }
    if (hasMoved)
        Tell(TORV_PLAYER_POSITION);
    return hasMoved;
}

bool DevicePlay::Fill(Buffer& buffer) {
    const size_t frames = m_mixed.size() / 2;
    m_player.Read(m_mixed.data(), frames);
    const uint64_t end = m_player.Frame();
    buffer.frame = end > frames ? end - frames : 0;
    std::transform(m_mixed.begin(), m_mixed.end(), buffer.samples.begin(), Sample16);
    buffer.header = {};
    buffer.header.lpData = reinterpret_cast<char*>(buffer.samples.data());
    buffer.header.dwBufferLength = static_cast<DWORD>(buffer.samples.size() * sizeof(int16_t));
    MMRESULT error = waveOutPrepareHeader(m_device, &buffer.header, sizeof buffer.header);
    if (error == MMSYSERR_NOERROR)
        error = waveOutWrite(m_device, &buffer.header, sizeof buffer.header);
    buffer.isQueued = error == MMSYSERR_NOERROR;
    // What is heard now is about what the other buffers hold before this one.
    const uint64_t ahead = frames * (kBuffers - 1);
    m_player.SetHeard(buffer.frame > ahead ? buffer.frame - ahead : 0);
    return buffer.isQueued;
}

void DevicePlay::Tell(torv_player_event event) const {
    if (m_callback)
        m_callback(event, m_player.State().position, m_user);
}

void DevicePlay::CloseDevice() {
    if (!m_device)
        return;
    waveOutReset(m_device);
    for (Buffer& buffer : m_buffers) {
        waveOutUnprepareHeader(m_device, &buffer.header, sizeof buffer.header);
        buffer.isQueued = false;
    }
    waveOutClose(m_device);
    m_device = nullptr;
}

} // namespace torv::c
