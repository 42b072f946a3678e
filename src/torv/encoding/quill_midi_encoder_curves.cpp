// The continuous parameters: each curve becomes value blocks through an output object of its parameter. The running
// position that the outputs reset and advance is a copy.
#include "torv/encoding/qm_out_parameters.h"
#include "torv/encoding/quill_midi_encoder.h"
#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_vibrato.h"
#include "torv/score/sequence_object.h"

namespace {

constexpr int kPointsOnly = -1;
constexpr BYTE kEndOfSelectors = 0xFF;
/// By the track's voice-control list; the engine's numbering is not evenly spaced.
constexpr BYTE kSelectors[] = {0x30, 0x31, 0x32, 0x33, 0x40, 0x41, 0x42, 0x43, 0x50,
                               0x51, 0x52, 0x53, 0x60, 0x61, 0x62, 0x63, 0x70, kEndOfSelectors};

int Output(CxQMOutBreakPoint& curve, CQuillMidiBuffer* buffer, tagQuillMidiRealtimeInfo info, int resolution) {
    return resolution == kPointsOnly ? curve.OutputParam(buffer, &info)
                                     : curve.OutputParamLinear(buffer, &info, resolution);
}

/// One of the track's own lists, sent at its points.
template <class Curve>
int OutputTrackList(const CBreakPointList* list, CQuillMidiBuffer* buffer, const tagQuillMidiRealtimeInfo* info) {
    Curve curve;
    return curve.AttachObject(list) ? Output(curve, buffer, *info, kPointsOnly) : 0;
}

} // namespace

int CxQuillMidiEncoder::InsertContinuousDynamics(DWORD tick, CIconDynamics* icon,
                                                 const tagQuillMidiRealtimeInfo* info) {
    CxQMOutDynamics curve;
    if (!curve.AttachObject(icon, tick, info->dynamics))
        return 0;
    return Output(curve, m_pBuffer, *info, m_nResolutions[kDynamicsSlot]);
}

int CxQuillMidiEncoder::InsertContinuousDynamics(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    return OutputTrackList<CxQMOutDynamics>(track->GetDynamicsBreakPointList(), m_pBuffer, info);
}

int CxQuillMidiEncoder::InsertContinuousVibrato(DWORD tick, CIconVibrato* icon, const tagQuillMidiRealtimeInfo* info) {
    CxQMOutVibrato depth;
    if (!depth.AttachObject(icon, tick, 0) || !Output(depth, m_pBuffer, *info, m_nResolutions[kVibratoDepthSlot]))
        return 0;
    CxQMOutVibrato rate;
    if (!rate.AttachObject(icon, tick, 1))
        return 0;
    return Output(rate, m_pBuffer, *info, m_nResolutions[kVibratoRateSlot]);
}

int CxQuillMidiEncoder::InsertContinuousTremoloDepth(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    return OutputTrackList<CxQMOutTremoloDepth>(track->GetTremoloDepthBreakPointList(), m_pBuffer, info);
}

int CxQuillMidiEncoder::InsertContinuousPitchBend(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    return OutputTrackList<CxQMOutPitchBend>(track->GetPitchBendBreakPointList(), m_pBuffer, info);
}

int CxQuillMidiEncoder::InsertContinuousPitchBendSens(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    return OutputTrackList<CxQMOutPitchBendSens>(track->GetPitchBendSensBreakPointList(), m_pBuffer, info);
}

int CxQuillMidiEncoder::InsertContinuousVoiceControl(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info) {
    for (int i = 0; kSelectors[i] != kEndOfSelectors; ++i) {
        const CBreakPointList* const list = track->GetVoiceControlBreakPointList(i);
        if (!list)
            continue;
        CxQMOutVoiceControl curve;
        if (!curve.AttachObject(list, kSelectors[i]) || !Output(curve, m_pBuffer, *info, kPointsOnly))
            return 0;
    }
    return 1;
}
