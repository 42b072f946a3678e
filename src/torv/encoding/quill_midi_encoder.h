#pragma once

#include "torv/encoding/note_segment.h"
#include "torv/encoding/nprn_block.h"
#include "torv/encoding/quill_midi_buffer.h"
#include "torv/encoding/realtime_info.h"
#include "torv/icons/break_point.h"
#include "torv/platform/platform.h"

class CCsqEvent;
class CIconDynamics;
class CIconObject;
class CIconVibrato;
class CLyricElement;
class CSequenceObject;
class CxQMOutBreakPoint;

/// What EncodeSequenceTrack is given; both are borrowed.
struct tagQuillMidiEncodeStruct {
    CSequenceObject* track;      ///< as it stands; its cursor is moved
    tagSequenceTimeMap* timeMap; ///< from CreateSequenceTimeMap
};

/// Turns one track of a song into the engine's stream: singer changes, note segments, dynamics, vibrato, and the
/// track's continuous curves, each block sent a presend ahead of its sounding time.
///
/// Notes and dynamics icons within the first presend milliseconds of the song are left out, because they could not be
/// sent ahead: a song starts with at least that much rest. One object encodes one track at a time.
class TORV_API CxQuillMidiEncoder {
public:
    /// No event interval, curves sampled every 30 ticks, and no presend time of its own, so that a run takes 2000 ms.
    CxQuillMidiEncoder();
    virtual ~CxQuillMidiEncoder();
    CxQuillMidiEncoder(const CxQuillMidiEncoder&) = delete;
    CxQuillMidiEncoder& operator=(const CxQuillMidiEncoder&) = delete;

    /// What is written: an entry a message, for files, or an entry a block with its time, for engines.
    enum OutMode {
        kFileMode = 0,    ///< an entry a message
        kRealTimeMode = 1 ///< an entry a block, with its time
    };
    /// Which curves are sampled how densely.
    enum ResolutionSlot {
        kDynamicsSlot = 0,     ///< dynamics icons that change the level
        kVibratoDepthSlot = 1, ///< the depth of vibratos
        kVibratoRateSlot = 2,  ///< their rate
        kResolutionSlots = 3   ///< how many there are
    };

    /// Encodes in real-time mode, which the object keeps; a presend time outside its range is replaced by the default.
    /// The caller owns the buffer. Null without a track or map, and when memory does not suffice for all of the stream.
    CQuillMidiBuffer* EncodeSequenceTrack(tagQuillMidiEncodeStruct* encode);

    /// The setters store what they are given; a run puts a presend time right and takes an event interval as it is. The
    /// resolution of a slot is tested at once: -1 (a curve's own points only) or an entry of the table, else 0 and
    /// nothing changes.
    void SetPresendTime(DWORD milliseconds) { m_dwPresend = milliseconds; }
    /// Milliseconds by which every block is sent ahead, as stored; 0 at first.
    DWORD GetPresendTime() const { return m_dwPresend; }
    /// Ticks between the messages of a block in a file, 0 at first.
    /// @{
    void SetEventInterval(DWORD ticks) { m_dwInterval = ticks; }
    DWORD GetEventInterval() const { return m_dwInterval; }
    /// @}
    /// kFileMode or kRealTimeMode; a run sets its own.
    /// @{
    void SetOutMode(int mode) { m_nOutMode = mode; }
    int GetOutMode() const { return m_nOutMode; }
    /// @}
    static constexpr int kPointsOnly = -1; ///< as a resolution: a curve is sent at its points and nowhere between
    /// Ticks between two samples of the slot's curves. Slots beyond the three: 0.
    /// @{
    int SetExtractResolutionAt(int slot, int ticks);
    int GetExtractResolutionAt(int slot) const;
    /// @}

    static int IsValidPresendTime(DWORD milliseconds); ///< 500..5000
    static int IsValidEventInterval(DWORD ticks);      ///< 0..255
    /// Non-zero for one of OutMode's; for -1 or an entry of the table 1, 2, 4, 8, 16, 30, 60, 90, 120, 240, 480.
    /// @{
    static int IsValidOutMode(int mode);
    static int IsValidExtractResolution(int ticks);
    /// @}
    static DWORD GetDefaultPresendTime();     ///< 2000
    static DWORD GetDefaultEventInterval();   ///< 0
    static int GetDefaultExtractResolution(); ///< 30
    /// Entry `index` of the table of sampling resolutions, in ticks; -1 outside it.
    static int GetExtractResolution(int index);

    // Null and a map of nothing but its end give 0. A hint may be of another map, which nobody can tell from a map
    // without a length, so the walk starts at the map's beginning whatever it says.

