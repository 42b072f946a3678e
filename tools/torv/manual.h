#pragma once

#include <string>

namespace CLI {
class App;
}

/// The manual page (section 1) and bash's completion of a command line, made from its own options, so that what they
/// say is what --help says.
std::string ManualPage(const CLI::App& app, const std::string& version);
std::string BashCompletion(const CLI::App& app);
