#include "torv/songs/sung_lines.h"

#include "torv/songs/text_encoding.h"

#include <string_view>

namespace torv::songs {

namespace {

constexpr double kRest = 0.5;          ///< seconds without a sound
constexpr size_t kLineWithPhrase = 16; ///< bytes that a line has at least where a comma ends it
constexpr size_t kLongLine = 42;       ///< bytes

bool EndsPhrase(std::string_view text) {
    for (const std::string_view mark : {".", ",", ";", ":", "!", "?", "。", "、", "！", "？"})
        if (text.ends_with(mark))
            return true;
    return false;
}

/// Joins syllables to words and words to lines as they come.
class LineMaker {
public:
    explicit LineMaker(std::vector<SungLine>& lines) : m_lines(lines) {}

    void Put(const PerformedSyllable& syllable) {
        if (syllable.text.empty()) {
            if (!m_lines.empty())
                m_lines.back().end = syllable.end;
            return;
        }
        const bool continues = m_wordGoesOn && !m_lines.empty() && syllable.start - m_lines.back().end < kRest;
        if (continues) {
            m_lines.back().words.back().text += syllable.text;
            m_bytes += syllable.text.size();
        } else {
            BeginWord(syllable);
        }
        m_lines.back().end = syllable.end;
        m_wordGoesOn = syllable.hyphenAfter;
    }

private:
    void BeginWord(const PerformedSyllable& syllable) {
        const bool isNewLine = m_lines.empty() || syllable.start - m_lines.back().end >= kRest || IsLineFull();
        if (isNewLine) {
            m_lines.push_back({syllable.start, syllable.end, {}});
            m_bytes = 0;
        }
        std::vector<SungWord>& words = m_lines.back().words;
        const bool blank = !words.empty() && !(HasKana(words.back().text) && HasKana(syllable.text));
        words.push_back({syllable.start, syllable.text, blank});
        m_bytes += syllable.text.size() + (blank ? 1 : 0);
    }
    bool IsLineFull() const {
        return m_bytes >= kLongLine || (m_bytes >= kLineWithPhrase && EndsPhrase(m_lines.back().words.back().text));
    }

    std::vector<SungLine>& m_lines;
    bool m_wordGoesOn = false;
    size_t m_bytes = 0; ///< of the last line
};

} // namespace

std::vector<SungLine> SungLinesOf(const PerformedPart& part) {
    std::vector<SungLine> lines;
    LineMaker maker(lines);
    for (const PerformedNote& note : part.notes)
        for (const PerformedSyllable& syllable : note.lyric)
            maker.Put(syllable);
    return lines;
}

std::string TextOf(const SungLine& line) {
    std::string text;
    for (const SungWord& word : line.words)
        text += (word.blankBefore ? " " : "") + word.text;
    return text;
}

} // namespace torv::songs
