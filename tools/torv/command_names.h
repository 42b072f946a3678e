#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// Names of verbs and options as they are typed.
std::vector<std::string> VerbNames(const CLI::App& app);
std::vector<std::string> OptionNames(const CLI::App& verb);

/// What is typed against what there is, before it is parsed: the parser only says that something was not expected.
/// "help VERB" becomes "VERB --help". Throws CLI::ParseError for names that there are none of, with the nearest.
std::vector<std::string> WithKnownNames(const CLI::App& app, std::vector<std::string> arguments);
