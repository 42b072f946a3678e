#pragma once

#include <cstddef>
#include <string>

/// Tells the user something on standard error, unless all is to be quiet.
void Remark(bool isQuiet, const std::string& text);

/// "1 note", "2 notes".
std::string Counted(size_t count, const std::string& what);
