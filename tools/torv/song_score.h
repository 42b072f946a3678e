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
    std::string voice;                 ///< of every part; empty: each the one that suits it
    std::vector<std::string> voicesAt; ///< PLACE=NAME
    std::vector<std::string> dynamics; ///< NAME or PLACE=NAME
    std::vector<std::string> at;       ///< PLACE=NAME of either
    std::vector<std::string> parts;    ///< NAME|NUMBER[=VOICE[:DB[:PAN]]]; none: every part with words
    torv::songs::ExpressionNames expressions;
    std::string encoding; ///< empty: detected
    std::string words;    ///< a file with words in place of the song's; empty: none
    int transpose = 0;
    int verse = 1;
    std::optional<unsigned> track; ///< from 1
    bool breaths = false;
    bool plain = false;
    bool quiet = false;
};

/// The files that are read.
std::vector<std::string> InputsOf(const SongOptions& options);

/// A part that is sung, beside what the score has of it.
struct SungPart {
    size_t index; ///< into Song::parts
    std::string name;
    std::string voice; ///< who begins
    double decibels = 0;
    double pan = 0; ///< -1 left .. 1 right
};

/// The databases are open while it lives: an icon is encoded by the number that it has there.
struct SongScore {
    std::unique_ptr<torv::songs::MessageCatcher> messages; ///< what the library would have shown
    std::unique_ptr<torv::songs::Databases> databases;
    torv::songs::Score score;
    torv::songs::Song song;                   ///< as the file has it
    std::vector<SungPart> parts;              ///< as the score has them
    std::vector<torv::songs::PartPlan> plans; ///< what the score was built from
    DWORD presend = 0;                        ///< milliseconds

    const std::string& Voice() const { return parts.front().voice; }
    size_t CountNotes() const;
};

/// Reads the song file, and what the user gives in place of its words. Throws InputError, WrongUse
/// and SongError.
torv::songs::Song ReadSongAskedFor(const SongOptions& options);

/// Reads a song file and makes its score, with its lyrics as phonemes. Throws InputError, WrongUse and SongError; what
/// the user should know besides goes to standard error.
SongScore MakeSongScore(const SongOptions& options);
/// The same of a song that is read already.
SongScore MakeSongScore(const SongOptions& options, torv::songs::Song song);
