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

/// A word and where its last vowel ends.
struct TimedWord {
    SungWord word;
    double end;
};

std::vector<TimedWord> WordsOf(const PerformedPart& part) {
    std::vector<TimedWord> words;
    bool goesOn = false;
    for (const PerformedNote& note : part.notes)
        for (const PerformedSyllable& syllable : note.lyric) {
            if (!syllable.text.empty()) {
                if (goesOn && syllable.start - words.back().end < kRest)
                    words.back().word.text += syllable.text;
                else
                    words.push_back({{syllable.start, syllable.text, false}, 0});
                goesOn = syllable.hyphenAfter;
            }
            if (!words.empty())
                words.back().end = syllable.end;
        }
    return words;
}

} // namespace

std::vector<SungLine> SungLinesOf(const PerformedPart& part) {
    std::vector<SungLine> lines;
    size_t bytes = 0; // of the last line
    for (TimedWord& each : WordsOf(part)) {
        SungWord& word = each.word;
        const bool isPhraseOver =
            !lines.empty() && bytes >= kLineWithPhrase && EndsPhrase(lines.back().words.back().text);
        if (lines.empty() || word.start - lines.back().end >= kRest || isPhraseOver ||
            bytes + 1 + word.text.size() > kLongLine) {
            lines.push_back({word.start, 0, {}});
            bytes = 0;
        }
        SungLine& line = lines.back();
        word.blankBefore = !line.words.empty() && !(HasKana(line.words.back().text) && HasKana(word.text));
        bytes += word.text.size() + (word.blankBefore ? 1 : 0);
        line.end = each.end;
        line.words.push_back(std::move(word));
    }
    return lines;
}

std::string TextOf(const SungLine& line) {
    std::string text;
    for (const SungWord& word : line.words)
        text += (word.blankBefore ? " " : "") + word.text;
    return text;
}

} // namespace torv::songs
