#pragma once

#include "torv/score/csq_event.h"

/// The cursor over a track's plain MIDI events.
class TORV_API CCsqEventMidi : public CCsqEvent {
public:
    ~CCsqEventMidi() override;
    int GetNext() override;
    int GetPrev() override;
    int Insert(DWORD id, int after) override;
    virtual int Write();
    virtual int Remove();

    int GetMidiMessage(tagMidiChannelMessage* message) const;
    /// Only for a message with the event's own status byte; a status byte of 0 is not tested, and is stored, so that
    /// Write then refuses the event.
    int SetMidiMessage(const tagMidiChannelMessage* message);
    /// On a MIDI event, puts an entry into the stream that names nothing: its id is the record's parameter size (4).
    /// Every walk passes it over. Kept for hosts that count entries; nothing inserts MIDI events this way.
    int Insert(int after);
};
