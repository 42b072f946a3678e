#pragma once

#include <string>

namespace CLI {
class App;
}

/// Where the user's standing wishes are: torv/torv.conf below $XDG_CONFIG_HOME or ~/.config, on Windows below
/// %APPDATA%. Empty when the system names no such place.
std::string ConfigurationPath();

/// Gives the parsed command line's verb what the file says, where the command line itself says nothing. A line is
/// "option = value", or a flag's name alone; "[sing]" begins those of one verb, and what stands before the first such
/// line is for every verb that has the option; # begins a comment. No file is no wishes. Throws WrongUse, which names
/// file and line, for what cannot be understood.
void ApplyConfiguration(CLI::App& app, const std::string& path);
