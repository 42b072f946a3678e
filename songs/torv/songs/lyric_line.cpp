#include "torv/songs/lyric_line.h"

#include "torv/songs/lyric_text.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <set>

namespace torv::songs {

namespace {

constexpr size_t kFewestKaraokeTimes = 4;
constexpr size_t kMostLines = 20;
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
    const std::string sung = WithoutNumber(WithoutHeading(std::string_view(text).substr(begin, end - begin)));
    return {tick, sung, begin > 0, end < text.size()};
}

void ReplaceAll(std::string& text, std::string_view what, std::string_view with) {
    std::string replaced;
    size_t from = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, from)) {
        replaced.append(text, from, at - from).append(with);
        from = at + what.size();
    }
    text = replaced.append(text, from);
}

/// A prolongation, or the text without the marks of one at its end and the hyphens around it. What ties two words to
/// one note becomes a blank.
Syllable Resolve(const RawSyllable& raw) {
    Syllable syllable{raw.tick, {}, std::all_of(raw.text.begin(), raw.text.end(), IsProlongationMark)};
    if (syllable.prolongs)
        return syllable;
    Word& word = syllable.word;
    std::string text = WithPlainHyphens(raw.text);
    while (text.size() > 1 && (text.back() == '_' || text.back() == '~' || text.back() == '=' || text.back() == '+' ||
                               (text.back() == '-' && text[text.size() - 2] == '-'))) {
        word.extends |= text.back() == '_';
        text.pop_back();
    }
    if (text.size() > 1 && text.back() == '-') {
        text.pop_back();
        word.hyphenAfter = true;
    }
    if (text.size() > 1 && text.front() == '-') {
        text.erase(0, 1);
        word.hyphenBefore = true;
    }
    for (const std::string_view tie : {"_", "~", "\xE2\x80\xBF"})
        ReplaceAll(text, tie, " ");
    word.text = std::move(text);
    return syllable;
}

/// The lyric events of each verse, where verses stand one under the other: most times have several then.
std::vector<std::vector<const MidiText*>> PartVerses(const std::vector<const MidiText*>& lyrics) {
    std::map<uint32_t, std::vector<const MidiText*>> times;
    for (const MidiText* text : lyrics)
        times[text->tick].push_back(text);
    const auto several =
        std::count_if(times.begin(), times.end(), [](const auto& time) { return time.second.size() > 1; });
    if (times.size() < 2 || static_cast<size_t>(several) * 2 < times.size())
        return {lyrics};
    std::vector<std::vector<const MidiText*>> verses;
    for (const auto& [tick, texts] : times)
        for (size_t verse = 0; verse < texts.size() && verse < kMostLines; ++verse) {
            verses.resize(std::max(verses.size(), verse + 1));
            verses[verse].push_back(texts[verse]);
        }
    return verses;
}

/// How many texts from one on are together a heading in brackets, which may be written word by word.
size_t CountHeading(const std::vector<std::string>& texts, size_t from) {
    constexpr size_t kMostTexts = 4;
    const size_t begin = texts[from].find_first_not_of(" /\\\r\n");
    if (begin == std::string::npos || (texts[from][begin] != '(' && texts[from][begin] != '['))
        return 0;
    std::string all = texts[from].substr(begin);
    for (size_t count = 1; count <= kMostTexts; ++count) {
        if (all.find_first_of(")]") != std::string::npos)
            return count > 1 && IsHeading(all) ? count : 0; // alone it is told by itself
        if (from + count == texts.size())
            break;
        all += texts[from + count];
    }
    return 0;
}

