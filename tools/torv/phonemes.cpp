#include "phonemes.h"

#include "errors.h"
#include "table.h"

#include <torv/songs/given_words.h>
#include <torv/songs/spelled_words.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

using namespace torv::songs;

namespace {

using Json = nlohmann::ordered_json;

/// A note for each syllable.
Song SongOfText(const std::string& text) {
    Song song;
    song.parts.resize(1);
    const Bytes bytes(reinterpret_cast<const unsigned char*>(text.data()), text.size());
    for (const GivenWords& words : ReadWords(bytes, "--text", {"utf-8"}))
        for (const GivenSyllable& syllable : words.syllables) {
            Note& note = song.parts[0].notes.emplace_back();
            note.tick = static_cast<uint32_t>(song.parts[0].notes.size() - 1) * kTicksPerQuarter;
            if (!syllable.prolongs)
                note.words.push_back(syllable.word);
            for (Word& word : note.words)
                word.verse = 1;
        }
    CompleteSong(song);
    return song;
}

std::string Joined(const std::vector<std::string>& texts, const char* between) {
    std::string all;
    for (size_t i = 0; i < texts.size(); ++i)
        all += (i ? between : "") + texts[i];
    return all;
}

/// What of a word stands in one column: hyphens between syllables, "_" where a vowel goes on.
std::vector<std::string> RowOf(const SpelledWord& word, int measure) {
    std::vector<std::string> texts;
    std::vector<std::string> phonemes;
    bool hasOwn = false;
    for (const SpelledSyllable& syllable : word.syllables) {
        texts.push_back(syllable.text.empty() ? "_" : syllable.text);
        phonemes.push_back(Joined(syllable.phonemes, " "));
        hasOwn = hasOwn || syllable.byHand;
    }
    std::string source = NameOf(word.source);
    if (hasOwn && word.source != SpelledWord::Source::ByHand)
        source += ", by hand";
    return {std::to_string(measure), Joined(texts, "-"), Joined(phonemes, " - "), source};
}

Json JsonOf(const SpelledWord& word, int measure) {
    Json syllables = Json::array();
    for (const SpelledSyllable& syllable : word.syllables)
        syllables.push_back({{"text", syllable.text},
                             {"phonemes", syllable.phonemes},
                             {"from", NameOf(syllable.byHand ? SpelledWord::Source::ByHand : word.source)}});
    return {{"bar", measure}, {"tick", word.tick}, {"syllables", syllables}};
}

} // namespace

void PrintPhonemes(const PhonemesOptions& options) {
    if (options.song.input.empty() == options.text.empty())
        throw WrongUse{"name a song, or give words in --text \"...\""};
    SongOptions singing = options.song;
    singing.plain = true;
    if (!options.text.empty())
        singing.input = "--text";
    const SongScore song =
        MakeSongScore(singing, options.text.empty() ? ReadSongAskedFor(singing) : SongOfText(options.text));
    Json parts = Json::array();
    std::vector<std::vector<std::string>> before;
    for (size_t i = 0; i < song.parts.size(); ++i) {
        std::vector<std::vector<std::string>> rows{{"BAR", "WORD", "PHONEMES", "FROM"}};
        Json words = Json::array();
        for (const SpelledWord& word : SpellWords(song.score, song.score.parts[i], song.plans[i])) {
            const int measure = NumberOfMeasureAt(song.song, word.tick);
            rows.push_back(RowOf(word, measure));
            words.push_back(JsonOf(word, measure));
        }
        if (!options.text.empty()) // has no bars
            for (auto& row : rows)
                row.erase(row.begin());
        parts.push_back({{"part", song.parts[i].name}, {"voice", song.parts[i].voice}, {"words", words}});
        if (options.json)
            continue;
        if (song.parts.size() > 1)
            std::printf("%s%s\n", song.parts[i].name.c_str(), rows == before ? ": as the one before" : "");
        if (rows != before)
            PrintTable(rows);
        before = std::move(rows);
    }
    if (options.json)
        std::printf("%s\n", parts.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}
