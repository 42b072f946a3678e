#pragma once

#include "torv/files/midi_track.h"
#include "torv/files/midi_track_queue.h"
#include "torv/files/shared_field.h"

#include <vector>

namespace torv {

class MidiPlayer;

/// Posted to the window of a playing sequence: wParam is one of the codes, lParam the number that it comes with.
constexpr UINT kMidiPlayMessage = 1234;
constexpr WPARAM kMidiPlayEnd = 1;           ///< the play time in ms
constexpr WPARAM kMidiPlayPosition = 2;      ///< the play time in ms
constexpr WPARAM kMidiPlayTempo = 3;         ///< microseconds per quarter note
constexpr WPARAM kMidiPlayTimeSignature = 4; ///< the meta event's four bytes, the first one lowest

} // namespace torv

/// How far a sequence has been read. Tempo is microseconds per quarter note, time milliseconds.
struct tagMidiSequence {
    DWORD value1; ///< the two values given to Create: the host's own
    DWORD value2; ///< see value1
    /// As the file's header tells them.
    /// @{
    DWORD format;
    DWORD trackCount;
    /// @}
    DWORD division;           ///< ticks per quarter note
    tagMidiTrack** trackList; ///< one for each place prepared; owned
    DWORD tempo;              ///< at first 500000
    DWORD timeSignature;      ///< the meta event's four bytes, the first one lowest
    DWORD keySignature;       ///< the meta event's two bytes, the first one lowest
    /// Where the event taken last stands: its tick, ticks since the tempo changed, its time, and what that has below a
    /// millisecond.
    /// @{
    DWORD lastTick;
    DWORD ticksSinceTempo;
    DWORD time;
    WORD remainder;
    /// @}
    int end; ///< bit 0: exhausted
};
static_assert(sizeof(void*) != 4 || (offsetof(tagMidiSequence, tempo) == 24 && sizeof(tagMidiSequence) == 56));

/// Takes the next event of all tracks in time order and brings tempo, signatures and time up to date. Returns 0; 1 when
/// a track is malformed; 11 at the end. The queue is the one that the sequence's tracks were prepared for.
TORV_API DWORD sqGetNextEvent(tagMidiSequence* sequence, torv::MidiTrackQueue* queue, tagEvent* event);

/// The tracks of a standard MIDI file that the host holds in memory, merged into one stream of events in time order,
/// with filters by channel and kind and mutes by track; and played to a MIDI device. Owns its tracks' states, not their
/// bytes, which must outlive it. Any bytes are survived.
///
/// One thread at a time. While it plays, its timer reads it too: filters, mutes and the numbers read last may be used
/// all the same, SeekToBegin moves what plays back to the beginning, GetEvent takes an event away from it, and what
/// drops the tracks stops it first. A track that is read or sought by itself must not belong to a playing sequence.
class TORV_API CxMidiSequence : public CObject {
public:
    /// Nothing to play before Create; all channels and kinds of event pass.
    CxMidiSequence();
    ~CxMidiSequence() override;
    CxMidiSequence(const CxMidiSequence&) = delete;
    CxMidiSequence& operator=(const CxMidiSequence&) = delete;

    /// Starts afresh, without tracks, at 120 beats per minute; the two values are kept for the host. Returns 1.
    int Create(DWORD a, DWORD b);
    /// A copy of another sequence, read as far as it is, over the same bytes. 0, and nothing changes, for null or one
    /// never created and when memory is short.
    int Create(CxMidiSequence* other);
    /// The header's three numbers, with room for `count` tracks; tracks added before are dropped. The division counts
    /// as 16 bits. Returns 0 when nothing was created, there are more tracks than a header can tell (65535), or memory
    /// is short.
    int PrepareTrackList(DWORD format, DWORD count, DWORD division);
    /// A track over the event data that follows a chunk's header. Null when all prepared places are taken or memory
    /// is short. The sequence owns it.
    CxMidiTrack* AddNewTrack(const BYTE* data, DWORD size);
    /// Stops a play of it and drops all tracks; Create begins anew.
    void CleanUp();

