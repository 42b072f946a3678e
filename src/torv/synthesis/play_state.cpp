#include "torv/synthesis/play_state.h"

namespace torv {

void PlayState::Place(DWORD regionStart, DWORD regionEnd, DWORD position, int loop) {
    m_regionStart = regionStart;
    m_regionEnd = regionEnd;
    m_position = position;
    m_isLooping = loop;
}

void PlayState::PlaceInRegion(DWORD position) {
    const bool isInRegion = m_regionStart != m_regionEnd && position < m_regionEnd;
    m_position = isInRegion ? position : m_regionStart.Get();
}

void PlayState::ChangeRegion(DWORD start, DWORD end, DWORD position) {
    m_regionStart = start;
    m_regionEnd = end;
    PlaceInRegion(position);
}

void PlayState::ChangeLoop(int loop, DWORD position) {
    m_isLooping = loop;
    PlaceInRegion(position);
}

void PlayState::Seek(DWORD position) { m_position = position < m_regionEnd ? position : m_regionStart.Get(); }

DWORD PlayState::RegionEnd() const { return m_regionStart == m_regionEnd ? kOpenRegionEnd : m_regionEnd.Get(); }

DWORD PlayState::FirstPassBegin() const {
    const DWORD end = RegionEnd();
    return m_isLooping && m_position >= end && m_regionStart < end ? m_regionStart : m_position;
}

void PlayState::Fail() {
    m_hasFailed = 1;
    m_isStopAsked = 1;
}

/// Said by who begins the thread, not by the thread: an output that begins before it does must wait for it.
void PlayState::BeginSynthesis() {
    m_isStopAsked = 0;
    m_hasFailed = 0;
    m_isSynthesizing = 1;
    m_isSynthesisOver = 0;
    m_restartsDone = m_restartsAsked.Get();
}

void PlayState::RestartsDone(DWORD asked) {
    m_isSynthesizing = 1;
    m_restartsDone = asked;
}

void PlayState::EndSynthesis() {
    m_isSynthesizing = 0;
    m_isSynthesisOver = 1;
}

} // namespace torv
