#pragma once

#include "song_score.h"

/// What `torv phonemes` is asked for.
struct PhonemesOptions {
    SongOptions song; ///< its input may be empty
    std::string text; ///< words in place of a song
    bool json = false;
};

/// Prints the words of a song or of a text with their syllables and phonemes, and where these come from. Throws
/// InputError, SongError and WrongUse.
void PrintPhonemes(const PhonemesOptions& options);
