#include "torv/songs/hand_phonemes.h"

#include "torv/songs/databases.h"
#include "torv/songs/nearest_names.h"

#include <torv/lyrics/phonetic_dic.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>

namespace torv::songs {

namespace {

std::vector<std::string> SymbolsIn(const std::string& phonemes) {
    std::istringstream text(phonemes);
    return {std::istream_iterator<std::string>(text), {}};
}

std::string Joined(std::vector<std::string>::const_iterator from, std::vector<std::string>::const_iterator to) {
    std::string text;
    for (; from != to; ++from)
        text += (text.empty() ? "" : " ") + *from;
    return text;
}

bool IsSung(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c) || c >= 0x80; });
}

bool IsVowel(const std::string& symbol, int language) {
    if (language == torv::kEnglish)
        return symbol != "Asp" && CxPhoneticDic::IsNoEditCACharaEng(symbol.c_str());
    return CxPhoneticDic::IsVowelJpn(symbol.c_str()) || CxPhoneticDic::IsSyllabicNasalJpn(symbol.c_str());
}

} // namespace

void TakePhonemes(Word& word) {
    const size_t open = word.text.find('[');
    const size_t close = word.text.find(']', std::min(open, word.text.size()));
    if (close == std::string::npos)
        return;
    std::string before = word.text.substr(0, open);
    std::string behind = word.text.substr(close + 1);
    const std::vector<std::string> symbols = SymbolsIn(word.text.substr(open + 1, close - open - 1));
    if (symbols.empty() || !IsSung(before) || IsSung(behind))
        return;
    word.hyphenAfter = word.hyphenAfter || before.ends_with('-') || behind.ends_with('-');
    for (std::string* const text : {&before, &behind})
        text->erase(text->find_last_not_of(" -") + 1);
    word.text = before + behind;
    word.phonemes = Joined(symbols.begin(), symbols.end());
}

void TakePhonemes(Song& song) {
    for (Part& part : song.parts)
        for (Note& note : part.notes)
            for (Word& word : note.words)
                TakePhonemes(word);
}

std::vector<std::string> DropUnknownPhonemes(VoiceLine& line, int language, const Song& song) {
    std::vector<std::string> known;
    known.reserve(static_cast<size_t>(CxPhoneticDic::GetDicSize(language)));
    for (int i = 0; i < CxPhoneticDic::GetDicSize(language); ++i)
        known.emplace_back(CxPhoneticDic::GetSAMPAString(static_cast<unsigned>(i), language));
    std::vector<std::string> remarks;
    for (SungNote& note : line.notes)
        for (Word& word : note.words) {
            const std::vector<std::string> symbols = SymbolsIn(word.phonemes);
            const auto unknown = std::find_if(symbols.begin(), symbols.end(), [&known](const std::string& symbol) {
                return std::find(known.begin(), known.end(), symbol) == known.end();
            });
            if (unknown == symbols.end())
                continue;
            remarks.push_back("bar " + std::to_string(NumberOfMeasureAt(song, note.tick)) + ": " +
                              LanguageName(language) + " has no sound \"" + *unknown + "\" as in \"" + word.text + "[" +
                              word.phonemes + "]\", which is sung by its letters; " + SuggestNames(known, *unknown));
            word.phonemes.clear();
        }
    return remarks;
}

void SpreadPhonemes(std::vector<SungNote>& notes, int language) {
    for (size_t i = 0; i < notes.size(); ++i) {
        if (notes[i].words.empty() || notes[i].words.back().phonemes.empty())
            continue;
        size_t last = i;
        while (last + 1 < notes.size() && notes[last + 1].words.empty())
            ++last;
        const std::vector<std::string> symbols = SymbolsIn(notes[i].words.back().phonemes);
        const auto vowel = std::find_if(symbols.rbegin(), symbols.rend(),
                                        [language](const std::string& each) { return IsVowel(each, language); });
        if (last == i || vowel == symbols.rend())
            continue;
        notes[i].words.back().phonemes = Joined(symbols.begin(), vowel.base());
        Word goesOn;
        goesOn.text = "-";
        for (size_t at = i + 1; at <= last; ++at) {
            goesOn.phonemes = at < last ? *vowel : Joined(vowel.base() - 1, symbols.end());
            notes[at].words.push_back(goesOn);
        }
        i = last;
    }
}

} // namespace torv::songs
