#pragma once

#include "torv/songs/export.h"
#include "torv/songs/performance.h"

#include <string>

/// A performance as files for others; docs/report.md says what stands in each. They give the file's bytes.
namespace torv::songs {

/// All of it but the sound, as JSON.
TORV_SONGS_API std::string ToJsonReport(const Performance& performance);

/// A label track, as sound editors read it: start, end and syllable of every line, with tabs between them. Of several
/// parts each label begins with its part's name.
TORV_SONGS_API std::string ToLabelTrack(const Performance& performance);

/// Karaoke lines with a stamp for each line and each word: those of the first part that has words.
TORV_SONGS_API std::string ToKaraokeLines(const Performance& performance);

constexpr size_t kMostPageSound = size_t{64} << 20; ///< bytes of 16-bit samples: 25 minutes of one part

/// One HTML page that needs no network: notes, words, curves and the sound. Where the sound is more than `mostSound`
/// bytes the page has all parts mixed into one, in stereo, and where that is more, none; the page says so.
TORV_SONGS_API std::string ToPage(const Performance& performance, size_t mostSound = kMostPageSound);

} // namespace torv::songs
