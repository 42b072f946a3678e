#include "player.h"

#include "editor_error.h"

#include <torv/songs/wave_outputs.h>

#include <algorithm>

namespace editor {

namespace {

constexpr UINT kMessage = WM_USER + 1;
constexpr WORD kPosition = 1;
constexpr WORD kEnd = 2;
constexpr int kWhileSynthesizing = 1;
constexpr int kChase = 1; // a play from the middle knows what was set before
constexpr DWORD kNoDelay = 0;
constexpr DWORD kOpenEnd = 0x7FFFFFFF;
constexpr DWORD kLongestStep = 200; // milliseconds: positions are told every 100

/// Whether two documents differ in their mix at most.
bool SoundAlike(Document a, const Document& b) {
    if (a.tracks.size() != b.tracks.size())
        return false;
    for (size_t i = 0; i < a.tracks.size(); ++i) {
        a.tracks[i].volume = b.tracks[i].volume;
        a.tracks[i].pan = b.tracks[i].pan;
        a.tracks[i].isMuted = b.tracks[i].isMuted;
        a.tracks[i].isSolo = b.tracks[i].isSolo;
    }
    return a == b;
}

} // namespace

Player::Player(Library& library)
    : m_library(library),
      m_window(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
    const std::vector<std::string> devices = torv::songs::WaveOutputNames();
    device = devices.empty() ? "" : devices.front();
}

Player::~Player() {
    Stop();
    DestroyWindow(m_window.m_hWnd);
}

void Player::Play(const Document& document, uint32_t from, std::optional<Loop> loop) {
    Stop();
    if (!m_driver.OpenSynthesizer())
        throw EditorError("the voice engine RVE cannot be loaded: put it beside the program, or name its folder in "
                          "TORV_LIBRARY_PATH");
    m_score = std::make_unique<Score>(document, m_library);
    if (m_score->Parts().empty())
        return;
    m_document = document;
    m_loop = loop;
    m_position = m_score->TimeOf(from);
    m_toldAt = timeGetTime();

    // The order of these calls is the driver's.
    const auto tracks = static_cast<int>(m_score->Parts().size());
    m_driver.SetPlayParameters(device.c_str(), &m_window, kMessage, kPosition, Score::kRate, 0);
    m_driver.SetPlayEndNortify(kEnd);
    m_driver.RTS_SetSynthesisParam(kWhileSynthesizing, tracks, kNoDelay, Score::kRate, Score::kPresend, kChase);
    for (int i = 0; i < tracks; ++i) {
        m_streams.push_back(m_score->MakeStream(static_cast<size_t>(i)));
        m_driver.RTS_SetQuillMidiBuffer(i, m_streams.back().get());
    }
    m_driver.RTS_SetPlayParam(m_loop ? m_score->TimeOf(m_loop->start) : 0, RegionEnd(), m_position, m_loop.has_value());
    if (!m_driver.RTS_DoSynthesis())
        throw EditorError("the voice engine RVE cannot be started: it may be damaged or not fit this program");
    SetMix(document); // the tracks are there now, and nothing is heard yet
    m_isPlaying = m_driver.RTS_Play() != 0;
    if (!m_isPlaying)
        throw EditorError("\"" + device + "\" cannot be played on: choose another output");
}

void Player::Stop() {
    m_driver.RTS_StopSynthesis();
    m_driver.RTS_TerminateSynthesis();
    MSG message; // what was told of the play that is over is of no use to the next
    while (PeekMessageA(&message, m_window.m_hWnd, kMessage, kMessage, PM_REMOVE))
        continue;
    m_streams.clear();
    m_isPlaying = false;
}

void Player::Listen(const Document& document) {
    bool hasTurned = false;
    bool isOver = false;
    MSG message;
    while (PeekMessageA(&message, m_window.m_hWnd, kMessage, kMessage, PM_REMOVE)) {
        const auto told = static_cast<DWORD>(message.lParam);
        if (message.wParam == kEnd)
            isOver = true;
        if (message.wParam != kPosition)
            continue;
        hasTurned = hasTurned || (m_loop && told < m_position);
        m_position = told;
        m_toldAt = timeGetTime();
    }
    if (!m_isPlaying)
        return;
    if (isOver)
        Stop();
    else if (hasTurned && !SoundAlike(m_document, document))
        Play(document, m_loop->start, m_loop);
    else
        SetMix(document);
}

void Player::SetMix(const Document& document) {
    for (size_t i = 0; i < m_score->Parts().size(); ++i) {
        const size_t place = m_score->Parts()[i].track;
        if (place >= document.tracks.size())
            continue; // taken away meanwhile
        const Track& track = document.tracks[place];
        m_driver.RTS_SetTrackVolume(static_cast<int>(i), CWaveOut::Db2Amplitude(track.volume));
        m_driver.RTS_SetTrackPanpot(static_cast<int>(i), track.pan);
        m_driver.RTS_SetTrackMute(static_cast<int>(i), !IsHeard(document, track));
    }
}

DWORD Player::RegionEnd() const { return m_loop ? m_score->TimeOf(m_loop->end) : kOpenEnd; }

void Player::Seek(uint32_t tick) {
    if (!m_isPlaying)
        return;
    m_position = m_score->TimeOf(tick);
    m_toldAt = timeGetTime();
    m_driver.RTS_ChangeSongPosition(m_position);
}

void Player::SetLoop(std::optional<Loop> loop) {
    m_loop = loop;
    if (!m_isPlaying)
        return;
    m_driver.RTS_ChangePlayRegion(loop ? m_score->TimeOf(loop->start) : 0, RegionEnd(), m_position);
    m_driver.RTS_ChangeLoop(loop.has_value(), m_position);
}

/// Between two messages time goes on as the clock does, so that the cursor glides.
uint32_t Player::Tick() const {
    const DWORD step = m_isPlaying ? std::min(timeGetTime() - m_toldAt, kLongestStep) : 0;
    return m_score ? m_score->TickOf(std::min(m_position + step, RegionEnd())) : 0;
}

double Player::Peak(size_t track) const {
    if (m_isPlaying)
        for (size_t i = 0; i < m_score->Parts().size(); ++i)
            if (m_score->Parts()[i].track == track)
                return m_driver.RTS_GetTrackPeak(static_cast<int>(i));
    return 0;
}

} // namespace editor
