#pragma once

#include "song_score.h"

#include <optional>
#include <string>

/// A place in a song as a user writes it: a bar, counted from 1 ("9"), or a time of the file ("1:23.5", "12.5s").
/// Milliseconds of the engine's stream. Throws InputError, naming the option.
DWORD PlaceInStream(const std::string& option, const std::string& text, const SongScore& song);

/// The seconds of "1:23.5", "0:12" or "12.5s"; nothing for any other text.
std::optional<double> ReadTime(const std::string& text);
