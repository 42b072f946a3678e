#include "torv/files/midi_track.h"

#include "torv/files/shared_field.h"

namespace {

constexpr DWORD kSmallestEvent = 3;

/// What is left of a track's bytes. While an event is parsed this and the event stand apart from the track, in
/// registers: a byte that is written and read again as a part of something larger makes the processor wait. So all that
/// parses is inline.
struct Rest {
    const BYTE* at;
    DWORD left;

    /// False at the end, as every read there.
    bool Take(BYTE& byte) {
        if (left == 0)
            return false;
        byte = *at++;
        --left;
        return true;
    }
};

/// Seven bits a byte, at most four bytes; nearly always it is one.
inline bool TakeVariableLength(Rest& rest, DWORD& value) {
    BYTE byte;
    if (!rest.Take(byte))
        return false;
    value = byte & 0x7F;
    for (int i = 1; byte >= 0x80; ++i) {
        if (i == 4 || !rest.Take(byte))
            return false;
        value = (value << 7) | (byte & 0x7F);
    }
    return true;
}

inline bool TakeVariableData(Rest& rest, tagEvent& event) {
    if (!TakeVariableLength(rest, event.length) || event.length > rest.left)
        return false;
    event.bytes = event.length ? rest.at : nullptr;
    rest.at += event.length;
    rest.left -= event.length;
    return true;
}

inline bool TakeSystemEvent(tagMidiTrack& track, Rest& rest, tagEvent& event) {
    if (event.status == 0xF0 || event.status == 0xF7)
        return TakeVariableData(rest, event);
    if (event.status != torv::kMidiMeta || !rest.Take(event.data1) || !TakeVariableData(rest, event))
        return false;
    if (event.data1 == torv::kMetaEndOfTrack)
        track.flags |= torv::kMidiTrackEnd;
    return true;
}

/// Of a channel message.
constexpr bool HasSecondByte(BYTE status) { return (status & 0xE0) != 0xC0; }

inline bool TakeEvent(tagMidiTrack& track, Rest& rest, tagEvent& event) {
    if (!TakeVariableLength(rest, event.delta))
        return false;
    track.tick += event.delta;
    // Three bytes must follow even where two would do: a track that closes with a short event instead of an end mark
    // is malformed.
    BYTE byte;
    if (rest.left < kSmallestEvent || !rest.Take(byte))
        return false;
    if (byte >= 0xF0) {
        event.status = byte;
        track.runningStatus = 0;
        return TakeSystemEvent(track, rest, event);
    }
    if (byte >= 0x80) {
        track.runningStatus = byte;
        rest.Take(event.data1);
    } else {
        event.data1 = byte;
    }
    if (track.runningStatus == 0)
        return false;
    event.status = static_cast<BYTE>(track.runningStatus);
    return !HasSecondByte(event.status) || rest.Take(event.data2);
}

} // namespace

int torv::MidiEventLength(int status) {
    const int kind = status & 0xF0;
    if (kind < 0x80 || kind == 0xF0)
        return 0;
    return HasSecondByte(static_cast<BYTE>(kind)) ? 3 : 2;
}

DWORD mtGetNextEvent(tagMidiTrack* track) {
    if (!track)
        return torv::kMidiError;
    if (track->flags != 0)
        return track->flags & torv::kMidiTrackEnd ? torv::kMidiEndOfTrack : torv::kMidiError;
    tagEvent event{};
    Rest rest{track->read, track->left};
    const bool isWhole = TakeEvent(*track, rest, event);
    track->read = rest.at;
    track->left = rest.left;
    if (!isWhole) {
        track->flags |= torv::kMidiTrackError;
        return torv::kMidiError;
    }
    track->pending.delta = event.delta;
    track->pending.status = event.status;
    track->pending.data1 = event.data1;
    track->pending.data2 = event.data2;
    track->pending.reserved = 0;
    track->pending.length = event.length;
    track->pending.bytes = event.bytes;
    return torv::kMidiOk;
}

CxMidiTrack::CxMidiTrack() : CxMidiTrack(static_cast<const tagMidiTrack*>(nullptr)) {}

CxMidiTrack::CxMidiTrack(const CxMidiTrack& other)
    : m_pTrack(std::make_unique<tagMidiTrack>(*other.m_pTrack)), m_channelPass(other.m_channelPass) {}

CxMidiTrack::CxMidiTrack(const tagMidiTrack* state)
    : m_pTrack(std::make_unique<tagMidiTrack>(state ? *state : tagMidiTrack{})) {
    m_channelPass.fill(1);
}

CxMidiTrack::~CxMidiTrack() = default;

void CxMidiTrack::Attach(const BYTE* data, DWORD size) {
    m_pTrack->data = data;
    m_pTrack->length = data ? size : 0;
    SeekToBegin();
}

void CxMidiTrack::SeekToBegin() {
    m_pTrack->read = m_pTrack->data;
    m_pTrack->left = m_pTrack->length;
    m_pTrack->tick = 0;
    m_pTrack->flags = 0;
    m_pTrack->runningStatus = 0;
    m_pTrack->pending = {};
    TellSequence();
}

tagMidiTrack* CxMidiTrack::GetState() const {
    TellSequence();
    return m_pTrack.get();
}

int CxMidiTrack::GetMute() const { return torv::ReadShared(m_pTrack->mute); }

void CxMidiTrack::SetMute(int mute) {
    torv::WriteShared(m_pTrack->mute, mute);
    TellSequence();
}

/// Its order of tracks holds no more.
void CxMidiTrack::TellSequence() const {
    if (m_pChanged)
        *m_pChanged = true;
}

int CxMidiTrack::GetEvent(tagEvent* event) {
    if (!event)
        return 0;
    TellSequence();
    tagMidiTrack& track = *m_pTrack;
    for (DWORD skipped = 0;;) {
        if (track.pending.status == 0 && mtGetNextEvent(&track) != torv::kMidiOk)
            return 0;
        *event = track.pending;
        track.pending = {};
        event->delta += skipped;
        if (event->status >= 0xF0 || m_channelPass[event->status & 0x0F])
            return 1;
        skipped = event->delta;
    }
}

int CxMidiTrack::GetChannelFilter(int channel) const {
    return channel >= 0 && channel < 16 ? m_channelPass[static_cast<size_t>(channel)] : 0;
}

void CxMidiTrack::SetChannelFilter(int channel, int flag) {
    const BYTE pass = flag != 0;
    if (channel == -1)
        m_channelPass.fill(pass);
    else if (channel >= 0 && channel < 16)
        m_channelPass[static_cast<size_t>(channel)] = pass;
}
