#pragma once

#include "lyric_line.h"
#include "midi_song.h"

#include <optional>

/// A note of the one voice that is sung.
struct SungNote {
    uint32_t tick;
    uint32_t length; ///< ticks
    int key;
    int velocity;
    std::vector<std::string> syllables; ///< UTF-8; "-" alone prolongs the vowel before
    bool joined = false;                ///< begins where the note before ends, which it goes on from without a break
};

/// One voice made from a file: whose notes, whose lyrics, and what had to be done to them.
struct VoiceLine {
    std::vector<SungNote> notes;
    size_t noteTrack = 0; ///< indexes into MidiSong::tracks
    size_t lyricTrack = 0;
    bool hasLyrics = false;
    bool japanese = false;             ///< what the lyrics look like
    size_t cutNotes = 0;               ///< overlapping notes that were shortened or left out
    size_t lostSyllables = 0;          ///< syllables that fall on no note
    bool unreadableCharacters = false; ///< there is kanji, which no converter reads
};

/// Makes the voice. `track` (from 0) overrides the choice of the track; throws InputError when it does not exist or
/// there are no notes to sing.
VoiceLine MakeVoiceLine(const std::string& path, const MidiSong& song, std::optional<size_t> track,
                        std::optional<TextEncoding> encoding);
