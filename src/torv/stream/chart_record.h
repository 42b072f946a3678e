#pragma once

#include <cstddef>
#include <cstdint>

#include "torv/platform/platform.h"

/// The records of a track's chart. A stream entry {delta, id} names each of them in the event pool. Little-endian, no
/// pointers, one layout on every target.

namespace torv {

inline constexpr WORD kEventTop = 241;           ///< cursor status: before the first event
inline constexpr WORD kEventEnd = 242;           ///< cursor status: after the last event
inline constexpr WORD kEventMidi = 243;          ///< a tagCsqEventMidi
inline constexpr WORD kEventAicon = 244;         ///< a tagCsqEventAicon
inline constexpr WORD kEventAnote = 245;         ///< a tagCsqEventAnote
inline constexpr WORD kEventTimeSignature = 246; ///< master track
inline constexpr WORD kEventTempo = 247;         ///< master track
inline constexpr WORD kEventSinger = 249;        ///< a tagCsqEventSinger

inline constexpr WORD kNoteStatus = 144; ///< status word of a note that a cursor inserts

} // namespace torv

/// What every record begins with.
struct tagEventHeader {
    WORD type;           ///< torv::kEventAnote and its like
    WORD status;         ///< of a note torv::kNoteStatus or 0, of a MIDI event its status byte, else 0
    DWORD parameterSize; ///< bytes after this header
};
static_assert(sizeof(tagEventHeader) == 8 && offsetof(tagEventHeader, status) == 2 &&
              offsetof(tagEventHeader, parameterSize) == 4);

/// A note with its lyric and icons.
struct tagCsqEventAnote {
    tagEventHeader header; ///< the low 4 bits of the status word are the channel
    DWORD noteLength;      ///< ticks
    WORD noteNumber;       ///< MIDI key, 60 is C4
    WORD noteDynamics;     ///< velocity, 0 to 127
    DWORD noteAttribute;   ///< only the low 16 bits are used
    DWORD lyricHandle;     ///< handles: 0 none
    DWORD noteHeadHandle;  ///< an attack's
    DWORD noteTailHandle;  ///< a release's or transition's
    DWORD vibratoHandle;   ///< a vibrato's
    LONG vibratoOffset;    ///< ticks from the note's start
};
static_assert(sizeof(tagCsqEventAnote) == 40 && offsetof(tagCsqEventAnote, noteLength) == 8 &&
              offsetof(tagCsqEventAnote, noteNumber) == 12 && offsetof(tagCsqEventAnote, noteDynamics) == 14 &&
              offsetof(tagCsqEventAnote, noteAttribute) == 16 && offsetof(tagCsqEventAnote, lyricHandle) == 20 &&
              offsetof(tagCsqEventAnote, noteHeadHandle) == 24 && offsetof(tagCsqEventAnote, noteTailHandle) == 28 &&
              offsetof(tagCsqEventAnote, vibratoHandle) == 32 && offsetof(tagCsqEventAnote, vibratoOffset) == 36);

/// A dynamics icon on the timeline.
struct tagCsqEventAicon {
    tagEventHeader header; ///< status 0
    DWORD reserved;        ///< 0
    DWORD iconHandle;      ///< in the track; 0 none
};
static_assert(sizeof(tagCsqEventAicon) == 16 && offsetof(tagCsqEventAicon, reserved) == 8 &&
              offsetof(tagCsqEventAicon, iconHandle) == 12);

/// From here on another singer.
struct tagCsqEventSinger {
    tagEventHeader header; ///< status 0
    WORD value;            ///< given when the event is inserted
    WORD reserved;         ///< 0
    DWORD iconHandle;      ///< in the track; 0 none
};
static_assert(sizeof(tagCsqEventSinger) == 16 && offsetof(tagCsqEventSinger, value) == 8 &&
              offsetof(tagCsqEventSinger, reserved) == 10 && offsetof(tagCsqEventSinger, iconHandle) == 12);

/// A plain MIDI message; the encoder passes it over.
struct tagCsqEventMidi {
    tagEventHeader header; ///< the MIDI status byte is the low byte of the status word
    BYTE data1;            ///< 0 to 127
    BYTE data2;            ///< 0 to 127
    BYTE unused[2];        ///< 0
};
static_assert(sizeof(tagCsqEventMidi) == 12 && offsetof(tagCsqEventMidi, data1) == 8 &&
              offsetof(tagCsqEventMidi, data2) == 9 && offsetof(tagCsqEventMidi, unused) == 10);

/// A MIDI channel message as it is exchanged.
struct tagMidiChannelMessage {
    BYTE status; ///< command and channel
    /// 0 to 127.
    /// @{
    BYTE data1;
    BYTE data2;
    /// @}
};
static_assert(sizeof(tagMidiChannelMessage) == 3 && offsetof(tagMidiChannelMessage, data1) == 1 &&
              offsetof(tagMidiChannelMessage, data2) == 2);

/// A track's stream entry as it is handed out.
struct tagEventEntry {
    DWORD deltaClock; ///< ticks
    DWORD eventId;    ///< of a record in the event pool
};
static_assert(sizeof(tagEventEntry) == 8 && offsetof(tagEventEntry, eventId) == 4);

namespace torv {

/// The event type of a record's kind.
template <class Record>
inline constexpr WORD kEventTypeOf = 0;
/// Of the four kinds.
/// @{
template <>
inline constexpr WORD kEventTypeOf<tagCsqEventMidi> = kEventMidi;
template <>
inline constexpr WORD kEventTypeOf<tagCsqEventAicon> = kEventAicon;
template <>
inline constexpr WORD kEventTypeOf<tagCsqEventAnote> = kEventAnote;
template <>
inline constexpr WORD kEventTypeOf<tagCsqEventSinger> = kEventSinger;
/// @}

/// The bytes of a record of this type; 0 for a type that is no chart event.
constexpr DWORD EventSizeOf(WORD type) {
    switch (type) {
    case kEventMidi:
        return sizeof(tagCsqEventMidi);
    case kEventAicon:
        return sizeof(tagCsqEventAicon);
    case kEventAnote:
        return sizeof(tagCsqEventAnote);
    case kEventSinger:
        return sizeof(tagCsqEventSinger);
    default:
        return 0;
    }
}

/// A handle of an icon or lyric as records hold it (16 bits, 0 none), and as functions take it.
inline WORD HandleOf(void* handle) { return static_cast<WORD>(reinterpret_cast<uintptr_t>(handle)); }
/// The reverse of HandleOf.
inline void* PointerOf(DWORD handle) { return reinterpret_cast<void*>(static_cast<uintptr_t>(handle)); }

} // namespace torv
