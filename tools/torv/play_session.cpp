#include "play_session.h"

#include "errors.h"

#include <algorithm>
#include <utility>

namespace {

constexpr UINT kMessage = WM_USER + 1;
constexpr WORD kPosition = 1;
constexpr WORD kEnd = 2;
constexpr int kWhileSynthesizing = 1;
constexpr DWORD kNoDelay = 0;
constexpr int kChase = 1;

} // namespace

PlaySession::PlaySession(std::vector<PlayTrack> tracks, const Settings& settings)
    : m_tracks(std::move(tracks)), m_settings(settings),
      m_window(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)),
      m_position(settings.start) {
    if (!m_driver.OpenSynthesizer())
        throw InputError{
            "the voice engine RVE cannot be loaded or started: put it beside the program, or name its folder "
            "in TORV_LIBRARY_PATH"};
}

PlaySession::~PlaySession() {
    m_driver.RTS_StopSynthesis();
    DestroyWindow(m_window.m_hWnd);
}

void PlaySession::Play(DWORD position) {
    m_isPaused = false;
    m_isOver = false;
    m_position = position;
    m_driver.SetPlayParameters(m_settings.device.c_str(), &m_window, kMessage, kPosition, m_settings.rate, 0);
    m_driver.SetPlayEndNortify(kEnd);
    const auto count = static_cast<int>(m_tracks.size());
    m_driver.RTS_SetSynthesisParam(kWhileSynthesizing, count, kNoDelay, m_settings.rate, m_settings.preroll, kChase);
    for (int i = 0; i < count; ++i)
        m_driver.RTS_SetQuillMidiBuffer(i, m_tracks[static_cast<size_t>(i)].stream);
    m_driver.RTS_SetPlayParam(m_settings.start, m_settings.end, position, m_settings.isLooped);
    const bool isBegun = m_driver.RTS_DoSynthesis();
    for (int i = 0; i < count; ++i) { // now that there are instances
        m_driver.RTS_SetTrackVolume(i, m_tracks[static_cast<size_t>(i)].gain);
        m_driver.RTS_SetTrackPanpot(i, m_tracks[static_cast<size_t>(i)].pan);
    }
    if (!isBegun || !m_driver.RTS_Play())
        throw InputError{"the voice engine RVE cannot be started: it may be damaged or not fit this program"};
}

void PlaySession::Pause() {
    m_driver.RTS_StopSynthesis();
    m_driver.RTS_TerminateSynthesis();
    Listen();
    m_isPaused = true;
    m_isOver = false;
}

std::optional<DWORD> PlaySession::TargetOf(DWORD position, const Settings& settings) {
    if (position < settings.last)
        return std::max(position, settings.start);
    return settings.isLooped ? std::optional(settings.start) : std::nullopt;
}

void PlaySession::Seek(DWORD position) {
    const std::optional<DWORD> target = TargetOf(position, m_settings);
    m_isOver = !target;
    m_position = target.value_or(m_settings.last);
    if (target && !m_isPaused)
        m_driver.RTS_ChangeSongPosition(m_position);
}

void PlaySession::Listen() {
    MSG message;
    while (PeekMessageA(&message, m_window.m_hWnd, kMessage, kMessage, PM_REMOVE)) {
        if (message.wParam == kPosition && static_cast<DWORD>(message.lParam) < m_settings.end)
            m_position = std::min(static_cast<DWORD>(message.lParam), m_settings.last);
        m_isOver = m_isOver || message.wParam == kEnd;
    }
}