    /// The master track's tempos as an array that {0, 0xFFFFFFFF, 0xFFFFFFFF} closes. The caller frees it with
    /// delete[], or with torv::ReleaseSequenceTimeMap from another runtime. Null without a master track and when memory
    /// is short.
    static tagSequenceTimeMap* CreateSequenceTimeMap(CMasterTrack* master);
    /// Milliseconds to ticks and back.
    static DWORD SearchTickPosition(DWORD time, const tagSequenceTimeMap* map, DWORD hint);
    /// See SearchTickPosition.
    static DWORD SearchTimePosition(DWORD tick, const tagSequenceTimeMap* map, DWORD hint);
    /// What [a0, a1) and [b0, b1) share, into `start` and `end`; non-zero when that is not empty.
    static int IntersectTime(DWORD* start, DWORD* end, DWORD a0, DWORD a1, DWORD b0, DWORD b1);
    /// Back to tick 0, time 0 and the map's beginning; the map stays.
    static void ResetRealTimeInfo(tagQuillMidiRealtimeInfo* info);
    /// Advances to `tick`. 0, and nothing changes, for a tick before the current one.
    static int UpdateRealTimeInfo(tagQuillMidiRealtimeInfo* info, DWORD tick);

protected:
    /// While it lives, the writers write into one buffer, with one track's transposition.
    class TORV_API TrackRun {
    public:
        TrackRun(CxQuillMidiEncoder& encoder, CQuillMidiBuffer& buffer, const CSequenceObject* track);
        ~TrackRun();
        TrackRun(const TrackRun&) = delete;
        TrackRun& operator=(const TrackRun&) = delete;

    private:
        CxQuillMidiEncoder& m_encoder;
        CQuillMidiBuffer* const m_pBefore;
    };

    // The writers take the cursor on the event at hand and the running position; 1 on success, 0 when nothing is
    // written, also without a run. A track's walk goes on after a 0, but ends with 0 when something did not get into
    // the buffer.
    int WriteQuillMidiTrack(CSequenceObject* track, const tagSequenceTimeMap* map);
    int WriteCsqAnoteEvent(CCsqEvent* event, tagQuillMidiRealtimeInfo* info);
    int WriteCsqSingerEvent(CCsqEvent* event, tagQuillMidiRealtimeInfo* info);
    int WriteQsqDynamicsEvent(CCsqEvent* event, tagQuillMidiRealtimeInfo* info);

    int CreateQuillNoteStruct(tagQuillMidiOutNoteParam* note, CCsqEvent* event, const tagQuillMidiRealtimeInfo* info);
    void DeleteQuillNoteStruct(tagQuillMidiOutNoteParam* note, tagQuillMidiRealtimeInfo* info);
    void SetNoteSegmentParam(tagQuillMidiOutNoteParam* note, const tagQuillMidiRealtimeInfo* info, DWORD index,
                             CLyricElement* element);
    /// Shifts a note by semitones; out of 0..127 it is folded back by octaves, never clipped.
    static BYTE Transpose(int note, int shift);

    int InsertContinuousDynamics(DWORD tick, CIconDynamics* icon, const tagQuillMidiRealtimeInfo* info);
    int InsertContinuousDynamics(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info);
    int InsertContinuousVibrato(DWORD tick, CIconVibrato* icon, const tagQuillMidiRealtimeInfo* info);
    int InsertContinuousTremoloDepth(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info);
    int InsertContinuousPitchBend(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info);
    int InsertContinuousPitchBendSens(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info);
    int InsertContinuousVoiceControl(CSequenceObject* track, const tagQuillMidiRealtimeInfo* info);

    /// Inserts each of `count` three-byte messages as an event of its own, `interval` ticks apart.
    int WriteQuillMidiMessage(DWORD tick, DWORD interval, const BYTE* bytes, DWORD count);
    /// Inserts a channel message of two or three bytes at the buffer's position.
    int WriteChMessage(BYTE status, BYTE data1);
    int WriteChMessage(BYTE status, BYTE data1, BYTE data2);
    /// Appends an end-of-voice mark `delta` ticks after the last entry; `delay` becomes the entry's time.
    int WriteEOVM(DWORD delta, int channel, DWORD delay);

    /// Opens a block at `out`, without a delay (12 bytes) and with one (24); returns the bytes.
    static DWORD WriteStartNPRNEvents(BYTE* out, int channel, BYTE numberMsb, tagQuillNPRNBlock* block);
    static DWORD WriteStartNPRNEvents(BYTE* out, int channel, BYTE numberMsb, DWORD delay, tagQuillNPRNBlock* block);
    /// The block's next parameter, unmasked; a `dataLsb` of 0x80 and above is not written. Returns 12 or 9.
    static DWORD WriteNextNPRNEvents(BYTE* out, BYTE dataMsb, BYTE dataLsb, tagQuillNPRNBlock* block);

    /// A presend time out of range becomes the default.
    void RepairPresendTime();

    DWORD m_dwInterval = 0;
    DWORD m_dwPresend = 0;
    int m_nOutMode = kFileMode;
    int m_nResolutions[kResolutionSlots];
    int m_nTranspose = 0;
    CQuillMidiBuffer* m_pBuffer = nullptr; ///< borrowed, of the run at hand

private:
    bool CanWrite(const CCsqEvent* event, const tagQuillMidiRealtimeInfo* info) const;
    int Place(const torv::BlockWriter& block, const tagQuillMidiRealtimeInfo* info, LONG time);
    int Output(int isAttached, CxQMOutBreakPoint& curve, const tagQuillMidiRealtimeInfo* info, int resolution);
    template <class Curve>
    int OutputTrackList(const CBreakPointList* list, const tagQuillMidiRealtimeInfo* info);
    int FillNoteIcons(tagQuillMidiOutNoteParam* note, CCsqEvent* event);
    int FillNextNoteTransition(tagQuillMidiOutNoteParam* note, CCsqEvent* event);
    /// Remembers that the run is not whole; 0.
    int Lack();

    bool m_isWhole = true; ///< all that the run had to write is in its buffer
};
