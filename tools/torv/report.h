#pragma once

#include <torv/songs/performance.h>

#include <string>

/// Writes what was sung into a file whose ending says how: .html a page with the sound, .lab a label track, .lrc
/// karaoke lines, any other JSON. Throws InputError when the file cannot be written.
void WriteReport(const std::string& path, const torv::songs::Performance& performance);
