#pragma once

#include "encode.h"
#include "mix.h"
#include "phonemes.h"
#include "play.h"
#include "sing.h"

#include <CLI/CLI.hpp>

#include <string>

constexpr const char* kTorvVersion = TORV_VERSION;

struct InfoOptions {
    std::string input;
    bool json = false;
};

/// What is asked of a list.
struct ListOptions {
    std::string kind;
    bool json = false;
};

/// All verbs and options: the one table from which arguments are read and help, the manual page, completion and the
/// configuration file's names are made. Its options are what the user has said.
struct CommandLine {
    CommandLine();

    CLI::App app{"torv: sings scores", "torv"};
    SingOptions sing;
    PlayOptions play;
    EncodeOptions encode;
    InfoOptions info;
    PhonemesOptions phonemes;
    MixOptions mix;
    ListOptions list;
    const CLI::App* const singing; ///< true where this is the verb
    const CLI::App* const playing;
    const CLI::App* const encoding;
    const CLI::App* const describing;
    const CLI::App* const spelling;
    const CLI::App* const mixing;
    const CLI::App* const voices;
    const CLI::App* const icons;
    const CLI::App* const devices;
};
