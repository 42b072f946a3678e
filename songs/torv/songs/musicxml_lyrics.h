#pragma once

#include "torv/songs/song.h"
#include "torv/songs/xml_document.h"

#include <map>

namespace torv::songs::musicxml {

/// A syllable under a written note; its word's verse is the line in which it stands.
struct WrittenWord {
    Word word;
    std::vector<int> passes; ///< through a repeat, in which it is sung; empty: not said

    /// Whether all of it is equal.
    bool operator==(const WrittenWord&) const = default;
};

/// The numbers of "1, 2" or "1.-3."; none in "".
std::vector<int> PassesOf(std::string_view text);

/// Reads the words of one part, note by note.
class LyricReader {
public:
    /// Adds a lyric to what its note has, unless it is there already or says nothing.
    void Read(XmlElement lyric, std::vector<WrittenWord>& words);

    const std::string& Language() const { return m_language; } ///< of the words, by the first that names one
    size_t Laughs() const { return m_laughs; }                 ///< which no voice sings

private:
    int LineOf(std::string_view number);

    std::map<std::string, int> m_lines; ///< by their names
    std::string m_language;
    size_t m_laughs = 0;
};

} // namespace torv::songs::musicxml
