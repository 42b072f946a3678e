#pragma once

#include "song_score.h"

/// Prints the song's parts as a table: number, name, who would sing it, range, notes, syllables of each verse and
/// measures; those that are not sung have no voice.
void PrintParts(const SongScore& song);
