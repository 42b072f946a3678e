#pragma once

#include "torv/songs/export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A song as every reader fills it and a score is built from it: plain values that a host may look at and change in
/// between. No locks: one thread at a time.
///
/// Conventions, for readers and hosts alike:
/// - Every time is in ticks of 480 to a quarter note from the song's start, whatever the file counts in.
/// - Repeats, endings and jumps are unfolded: what is sung twice stands there twice.
/// - Keys are sounding ones: a transposing part is given as it is heard. 60 is middle C.
/// - Every text is UTF-8.
namespace torv::songs {

constexpr uint32_t kTicksPerQuarter = 480; ///< what every time counts in
constexpr uint32_t kDefaultTempo = 500000; ///< microseconds a quarter, where a song names none
constexpr uint32_t kLastTick = 0x3FFFFFFF; ///< far beyond any song, well inside the library's clocks
constexpr int kPercussionChannel = 9;      ///< MIDI's channel 10: its keys are drums

/// One syllable that a note sings in one verse.
struct Word {
    int verse = 1;             ///< from 1
    std::string text;          ///< without the hyphens and extender marks around it; an elision has a blank in it
    bool hyphenBefore = false; ///< its word has begun with an earlier syllable
    bool hyphenAfter = false;  ///< its word goes on with the next syllable
    bool extends = false;      ///< the file says that the notes after it go on with its vowel
    std::string phonemes;      ///< given by hand ("night[n aI t]"), blanks between them; empty: to be looked up

    /// Whether all of it is equal.
    bool operator==(const Word&) const = default;
};

/// One note as it sounds: notes that are tied are one note, with the words of the first. A grace note is a note of its
/// own with the time that it takes from its neighbour.
///
/// A note without words in a verse that is sung goes on with the vowel before it. Several words of one verse share the
/// note's time in their order.
struct Note {
    uint32_t tick = 0;                  ///< where it begins
    uint32_t length = kTicksPerQuarter; ///< as written, 1 or more; articulations below do not change it
    int key = 60;                       ///< 0..127
    int velocity = 80;                  ///< 1..127
    std::vector<Word> words;            ///< of all verses
    bool slurred = false;               ///< goes on into the part's next note without a new attack
    bool slides = false;                ///< glides all along into the note that it goes on into
    bool staccato = false;              ///< sounds about half its length
    bool tenuto = false;                ///< sounds for all of its length, whatever stands around it
    bool accent = false;                ///< is louder than its neighbours
    bool fermata = false;               ///< is held
    bool breathAfter = false;           ///< a breath mark stands behind it
};

/// A dynamic mark, or a hairpin and its like.
struct Dynamic {
    /// A mark, or a change over some time.
    enum class Kind { Level, Crescendo, Diminuendo }; ///< what it is
    uint32_t tick = 0;                                ///< where it begins
    Kind kind = Kind::Level;                          ///< see `level`
    std::string level;   ///< of a level: "ppp" to "fff", "sfz" and the like; of a change: where it leads, or empty
    uint32_t length = 0; ///< ticks of a change; 0 for a level
};

/// A controller of MIDI: 7 is the part's volume, 11 its expression, 10 where it stands.
struct Controller {
    uint32_t tick = 0; ///< from where it holds
    int number = 0;    ///< 0..127
    int value = 0;     ///< 0..127
};

/// From its tick on the part sounds this much higher; the file's bend range is worked in.
struct PitchBend {
    uint32_t tick = 0;    ///< from where it holds
    double semitones = 0; ///< 0 ends the bend
};

/// One part: what one voice or one instrument has. A staff with two voices gives two parts. Only chords and overlaps
/// that a file does not tell apart stay in one part.
struct Part {
    std::string name;       ///< "Soprano"; empty when the file has none
    std::string instrument; ///< what plays it, as the file names it; may be empty
    int track = 0;    ///< which of the file's tracks or parts it comes from, counted from 1; several may share one
    int channel = -1; ///< MIDI channel 0..15; -1: none
    int program = -1; ///< General MIDI program 0..127; -1: none
    std::string clef; ///< "treble", "treble-8" (sounds an octave lower), "alto", "tenor", "bass" or empty
    bool wordsAreUndivided = false;      ///< the file does not say which syllables make a word, see JoinWords
    std::vector<Note> notes;             ///< by tick, then key
    std::vector<Dynamic> dynamics;       ///< by tick
    std::vector<Controller> controllers; ///< by tick
    std::vector<PitchBend> bends;        ///< by tick

