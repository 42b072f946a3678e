#include "torv/songs/musicxml_lyrics.h"

#include "torv/songs/lyric_text.h"
#include "torv/songs/number_text.h"

#include <algorithm>
#include <cctype>

namespace torv::songs::musicxml {

namespace {

constexpr const char* kHum = "mm";
constexpr std::string_view kTie = "\xE2\x80\xBF"; // an elision within a text

/// Moves the hyphens and lines that stand around a syllable, as a MIDI file had it, into what they mean.
void TakeHyphens(Word& word) {
    word.text = WithPlainHyphens(word.text);
    while (word.text.size() > 1 && (word.text.ends_with('-') || word.text.ends_with('_'))) {
        (word.text.back() == '-' ? word.hyphenAfter : word.extends) = true;
        word.text.pop_back();
    }
    if (word.text.size() > 1 && word.text.starts_with('-')) {
        word.text.erase(0, 1);
        word.hyphenBefore = true;
    }
}

} // namespace

std::vector<int> PassesOf(std::string_view text) {
    std::vector<int> passes;
    bool isRange = false;
    while (!text.empty()) {
        if (std::isdigit(static_cast<unsigned char>(text[0]))) {
            const int last = std::clamp(WholeNumberOf(text, 1), 1, 99);
            for (int pass = isRange && !passes.empty() ? passes.back() + 1 : last; pass <= last; ++pass)
                passes.push_back(pass);
            isRange = false;
            text.remove_prefix(std::min(text.find_first_not_of("0123456789"), text.size()));
        } else {
            isRange = isRange || text[0] == '-';
            text.remove_prefix(1);
        }
    }
    return passes;
}

void LyricReader::Read(XmlElement lyric, std::vector<WrittenWord>& words) {
    WrittenWord written{{}, PassesOf(lyric.Attribute("time-only"))};
    Word& word = written.word;
    word.verse = LineOf(lyric.Attribute("number"));
    std::string_view firstSyllabic;
    std::string_view lastSyllabic;
    for (const XmlElement child : lyric) {
        if (child.Name() == "syllabic") {
            lastSyllabic = child.Text();
            if (firstSyllabic.empty())
                firstSyllabic = lastSyllabic;
        } else if (child.Name() == "elision") {
            word.text += ' ';
        } else if (child.Name() == "text") {
            word.text += child.Text();
            for (size_t tie = 0; (tie = word.text.find(kTie, tie)) != std::string::npos;)
                word.text.replace(tie, kTie.size(), " ");
            if (m_language.empty())
                m_language = child.Attribute("xml:lang");
        } else if (child.Name() == "extend") {
            word.extends = child.Attribute("type") != "stop";
        } else if (child.Name() == "humming") {
            word.text = kHum;
        } else if (child.Name() == "laughing") {
            ++m_laughs;
        }
    }
    word.text = WithoutNumber(WithoutHeading(word.text));
    word.hyphenBefore = firstSyllabic == "middle" || firstSyllabic == "end";
    word.hyphenAfter = lastSyllabic == "begin" || lastSyllabic == "middle";
    TakeHyphens(word);
    // Some programs write what all parts of a MIDI file sing under each note of the first.
    const bool isNew = std::find(words.begin(), words.end(), written) == words.end();
    if (isNew && word.text.find_first_not_of(" _-") != std::string::npos)
        words.push_back(std::move(written));
}

/// A line of words has a number as a rule, which may stand behind a name ("verse2"); others are counted as they come.
int LyricReader::LineOf(std::string_view number) {
    if (number.empty())
        return 1;
    const size_t name = number.find_last_not_of("0123456789") + 1;
    if (const int line = WholeNumberOf(number.substr(name), 0); line > 0 && line < 100)
        return line;
    return m_lines.try_emplace(std::string(number), static_cast<int>(m_lines.size()) + 1).first->second;
}

} // namespace torv::songs::musicxml
