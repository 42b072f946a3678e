#pragma once

#include "expressions.h"
#include "voice_line.h"

#include <torv/torv.h>

#include <memory>

/// An icon of the databases that stands somewhere in the song.
struct ScoreMark {
    DWORD tick; ///< of the file
    DWORD id;
};

/// How a song is to be sung.
struct ScoreOptions {
    std::vector<ScoreMark> voices;   ///< by tick; the first at 0
    std::vector<ScoreMark> dynamics; ///< by tick
    Expressions expressions;
    int transpose = 0;
    DWORD presend = 2000; ///< milliseconds that the engine must know of a note in advance
};

/// A note as it stands in the score, for the report.
struct ScoredNote {
    DWORD tick;
    DWORD length;
    int key;
    int velocity;
    bool joined;
    CLyricObject* lyric; ///< the track's
};

/// A song of one track, later than its file by a lead of whole measures, so that the first note can be sent ahead.
struct Score {
    std::unique_ptr<CSequence> song;
    CSequenceObject* track = nullptr; ///< the song's
    std::vector<ScoredNote> notes;
    DWORD leadTicks = 0;
    DWORD leadMilliseconds = 0;
};

/// Builds the score of a voice; throws InputError when the song is more than the score can hold.
Score BuildScore(const std::string& path, const MidiSong& song, const VoiceLine& voice, const ScoreOptions& options,
                 const Databases& databases);
