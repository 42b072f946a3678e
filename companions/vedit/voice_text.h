/// A virtual voice as a text for a person to edit.
#pragma once

#include "database.h"

#include <string>

namespace vedit {

std::string Write(const Settings& settings);
/// What a person changed in the text. Fails with VEDIT_BAD_INPUT.
Settings ReadChanges(const std::string& text, const Settings& settings);

} // namespace vedit
