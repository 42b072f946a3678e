#pragma once

#include "torv/platform/platform.h"

#include <array>
#include <atomic>
#include <memory>

/// One MIDI event. Status 0 means that there is none; a meta event has its type in data 1.
struct tagEvent {
    DWORD delta; ///< ticks from the event before
    /// 0 when there is none.
    /// @{
    BYTE status;
    BYTE data1;
    BYTE data2;
    /// @}
    BYTE reserved;     ///< 0
    DWORD length;      ///< bytes of variable data (meta and system exclusive)
    const BYTE* bytes; ///< inside the track's bytes; null when there are none
};
static_assert(offsetof(tagEvent, length) == 8);
static_assert(sizeof(void*) != 4 || sizeof(tagEvent) == 16);

/// How far one track has been read. The bytes belong to the host.
struct tagMidiTrack {
    /// All of the track's events, and how many bytes they have.
    /// @{
    const BYTE* data;
    DWORD length;
    /// @}
    /// What is read next, and how many bytes are left.
    /// @{
    const BYTE* read;
    DWORD left;
    /// @}
    DWORD tick;          ///< absolute, of the pending event
    DWORD flags;         ///< torv::kMidiTrackEnd, torv::kMidiTrackError
    DWORD runningStatus; ///< 0 when none
    tagEvent pending;    ///< read and not yet taken
    int mute;            ///< non-zero delivers nothing
};
static_assert(sizeof(void*) != 4 || (offsetof(tagMidiTrack, pending) == 28 && sizeof(tagMidiTrack) == 48));

namespace torv {

/// Bits of tagMidiTrack::flags: read to its end; malformed.
/// @{
constexpr DWORD kMidiTrackEnd = 1;
constexpr DWORD kMidiTrackError = 2;
/// @}

/// Results of parsing and merging.
constexpr DWORD kMidiOk = 0;
/// See kMidiOk.
/// @{
constexpr DWORD kMidiError = 1;
constexpr DWORD kMidiEndOfTrack = 7;
constexpr DWORD kMidiEndOfSequence = 11;
/// @}

/// The status of meta events, and the types that a sequence looks at.
/// @{
constexpr BYTE kMidiMeta = 0xFF;
constexpr BYTE kMetaEndOfTrack = 0x2F;
constexpr BYTE kMetaTempo = 0x51;
constexpr BYTE kMetaTimeSignature = 0x58;
constexpr BYTE kMetaKeySignature = 0x59;
/// @}

/// Bytes of a channel message with this status, by its high nibble: 3, 2, or 0 for anything else.
TORV_API int MidiEventLength(int status);

} // namespace torv

/// Parses the next event of the track and leaves it pending. Returns 0; 1 for malformed bytes, then and ever after;
/// 7 after the end of track. The end flag is set when the end-of-track event is parsed, so that event is still pending.
TORV_API DWORD mtGetNextEvent(tagMidiTrack* track);

/// One track chunk's events, with a pass flag for each channel. Reads the host's bytes, which must outlive it; owns its
/// reading state. Any bytes are survived. One thread at a time.
class TORV_API CxMidiTrack : public CObject {
public:
    /// Without bytes; all channels pass.
    CxMidiTrack();
    /// The flags and the reading state are copied; both read the same bytes.
    CxMidiTrack(const CxMidiTrack& other);
    /// A copy of the state (null: an empty one), all channels passing.
    explicit CxMidiTrack(const tagMidiTrack* state);
    CxMidiTrack& operator=(const CxMidiTrack&) = delete;
    ~CxMidiTrack() override;

    /// The event data after the chunk's header; reading begins at its start.
    void Attach(const BYTE* data, DWORD size);
    /// To the first event; the filters stay.
    void SeekToBegin();
    /// The next event whose channel passes; the deltas of those left out are added to its own. 1, or 0 at the end, for
    /// malformed bytes and for null.
    int GetEvent(tagEvent* event);

    /// 0 for a channel outside 0..15.
    int GetChannelFilter(int channel) const;
    /// Non-zero passes. Channel -1 sets all sixteen.
    void SetChannelFilter(int channel, int flag);
    /// Both also while the track's sequence plays.
    int GetMute() const;
    /// See GetMute.
    void SetMute(int mute);
    /// Absolute ticks of the event parsed last.
    DWORD GetTickPosition() const { return m_pTrack->tick; }

    /// The state itself. A sequence that owns the track takes it as changed, once for each call.
    tagMidiTrack* GetState() const;

private:
    friend class CxMidiSequence;
    void TellSequence() const;

    std::unique_ptr<tagMidiTrack> m_pTrack;
    std::array<BYTE, 16> m_channelPass;
    std::atomic<bool>* m_pChanged = nullptr; ///< of the sequence that owns the track
};
