#include "torv/files/midi_sequence.h"

#include "torv/files/midi_player.h"

#include <new>

using torv::MidiPlayer;

namespace {

constexpr DWORD kDefaultTempo = 500000;
constexpr DWORD kMostTracks = 0xFFFF;
constexpr DWORD kSequenceEnd = 1;

/// Whole thousandths of the tempo first, and a remainder in units of the division that is compared with 1000: hosts
/// align their display with these times, rounding and all.
void AdvanceTime(tagMidiSequence& sequence, DWORD delta) {
    if (sequence.division == 0 || delta == 0)
        return;
    const ULONGLONG x = static_cast<ULONGLONG>(sequence.tempo / 1000) * delta;
    DWORD time = sequence.time + static_cast<DWORD>(x / sequence.division);
    sequence.remainder = static_cast<WORD>(sequence.remainder + x % sequence.division);
    for (; sequence.remainder >= 1000; sequence.remainder = static_cast<WORD>(sequence.remainder - 1000))
        ++time;
    torv::WriteShared(sequence.time, time);
}

DWORD LittleEndian(const BYTE* bytes, int count) {
    DWORD value = 0;
    for (int i = 0; i < count; ++i)
        value |= static_cast<DWORD>(bytes[i]) << (8 * i);
    return value;
}

/// A meta event too short for its kind changes nothing.
void ApplyMeta(tagMidiSequence& sequence, const tagEvent& event) {
    const BYTE* bytes = event.bytes;
    if (event.data1 == torv::kMetaTempo && event.length >= 3) {
        torv::WriteShared(sequence.tempo, static_cast<DWORD>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]));
        sequence.ticksSinceTempo = 0;
    } else if (event.data1 == torv::kMetaTimeSignature && event.length >= 4) {
        torv::WriteShared(sequence.timeSignature, LittleEndian(bytes, 4));
    } else if (event.data1 == torv::kMetaKeySignature && event.length >= 2) {
        torv::WriteShared(sequence.keySignature, LittleEndian(bytes, 2));
    }
}

/// -1 for no status. Slot 0 stands for everything above system exclusive.
int MessageSlot(int status) {
    if (status < 0 || status > 0xFF)
        return -1;
    return status > 0xF0 ? 0 : status >> 4;
}

} // namespace

DWORD sqGetNextEvent(tagMidiSequence* sequence, torv::MidiTrackQueue* queue, tagEvent* event) {
    if (!sequence || !queue || !event)
        return torv::kMidiError;
    if (sequence->end & kSequenceEnd)
        return torv::kMidiEndOfSequence;
    tagMidiTrack* track;
    if (queue->Take(sequence->trackList, sequence->trackCount, sequence->lastTick, track) != torv::kMidiOk)
        return torv::kMidiError;
    if (!track) {
        sequence->end |= kSequenceEnd;
        return torv::kMidiEndOfSequence;
    }
    *event = track->pending;
    event->delta = track->tick - sequence->lastTick;
    track->pending = {};
    sequence->ticksSinceTempo += event->delta;
    sequence->lastTick = track->tick;
    AdvanceTime(*sequence, event->delta);
    if (event->status == torv::kMidiMeta)
        ApplyMeta(*sequence, *event);
    return torv::kMidiOk;
}

CxMidiSequence::CxMidiSequence() {
    m_channelPass.fill(1);
    m_messagePass.fill(1);
}

CxMidiSequence::~CxMidiSequence() { MidiPlayer::TheOne().Leave(this); }

void CxMidiSequence::CleanUp() {
    MidiPlayer::TheOne().Leave(this);
    m_bCreated = false;
    m_state = {};
    m_tracks.clear();
    m_trackList.clear();
    m_queue.Prepare(0);
}

int CxMidiSequence::Create(DWORD a, DWORD b) {
    CleanUp();
    m_bCreated = true;
    m_state.value1 = a;
    m_state.value2 = b;
    m_state.tempo = kDefaultTempo;
    return 1;
}

