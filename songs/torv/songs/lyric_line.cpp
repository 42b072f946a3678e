#include "torv/songs/lyric_line.h"

#include <algorithm>
#include <cctype>
#include <regex>
#include <set>

namespace torv::songs {

namespace {

constexpr size_t kFewestKaraokeTimes = 4;
constexpr size_t kFewestRomajiSyllables = 6;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool IsLineMark(char c) { return c == '/' || c == '\\'; }
bool IsProlongationMark(char c) { return c == '-' || c == '_' || c == '~' || c == '+' || c == '='; }

/// A syllable with what stood around it.
struct RawSyllable {
    uint32_t tick;
    std::string text;
    bool blankBefore;
    bool blankAfter;
};

RawSyllable Strip(uint32_t tick, std::string text) {
    size_t begin = 0;
    while (begin < text.size() && (IsBlank(text[begin]) || IsLineMark(text[begin])))
        ++begin;
    size_t end = text.size();
    while (end > begin && (IsBlank(text[end - 1]) || IsLineMark(text[end - 1])))
        --end;
    RawSyllable syllable{tick, text.substr(begin, end - begin), begin > 0, end < text.size()};
    return syllable;
}

/// A prolongation, or the text without the marks of one at its end; '_' between words is a blank.
Syllable Resolve(const RawSyllable& raw) {
    if (std::all_of(raw.text.begin(), raw.text.end(), IsProlongationMark))
        return {raw.tick, {}, true};
    Syllable syllable{raw.tick, {}, false};
    std::string text = raw.text;
    while (text.size() > 1 && (text.back() == '_' || text.back() == '~' || text.back() == '=' || text.back() == '+' ||
                               (text.back() == '-' && text[text.size() - 2] == '-')))
        text.pop_back();
    if (text.size() > 1 && text.back() == '-') {
        text.pop_back();
        syllable.word.hyphenAfter = true;
    }
    std::replace(text.begin(), text.end(), '_', ' ');
    syllable.word.text = std::move(text);
    return syllable;
}

} // namespace

bool HasKaraokeTexts(const MidiTrack& track) {
    std::set<uint32_t> times;
    for (const MidiText& text : track.texts)
        if (!text.lyric && !text.bytes.empty() && text.bytes[0] != '@')
            times.insert(text.tick);
    return times.size() >= kFewestKaraokeTimes;
}

LyricLine ReadLyricLine(const std::vector<MidiText>& texts, bool karaoke, std::optional<TextEncoding> encoding) {
    std::string all;
    std::vector<const MidiText*> lyrics;
    for (const MidiText& text : texts) {
        if (text.lyric == karaoke || text.bytes.empty() || (karaoke && text.bytes[0] == '@'))
            continue;
        lyrics.push_back(&text);
        all += text.bytes;
        all += '\n';
    }
    // A karaoke file marks its lines: what stands before the first mark is a title or a remark.
    if (karaoke) {
        const auto first =
            std::find_if(lyrics.begin(), lyrics.end(), [](const MidiText* text) { return IsLineMark(text->bytes[0]); });
        if (first != lyrics.end())
            lyrics.erase(lyrics.begin(), first);
    }
    LyricLine line;
    line.encoding = encoding.value_or(DetectEncoding(all));

    std::vector<RawSyllable> raw;
    bool blankBefore = true;
    for (const MidiText* text : lyrics) {
        RawSyllable syllable = Strip(text->tick, ToUtf8(text->bytes, line.encoding));
        if (syllable.text.empty()) { // a line end of its own
            blankBefore = true;
            if (!raw.empty())
                raw.back().blankAfter = true;
            continue;
        }
        syllable.blankBefore |= blankBefore;
        if (!raw.empty() && syllable.blankBefore)
            raw.back().blankAfter = true;
        blankBefore = syllable.blankAfter;
        raw.push_back(std::move(syllable));
    }
    // Some programs never write a blank: then its absence says nothing.
    const bool blanksPartWords =
        raw.size() > 1 && std::any_of(raw.begin(), raw.end() - 1, [](const RawSyllable& s) { return s.blankAfter; });
    bool goesOn = false;
    for (size_t i = 0; i < raw.size(); ++i) {
        Syllable syllable = Resolve(raw[i]);
        const bool wordGoesOn = i + 1 < raw.size() && blanksPartWords && !raw[i].blankAfter;
        if (wordGoesOn && !syllable.prolongs && !HasKana(syllable.word.text))
            syllable.word.hyphenAfter = true;
        if (!syllable.prolongs) {
            syllable.word.hyphenBefore = goesOn;
            goesOn = syllable.word.hyphenAfter;
        }
        line.syllables.push_back(std::move(syllable));
    }
    return line;
}

bool LooksJapanese(const std::vector<std::string>& words) {
    static const std::regex romaji("(([kgsztdnhbpmyrwjfv]|ky|gy|sh|j|ch|ny|hy|by|py|my|ry|ts|dz|kk|ss|ssh|tt|tch|pp)?"
                                   "[aiueo]|n|n')+-?");
    size_t roman = 0;
    for (const std::string& word : words) {
        if (HasKana(word))
            return true;
        std::string lower;
        for (const char c : word)
            if (std::isalpha(static_cast<unsigned char>(c)) || c == '\'' || c == '-' ||
                static_cast<unsigned char>(c) >= 0x80)
                lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (lower.size() > 24 || !std::regex_match(lower, romaji))
            return false;
        ++roman;
    }
    return roman >= kFewestRomajiSyllables;
}

} // namespace torv::songs
