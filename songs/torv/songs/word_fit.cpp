#include "torv/songs/word_fit.h"

#include <algorithm>
#include <tuple>

namespace torv::songs {

namespace {

/// Syllables may stand a little beside their note: a thirty-second note.
constexpr uint32_t kTolerance = 60;

size_t CountHits(const WordLine& line, const Part& part) {
    size_t hits = 0;
    for (const Syllable& syllable : line.syllables) {
        const uint32_t from = syllable.tick > kTolerance ? syllable.tick - kTolerance : 0;
        const auto at = std::lower_bound(part.notes.begin(), part.notes.end(), from,
                                         [](const Note& note, uint32_t tick) { return note.tick < tick; });
        hits += at != part.notes.end() && at->tick <= syllable.tick + kTolerance;
    }
    return hits;
}

struct Pair {
    size_t line;
    size_t part;
    size_t hits;
    bool isOwn;
    size_t notes;
};

/// Of the notes that begin together the highest.
std::vector<Note*> TopNotes(Part& part) {
    std::vector<Note*> top;
    for (Note& note : part.notes) {
        if (!top.empty() && top.back()->tick == note.tick)
            top.pop_back();
        top.push_back(&note);
    }
    return top;
}

std::string NameOf(const Part& part) { return part.name.empty() ? "track " + std::to_string(part.track) : part.name; }

} // namespace

size_t PlaceWords(const std::vector<Syllable>& syllables, Part& part) {
    const std::vector<Note*> notes = TopNotes(part);
    if (notes.empty())
        return syllables.size();
    size_t lost = 0;
    size_t at = 0;
    for (const Syllable& syllable : syllables) {
        while (at + 1 < notes.size() && notes[at + 1]->tick <= syllable.tick + kTolerance)
            ++at;
        Note& note = *notes[at];
        const bool meets =
            note.tick <= syllable.tick + kTolerance && syllable.tick < note.tick + note.length + kTolerance;
        if (!meets)
            ++lost;
        else if (!syllable.prolongs)
            note.words.push_back(syllable.word);
    }
    return lost;
}

void FitWords(Song& song, const std::vector<WordLine>& lines) {
    std::vector<Pair> pairs;
    for (size_t line = 0; line < lines.size(); ++line)
        for (size_t part = 0; part < song.parts.size(); ++part)
            if (!song.parts[part].IsPercussion())
                pairs.push_back({line, part, CountHits(lines[line], song.parts[part]),
                                 lines[line].track == song.parts[part].track, song.parts[part].notes.size()});
    std::stable_sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) {
        return std::tuple(b.hits, b.isOwn, a.notes) < std::tuple(a.hits, a.isOwn, b.notes);
    });
    std::vector<bool> isLineGiven(lines.size());
    std::vector<bool> hasPartWords(song.parts.size());
    for (const Pair& pair : pairs) {
        if (isLineGiven[pair.line] || hasPartWords[pair.part])
            continue;
        isLineGiven[pair.line] = true;
        hasPartWords[pair.part] = true;
        Part& part = song.parts[pair.part];
        const size_t lost = PlaceWords(lines[pair.line].syllables, part);
        if (lost > 0)
            song.remarks.push_back(NameOf(part) + ": " + std::to_string(lost) +
                                   (lost == 1 ? " syllable" : " syllables") + " left out: no note sounds there");
    }
}

} // namespace torv::songs
