#pragma once

#include "torv/songs/export.h"
#include "torv/songs/midi_data.h"
#include "torv/songs/text_encoding.h"

#include <optional>

namespace torv::songs {

/// One syllable as the file gives it, with its conventions resolved.
struct Syllable {
    uint32_t tick;         ///< of the note that sings it
    Word word;             ///< without text for a prolongation
    bool prolongs = false; ///< a lone '-', '_' and the like: the vowel before goes on
};

/// A track's words.
struct LyricLine {
    std::vector<Syllable> syllables; ///< by verse, then tick
    TextEncoding encoding = kUtf8;   ///< what their bytes were read as
    bool isUndivided = false;        ///< neither blanks nor hyphens say which syllables make a word
};

/// Whether a track's text events are a karaoke file's lyrics rather than titles and remarks: there are several, at
/// several times.
TORV_SONGS_API bool HasKaraokeTexts(const MidiTrack& track);

/// The lyrics among a track's texts: its lyric events, or, when `karaoke` is set, its text events. Line and paragraph
/// marks ('/', '\', line ends) part words; a text that begins with '@' is a karaoke header. In a file that parts words
/// by blanks, syllables without a blank between them are one word; a '_' behind a syllable ends its word, a '-' does
/// not. Where most times have several lyric events, they are verses one under the other. Bytes are read as `encoding`,
/// else as they look or a tag ("{@JP}", "{@LATIN}") says.
TORV_SONGS_API LyricLine ReadLyricLine(const std::vector<MidiText>& texts, bool karaoke,
                                       const std::optional<TextEncoding>& encoding);

/// Whether words read as Japanese: there is kana, or every one is spelled in Roman letters as a Japanese syllable could
/// be, and there are enough to tell.
TORV_SONGS_API bool LooksJapanese(const std::vector<std::string>& words);

} // namespace torv::songs
