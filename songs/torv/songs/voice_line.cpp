#include "torv/songs/voice_line.h"

#include "torv/songs/lyric_line.h"
#include "torv/songs/text_encoding.h"

#include <algorithm>

namespace torv::songs {

namespace {

/// Programs end notes a little early: a thirty-second note.
constexpr uint32_t kShortGap = 60;

std::vector<Word> WordsOf(const Note& note, int verse) {
    std::vector<Word> words;
    std::copy_if(note.words.begin(), note.words.end(), std::back_inserter(words),
                 [verse](const Word& word) { return word.verse == verse; });
    return words;
}

void PutNote(const Note& note, uint32_t length, std::vector<Word> words, VoiceLine& line) {
    if (!line.notes.empty()) {
        SungNote& before = line.notes.back();
        if (before.tick == note.tick) { // sorted by key: the later one is higher
            ++line.cutNotes;
            if (words.empty())
                words = std::move(before.words);
            line.notes.pop_back();
        } else if (before.tick + before.length > note.tick) {
            ++line.cutNotes;
            before.length = note.tick - before.tick;
        }
    }
    line.notes.push_back({note.tick, length, note.key, note.velocity, std::move(words)});
}

/// As long as it is sung.
uint32_t SungLength(const Note& note, bool isPlain) {
    if (isPlain)
        return note.length;
    if (note.staccato)
        return std::max<uint32_t>(note.length / 2, 1);
    return note.breathAfter && note.length > 2 * kShortGap ? note.length - kShortGap : note.length;
}

void CloseGaps(std::vector<SungNote>& notes) {
    for (size_t i = 1; i < notes.size(); ++i) {
        SungNote& before = notes[i - 1];
        const uint32_t gap = notes[i].tick - (before.tick + before.length);
        if (gap < kShortGap) {
            before.length += gap;
            notes[i].joined = true;
        }
    }
}

} // namespace

VoiceLine MakeVoiceLine(const Part& part, int verse, bool isPlain) {
    VoiceLine line;
    for (const Note& note : part.notes)
        PutNote(note, SungLength(note, isPlain), WordsOf(note, verse), line);
    CloseGaps(line.notes);
    std::vector<std::string> texts;
    for (const SungNote& note : line.notes)
        for (const Word& word : note.words) {
            texts.push_back(word.text);
            line.unreadableCharacters |= HasKanji(word.text);
        }
    line.hasWords = !texts.empty();
    line.japanese = LooksJapanese(texts);
    return line;
}

} // namespace torv::songs
