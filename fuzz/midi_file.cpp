// Any bytes as a MIDI file: the library's track and sequence.
#include "torv/files/midi_sequence.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CxMidiSequence sequence;
    sequence.Create(0, 0);
    sequence.PrepareTrackList(1, 2, size > 0 ? data[0] : 0);
    const size_t half = size / 2;
    sequence.AddNewTrack(data, static_cast<DWORD>(half));
    sequence.AddNewTrack(data + half, static_cast<DWORD>(size - half));
    sequence.SeekToBegin();
    tagEvent event;
    while (sequence.GetEvent(&event)) {
        volatile BYTE last = event.bytes && event.length ? event.bytes[event.length - 1] : BYTE{0};
        (void)last;
    }
    return 0;
}
