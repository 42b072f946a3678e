#include "list_parts.h"

#include "key_names.h"
#include "table.h"

#include <algorithm>
#include <cstdio>

using namespace torv::songs;

namespace {

std::string VoiceOf(const SongScore& song, size_t index) {
    const auto found = std::find_if(song.parts.begin(), song.parts.end(),
                                    [index](const SungPart& part) { return part.index == index; });
    return found != song.parts.end() ? found->voice : "-";
}

/// "12" or, with verses, "12 12 10".
std::string SyllablesOf(const Part& part, int verses) {
    std::string text;
    for (int verse = 1; verse <= std::max(verses, 1); ++verse) {
        size_t syllables = 0;
        for (const Note& note : part.notes)
            syllables += static_cast<size_t>(std::count_if(note.words.begin(), note.words.end(),
                                                           [verse](const Word& word) { return word.verse == verse; }));
        text += (verse > 1 ? " " : "") + std::to_string(syllables);
    }
    return text;
}

} // namespace

void PrintParts(const SongScore& song) {
    std::vector<std::vector<std::string>> rows{{"PART", "NAME", "VOICE", "RANGE", "NOTES", "SYLLABLES"}};
    const int verses = CountVerses(song.song);
    for (size_t i = 0; i < song.song.parts.size(); ++i) {
        const Part& part = song.song.parts[i];
        const auto [low, high] = std::minmax_element(part.notes.begin(), part.notes.end(),
                                                     [](const Note& a, const Note& b) { return a.key < b.key; });
        rows.push_back({std::to_string(i + 1), part.name.empty() ? "-" : part.name, VoiceOf(song, i),
                        NameOfKey(low->key) + "-" + NameOfKey(high->key), std::to_string(part.notes.size()),
                        SyllablesOf(part, verses)});
    }
    PrintTable(rows);
    std::printf("%zu measures, %d verse%s\n", song.song.measures.size(), verses, verses == 1 ? "" : "s");
}
