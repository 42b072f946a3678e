#pragma once

#include <torv/songs/message_catcher.h>
#include <torv/songs/score_builder.h>

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
    torv::songs::ExpressionNames expressions;
    std::string encoding; ///< empty: detected
    int transpose = 0;
    std::optional<unsigned> track; ///< from 1
    bool plain = false;
    bool quiet = false;
};

/// The databases are open while it lives: an icon is encoded by the number that it has there.
struct SongScore {
    std::unique_ptr<torv::songs::MessageCatcher> messages; ///< what the library would have shown
    std::unique_ptr<torv::songs::Databases> databases;
    torv::songs::Score score;
    torv::songs::Song song; ///< as the file has it
    std::string voice;      ///< who begins
    DWORD presend = 0;      ///< milliseconds
};

/// Reads a song file and makes its score, with its lyrics as phonemes. Throws InputError and SongError; what the user
/// should know besides goes to standard error.
SongScore MakeSongScore(const SongOptions& options);
