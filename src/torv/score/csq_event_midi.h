#pragma once

#include "torv/score/kind_cursor.h"

/// The cursor over a track's plain MIDI events.
class TORV_API CCsqEventMidi : public torv::KindCursor<tagCsqEventMidi> {
public:
    ~CCsqEventMidi() override;
    /// Removes the event and frees its record; 0 on another kind.
    virtual int Remove();

    /// A zeroed record; null when memory is short. It belongs to the caller until Insert has put it into a track by its
    /// id (torv::EventIdOf).
    static tagCsqEventMidi* CreateMidiEvent();

    /// Status and data bytes. 1; 0 on another kind and for null.
    int GetMidiMessage(tagMidiChannelMessage* message) const;
    /// Only for a message with the event's own status byte; a status byte of 0 is not tested, and is stored, so that
    /// Write then refuses the event.
    int SetMidiMessage(const tagMidiChannelMessage* message);

    using KindCursor::Insert;
    /// On a MIDI event, puts an entry into the stream that names nothing: its id is the record's parameter size (4).
    /// Every walk passes it over. Kept for hosts that count entries; nothing inserts MIDI events this way.
    int Insert(int after);
};
