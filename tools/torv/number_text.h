#pragma once

#include <optional>
#include <string>

/// The number that all of a text is, with or without a plus sign, whatever the locale; nothing for any other text.
std::optional<double> NumberOf(const std::string& text);
