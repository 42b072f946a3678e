#pragma once

#include <torv/songs/song.h>

#include <optional>
#include <string>
#include <vector>

/// A part that the user names, and how it is to be sung.
struct PartChoice {
    size_t index;      ///< into Song::parts
    std::string voice; ///< empty: not said
    double decibels = 0;
    std::optional<double> pan; ///< -1 left .. 1 right
};

/// Reads NAME|NUMBER[=VOICE[:DB[:PAN]]]; a number counts the song's parts from 1. Throws WrongUse with the names that
/// there are.
PartChoice ReadPartChoice(const std::string& text, const torv::songs::Song& song);

/// "1 Soprano, 2 Alto": what can be chosen.
std::string ListParts(const torv::songs::Song& song);
