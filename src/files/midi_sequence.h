#pragma once

#include "torv/files/midi_track.h"

#include <vector>

/// How far a sequence has been read. Tempo is microseconds per quarter note, time milliseconds.
struct tagMidiSequence {
    DWORD value1; ///< the two values given to Create: the host's own
    DWORD value2;
    DWORD format;
    DWORD trackCount;
    DWORD division; ///< ticks per quarter note
    tagMidiTrack** trackList;
    DWORD tempo;
    DWORD timeSignature; ///< the meta event's four bytes, the first one lowest
    DWORD keySignature;  ///< the meta event's two bytes, the first one lowest
    DWORD lastTick;
    DWORD ticksSinceTempo;
    DWORD time;
    WORD remainder;
    int end; ///< bit 0: exhausted
};
static_assert(sizeof(void*) != 4 || (offsetof(tagMidiSequence, tempo) == 24 && sizeof(tagMidiSequence) == 56));

/// Takes the next event of all tracks in time order and brings tempo, signatures and time up to date. Returns 0; 1 when
/// a track is malformed; 11 at the end.
TORV_API DWORD sqGetNextEvent(tagMidiSequence* sequence, tagEvent* event);

/// The tracks of a standard MIDI file that the host holds in memory, merged into one stream of events in time order,
/// with filters by channel and kind and mutes by track. Owns its tracks' states, not their bytes, which must outlive
/// it. Any bytes are survived. One thread at a time.
class TORV_API CxMidiSequence : public CObject {
public:
    CxMidiSequence();
    ~CxMidiSequence() override;
    CxMidiSequence(const CxMidiSequence&) = delete;
    CxMidiSequence& operator=(const CxMidiSequence&) = delete;

    /// Starts afresh, without tracks, at 120 beats per minute; the two values are kept for the host. Returns 1.
    int Create(DWORD a, DWORD b);
    /// A copy of another sequence, read as far as it is, over the same bytes. 0 for null or one never created.
    int Create(CxMidiSequence* other);
    /// The header's three numbers, with room for `count` tracks; tracks added before are dropped. The division counts
    /// as 16 bits. Returns 0 when nothing was created or there are more tracks than a header can tell (65535).
    int PrepareTrackList(DWORD format, DWORD count, DWORD division);
    /// A track over the event data that follows a chunk's header. Null when all prepared places are taken. The sequence
    /// owns it.
    CxMidiTrack* AddNewTrack(const BYTE* data, DWORD size);
    void CleanUp();

    void SeekToBegin();
    /// The next event that passes; its delta counts from the event returned before. 1, or 0 at the end, when a track
    /// is malformed, and for null.
    int GetEvent(tagEvent* event);

    /// Null outside the tracks added.
    CxMidiTrack* GetTrack(int index) const;
    DWORD GetFormat() const { return m_state.format; }
    DWORD GetNumTracks() const { return m_state.trackCount; }
    DWORD GetTimeDivision() const { return m_state.division; }
    /// Milliseconds of the last event taken.
    DWORD GetTimePosition() const { return m_state.time; }
    /// Microseconds per quarter note.
    DWORD GetSequenceTempo() const { return m_state.tempo; }
    /// The last signatures' bytes, the first one lowest; 0 before the first.
    DWORD GetTimeSig() const { return m_state.timeSignature; }
    DWORD GetKeySig() const { return m_state.keySignature; }

    /// Bit n lets channel n pass.
    void SetChannelFilter(WORD mask);
    WORD GetChannelFilter() const;
    /// Whether events of this kind pass: by the status's high nibble, all above 0xF0 together. 0 outside 0..255.
    void SetMessageFilter(int status, int flag);
    int GetMessageFilter(int status) const;
    /// A muted track delivers nothing; the times of the others stay.
    int GetMute(int track) const;
    void SetMute(int track, int mute);
    void SetMuteAll(int mute);

    /// Bytes of a channel message with this status: 3, 2, or 0 for anything else.
    static int GetMidiEventLength(int status) { return torv::MidiEventLength(status); }

private:
    CxMidiTrack* TakeTrack(std::unique_ptr<CxMidiTrack> track);
    bool Passes(const tagEvent& event) const;

    bool m_bCreated = false;
    tagMidiSequence m_state{};
    std::vector<std::unique_ptr<CxMidiTrack>> m_tracks;
    std::vector<tagMidiTrack*> m_trackList;
    std::array<BYTE, 16> m_channelPass;
    std::array<BYTE, 16> m_messagePass;
};
