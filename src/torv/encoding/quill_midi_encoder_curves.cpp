// The continuous parameters: each curve becomes value blocks through an output object of its parameter. The running
// position that the outputs reset and advance is a copy.
#include "torv/encoding/qm_out_parameters.h"
#include "torv/encoding/quill_midi_encoder.h"
#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_vibrato.h"
#include "torv/score/sequence_object.h"

#include <utility>

namespace {

constexpr BYTE kEndOfSelectors = 0xFF;
/// By the track's voice-control list; the engine's numbering is not evenly spaced.
constexpr BYTE kSelectors[] = {0x30, 0x31, 0x32, 0x33, 0x40, 0x41, 0x42, 0x43, 0x50,
                               0x51, 0x52, 0x53, 0x60, 0x61, 0x62, 0x63, 0x70, kEndOfSelectors};

} // namespace

/// What could not be attached, or did not get into the buffer, the run lacks. A curve without points lacks nothing.
int CxQuillMidiEncoder::Output(int isAttached, CxQMOutBreakPoint& curve, const tagQuillMidiRealtimeInfo* info,
                               int resolution) {
    if (!isAttached)
        return Lack();
    tagQuillMidiRealtimeInfo position = *info;
    if (resolution == kPointsOnly)
        return curve.OutputParam(m_pBuffer, &position) ? 1 : Lack();
    if (curve.IsEmpty())
        return 0;
    return curve.OutputParamLinear(m_pBuffer, &position, resolution) ? 1 : Lack();
}

/// One of the track's own lists, sent at its points.
template <class Curve>
int CxQuillMidiEncoder::OutputTrackList(const CBreakPointList* list, const tagQuillMidiRealtimeInfo* info) {
    if (!m_pBuffer || !list || !info)
        return 0;
    Curve curve;
    const int attached = curve.AttachObject(list);
    return Output(attached, curve, info, kPointsOnly);
}

int CxQuillMidiEncoder::InsertContinuousDynamics(DWORD tick, CIconDynamics* icon,
                                                 const tagQuillMidiRealtimeInfo* info) {
    if (!m_pBuffer || !icon || !info)
        return 0;
    CxQMOutDynamics curve;
    const int attached = curve.AttachObject(icon, tick, info->dynamics);
    return Output(attached, curve, info, m_nResolutions[kDynamicsSlot]);
}

int CxQuillMidiEncoder::InsertContinuousDynamics(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    return track ? OutputTrackList<CxQMOutDynamics>(track->GetDynamicsBreakPointList(), info) : 0;
}

int CxQuillMidiEncoder::InsertContinuousVibrato(DWORD tick, CIconVibrato* icon, const tagQuillMidiRealtimeInfo* info) {
    if (!m_pBuffer || !icon || !info)
        return 0;
    CxQMOutVibrato curve;
    for (const auto& [mode, slot] : {std::pair(0, kVibratoDepthSlot), std::pair(1, kVibratoRateSlot)}) {
        const int attached = curve.AttachObject(icon, tick, mode);
        if (!Output(attached, curve, info, m_nResolutions[slot]))
            return 0;
    }
    return 1;
}

int CxQuillMidiEncoder::InsertContinuousTremoloDepth(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    return track ? OutputTrackList<CxQMOutTremoloDepth>(track->GetTremoloDepthBreakPointList(), info) : 0;
}

int CxQuillMidiEncoder::InsertContinuousPitchBend(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    return track ? OutputTrackList<CxQMOutPitchBend>(track->GetPitchBendBreakPointList(), info) : 0;
}

int CxQuillMidiEncoder::InsertContinuousPitchBendSens(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    return track ? OutputTrackList<CxQMOutPitchBendSens>(track->GetPitchBendSensBreakPointList(), info) : 0;
}

int CxQuillMidiEncoder::InsertContinuousVoiceControl(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    if (!m_pBuffer || !track || !info)
        return 0;
    CxQMOutVoiceControl curve;
    for (int i = 0; kSelectors[i] != kEndOfSelectors; ++i) {
        const CBreakPointList* const list = track->GetVoiceControlBreakPointList(i);
        if (!list)
            continue;
        const int attached = curve.AttachObject(list, kSelectors[i]);
        if (!Output(attached, curve, info, kPointsOnly))
            return 0;
    }
    return 1;
}
