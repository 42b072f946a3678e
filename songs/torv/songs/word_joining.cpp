#include "torv/songs/word_joining.h"

#include "torv/songs/casting.h"
#include "torv/songs/lyric_line.h"

#include <torv/abi/g2pa.h>
#include <torv/torv.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <string_view>
#include <unordered_set>

namespace torv::songs {

namespace {

constexpr size_t kMostSyllables = 5;

/// Small letters and the apostrophes inside; empty for what is no plain word.
std::string PlainWord(const std::string& text) {
    std::string word;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80 || c == ' ')
            return {};
        if (std::isalpha(static_cast<unsigned char>(c)) || c == '\'')
            word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return word;
}

/// Nothing goes on behind a comma or a point.
bool EndsPhrase(const std::string& text) {
    return !text.empty() && std::ispunct(static_cast<unsigned char>(text.back())) && text.back() != '\'';
}

/// What it costs to take syllables for one word: the cheapest way to divide a line is the likeliest. A syllable that is
/// no word costs most.
constexpr double kCommonSyllable = 0;
constexpr double kCommonWord = 0.5;
constexpr double kKnownWord = 1;
constexpr double kKnownSyllable = 1.5;
constexpr double kUnknownSyllable = 10;
constexpr double kUsualWord = -0.5;

/// Common words that are other common words together, and nearly always meant where these follow one another.
constexpr std::string_view kUsuallyOne[] = {"cannot", "today", "unto", "upon", "within", "without"};

bool IsUsuallyOne(const std::string& word) {
    return std::find(std::begin(kUsuallyOne), std::end(kUsuallyOne), word) != std::end(kUsuallyOne);
}

class Joiner {
public:
    explicit Joiner(const std::function<WordKnowledge(const std::string&)>& know) : m_know(know) {}

    size_t Join(const std::vector<Word*>& words) {
        std::vector<double> least(words.size() + 1); // from each syllable to the end
        std::vector<size_t> count(words.size());     // syllables of the word that begins there
        for (size_t at = words.size(); at-- > 0;)
            Divide(words, at, least, count);
        size_t joined = 0;
        for (size_t at = 0; at < words.size(); at += count[at]) {
            for (size_t i = 1; i < count[at]; ++i)
                words[at + i - 1]->hyphenAfter = words[at + i]->hyphenBefore = true;
            joined += count[at] > 1;
        }
        return joined;
    }

private:
    void Divide(const std::vector<Word*>& words, size_t at, std::vector<double>& least, std::vector<size_t>& count) {
        count[at] = 1;
        least[at] = kUnknownSyllable + least[at + 1];
        std::string joined;
        bool areAllCommon = true;
        for (size_t taken = 1; taken <= kMostSyllables && at + taken <= words.size(); ++taken) {
            const Word& word = *words[at + taken - 1];
            const std::string part = PlainWord(word.text);
            if (part.empty() || !word.phonemes.empty() || word.verse != words[at]->verse)
                break;
            joined += part;
            areAllCommon = areAllCommon && m_know(part) == WordKnowledge::Common;
            const WordKnowledge known = m_know(joined);
            const bool isOne = taken == 1;
            const bool isUsual = !isOne && IsUsuallyOne(joined);
            const double own = isUsual                          ? kUsualWord
                               : known == WordKnowledge::Common ? (isOne ? kCommonSyllable : kCommonWord)
                                                                : (isOne ? kKnownSyllable : kKnownWord);
            const double cost = own + least[at + taken];
            if (known != WordKnowledge::Unknown && (isOne || isUsual || !areAllCommon) && cost < least[at]) {
                least[at] = cost;
                count[at] = taken;
            }
            if (EndsPhrase(word.text))
                break;
        }
    }

    const std::function<WordKnowledge(const std::string&)>& m_know;
};

std::unordered_set<std::string> ReadWordList() {
    std::unordered_set<std::string> words;
    std::ifstream file(std::string(CQuillDBManager::GetModuleFolderPath()) + "words-en.txt");
    for (std::string word; std::getline(file, word);)
        words.insert(PlainWord(word));
    return words;
}

} // namespace

size_t JoinWords(Song& song, const std::function<WordKnowledge(const std::string& word)>& know) {
    size_t joined = 0;
    for (Part& part : song.parts) {
        if (!part.wordsAreUndivided)
            continue;
        std::vector<Word*> words;
        std::vector<std::string> texts;
        for (int verse = 1; HasWords(part, verse); ++verse)
            for (Note& note : part.notes)
                for (Word& word : note.words)
                    if (word.verse == verse) {
                        words.push_back(&word);
                        texts.push_back(word.text);
                    }
        if (!LooksJapanese(texts) && GuessOtherLanguage(texts).empty())
            joined += Joiner(know).Join(words);
        part.wordsAreUndivided = false;
    }
    return joined;
}

WordKnowledge KnowEnglishWord(const std::string& word) {
    static const std::unordered_set<std::string> list = ReadWordList();
    if (std::string whole = word; whole.find('\'') != std::string::npos) { // "heav'n"
        std::replace(whole.begin(), whole.end(), '\'', 'e');
        if (const WordKnowledge found = KnowEnglishWord(whole); found != WordKnowledge::Unknown)
            return found;
    }
    const int found = CxSampaTransformer::FindWord(word.c_str(), torv::kEnglish);
    if (found == G2PA_WORD_COMMON)
        return WordKnowledge::Common;
    return found == G2PA_WORD_LEXICON || list.count(word) > 0 ? WordKnowledge::Known : WordKnowledge::Unknown;
}

} // namespace torv::songs
