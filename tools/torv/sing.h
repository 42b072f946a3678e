#pragma once

#include "expressions.h"

#include <optional>
#include <string>
#include <vector>

/// What `torv sing` is asked for.
struct SingOptions {
    std::string input;
    std::string output;
    std::string language = "auto";     ///< ja, en or auto
    std::string voice;                 ///< empty: the first one of the language
    std::vector<std::string> voicesAt; ///< BAR=NAME
    std::vector<std::string> dynamics; ///< NAME or BAR=NAME
    ExpressionNames expressions;
    std::string encoding; ///< empty: detected
    std::string report;   ///< empty: none
    unsigned rate = 44100;
    int transpose = 0;
    double volume = 1.0;           ///< linear
    std::optional<double> pan;     ///< -1 left .. 1 right; without one the wave is mono
    std::optional<unsigned> track; ///< from 1
    bool plain = false;
    bool quiet = false;
};

/// Sings a MIDI file into a wave file and prints a summary. Throws InputError; then no output file is left behind.
void Sing(const SingOptions& options);
