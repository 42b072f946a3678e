#include "torv/songs/spelled_words.h"

#include "torv/songs/text_encoding.h"

#include <torv/abi/g2pa.h>

namespace torv::songs {

namespace {

using Source = SpelledWord::Source;

Source SourceOf(const std::string& word, int language) {
    switch (CxSampaTransformer::FindWord(word.c_str(), language)) {
    case G2PA_WORD_COMMON:
    case G2PA_WORD_LEXICON:
        return Source::Lexicon;
    case G2PA_WORD_RULE:
        return Source::Rule;
    case G2PA_WORD_SILENT:
        return Source::Nothing;
    default:
        return Source::Converter;
    }
}

} // namespace

std::vector<SpelledWord> SpellWords(const Score& score, const ScorePart& part, const PartPlan& plan) {
    std::vector<SpelledWord> words;
    std::string text; // of the last word, as the converter gets it
    bool goesOn = false;
    auto voice = plan.voices.begin();
    const auto finish = [&] {
        if (words.empty() || text.empty())
            return;
        const bool isByHand = std::all_of(words.back().syllables.begin(), words.back().syllables.end(),
                                          [](const SpelledSyllable& syllable) { return syllable.byHand; });
        words.back().source = isByHand ? Source::ByHand : SourceOf(text, LanguageOfSinger(voice->id));
    };
    for (const ScoredNote& note : part.notes) {
        const uint32_t tick = note.tick - score.leadTicks;
        for (int i = 0; i < note.lyric->GetElementCount(); ++i) {
            const CLyricElement& element = *note.lyric->GetElementAt(i);
            std::string lyric(element.GetLyricString());
            const bool prolongs = lyric == "-" && !words.empty();
            if (!prolongs && !goesOn) {
                finish();
                while (voice + 1 != plan.voices.end() && (voice + 1)->tick <= tick)
                    ++voice;
                words.push_back({tick, {}, {}});
                text.clear();
            }
            SpelledSyllable& syllable = words.back().syllables.emplace_back();
            syllable.byHand = element.GetPhonemeEditMark() != 0;
            for (int p = 0; p < element.GetPhonemeCharaCount(); ++p)
                syllable.phonemes.emplace_back(element.GetPhonemeChara(p));
            if (prolongs)
                continue;
            text += lyric;
            goesOn = lyric.ends_with('-');
            lyric.erase(lyric.size() - (goesOn ? 1 : 0));
            syllable.text = ToUtf8(lyric, kShiftJis);
        }
    }
    finish();
    return words;
}

const char* NameOf(SpelledWord::Source source) {
    static constexpr const char* kNames[] = {"lexicon", "rule", "by hand", "converter", "no sound"};
    return kNames[static_cast<size_t>(source)];
}

} // namespace torv::songs
