#include "english_converter.h"

#include "allophones.h"

#include "torv/abi/g2pa.h"

#include <algorithm>

namespace g2pa_eng {
namespace {

constexpr std::string_view defaultVowel = "u:";

constexpr std::string_view refrains[] = {"ah", "da", "dee", "doo", "dum", "fa",  "ha",  "hey",
                                         "ho", "la", "na",  "oh",  "ooh", "sha", "tra", "yeah"};

/// "la-la-la", "fa-la-la", "bye-bye": sung syllables, each a word of its own whatever the hyphens say.
bool AreRefrain(const std::vector<std::string_view>& parts) {
    const auto repeats = [&](std::string_view part) { return part == parts.front(); };
    const auto isRefrain = [](std::string_view part) {
        return std::find(std::begin(refrains), std::end(refrains), part) != std::end(refrains);
    };
    return std::all_of(parts.begin(), parts.end(), repeats) || std::all_of(parts.begin(), parts.end(), isRefrain);
}

/// The word that its parts share; empty when they are words of their own. Nothing longer than the longest word is
/// looked up as one.
std::string JoinParts(const std::vector<std::string_view>& parts) {
    std::string word;
    for (const std::string_view part : parts)
        if (word.size() <= maxWordLetters)
            word += part;
    return parts.size() > 1 && (word.size() > maxWordLetters || AreRefrain(parts)) ? std::string() : word;
}

/// Appends an element's output and those of the elements that prolong it. The consonants after the last vowel are sung
/// where that vowel ends: in the last of them.
void AppendProlonged(g2pa::Outputs& outputs, g2pa::Symbols symbols, size_t prolongations) {
    if (symbols.size() > G2PA_MAX_SLOTS)
        symbols.resize(G2PA_MAX_SLOTS);
    if (prolongations == 0) {
        outputs.push_back(std::move(symbols));
        return;
    }
    const auto vowel = std::find_if(symbols.rbegin(), symbols.rend(), IsVowelSymbol);
    const size_t head = vowel != symbols.rend() ? static_cast<size_t>(symbols.rend() - vowel) : symbols.size();
    const std::string_view nucleus = head > 0 ? symbols[head - 1] : defaultVowel;
    g2pa::Symbols last{nucleus};
    last.insert(last.end(), symbols.begin() + static_cast<std::ptrdiff_t>(head), symbols.end());
    symbols.resize(head);
    outputs.push_back(std::move(symbols));
    outputs.insert(outputs.end(), prolongations - 1, {nucleus});
    outputs.push_back(std::move(last));
}

} // namespace

void EnglishConverter::Put(std::string_view bytes) {
    LyricText lyric = ReadLyric(bytes);
    if (lyric.singsOn) {
        if (m_held.empty())
            Deliver({{defaultVowel}});
        else
            ++m_held.back().prolongations;
        return;
    }
    const bool joins = !lyric.words.empty() && !m_held.empty() && !m_held.back().words.empty() &&
                       (m_wordGoesOn || lyric.joinsPrevious);
    if (joins) {
        m_held.push_back({std::move(lyric.words)});
    } else {
        std::vector<Held> held(1);
        held[0].words = std::move(lyric.words);
        Deliver(SingHeld());
        m_held = std::move(held);
    }
    m_wordGoesOn = lyric.joinsNext;
}

int FindWords(const Dictionary& dictionary, std::string_view text) {
    std::vector<LyricText> elements;
    for (size_t end; !text.empty(); text.remove_prefix(end)) {
        end = std::min(text.find('-'), text.size() - 1) + 1;
        elements.push_back(ReadLyric(text.substr(0, end)));
    }
    std::vector<std::vector<std::string_view>> words;
    bool goesOn = false;
    for (const LyricText& element : elements) {
        for (const std::string& word : element.words) {
            if (!goesOn)
                words.emplace_back();
            words.back().push_back(word);
            goesOn = false;
        }
        goesOn = !words.empty() && element.joinsNext;
    }
    int least = G2PA_WORD_SILENT;
    const auto count = [&](std::string_view word) {
        const int found = FindWord(dictionary, word);
        least = least == G2PA_WORD_SILENT ? found : std::min(least, found);
    };
    for (const auto& parts : words)
        if (const std::string joined = JoinParts(parts); !joined.empty())
            count(joined);
        else
            std::for_each(parts.begin(), parts.end(), count);
    return least;
}

void EnglishConverter::Finish() {
    Deliver(SingHeld());
    m_held.clear();
}

g2pa::Outputs EnglishConverter::SingHeld() const {
    std::vector<g2pa::Symbols> symbols(m_held.size());
    for (size_t held = 0; held < m_held.size(); ++held)
        for (size_t word = held == 0 ? 0 : 1; word < m_held[held].words.size(); ++word)
            PronounceFrom(held, word, symbols);
    g2pa::Outputs outputs;
    for (size_t held = 0; held < m_held.size(); ++held)
        AppendProlonged(outputs, std::move(symbols[held]), m_held[held].prolongations);
    return outputs;
}

/// Pronounces a word and its continuations, and gives each element its part.
void EnglishConverter::PronounceFrom(size_t held, size_t word, std::vector<g2pa::Symbols>& symbols) const {
    std::vector<std::string_view> parts{m_held[held].words[word]};
    if (word + 1 == m_held[held].words.size()) { // the last word of an element goes on while elements are single words
        for (size_t next = held + 1; next < m_held.size(); ++next) {
            parts.emplace_back(m_held[next].words[0]);
            if (m_held[next].words.size() > 1)
                break;
        }
    }
    const Phones joined = PronounceWord(m_dictionary, JoinParts(parts));
    const SyllablesOfParts shares = DivideWord(joined, parts);
    for (size_t part = 0; part < parts.size(); ++part) {
        const bool alone = joined.empty() && parts.size() > 1;
        const auto syllables =
            alone ? DivideWord(PronounceWord(m_dictionary, parts[part]), {parts[part]})[0] : shares[part];
        g2pa::Symbols& sung = symbols[held + part];
        for (size_t i = 0; i < syllables.size() && sung.size() < G2PA_MAX_SLOTS; ++i)
            AppendSymbols(sung, syllables[i], i == 0 && (part == 0 || alone));
    }
}

} // namespace g2pa_eng