int CxMidiSequence::Create(CxMidiSequence* other) {
    if (!other || !other->m_bCreated)
        return 0;
    if (other == this)
        return 1;
    try {
        std::vector<std::unique_ptr<CxMidiTrack>> tracks;
        tracks.reserve(other->m_trackList.size());
        for (const auto& track : other->m_tracks)
            tracks.push_back(std::make_unique<CxMidiTrack>(*track));
        PrepareTracks(other->m_state.trackCount);
        m_bCreated = true;
        m_state = other->m_state;
        m_state.trackList = m_trackList.data();
        for (auto& track : tracks)
            TakeTrack(std::move(track));
        m_channelPass = other->m_channelPass;
        m_messagePass = other->m_messagePass;
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int CxMidiSequence::PrepareTrackList(DWORD format, DWORD count, DWORD division) {
    if (!m_bCreated || count > kMostTracks)
        return 0;
    try {
        PrepareTracks(count);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    m_state.format = format;
    m_state.trackCount = count;
    m_state.division = division & 0xFFFF;
    m_state.trackList = m_trackList.data();
    return 1;
}

/// Places for so many tracks in place of those there are. Throws std::bad_alloc, with the tracks as they were.
void CxMidiSequence::PrepareTracks(DWORD count) {
    std::vector<tagMidiTrack*> list(count, nullptr);
    std::vector<std::unique_ptr<CxMidiTrack>> tracks;
    tracks.reserve(count);
    MidiPlayer::TheOne().Leave(this);
    m_queue.Prepare(count);
    m_trackList.swap(list);
    m_tracks.swap(tracks);
}

CxMidiTrack* CxMidiSequence::AddNewTrack(const BYTE* data, DWORD size) {
    if (m_tracks.size() >= m_trackList.size())
        return nullptr;
    try {
        auto track = std::make_unique<CxMidiTrack>();
        track->Attach(data, size);
        const MidiPlayer::Pause pause(this);
        return TakeTrack(std::move(track));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// Into the next of the places prepared.
CxMidiTrack* CxMidiSequence::TakeTrack(std::unique_ptr<CxMidiTrack> track) {
    m_trackList[m_tracks.size()] = track->m_pTrack.get();
    track->m_pChanged = &m_queue.Stale();
    track->TellSequence();
    return m_tracks.emplace_back(std::move(track)).get();
}

void CxMidiSequence::SeekToBegin() {
    const MidiPlayer::Pause pause(this);
    for (const auto& track : m_tracks)
        track->SeekToBegin();
    // The tempo stays as it was read last: a host that plays a region again keeps the tempo it was in until the next
    // tempo event.
    torv::WriteShared(m_state.timeSignature, DWORD{0});
    torv::WriteShared(m_state.keySignature, DWORD{0});
    torv::WriteShared(m_state.time, DWORD{0});
    m_state.lastTick = 0;
    m_state.ticksSinceTempo = 0;
    m_state.remainder = 0;
    m_state.end = 0;
    MidiPlayer::TheOne().Rewind(this);
}

int CxMidiSequence::GetEvent(tagEvent* event) {
    if (!event)
        return 0;
    const MidiPlayer::Pause pause(this);
    return NextPassingEvent(event);
}

int CxMidiSequence::NextPassingEvent(tagEvent* event) {
    for (DWORD skipped = 0;;) {
        if (sqGetNextEvent(&m_state, &m_queue, event) != torv::kMidiOk)
            return 0;
        event->delta += skipped;
        if (Passes(*event))
            return 1;
        skipped = event->delta;
    }
}

bool CxMidiSequence::Passes(const tagEvent& event) const {
    if (event.status < 0xF0 && !torv::ReadShared(m_channelPass[event.status & 0x0F]))
        return false;
    // A note struck with no velocity is a note's end to the filter; it is delivered as it stands.
    const bool silentNote = (event.status & 0xF0) == 0x90 && event.data2 == 0;
    return GetMessageFilter(silentNote ? 0x80 : event.status) != 0;
}

CxMidiTrack* CxMidiSequence::GetTrack(int index) const {
    const auto i = static_cast<size_t>(index);
    return index >= 0 && i < m_tracks.size() ? m_tracks[i].get() : nullptr;
}

void CxMidiSequence::SetChannelFilter(WORD mask) {
    for (size_t channel = 0; channel < m_channelPass.size(); ++channel)
        torv::WriteShared(m_channelPass[channel], static_cast<BYTE>((mask >> channel) & 1));
}

WORD CxMidiSequence::GetChannelFilter() const {
    WORD mask = 0;
    for (size_t channel = 0; channel < m_channelPass.size(); ++channel)
        mask = static_cast<WORD>(mask | m_channelPass[channel] << channel);
    return mask;
}

void CxMidiSequence::SetMessageFilter(int status, int flag) {
    const int slot = MessageSlot(status);
    if (slot >= 0)
        torv::WriteShared(m_messagePass[static_cast<size_t>(slot)], static_cast<BYTE>(flag != 0));
}

int CxMidiSequence::GetMessageFilter(int status) const {
    const int slot = MessageSlot(status);
    return slot >= 0 ? torv::ReadShared(m_messagePass[static_cast<size_t>(slot)]) : 0;
}

int CxMidiSequence::GetMute(int track) const {
    const CxMidiTrack* found = GetTrack(track);
    return found ? found->GetMute() : 0;
}

void CxMidiSequence::SetMute(int track, int mute) {
    if (CxMidiTrack* found = GetTrack(track))
        found->SetMute(mute);
}

void CxMidiSequence::SetMuteAll(int mute) {
    for (const auto& track : m_tracks)
        track->SetMute(mute);
}

int CxMidiSequence::StartPlay(HWND window) { return MidiPlayer::TheOne().Start(this, window); }
void CxMidiSequence::StopPlay() { MidiPlayer::TheOne().Stop(); }
int CxMidiSequence::IsPlaying() const { return MidiPlayer::TheOne().IsPlaying(); }
DWORD CxMidiSequence::GetSequenceTime() const { return MidiPlayer::TheOne().GetSequenceTime(); }
int CxMidiSequence::OutMidiMessage(DWORD message, HMIDIOUT device) {
    return MidiPlayer::TheOne().OutMessage(message, device);
}
int CxMidiSequence::OutAllNoteOff() { return MidiPlayer::TheOne().OutAllNoteOff(); }
void CxMidiSequence::ChangeMidiDeviseID(UINT id) { MidiPlayer::TheOne().ChangeDevice(id); }
