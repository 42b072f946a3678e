#include "torv/songs/voice_line.h"

#include "torv/songs/lyric_line.h"
#include "torv/songs/text_encoding.h"

#include <algorithm>

namespace torv::songs {

namespace {

/// Programs end notes a little early: a thirty-second note.
constexpr uint32_t kShortGap = 60;
constexpr uint32_t kSlurredGap = 240; // an eighth
constexpr int kUsualVelocity = 80;
constexpr int kAccent = 12; // of velocity
constexpr int kMostVelocity = 127;
constexpr size_t kShortestRefrain = 4; // notes with words: fewer are a vowel that goes on longer than in other verses

std::vector<Word> WordsOf(const Note& note, int verse) {
    std::vector<Word> words;
    std::copy_if(note.words.begin(), note.words.end(), std::back_inserter(words),
                 [verse](const Word& word) { return word.verse == verse; });
    return words;
}

/// The verse whose words each note sings.
std::vector<int> VersesOf(const Part& part, int verse) {
    std::vector<int> verses(part.notes.size(), verse);
    if (!HasWords(part, verse))
        return verses;
    const auto isLower = [](const Word& a, const Word& b) { return a.verse < b.verse; };
    std::vector<size_t> others; // notes with words of other verses alone
    const auto endRun = [&] {
        if (others.size() >= kShortestRefrain)
            for (const size_t i : others)
                verses[i] = std::min_element(part.notes[i].words.begin(), part.notes[i].words.end(), isLower)->verse;
        others.clear();
    };
    for (size_t i = 0; i < part.notes.size(); ++i) {
        const std::vector<Word>& words = part.notes[i].words;
        if (std::any_of(words.begin(), words.end(), [verse](const Word& word) { return word.verse == verse; }))
            endRun();
        else if (!words.empty() && !(others.empty() && words.front().hyphenBefore))
            others.push_back(i);
    }
    endRun();
    return verses;
}

void PutNote(const Note& note, uint32_t length, int velocity, std::vector<Word> words, VoiceLine& line) {
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
    line.notes.push_back({note.tick, length, note.key, velocity, std::move(words)});
}

/// As long as it is sung. A slur or a line over it leads to the next note, which begins `gap` after its end.
uint32_t SungLength(const Note& note, uint32_t gap) {
    if (note.staccato)
        return std::max<uint32_t>(note.tenuto || note.slurred ? note.length - note.length / 4 : note.length / 2, 1);
    if ((note.slurred || note.tenuto) && gap <= kSlurredGap)
        return note.length + gap;
    return note.breathAfter && !note.tenuto && note.length > 2 * kShortGap ? note.length - kShortGap : note.length;
}

/// From the end of each note to the next one that does not begin with it.
std::vector<uint32_t> GapsAfter(const std::vector<Note>& notes) {
    std::vector<uint32_t> gaps(notes.size(), kLastTick);
    uint32_t next = kLastTick;
    for (size_t i = notes.size(); i-- > 0;) {
        if (i + 1 < notes.size() && notes[i + 1].tick > notes[i].tick)
            next = notes[i + 1].tick;
        const uint32_t end = notes[i].tick + notes[i].length;
        gaps[i] = next > end ? next - end : 0;
    }
    return gaps;
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
    const std::vector<uint32_t> gaps = GapsAfter(part.notes);
    const std::vector<int> verses = VersesOf(part, verse);
    for (size_t i = 0; i < part.notes.size(); ++i) {
        const Note& note = part.notes[i];
        const uint32_t length = isPlain ? note.length : SungLength(note, gaps[i]);
        const int accented = std::min(note.velocity + (note.accent ? kAccent : 0), kMostVelocity);
        std::vector<Word> words = WordsOf(note, verses[i]);
        line.refrainWords += verses[i] == verse ? 0 : words.size();
        PutNote(note, length, isPlain ? kUsualVelocity : accented, std::move(words), line);
        line.notes.back().slides = note.slides && !isPlain;
    }
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
