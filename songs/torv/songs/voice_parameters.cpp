#include "torv/songs/voice_parameters.h"

#include <algorithm>
#include <iterator>

namespace torv::songs {

namespace {

constexpr BYTE kNeutral = 64; // what the engine begins with

} // namespace

VoiceParameters::VoiceParameters(CSequenceObject* track) : m_track(track) {
    std::fill(std::begin(m_now.values), std::end(m_now.values), kNeutral);
}

void VoiceParameters::Set(DWORD tick, const tagVoiceChangeParam& parameters) {
    for (int i = 0; i < static_cast<int>(std::size(parameters.values)); ++i) {
        const BYTE value = std::min<BYTE>(parameters.values[i], 127);
        if (value == m_now.values[i])
            continue;
        m_now.values[i] = value;
        CBreakPointList* list = m_track->GetVoiceControlBreakPointList(i);
        if (!list)
            list = m_track->CreateVoiceControlBreakPointList(i);
        tagBreakPoint point{static_cast<LONG>(tick), static_cast<SHORT>(value), 0};
        if (list)
            list->AddTail(point);
    }
}

} // namespace torv::songs
