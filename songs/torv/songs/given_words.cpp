#include "torv/songs/given_words.h"

#include "torv/songs/hand_phonemes.h"
#include "torv/songs/input_file.h"
#include "torv/songs/lyric_text.h"
#include "torv/songs/nearest_names.h"
#include "torv/songs/number_text.h"
#include "torv/songs/song_error.h"
#include "torv/songs/syllables.h"
#include "torv/songs/text_encoding.h"
#include "torv/songs/word_fit.h"

#include <torv/platform/language.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <string_view>

namespace torv::songs {

namespace {

constexpr size_t kLargestText = 1U << 20; // bytes
constexpr int kMostVerses = 99;
constexpr const char* kBlanks = " \t\r";

[[noreturn]] void Fail(const std::string& source, int line, const std::string& what) {
    throw SongError(source + ": line " + std::to_string(line) + ": " + what);
}

void Replace(std::string& text, std::string_view what, std::string_view with) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

std::string TextOf(Bytes bytes, const ReadOptions& options) {
    std::string_view all(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (all.starts_with("\xFF\xFE") || all.starts_with("\xFE\xFF"))
        return Utf16ToUtf8(all);
    if (all.starts_with("\xEF\xBB\xBF"))
        all.remove_prefix(3);
    return ToUtf8(all, EncodingAskedFor(options.encoding).value_or(DetectEncoding(all)));
}

bool IsSung(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c) || c >= 0x80; });
}

class WordsReader {
public:
    explicit WordsReader(const std::string& source) : m_source(source) {}

