#pragma once

#include "torv/songs/curves.h"
#include "torv/songs/export.h"
#include "torv/songs/expressions.h"
#include "torv/songs/voice_line.h"

#include <torv/torv.h>

#include <memory>

namespace torv::songs {

/// An icon of the databases that stands somewhere in the song.
struct ScoreMark {
    DWORD tick; ///< of the file
    DWORD id;   ///< an icon's in the databases
};

/// One part as it is to be sung.
struct PartPlan {
    std::string name;                ///< of the score's track
    VoiceLine line;                  ///< with one note at least
    std::vector<ScoreMark> voices;   ///< by tick; the first at 0
    std::vector<ScoreMark> dynamics; ///< by tick
    Expressions expressions;         ///< what its notes get
    Curves curves = {};              ///< a curve of dynamics takes the place of `dynamics`
    bool breathes = false;           ///< audibly, where there is time for it; not a note of the report
};

/// For the whole song.
struct ScoreOptions {
    int transpose = 0;    ///< semitones, for all parts
    DWORD presend = 2000; ///< milliseconds that the engine must know of a note in advance
};

/// A note as it stands in the score, for the report.
struct ScoredNote {
    DWORD tick;          ///< of the score, its lead included
    DWORD length;        ///< ticks
    int key;             ///< as it sounds, transposed
    int velocity;        ///< 1 to 127
    bool joined;         ///< goes on from the note before
    CLyricObject* lyric; ///< the track's
};

/// What was built of a plan.
struct ScorePart {
    CSequenceObject* track = nullptr; ///< the song's
    std::vector<ScoredNote> notes;    ///< by tick
};

/// The library's song with a track for each part, later than its file by a lead of whole measures, so that the first
/// note can be sent ahead.
struct Score {
    std::unique_ptr<CSequence> song; ///< holds all below
    std::vector<ScorePart> parts;    ///< in the order of their plans
    /// What was put before the file's beginning.
    /// @{
    DWORD leadTicks = 0;
    DWORD leadMilliseconds = 0;
    /// @}
};

/// Builds the score of some parts of a song: the last step before the library's own. The lyrics have no phonemes yet.
/// Throws SongError when the song is more than a score can hold.
TORV_SONGS_API Score BuildScore(const Song& song, const std::vector<PartPlan>& parts, const ScoreOptions& options,
                                const Databases& databases);

/// Has the phoneme converters, which the databases have loaded, read all of the score's lyrics. `messages` has caught
/// what they say. Throws SongError when they cannot.
TORV_SONGS_API void AddPhonemes(Score& score, const MessageCatcher& messages);

} // namespace torv::songs
