#pragma once

#include "song_score.h"

#include <optional>
#include <string>

/// Places in a song as users write them: a bar ("9"), a beat of it ("9:3", "9:2.5") or a time ("1:23.5", "12.5s"). Bars
/// count as the file counts them, a pickup included, beats from 1 at the bar's beginning. Two digits after the colon
/// are the seconds of a time; a beat of two digits has a b behind it ("9:11b"). What cannot be read throws
/// WrongUse, what is not there InputError or SongError, which name the option.

/// Ticks of the song.
uint32_t TickOfPlace(const std::string& option, const std::string& text, const torv::songs::Song& song);
/// Milliseconds of the engine's stream.
DWORD PlaceInStream(const std::string& option, const std::string& text, const SongScore& song);
/// The same for where to begin, which lies before the song's end.
DWORD BeginInStream(const std::string& option, const std::string& text, const SongScore& song);

/// The seconds of "1:23.5", "0:12" or "12.5s"; nothing for any other text.
std::optional<double> ReadTime(const std::string& text);

/// "9:3=Alice": something from a place on.
struct PlacedName {
    std::string place; ///< empty: the beginning
    std::string name;
};
/// Throws WrongUse, naming the option, without a name, and without a place where it `needsPlace`.
PlacedName ReadPlacedName(const std::string& option, const std::string& text, bool needsPlace);
