#pragma once

#include <torv/songs/score_builder.h>

#include <string>

/// What the report says beside the notes.
struct ReportFacts {
    std::string input;
    std::string output;
    std::string voice;
    unsigned rate;
    double seconds;
    int transpose;
};

/// The song as it was sung, as JSON: for every note its times in the wave in seconds, its key, its lyric (UTF-8) and
/// its phonemes with their advancements. Throws InputError when the file cannot be written.
void WriteReport(const std::string& path, const torv::songs::Score& score, const ReportFacts& facts);
