#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

/// Whether somebody sits before this stream.
bool IsTerminal(std::FILE* stream);

/// Columns of the terminal that the stream goes to; 80 when it does not tell.
size_t TerminalWidth(std::FILE* stream);

/// A line for so many columns, the last of which stays free: as many of the pieces as there is room for, the first one
/// cut where it alone is too long. Plain letters.
std::string FittingLine(const std::vector<std::string>& pieces, size_t columns);
