#pragma once

#include <string>

/// Tells the user something on standard error, unless all is to be quiet.
void Remark(bool isQuiet, const std::string& text);
