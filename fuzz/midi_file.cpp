// Any bytes as a MIDI file: the command's reader with its lyrics, and the library's track and sequence.
#include "tools/torv/errors.h"
#include "tools/torv/voice_line.h"
#include "torv/files/midi_sequence.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<unsigned char> bytes(data, data + size);
    try {
        const MidiSong song = ReadMidiSong("fuzz.mid", bytes);
        MakeVoiceLine("fuzz.mid", song, std::nullopt, std::nullopt);
    } catch (const InputError&) {
        // one clear line for the user
    }
    CxMidiSequence sequence;
    sequence.Create(0, 0);
    sequence.PrepareTrackList(1, 2, size > 0 ? data[0] : 0);
    const size_t half = size / 2;
    sequence.AddNewTrack(bytes.data(), static_cast<DWORD>(half));
    sequence.AddNewTrack(bytes.data() + half, static_cast<DWORD>(size - half));
    sequence.SeekToBegin();
    tagEvent event;
    while (sequence.GetEvent(&event)) {
        volatile BYTE last = event.bytes && event.length ? event.bytes[event.length - 1] : BYTE{0};
        (void)last;
    }
    return 0;
}
