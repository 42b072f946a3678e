#include "torv/audio/wave_out_player.h"

#include "torv/audio/output_device.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr UINT kStopMessage = 1123;
constexpr UINT kSeekMessage = WM_APP + 1; ///< wParam whence, lParam position
constexpr DWORD kStopInterval = 300;      // milliseconds
/// The first two blocks are tiny: they only get the device going.
constexpr DWORD kPrimerBytes = 4;

/// While it lives, files are used.
class Turn {
public:
    explicit Turn(std::atomic<DWORD>& turns) : m_turns(turns) { m_turns.fetch_add(1); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() { m_turns.fetch_add(1); }

private:
    std::atomic<DWORD>& m_turns;
};

} // namespace

std::shared_ptr<CWaveOut::Player> CWaveOut::Player::Begin(CWaveOut& output, UINT device, const torv::MixPass& pass) {
    auto player = std::make_shared<Player>(output, device, pass);
    // The thread holds its player: it may outlive the output while it shows an error.
    player->m_thread = torv::WorkerThread::Begin([player] { player->waveOutThread(); }, THREAD_PRIORITY_TIME_CRITICAL);
    return player->m_thread ? player : nullptr;
}

CWaveOut::Player::Player(CWaveOut& output, UINT device, const torv::MixPass& pass)
    : m_output(output), m_number(device), m_pass(pass), m_bufferBytes(pass.frames * pass.format.nBlockAlign),
      m_buffers(std::make_unique<Buffers>()) {
    m_buffers->bytes = std::make_unique<BYTE[]>(static_cast<size_t>(m_bufferBytes) * 2);
    BYTE* half = m_buffers->bytes.get();
    for (WAVEHDR& header : m_buffers->device.headers) {
        header.lpData = reinterpret_cast<char*>(half);
        header.dwBufferLength = std::min(kPrimerBytes, m_bufferBytes);
        half += m_bufferBytes;
    }
}

void CWaveOut::Player::End() {
    while (!m_isOver && !m_isShowingError) {
        m_thread->Post(kStopMessage);
        if (m_thread->Wait(kStopInterval))
            break;
    }
    if (!m_isShowingError)
        m_thread->Wait();
}

bool CWaveOut::Player::Seek(LONG position, int whence, bool& isPosted) {
    return m_seeks.Pass([&] {
        isPosted = PostThreadMessageA(m_thread->Id(), kSeekMessage, static_cast<WPARAM>(whence), position) != FALSE;
    });
}

void CWaveOut::Player::AwaitBlock() const {
    // Added nothing, so that a turn which begins after this sees what was written before.
    const DWORD turn = m_turns.fetch_add(0);
    while (turn % 2 == 1 && m_turns == turn)
        Sleep(1);
}

void CWaveOut::Player::waveOutThread() {
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0 && Handle(message)) {
    }
    m_seeks.Close([this] { SeekAsPosted(); });
    CloseDevice();
    if (m_error != MMSYSERR_NOERROR) {
        m_isShowingError = true; // nobody waits for the user; the output may be gone from here on
        torv::ShowOutputError(m_error);
    }
    m_isOver = true;
}

/// False when the play is over.
bool CWaveOut::Player::Handle(const MSG& message) {
    switch (message.message) {
    case kOpenMessage:
        return m_buffers->device.IsOpen() || Open();
    case MM_WOM_DONE:
        return TakeBack(m_buffers->device.IndexOf(reinterpret_cast<const WAVEHDR*>(message.lParam)));
    case kSeekMessage:
        SeekFiles(message);
        return true;
    case MM_WOM_CLOSE:
    case kStopMessage:
        return false;
    default:
        return true;
    }
}

bool CWaveOut::Player::Open() {
    auto& device = m_buffers->device;
    m_error = device.Open(m_number, m_pass.format, GetCurrentThreadId(), CALLBACK_THREAD);
    if (m_error != MMSYSERR_NOERROR)
        return false;
    for (int index = 0; index < torv::DoubleBufferedOutput::kHeaders; ++index) {
        m_pass.starts[index] = Position();
        Queue(index);
    }
    waveOutRestart(device.device);
    return true;
}

/// A device that takes no more blocks leaves the play waiting for a stop: only what comes back drives it.
void CWaveOut::Player::Queue(int index) { m_buffers->device.Queue(index); }

/// False when the play is over. A message may be anybody's: what is no header of the device, or still there, is passed
/// over.
bool CWaveOut::Player::TakeBack(int index) {
    auto& device = m_buffers->device;
    if (!device.IsOpen() || index < 0 || !device.TakeBack(index))
        return true;
    WAVEHDR& header = device.headers[index];
    header.dwBufferLength = m_bufferBytes;
    auto* const bytes = reinterpret_cast<BYTE*>(header.lpData);
    if (m_phase == Phase::Mixing) {
        const Turn turn(m_turns);
        if (!m_output.MixOut(bytes, m_pass))
            m_phase = Phase::Draining;
    } else {
        std::memset(bytes, 0, m_bufferBytes);
        PostStart();
        if (m_phase == Phase::Drained) {
            Finish();
            return false;
        }
        m_phase = Phase::Drained;
    }
    Queue(index);
    return true;
}

/// Where the header that is back ended, and so what has been heard.
void CWaveOut::Player::PostStart() {
    m_output.PostMessageToScoreWnd(m_output.m_nMessage, m_output.m_wPositionCode,
                                   static_cast<LONG>(m_pass.starts[m_pass.next]));
    m_pass.next ^= 1;
}

/// A host that rewinds when it hears of the end seeks the files itself.
void CWaveOut::Player::Finish() {
    PostStart();
    m_seeks.Close([this] {
        SeekAsPosted();
        Position(); // where that left the master track
    });
    if (const WORD code = m_output.m_wEndCode)
        m_output.PostMessageToScoreWnd(m_output.m_nMessage, code, static_cast<LONG>(m_pass.position));
}

void CWaveOut::Player::SeekFiles(const MSG& message) {
    const Turn turn(m_turns);
    m_output.SeekTracks(static_cast<LONG>(message.lParam), static_cast<int>(message.wParam));
}

/// What is still on its way. Asks no file that nobody seeks: after a stop they may be gone.
void CWaveOut::Player::SeekAsPosted() {
    MSG message;
    while (PeekMessageA(&message, nullptr, kSeekMessage, kSeekMessage, PM_REMOVE))
        SeekFiles(message);
}

/// Of the master track: where it is, or was when it was still registered.
DWORD CWaveOut::Player::Position() {
    const Turn turn(m_turns);
    if (const CWaveFile* const file = m_output.GetTrack(m_pass.masterTrack))
        m_pass.position = file->GetCurrentPlayPointer();
    return m_pass.position;
}

/// What a device does not let go of stays in its hands.
void CWaveOut::Player::CloseDevice() {
    if (!m_buffers->device.Close()) [[maybe_unused]]
        const Buffers* const lost = m_buffers.release();
}
