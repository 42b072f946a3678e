#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// Where the user's standing wishes are: torv/torv.conf below $XDG_CONFIG_HOME or ~/.config, on Windows below
/// %APPDATA%. Empty when the system names no such place.
std::string ConfigurationPath();

/// What the verb was given out of the file.
struct StandingWish {
    std::string where;  ///< file and line
    std::string option; ///< with its hyphens
    std::string value;  ///< as it stands there
};

/// Gives the parsed command line's verb what the file says, where the command line itself says nothing. A line is
/// "option = value", or a flag's name alone; "[sing]" begins those of one verb, and what stands before the first such
/// line is for every verb that has the option; # begins a comment. No file is no wishes. Throws WrongUse, which names
/// file and line, for what cannot be understood.
std::vector<StandingWish> ApplyConfiguration(CLI::App& app, const std::string& path);

/// An error that turned up later, with file and line before it where it is about such a wish.
std::string WithItsPlace(const std::string& error, const std::vector<StandingWish>& wishes);
