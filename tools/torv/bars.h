#pragma once

#include "midi_song.h"

#include <string>

/// Something from a bar on: "3=Alice", or "Alice" alone for bar 1.
struct BarMark {
    unsigned bar; ///< from 1
    std::string name;
};

/// Reads a mark; throws InputError, naming the option, for one that cannot be read. Without a bar it is bar 1, unless
/// `needsBar`.
BarMark ReadBarMark(const std::string& option, const std::string& text, bool needsBar);

/// The tick at which a bar begins. Bars follow the song's time signatures, 4/4 without one. Throws InputError for a bar
/// that begins after the song's end.
uint32_t TickOfBar(const std::string& path, const MidiSong& song, unsigned bar);