/// The texts with what stood around them; a text of blanks and marks alone parts words.
std::vector<RawSyllable> Strip(const std::vector<const MidiText*>& lyrics, const TextEncoding& encoding) {
    std::vector<RawSyllable> raw;
    bool blankBefore = true;
    std::vector<std::string> texts;
    texts.reserve(lyrics.size());
    for (const MidiText* text : lyrics)
        texts.push_back(ToUtf8(text->bytes, encoding));
    size_t heading = 0; // how many of the next texts belong to one
    for (size_t i = 0; i < texts.size(); ++i) {
        heading = heading > 0 ? heading : CountHeading(texts, i);
        RawSyllable syllable = Strip(lyrics[i]->tick, heading > 0 ? std::string() : texts[i]);
        heading -= heading > 0 ? 1 : 0;
        if (syllable.text.empty()) {
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
    return raw;
}

/// Whether blanks or hyphens tell which syllables make a word.
bool AddVerse(const std::vector<RawSyllable>& raw, int verse, std::vector<Syllable>& line) {
    // Some programs never write a blank: then its absence says nothing.
    const bool blanksPartWords =
        raw.size() > 1 && std::any_of(raw.begin(), raw.end() - 1, [](const RawSyllable& s) { return s.blankAfter; });
    Syllable* sung = nullptr; // the last one that was no prolongation
    bool isWordOpen = false;
    const size_t first = line.size();
    line.reserve(first + raw.size());
    for (const RawSyllable& text : raw) {
        Syllable syllable = Resolve(text);
        syllable.word.verse = verse;
        if (!syllable.prolongs) {
            Word& word = syllable.word;
            if (sung && (word.hyphenBefore || (isWordOpen && !HasKana(sung->word.text))))
                sung->word.hyphenAfter = true;
            word.hyphenBefore = sung && sung->word.hyphenAfter;
            isWordOpen = true;
        }
        line.push_back(std::move(syllable));
        if (!line.back().prolongs)
            sung = &line.back();
        isWordOpen = isWordOpen && blanksPartWords && !text.blankAfter && text.text.back() != '_';
    }
    return blanksPartWords || std::any_of(line.begin() + static_cast<std::ptrdiff_t>(first), line.end(),
                                          [](const Syllable& syllable) { return syllable.word.hyphenAfter; });
}

/// A text without the marks of encodings before it and the tags that players show or read: "{@JP}", "{#Title=...}".
/// What a tag says of the encoding goes into `encoding`.
std::string WithoutTags(const std::string& bytes, std::optional<TextEncoding>& encoding) {
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        return Utf16ToUtf8(bytes);
    std::string_view rest = bytes;
    if (rest.starts_with("\xEF\xBB\xBF"))
        rest.remove_prefix(3);
    while (rest.starts_with("{@") || rest.starts_with("{#")) {
        const size_t end = rest.find('}');
        if (end == std::string_view::npos)
            break;
        const std::string_view tag = rest.substr(0, end + 1);
        if (tag == "{@JP}" || tag == "{@LATIN}")
            encoding = tag == "{@JP}" ? kShiftJis : kWestern;
        rest.remove_prefix(end + 1);
    }
    return std::string(rest);
}

} // namespace

bool HasKaraokeTexts(const MidiTrack& track) {
    std::set<uint32_t> times;
    for (const MidiText& text : track.texts)
        if (!text.lyric && !text.bytes.empty() && text.bytes[0] != '@')
            times.insert(text.tick);
    return times.size() >= kFewestKaraokeTimes;
}

LyricLine ReadLyricLine(const std::vector<MidiText>& texts, bool karaoke, const std::optional<TextEncoding>& encoding) {
    std::string all;
    std::optional<TextEncoding> tagged;
    std::vector<MidiText> kept;
    kept.reserve(texts.size());
    std::vector<const MidiText*> lyrics;
    for (const MidiText& text : texts) {
        if (text.lyric == karaoke || (karaoke && text.bytes.starts_with('@')))
            continue;
        const MidiText& clean = kept.emplace_back(MidiText{text.tick, text.lyric, WithoutTags(text.bytes, tagged)});
        if (clean.bytes.empty())
            continue;
        lyrics.push_back(&clean);
        all += clean.bytes;
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
    line.encoding = DetectEncoding(all);
    if (encoding || (tagged && line.encoding != kUtf8))
        line.encoding = encoding ? *encoding : *tagged;

    int verse = 0;
    bool isDivided = false;
    for (const auto& part : PartVerses(lyrics))
        isDivided = AddVerse(Strip(part, line.encoding), ++verse, line.syllables) || isDivided;
    line.isUndivided = !isDivided;
    return line;
}

bool LooksJapanese(const std::vector<std::string>& words) {
    static const std::regex romaji("(([kgsztdnhbpmyrwjfv]|ky|gy|sh|j|ch|ny|hy|by|py|my|ry|ts|dz|kk|ss|ssh|tt|tch|pp)?"
                                   "[aiueo]|n|n')+-?");
    if (std::any_of(words.begin(), words.end(), [](const std::string& word) { return HasKana(word); }))
        return true;
    size_t roman = 0;
    for (const std::string& word : words) {
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