    /// All tracks back to their first event, at time 0, without signatures; the tempo stays what was read last.
    void SeekToBegin();
    /// The next event that passes; its delta counts from the event returned before. 1, or 0 at the end, when a track
    /// is malformed, and for null.
    int GetEvent(tagEvent* event);

    /// Null outside the tracks added.
    CxMidiTrack* GetTrack(int index) const;
    /// As given to PrepareTrackList; 0 before.
    /// @{
    DWORD GetFormat() const { return m_state.format; }
    DWORD GetNumTracks() const { return m_state.trackCount; }
    DWORD GetTimeDivision() const { return m_state.division; }
    /// @}
    /// Milliseconds of the last event taken.
    DWORD GetTimePosition() const { return torv::ReadShared(m_state.time); }
    /// Microseconds per quarter note.
    DWORD GetSequenceTempo() const { return torv::ReadShared(m_state.tempo); }
    /// The last signatures' bytes, the first one lowest; 0 before the first.
    DWORD GetTimeSig() const { return torv::ReadShared(m_state.timeSignature); }
    /// See GetTimeSig.
    DWORD GetKeySig() const { return torv::ReadShared(m_state.keySignature); }

    /// Bit n lets channel n pass.
    void SetChannelFilter(WORD mask);
    /// See SetChannelFilter.
    WORD GetChannelFilter() const;
    /// Whether events of this kind pass: by the status's high nibble, all above 0xF0 together. 0 outside 0..255.
    void SetMessageFilter(int status, int flag);
    /// Non-zero when they pass.
    int GetMessageFilter(int status) const;
    /// A muted track delivers nothing; the times of the others stay.
    int GetMute(int track) const;
    /// Non-zero mutes one track, or all. A track outside those added is left alone.
    /// @{
    void SetMute(int track, int mute);
    void SetMuteAll(int mute);
    /// @}

    /// Bytes of a channel message with this status: 3, 2, or 0 for anything else.
    static int GetMidiEventLength(int status) { return torv::MidiEventLength(status); }

    /// Plays on from the current position, telling the window (may be null) by kMidiPlayMessage. One sequence of the
    /// process plays at a time: 0 when any of them does, and when the device cannot be read or opened or no timer be
    /// had. At the end the window is told; the device stays open, and IsPlaying 1, until StopPlay.
    int StartPlay(HWND window);
    /// Stops whatever plays: when it returns nothing more is sent and no note sounds. Without anything playing it just
    /// silences the device. Not from the device's own calls.
    void StopPlay();
    /// Whether any sequence plays.
    int IsPlaying() const;
    /// The play time in ms, of whatever plays or played last.
    DWORD GetSequenceTime() const;

    /// Sends one short message, status lowest, to the device, or with null to the chosen one, opened just for it. 1
    /// when it was sent.
    static int OutMidiMessage(DWORD message, HMIDIOUT device);
    /// All notes off on every channel, on the device that plays or the chosen one opened just for it, up to the first
    /// failure. 1 when all were sent.
    static int OutAllNoteOff();
    /// The device that is opened from now on; (UINT)-1, as at first, is the system's choice.
    static void ChangeMidiDeviseID(UINT id);

private:
    friend class torv::MidiPlayer;
    void PrepareTracks(DWORD count);
    CxMidiTrack* TakeTrack(std::unique_ptr<CxMidiTrack> track);
    int NextPassingEvent(tagEvent* event);
    bool Passes(const tagEvent& event) const;

    bool m_bCreated = false;
    tagMidiSequence m_state{};
    std::vector<std::unique_ptr<CxMidiTrack>> m_tracks;
    std::vector<tagMidiTrack*> m_trackList;
    torv::MidiTrackQueue m_queue;
    std::array<BYTE, 16> m_channelPass;
    std::array<BYTE, 16> m_messagePass;
};
