#pragma once

#include "midi_song.h"
#include "text_encoding.h"

#include <optional>

/// One syllable as the file gives it, with its conventions resolved.
struct Syllable {
    uint32_t tick;
    std::string text; ///< UTF-8; ends in '-' when its word goes on with the next syllable; empty for a prolongation
    bool prolongs = false; ///< a lone '-', '_' and the like: the vowel before goes on
};

struct LyricLine {
    std::vector<Syllable> syllables;
    TextEncoding encoding = TextEncoding::Utf8;
};

/// Whether a track's text events are a karaoke file's lyrics rather than titles and remarks: there are several, at
/// several times.
bool HasKaraokeTexts(const MidiSongTrack& track);

/// The lyrics among a track's texts: its lyric events, or, when `karaoke` is set, its text events. Line and paragraph
/// marks ('/', '\', line ends) part words; a text that begins with '@' is a karaoke header. In a file that parts words
/// by blanks, syllables without a blank between them are one word. Bytes are read as `encoding`, else as they look.
LyricLine ReadLyricLine(const std::vector<MidiText>& texts, bool karaoke, std::optional<TextEncoding> encoding);

/// Whether the syllables read as Japanese: there is kana, or every one is spelled in Roman letters as a Japanese
/// syllable could be, in a line long enough to tell.
bool LooksJapanese(const LyricLine& line);
