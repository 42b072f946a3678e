#include "panel.h"

#include <algorithm>
#include <cstring>

namespace panel {

namespace {

/// 120 beats a minute, as a song starts with: there is no control to set another.
constexpr int32_t kTempo = 500000;

} // namespace

void Panel::Count(int call) {
    ++m_record.calls[call];
    m_record.lastCall = call;
}

bool Panel::Init(const char* text) {
    const std::lock_guard lock(m_mutex);
    Count(PANEL_CALL_INIT);
    if (!text)
        return false;
    const char* const end = std::find(text, text + PANEL_TEXT_SIZE - 1, '\0');
    std::memset(m_record.text, 0, sizeof m_record.text);
    std::copy(text, end, m_record.text);
    return true;
}

void Panel::SetParent(void* window) {
    const std::lock_guard lock(m_mutex);
    Count(PANEL_CALL_SET_PARENT);
    m_record.parent = window;
}

void Panel::SetPlay(int32_t position) {
    const std::lock_guard lock(m_mutex);
    Count(PANEL_CALL_SET_PLAY);
    m_record.playing = 1;
    m_record.playPosition = position;
}

void Panel::SetStop() {
    const std::lock_guard lock(m_mutex);
    Count(PANEL_CALL_SET_STOP);
    m_record.playing = 0;
}

bool Panel::SetDeviceData(const WAV_DATAS* data) {
    const std::lock_guard lock(m_mutex);
    Count(PANEL_CALL_SEND_DEVICE_DATA);
    if (data)
        m_record.deviceData = *data;
    return data != nullptr;
}

void Panel::SetPosition(int32_t ticks) {
    const std::lock_guard lock(m_mutex);
    Count(PANEL_CALL_SEND_PPQ_POS);
    m_record.position = ticks;
}

int32_t Panel::Position() {
    const std::lock_guard lock(m_mutex);
    Count(PANEL_CALL_SEND_GET_PPQ_POS);
    return m_record.position;
}

int32_t Panel::Tempo() {
    Note(PANEL_CALL_SEND_GET_TEMPO);
    return kTempo;
}

void Panel::Note(int call) {
    const std::lock_guard lock(m_mutex);
    Count(call);
}

void Panel::SelectTrack(uint32_t track) {
    const std::lock_guard lock(m_mutex);
    Count(PANEL_CALL_SEND_SELECT_TRACK);
    m_record.track = track;
}

PANELRecord Panel::Record() {
    const std::lock_guard lock(m_mutex);
    return m_record;
}

} // namespace panel
