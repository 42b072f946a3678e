#pragma once

#include "torv/songs/export.h"
#include "torv/songs/score_builder.h"
#include "torv/songs/sound_curves.h"

#include <string>
#include <vector>

/// What was sung, as plain values: reports are written from it, and a host may fill or change it. Every time is in
/// seconds of the wave, every text UTF-8.
namespace torv::songs {

/// One phoneme.
struct PerformedPhoneme {
    std::string symbol;  ///< as the engine knows it
    int advancement = 0; ///< 0..127: how far before its vowel a consonant begins; 64 is usual
};

/// One syllable.
struct PerformedSyllable {
    std::string text;         ///< as the file writes it, without hyphens; empty where the vowel before goes on
    bool hyphenAfter = false; ///< its word goes on with the next syllable
    double start = 0;         ///< of its vowel's note
    double end = 0;           ///< where the next one begins
    std::vector<PerformedPhoneme> phonemes; ///< in their order
};

/// One note.
struct PerformedNote {
    /// Seconds of the wave.
    /// @{
    double start = 0;
    double end = 0;
    /// @}
    uint32_t tick = 0;                    ///< from the song's start, 480 a quarter
    uint32_t length = 0;                  ///< ticks
    int key = 60;                         ///< as it sounds, transposed
    std::string name;                     ///< "Bb4", as the key signature spells it; 60 is C4
    int velocity = 80;                    ///< 1 to 127
    bool joined = false;                  ///< goes on from the note before without a break
    std::vector<PerformedSyllable> lyric; ///< empty: the vowel before goes on
};

/// From its start on this voice sings.
struct PerformedVoice {
    double start = 0; ///< seconds
    std::string name; ///< UTF-8, as in the database
};

/// Sound as a report keeps it: see SoundKeeper.
struct KeptSound {
    unsigned rate = 0;            ///< Hz
    std::vector<int16_t> samples; ///< mono; empty: not kept
    double left = 1;              ///< what of it is heard on each side, linear
    double right = 1;             ///< see `left`
};

/// One part; without notes it is what accompanies the others.
struct PerformedPart {
    std::string name;                   ///< may be empty
    std::vector<PerformedVoice> voices; ///< by start
    std::vector<PerformedNote> notes;   ///< by start
    SoundCurves heard;                  ///< pitch and level, measured from its sound
    KeptSound sound;                    ///< what a report lets be heard
};

/// One measure, as often as it is sung.
struct PerformedMeasure {
    int number = 1;            ///< as the file counts
    double start = 0;          ///< seconds
    double end = 0;            ///< seconds
    std::vector<double> beats; ///< when each begins, the first with the measure
};

/// From its start on this tempo holds.
struct PerformedTempo {
    double start = 0;               ///< seconds
    double quartersPerMinute = 120; ///< as a metronome counts
};

/// All that a report tells.
struct Performance {
    std::string title;                      ///< may be empty
    std::string composer;                   ///< may be empty
    std::string input;                      ///< the song's file
    std::string output;                     ///< the wave's
    unsigned rate = 44100;                  ///< of the wave, Hz
    double seconds = 0;                     ///< of the wave
    int transpose = 0;                      ///< semitones by which all keys were moved
    int verse = 1;                          ///< from 1
    std::vector<PerformedMeasure> measures; ///< by start
    std::vector<PerformedTempo> tempos;     ///< the first at or before the wave's start
    std::vector<PerformedPart> parts;       ///< in the score's order
    std::vector<std::string> remarks;       ///< what was guessed or left out
};

/// What song and score do not tell.
struct PerformanceOptions {
    int transpose = 0;    ///< semitones, as in ScoreOptions
    int verse = 1;        ///< from 1, which the plans' lines are of
    double songStart = 0; ///< where in the wave the song's first tick is heard, seconds; negative when it was left out
};

/// What is known of a performance from its song and score, whose lyrics have their phonemes: all but the wave's own
/// facts (input, output, rate, seconds) and the parts' sound. `plans` are those that the score was built from.
TORV_SONGS_API Performance DescribePerformance(const Song& song, const Score& score, const std::vector<PartPlan>& plans,
                                               const Databases& databases, const PerformanceOptions& options);

/// Puts a part's sound, which begins with the wave, into its place and measures it.
TORV_SONGS_API void AddSound(KeptSound sound, PerformedPart& part);

} // namespace torv::songs
