#include "torv/synthesis/rt_synthesis.h"

int CRtSynthesis::RTS_ChaseEvent(int track, DWORD position) {
    const auto found = FindTrack(track);
    CQuillMidiBuffer* const stream = RTS_GetQuillMidiBuffer(track);
    return found && stream ? ChaseTrack(*found, *stream, position) : 0;
}

/// The entries from the preroll on are told as they come; those before it count by what they leave behind.
int CRtSynthesis::ChaseTrack(torv::SynthTrack& track, CQuillMidiBuffer& stream, DWORD position) const {
    track.chased.Clear();
    if (m_nChase && position > m_dwPreroll)
        torv::ChaseEvents(stream, position - m_dwPreroll, m_dwPreroll, track.chased);
    return static_cast<int>(track.chased.Events().size());
}

const std::vector<RVEEvent>* CRtSynthesis::RTS_GetChaseEvents(int track) const {
    const auto found = FindTrack(track);
    return found ? &found->chased.Events() : nullptr;
}

int CRtSynthesis::RTS_MoveTo(int track, DWORD time) {
    CQuillMidiBuffer* const stream = RTS_GetQuillMidiBuffer(track);
    return stream ? torv::MoveToTime(*stream, time) : 0;
}