    std::vector<GivenWords> Read(std::string_view text) {
        m_words.emplace_back();
        while (!text.empty()) {
            ++m_line;
            const size_t end = std::min(text.find('\n'), text.size());
            ReadLine(std::string(text.substr(0, end)));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        std::erase_if(m_words, [](const GivenWords& each) { return each.syllables.empty(); });
        if (m_words.empty())
            throw SongError(m_source + ": there are no words in it");
        return std::move(m_words);
    }

private:
    void ReadLine(std::string line) {
        if (line.find('\0') != std::string::npos)
            Fail(m_source, m_line, "this is no text: save the words as plain text");
        for (const std::string_view hyphen : {"\xE2\x80\x90", "\xE2\x80\x91", "\xC2\xAD"})
            Replace(line, hyphen, "-");
        for (const std::string_view apart : {"\xE3\x80\x80", "\xC2\xA0", "\xE2\x80\x93", "\xE2\x80\x94"})
            Replace(line, apart, " "); // wide and hard blanks, dashes
        for (const std::string_view tie : {"~", "\xE2\x80\xBF"})
            Replace(line, tie, "_");
        line.erase(line.find_last_not_of(kBlanks) + 1);
        line.erase(0, line.find_first_not_of(kBlanks));
        if (line.starts_with('[') && line.find(']') == line.size() - 1)
            return BeginPart(line.substr(1, line.size() - 2));
        std::string_view rest = line;
        if (const size_t digits = rest.find_first_not_of("0123456789");
            digits > 0 && digits < rest.size() && (rest[digits] == '.' || rest[digits] == ')')) {
            m_verse = WholeNumberOf(rest, 0);
            if (m_verse < 1 || m_verse > kMostVerses)
                Fail(m_source, m_line, "verses count from 1 to " + std::to_string(kMostVerses));
            rest.remove_prefix(digits + 1);
            m_wordGoesOn = false;
        }
        const std::string words = IsHeading(rest) ? std::string() : WithoutHeading(rest);
        rest = words;
        while (!rest.empty())
            ReadToken(TakeToken(rest));
    }

    void BeginPart(std::string name) {
        m_words.push_back({std::move(name), m_line, {}});
        m_verse = 1;
        m_wordGoesOn = false;
    }

    /// Up to the next blank that stands in no bracket.
    std::string_view TakeToken(std::string_view& rest) const {
        size_t end = 0;
        for (bool isInside = false; end < rest.size() && (isInside || (rest[end] != ' ' && rest[end] != '\t')); ++end) {
            isInside = rest[end] == '[' || (isInside && rest[end] != ']');
            if (isInside && end + 1 == rest.size())
                Fail(m_source, m_line, "\"" + std::string(rest.substr(0, 40)) + "\" lacks the closing bracket");
        }
        const std::string_view token = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        return token;
    }

    void ReadToken(std::string_view token) {
        if (token == "__")
            return;
        if (token.find_first_not_of('-') == std::string_view::npos) {
            m_wordGoesOn = m_wordGoesOn || !token.empty();
            return;
        }
        while (!token.empty()) {
            size_t end = 0;
            for (bool isInside = false; end < token.size() && (isInside || token[end] != '-'); ++end)
                isInside = token[end] == '[' || (isInside && token[end] != ']');
            AddPiece(std::string(token.substr(0, end)));
            m_wordGoesOn = end < token.size();
            token.remove_prefix(std::min(end + 1, token.size()));
        }
    }

    void AddPiece(std::string piece) {
        size_t prolongations = 0;
        for (; piece.ends_with('_'); piece.pop_back())
            ++prolongations;
        if (IsSung(piece)) {
            GivenSyllable syllable;
            syllable.line = m_line;
            syllable.word.verse = m_verse;
            syllable.word.text = piece;
            TakePhonemes(syllable.word);
            std::replace(syllable.word.text.begin(), syllable.word.text.end(), '_', ' ');
            AddSung(std::move(syllable));
        }
        GivenSyllable prolongation;
        prolongation.line = m_line;
        prolongation.word.verse = m_verse;
        prolongation.prolongs = true;
        m_words.back().syllables.insert(m_words.back().syllables.end(), prolongations, prolongation);
    }

    void AddSung(GivenSyllable syllable) {
        std::vector<GivenSyllable>& all = m_words.back().syllables;
        const auto before = std::find_if(all.rbegin(), all.rend(), [](const auto& each) { return !each.prolongs; });
        if (m_wordGoesOn && before != all.rend()) {
            before->word.hyphenAfter = true;
            syllable.word.hyphenBefore = true;
        }
        m_wordGoesOn = false;
        if (!HasKana(syllable.word.text) || !syllable.word.phonemes.empty()) {
            all.push_back(std::move(syllable));
            return;
        }
        for (const std::string& kana : CutIntoSyllables(Utf8ToCodePage932(syllable.word.text), torv::kJapanese)) {
            syllable.word.text = ToUtf8(kana, kShiftJis);
            all.push_back(syllable);
        }
    }

    const std::string& m_source;
    std::vector<GivenWords> m_words;
    int m_line = 0;
    int m_verse = 1;
    bool m_wordGoesOn = false;
};

bool HasAnyWords(const Part& part) {
    return std::any_of(part.notes.begin(), part.notes.end(), [](const Note& note) { return !note.words.empty(); });
}

/// Notes that a syllable may begin on, of several that begin together the highest; those that a slur leads to as well
/// where the words say themselves which go on.
std::vector<Note*> PlainPlaces(Part& part, bool withSlurred) {
    std::vector<Note*> places;
    bool isSlurred = false;
    for (size_t i = 0; i < part.notes.size(); ++i) {
        Note& note = part.notes[i];
        if (i + 1 < part.notes.size() && part.notes[i + 1].tick == note.tick)
            continue;
        if (withSlurred || !isSlurred)
            places.push_back(&note);
        isSlurred = note.slurred;
    }
    return places;
}

/// Where the part has syllables of the verse, else of the first that it has; a note is named once for each.
std::vector<Note*> OldPlaces(Part& part, int verse) {
    if (!HasWords(part, verse)) {
        verse = kMostVerses;
        for (const Note& note : part.notes)
            for (const Word& word : note.words)
                verse = std::min(verse, word.verse);
    }
    std::vector<Note*> places;
    for (Note& note : part.notes)
        for (const Word& word : note.words)
            if (word.verse == verse)
                places.push_back(&note);
    return places;
}

std::string Count(size_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

class WordsSetter {
public:
    WordsSetter(Song& song, const std::string& source) : m_song(song), m_source(source) {}

    void Set(const GivenWords& words, size_t index) {
        Part& part = m_song.parts[index];
        std::map<int, std::vector<const GivenSyllable*>> verses;
        bool hasProlongations = false;
        for (const GivenSyllable& syllable : words.syllables) {
            verses[syllable.word.verse].push_back(&syllable);
            hasProlongations = hasProlongations || syllable.prolongs;
        }
        std::map<int, std::vector<Note*>> places;
        for (const auto& [verse, syllables] : verses)
            places[verse] =
                hasProlongations || !HasAnyWords(part) ? PlainPlaces(part, hasProlongations) : OldPlaces(part, verse);
        for (Note& note : part.notes)
            note.words.clear();
        part.wordsAreUndivided = false;
        for (const auto& [verse, syllables] : verses)
            Put(syllables, places[verse], index);
    }

    void Tell() {
        for (const auto& [text, parts] : m_told)
            m_song.remarks.push_back(std::string(parts).append(": ").append(text));
    }

private:
    void Put(const std::vector<const GivenSyllable*>& syllables, const std::vector<Note*>& places, size_t index) {
        const size_t count = std::min(syllables.size(), places.size());
        for (size_t i = 0; i < count; ++i)
            if (!syllables[i]->prolongs)
                places[i]->words.push_back(syllables[i]->word);
        if (syllables.size() > count)
            Remark(index, m_source + " has " + Count(syllables.size() - count, "syllable") + " too many, from \"" +
                              syllables[count]->word.text + "\" in line " + std::to_string(syllables[count]->line) +
                              " on: left out");
        else if (places.size() > count)
            Remark(index, m_source + " has " + Count(places.size() - count, "syllable") + " too few: from bar " +
                              std::to_string(NumberOfMeasureAt(m_song, places[count]->tick)) +
                              " on the vowel before goes on");
    }
    void Remark(size_t index, const std::string& text) {
        std::string& parts = m_told[text];
        parts += (parts.empty() ? "" : ", ") + NameOfPart(m_song, index);
    }

    Song& m_song;
    const std::string& m_source;
    std::map<std::string, std::string> m_told; ///< what, and the parts that it is told of
};

std::vector<std::string> NamesOfParts(const Song& song) {
    std::vector<std::string> names;
    for (const Part& part : song.parts)
        names.push_back(part.name);
    return names;
}

/// "[Chorus]" is no part's name where no part is called so: the words before go on, in the verse where they were.
std::vector<GivenWords> WithoutHeadings(const Song& song, const std::vector<GivenWords>& given) {
    const std::vector<std::string> names = NamesOfParts(song);
    std::vector<GivenWords> words;
    for (const GivenWords& each : given) {
        if (each.part.empty() || !IsHeading(each.part) || FindName(names, each.part)) {
            words.push_back(each);
            continue;
        }
        if (words.empty())
            words.emplace_back();
        std::vector<GivenSyllable>& all = words.back().syllables;
        const int verse = all.empty() ? 1 : all.back().word.verse;
        for (GivenSyllable syllable : each.syllables) {
            syllable.word.verse = std::max(syllable.word.verse, verse);
            all.push_back(std::move(syllable));
        }
    }
    return words;
}

size_t FindPart(const Song& song, const GivenWords& words, const std::string& source) {
    const std::vector<std::string> names = NamesOfParts(song);
    if (const auto found = FindName(names, words.part))
        return *found;
    if (const int number = WholeNumberOf(words.part, 0); number > 0 && static_cast<size_t>(number) <= names.size())
        return static_cast<size_t>(number) - 1;
    Fail(source, words.line, "there is no part \"" + words.part + "\": " + SuggestNames(names, words.part));
}

/// The part with as many places as there are syllables, as nearly as can be.
size_t NearestPart(Song& song, const GivenWords& words) {
    size_t nearest = 0;
    size_t least = static_cast<size_t>(-1);
    const auto syllables = static_cast<size_t>(
        std::count_if(words.syllables.begin(), words.syllables.end(), [&words](const GivenSyllable& syllable) {
            return syllable.word.verse == words.syllables.front().word.verse;
        }));
    for (size_t i = 0; i < song.parts.size(); ++i) {
        const size_t places = PlainPlaces(song.parts[i], false).size();
        const size_t distance = places > syllables ? places - syllables : syllables - places;
        if (!song.parts[i].IsPercussion() && distance < least) {
            least = distance;
            nearest = i;
        }
    }
    return nearest;
}

} // namespace

std::vector<GivenWords> ReadWords(Bytes bytes, const std::string& source, const ReadOptions& options) {
    if (bytes.size() > kLargestText)
        throw SongError(source + ": is larger than a megabyte, which no song's words are");
    return WordsReader(source).Read(TextOf(bytes, options));
}

std::vector<GivenWords> ReadWordsFile(const std::string& path, const ReadOptions& options) {
    return ReadWords(ReadInputFile(path, kLargestText + 1), path, options);
}

void SetWords(Song& song, const std::vector<GivenWords>& given, const std::string& source,
              const std::vector<size_t>& chosen) {
    if (song.parts.empty())
        return;
    std::vector<size_t> others;
    for (size_t i = 0; i < song.parts.size(); ++i)
        if (HasAnyWords(song.parts[i]))
            others.push_back(i);
    const bool hadWords = !others.empty();
    if (!hadWords)
        others = chosen;
    WordsSetter setter(song, source);
    const std::vector<GivenWords> words = WithoutHeadings(song, given);
    for (const GivenWords& each : words) {
        if (each.part.empty())
            continue;
        const size_t index = FindPart(song, each, source);
        std::erase(others, index);
        setter.Set(each, index);
    }
    for (const GivenWords& each : words) {
        if (!each.part.empty())
            continue;
        if (!hadWords && chosen.empty())
            others = {NearestPart(song, each)};
        for (const size_t index : others)
            setter.Set(each, index);
        if (!hadWords && chosen.empty())
            ShareWords(song);
    }
    setter.Tell();
}

} // namespace torv::songs
