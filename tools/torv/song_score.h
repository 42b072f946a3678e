#pragma once

#include "messages.h"
#include "score_builder.h"

#include <optional>
#include <string>
#include <vector>

/// Which song is sung, by whom and how.
struct SongOptions {
    std::string input;
    std::string language = "auto";     ///< ja, en or auto
    std::string voice;                 ///< empty: the first one of the language
    std::vector<std::string> voicesAt; ///< BAR=NAME
    std::vector<std::string> dynamics; ///< NAME or BAR=NAME
    ExpressionNames expressions;
    std::string encoding; ///< empty: detected
    int transpose = 0;
    std::optional<unsigned> track; ///< from 1
    bool plain = false;
    bool quiet = false;
};

/// The databases are open while it lives: an icon is encoded by the number that it has there.
struct SongScore {
    std::unique_ptr<MessageCatcher> messages; ///< what the library would have shown
    std::unique_ptr<Databases> databases;
    Score score;
    MidiSong midi;     ///< the file
    std::string voice; ///< who begins
    DWORD presend = 0; ///< milliseconds
};

/// Reads a MIDI file and makes its score, with its lyrics as phonemes. Throws InputError; what the user should know
/// besides goes to standard error.
SongScore MakeSongScore(const SongOptions& options);
