#pragma once

#include "torv/songs/song.h"

namespace torv::songs {

/// A note as one voice sings it.
struct SungNote {
    uint32_t tick;           ///< from the song's start
    uint32_t length;         ///< ticks
    int key;                 ///< MIDI key, as it sounds
    int velocity;            ///< 1 to 127
    std::vector<Word> words; ///< of the one verse; none: it goes on with the vowel before
    bool joined = false;     ///< begins where the note before ends, which it goes on from without a break
    bool slides = false;     ///< glides into the next one, when that is joined
};

/// What one voice sings of a part, and what had to be done to it.
struct VoiceLine {
    std::vector<SungNote> notes;       ///< by tick
    bool hasWords = false;             ///< whether any note has a word
    bool japanese = false;             ///< what the words look like
    bool unreadableCharacters = false; ///< there is kanji, which no converter reads
    size_t cutNotes = 0;               ///< overlapping notes that were shortened or left out
    size_t refrainWords = 0;           ///< taken from another verse, under which a refrain stands
};

/// One voice sings one note at a time: of notes that begin together the highest stays, a note that runs into the next
/// one is cut there, and a short gap before the next one is closed. Unless `isPlain`, staccato halves a note (under a
/// slur or with a tenuto line it takes a quarter), a breath mark takes a thirty-second from it, a slur or a line leads
/// to the next note within an eighth, and an accent makes it louder; else all notes are as loud. A refrain stands under
/// one verse and is sung in all: where a verse that has words elsewhere has none on four notes with words or more in a
/// row, those of the first verse there are taken. The part's notes are sorted.
TORV_SONGS_API VoiceLine MakeVoiceLine(const Part& part, int verse = 1, bool isPlain = false);

} // namespace torv::songs
