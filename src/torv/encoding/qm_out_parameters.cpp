#include "torv/encoding/qm_out_parameters.h"

#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_vibrato.h"

namespace {

constexpr int kBendCentre = 8192;

} // namespace

int CxQMOutDynamics::AttachObject(const CBreakPointList* list) {
    m_nNumberMsb = torv::kNprnDynamics;
    return AttachBreakPointList(list);
}

int CxQMOutDynamics::AttachObject(CIconDynamics* icon, DWORD tick, int currentDynamics) {
    if (!icon)
        return 0;
    m_nNumberMsb = torv::kNprnDynamics;
    return AttachCurve(
        [=](CBreakPointArray& curve) { return icon->NormalizeBreakPointArray(tick, curve, currentDynamics); });
}

int CxQMOutDynamics::IsTargetBP(tagBreakPoint point) const { return point.value >= 0 ? 1 : 0; }

int CxQMOutVibrato::AttachObject(CIconVibrato* icon, DWORD tick, int mode) {
    if (!icon)
        return 0;
    if (mode == 0) {
        m_nNumberMsb = torv::kNprnVibratoDepth;
        return AttachCurve([=](CBreakPointArray& curve) { return icon->NormalizeDepthBreakPointArray(tick, curve); });
    }
    if (mode != 1)
        return 0;
    m_nNumberMsb = torv::kNprnVibratoRate;
    return AttachCurve([=](CBreakPointArray& curve) { return icon->NormalizeRateBreakPointArray(tick, curve); });
}

int CxQMOutTremoloDepth::AttachObject(const CBreakPointList* list) {
    m_nNumberMsb = torv::kNprnTremoloDepth;
    return AttachBreakPointList(list);
}

int CxQMOutPitchBend::AttachObject(const CBreakPointList* list) {
    m_nNumberMsb = torv::kNprnPitchBend;
    if (!AttachBreakPointList(list))
        return 0;
    for (Point& point : m_points)
        point.value += kBendCentre;
    return 1;
}

DWORD CxQMOutPitchBend::WriteNextNPRNEvents(BYTE* out, int value, tagQuillNPRNBlock* block) const {
    return torv::WriteNextNPRNEvents(out, torv::SevenBits(value >> 7), torv::SevenBits(value), block);
}

int CxQMOutPitchBendSens::AttachObject(const CBreakPointList* list) {
    m_nNumberMsb = torv::kNprnPitchBendSens;
    return AttachBreakPointList(list);
}

DWORD CxQMOutPitchBendSens::WriteNextNPRNEvents(BYTE* out, int value, tagQuillNPRNBlock* block) const {
    return torv::WriteNextNPRNEvents(out, torv::SevenBits(value), 0, block);
}

int CxQMOutVoiceControl::AttachObject(const CBreakPointList* list, BYTE selector) {
    m_nNumberMsb = torv::kNprnVoiceControl;
    m_nSelector = selector;
    return AttachBreakPointList(list);
}

DWORD CxQMOutVoiceControl::WriteNextNPRNEvents(BYTE* out, int value, tagQuillNPRNBlock* block) const {
    const DWORD length = torv::WriteNextNPRNEvents(out, torv::SevenBits(m_nSelector), torv::kNoDataLsb, block);
    return length + torv::WriteNextNPRNEvents(out + length, torv::SevenBits(value), torv::kNoDataLsb, block);
}
