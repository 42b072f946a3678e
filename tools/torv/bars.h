#pragma once

#include <string>

/// Something from a bar on: "3=Alice", or "Alice" alone for bar 1.
struct BarMark {
    int bar; ///< as the song counts
    std::string name;
};

/// Reads a mark; throws WrongUse, naming the option, for one that cannot be read. Without a bar it is bar 1, unless
/// `needsBar`.
BarMark ReadBarMark(const std::string& option, const std::string& text, bool needsBar);