    /// Whether its keys are drums.
    bool IsPercussion() const { return channel == kPercussionChannel; }
};

/// From its tick on this tempo holds.
struct Tempo {
    uint32_t tick = 0;                               ///< by the song's beginning 0
    uint32_t microsecondsPerQuarter = kDefaultTempo; ///< 1..0xFFFFFF
};

/// A time signature, numerator over 1 << denominatorExponent.
struct Meter {
    uint32_t tick = 0;           ///< from where it holds
    int numerator = 4;           ///< as written
    int denominatorExponent = 2; ///< 0..7
};

/// Ticks of a measure that is filled.
TORV_SONGS_API uint32_t TicksOfMeasure(const Meter& meter);

/// From its tick on this key holds.
struct KeySignature {
    uint32_t tick = 0;  ///< from where it holds
    int fifths = 0;     ///< sharps, or flats when negative; -7..7
    bool minor = false; ///< the minor key with these sharps or flats
};

/// A measure as it sounds: the second time through a repeat is a measure of its own with the number of the first.
struct Measure {
    uint32_t tick = 0;   ///< where it begins
    uint32_t length = 0; ///< ticks that it really has, as a pickup has fewer than its meter says
    int number = 1;      ///< as the file counts: a pickup is 0 where the file calls it so
};

/// A fermata over a rest or a barline: what sounds then is held, as under that of a note.
struct Hold {
    uint32_t tick = 0;   ///< where it begins
    uint32_t length = 0; ///< ticks, as written
};

/// A whole song.
struct Song {
    std::string source;               ///< the file's name, for messages; may be empty
    std::string format;               ///< "standard MIDI file", "MusicXML", ...
    std::string title;                ///< may be empty
    std::string composer;             ///< may be empty
    std::string language;             ///< of the words, as the file names it ("de"); empty: it does not
    std::vector<Part> parts;          ///< only those with notes, in the file's order, from the top of the page down
    std::vector<Tempo> tempos;        ///< by tick, one a tick; none: 120 quarters a minute
    std::vector<Meter> meters;        ///< by tick, one a tick; none: 4/4
    std::vector<KeySignature> keys;   ///< by tick
    std::vector<Measure> measures;    ///< without gaps from tick 0 to `end`
    std::vector<Hold> holds;          ///< beside the notes' own fermatas; in any order
    std::vector<std::string> remarks; ///< what was guessed or left out: a line each, without the file's name
    uint32_t end = 0;                 ///< tick where the last note or measure ends
};

/// What every reader does last: puts the lists in their order (of several at one tick the last one holds, where there
/// may be one only), brings lengths, keys and velocities into their ranges, leaves out parts without notes and, where
/// the reader has not made the measures itself, makes them after the meters, counted from 1.
TORV_SONGS_API void CompleteSong(Song& song);

/// The tick at which the measure of this number begins, the first time that it is sung; the one after the last begins
/// where that ends. Throws SongError, naming the first or the last measure, when there
/// is none.
TORV_SONGS_API uint32_t TickOfMeasure(const Song& song, int number);

/// The number of the measure that sounds at a tick; of the last one behind the end.
TORV_SONGS_API int NumberOfMeasureAt(const Song& song, uint32_t tick);

/// A part's name; of one without a name "part 3", counted from 1.
TORV_SONGS_API std::string NameOfPart(const Song& song, size_t index);

/// Whether any note has a word of the verse.
TORV_SONGS_API bool HasWords(const Part& part, int verse);
/// The number of the last verse of any part; 0 without words.
TORV_SONGS_API int CountVerses(const Song& song);

} // namespace torv::songs
