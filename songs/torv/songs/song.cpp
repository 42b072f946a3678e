#include "torv/songs/song.h"

#include "torv/songs/song_error.h"

#include <algorithm>
#include <map>

namespace torv::songs {

namespace {

constexpr uint32_t kWhole = 4 * kTicksPerQuarter;
constexpr size_t kMostMeasures = 100000; // what no song has: a damaged signature must not fill the memory

template <class Item>
void SortByTick(std::vector<Item>& items) {
    std::stable_sort(items.begin(), items.end(), [](const Item& a, const Item& b) { return a.tick < b.tick; });
}

template <class Item>
void KeepLastOfEachTick(std::vector<Item>& items) {
    SortByTick(items);
    const auto isSame = [](const Item& a, const Item& b) { return a.tick == b.tick; };
    const auto first = std::unique(items.rbegin(), items.rend(), isSame);
    items.erase(items.begin(), first.base());
}

/// A meter begins a measure wherever it stands.
void MakeMeasures(Song& song) {
    Meter meter;
    auto next = song.meters.begin();
    int number = 1;
    for (uint32_t tick = 0; tick < song.end && song.measures.size() < kMostMeasures; ++number) {
        while (next != song.meters.end() && next->tick <= tick)
            meter = *next++;
        uint32_t length = TicksOfMeasure(meter);
        if (next != song.meters.end() && next->tick - tick < length)
            length = next->tick - tick;
        song.measures.push_back({tick, length, number});
        tick += length;
    }
}

void CompletePart(Part& part) {
    for (Note& note : part.notes) {
        note.tick = std::min(note.tick, kLastTick);
        note.length = std::clamp<uint32_t>(note.length, 1, kLastTick + 1 - note.tick);
        note.key = std::clamp(note.key, 0, 127);
        note.velocity = std::clamp(note.velocity, 1, 127);
    }
    std::stable_sort(part.notes.begin(), part.notes.end(),
                     [](const Note& a, const Note& b) { return a.tick != b.tick ? a.tick < b.tick : a.key < b.key; });
    std::map<int, bool> goesOn; // the word of each verse
    for (Note& note : part.notes)
        for (Word& word : note.words) {
            word.hyphenBefore = word.hyphenBefore || goesOn[word.verse];
            goesOn[word.verse] = word.hyphenAfter;
        }
    SortByTick(part.dynamics);
    SortByTick(part.controllers);
    SortByTick(part.bends);
}

} // namespace

uint32_t TicksOfMeasure(const Meter& meter) {
    return std::max<uint32_t>(1, kWhole / (1U << meter.denominatorExponent) * static_cast<uint32_t>(meter.numerator));
}

void CompleteSong(Song& song) {
    std::erase_if(song.parts, [](const Part& part) { return part.notes.empty(); });
    for (Part& part : song.parts) {
        CompletePart(part);
        for (const Note& note : part.notes)
            song.end = std::max(song.end, note.tick + note.length);
    }
    std::erase_if(song.tempos, [](const Tempo& tempo) {
        return tempo.microsecondsPerQuarter == 0 || tempo.microsecondsPerQuarter > 0xFFFFFF;
    });
    std::erase_if(song.meters, [](const Meter& meter) {
        return meter.numerator < 1 || meter.numerator > 255 || meter.denominatorExponent < 0 ||
               meter.denominatorExponent > 7;
    });
    KeepLastOfEachTick(song.tempos);
    KeepLastOfEachTick(song.meters);
    KeepLastOfEachTick(song.keys);
    SortByTick(song.measures);
    if (song.measures.empty())
        MakeMeasures(song);
    else
        song.end = std::max(song.end, song.measures.back().tick + song.measures.back().length);
    song.end = std::min(song.end, kLastTick);
}

uint32_t TickOfMeasure(const Song& song, int number) {
    const auto found = std::find_if(song.measures.begin(), song.measures.end(),
                                    [number](const Measure& measure) { return measure.number == number; });
    if (found != song.measures.end())
        return found->tick;
    const Measure last = song.measures.empty() ? Measure{0, 0, 0} : song.measures.back();
    if (number == last.number + 1)
        return last.tick + last.length;
    const int first = song.measures.empty() ? 0 : song.measures.front().number;
    throw SongError((song.source.empty() ? "the song" : song.source + ":") + " has no bar " + std::to_string(number) +
                    (number < first ? "; the first one is " + std::to_string(first)
                                    : "; the last one is " + std::to_string(last.number)));
}

int NumberOfMeasureAt(const Song& song, uint32_t tick) {
    const auto next = std::upper_bound(song.measures.begin(), song.measures.end(), tick,
                                       [](uint32_t at, const Measure& measure) { return at < measure.tick; });
    return next == song.measures.begin() ? 1 : (next - 1)->number;
}

std::string NameOfPart(const Song& song, size_t index) {
    const std::string& name = song.parts[index].name;
    return name.empty() ? "part " + std::to_string(index + 1) : name;
}

bool HasWords(const Part& part, int verse) {
    return std::any_of(part.notes.begin(), part.notes.end(), [verse](const Note& note) {
        return std::any_of(note.words.begin(), note.words.end(),
                           [verse](const Word& word) { return word.verse == verse; });
    });
}

int CountVerses(const Song& song) {
    int verses = 0;
    for (const Part& part : song.parts)
        for (const Note& note : part.notes)
            for (const Word& word : note.words)
                verses = std::max(verses, word.verse);
    return verses;
}

} // namespace torv::songs
