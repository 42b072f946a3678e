#pragma once

#include "torv/encoding/qm_out_break_point.h"

class CIconDynamics;
class CIconVibrato;

// The continuous parameters of the engine: each sets its block number on attaching and writes its value in its own way.

/// Loudness, 0..127.
class TORV_API CxQMOutDynamics : public CxQMOutBreakPoint {
public:
    /// The track's curve. 1; 0 for null and when memory is short.
    int AttachObject(const CBreakPointList* list);
    /// The icon's curve from `tick` on, with `currentDynamics` as the level in force.
    int AttachObject(CIconDynamics* icon, DWORD tick, int currentDynamics);
    /// Only values that are not negative.
    int IsTargetBP(tagBreakPoint point) const override;
};

/// A vibrato icon's curve from a tick on: mode 0 its depth, mode 1 its rate; any other mode fails.
class TORV_API CxQMOutVibrato : public CxQMOutBreakPoint {
public:
    /// 1; 0 for null, another mode, and when memory is short.
    int AttachObject(CIconVibrato* icon, DWORD tick, int mode);
};

/// Tremolo depth, 0..127.
class TORV_API CxQMOutTremoloDepth : public CxQMOutBreakPoint {
public:
    /// The track's curve. 1; 0 for null and when memory is short.
    int AttachObject(const CBreakPointList* list);
};

/// Pitch bend, -8192..8191 in the list, sent as 14 bits from 0.
class TORV_API CxQMOutPitchBend : public CxQMOutBreakPoint {
public:
    /// The track's curve. 1; 0 for null and when memory is short.
    int AttachObject(const CBreakPointList* list);
    DWORD WriteNextNPRNEvents(BYTE* out, int value, tagQuillNPRNBlock* block) const override;
};

/// Pitch bend sensitivity in semitones, sent with a data LSB of 0.
class TORV_API CxQMOutPitchBendSens : public CxQMOutBreakPoint {
public:
    /// The track's curve. 1; 0 for null and when memory is short.
    int AttachObject(const CBreakPointList* list);
    DWORD WriteNextNPRNEvents(BYTE* out, int value, tagQuillNPRNBlock* block) const override;
};

/// One of the seventeen voice controls, named by its selector.
class TORV_API CxQMOutVoiceControl : public CxQMOutBreakPoint {
public:
    /// The track's curve. 1; 0 for null and when memory is short.
    int AttachObject(const CBreakPointList* list, BYTE selector);
    DWORD WriteNextNPRNEvents(BYTE* out, int value, tagQuillNPRNBlock* block) const override;

private:
    BYTE m_nSelector = 0;
};
