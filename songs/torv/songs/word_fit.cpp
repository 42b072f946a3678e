#include "torv/songs/word_fit.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <tuple>

namespace torv::songs {

namespace {

constexpr uint32_t kTolerance = 60; // ticks that a syllable may stand beside its note: a thirty-second note
constexpr uint32_t kEarly = kTicksPerQuarter;
constexpr size_t kFitSteps = 20;   // parts that fit a line alike to a twentieth of it fit alike
constexpr size_t kMostParts = 128; // that a line is compared with, beside its own
constexpr int kLowestVoice = 36;
constexpr int kHighestVoice = 88;

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

constexpr size_t kNoPart = static_cast<size_t>(-1);

/// Where each line belongs by its place in the file: to a part of its own track; or, where every singing track has its
/// words behind it in tracks without notes, to the part before it.
std::vector<size_t> FindHomes(const Song& song, const std::vector<WordLine>& lines) {
    std::vector<size_t> homes(lines.size(), kNoPart);
    std::vector<size_t> before(lines.size(), kNoPart);
    std::set<size_t> followed;
    for (size_t line = 0; line < lines.size(); ++line) {
        for (size_t i = 0; i < song.parts.size() && song.parts[i].track <= lines[line].track; ++i) {
            before[line] = i;
            if (song.parts[i].track == lines[line].track)
                homes[line] = i;
        }
        if (homes[line] == kNoPart && before[line] != kNoPart)
            followed.insert(before[line]);
    }
    for (size_t line = 0; line < lines.size() && followed.size() > 1; ++line)
        homes[line] = homes[line] == kNoPart ? before[line] : homes[line];
    return homes;
}

bool IsHome(const std::vector<size_t>& homes, size_t part) {
    return std::find(homes.begin(), homes.end(), part) != homes.end();
}

/// How well a line fits a part.
struct Fit {
    size_t line;
    size_t part;
    size_t hits;
    size_t steps;
    bool isOwn;
    size_t notes;
};

/// The best first.
std::vector<Fit> FindFits(const Song& song, const std::vector<WordLine>& lines, const std::vector<size_t>& homes) {
    std::vector<Fit> fits;
    for (size_t line = 0; line < lines.size(); ++line) {
        const size_t size = std::max<size_t>(lines[line].syllables.size(), 1);
        for (size_t i = 0; i < song.parts.size(); ++i) {
            const Part& part = song.parts[i];
            if (part.IsPercussion() || (i >= kMostParts && homes[line] != i))
                continue;
            const size_t hits = CountHits(lines[line], part);
            fits.push_back({line, i, hits, (hits * kFitSteps + size / 2) / size, homes[line] == i, part.notes.size()});
        }
    }
    std::stable_sort(fits.begin(), fits.end(), [](const Fit& a, const Fit& b) {
        return std::tuple(b.steps, b.isOwn, a.notes) < std::tuple(a.steps, a.isOwn, b.notes);
    });
    return fits;
}

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

/// The notes that syllables stand under while they are placed.
class Places {
public:
    explicit Places(Part& part) : m_notes(TopNotes(part)), m_verses(m_notes.size()) {}

    /// The note that begins within the tolerance, the nearest one.
    Note* Meet(uint32_t tick, int verse) {
        const size_t next = Next(tick);
        size_t nearest = kNone;
        for (const size_t at : {next - 1, next}) // next - 1 is kNone before the first
            if (at < m_notes.size() && Distance(at, tick) <= kTolerance &&
                (nearest == kNone || Distance(at, tick) < Distance(nearest, tick)))
                nearest = at;
        return Take(nearest, verse);
    }
    /// The note that sounds, or the next one.
    Note* Find(uint32_t tick, int verse) {
        const size_t next = Next(tick);
        const size_t current = next - 1;
        const bool sounds =
            current < m_notes.size() && tick < m_notes[current]->tick + m_notes[current]->length + kTolerance;
        if (sounds && !Has(current, verse))
            return Take(current, verse);
        if (next < m_notes.size() && m_notes[next]->tick - tick <= kEarly && !Has(next, verse))
            return Take(next, verse);
        return Take(sounds ? current : kNone, verse);
    }

private:
    static constexpr size_t kNone = static_cast<size_t>(-1);

    size_t Next(uint32_t tick) const {
        return static_cast<size_t>(std::upper_bound(m_notes.begin(), m_notes.end(), tick,
                                                    [](uint32_t t, const Note* note) { return t < note->tick; }) -
                                   m_notes.begin());
    }
    uint32_t Distance(size_t at, uint32_t tick) const {
        const uint32_t start = m_notes[at]->tick;
        return start > tick ? start - tick : tick - start;
    }
    bool Has(size_t at, int verse) const { return (m_verses[at] & 1U << (verse % 32)) != 0; }
    Note* Take(size_t at, int verse) {
        if (at == kNone)
            return nullptr;
        m_verses[at] |= 1U << (verse % 32);
        return m_notes[at];
    }

    std::vector<Note*> m_notes;
    std::vector<uint32_t> m_verses; ///< of each note, a bit each
};

std::string NameOf(const Part& part) { return part.name.empty() ? "track " + std::to_string(part.track) : part.name; }

std::string Count(size_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

void GiveLine(Song& song, size_t index, std::vector<Syllable> syllables, int verses) {
    for (Syllable& syllable : syllables)
        syllable.word.verse += verses;
    const size_t lost = PlaceWords(syllables, song.parts[index]);
    if (lost > 0)
        song.remarks.push_back(NameOf(song.parts[index]) + ": " + Count(lost, "syllable") +
                               " left out: no note sounds there");
}

int LastVerse(const std::vector<Syllable>& syllables) { return syllables.empty() ? 0 : syllables.back().word.verse; }

/// One voice: sings one note at a time, within what people sing, and is no instrument by its program: none, a piano
/// (what programs write that are told of none), or a choir.
bool MaySing(const Part& part) {
    constexpr int kFirstChoir = 52;
    constexpr int kLastChoir = 54;
    const bool isVoice =
        part.program <= 0 || (part.program >= kFirstChoir && part.program <= kLastChoir) || part.program == 85;
    if (part.IsPercussion() || !isVoice)
        return false;
    size_t overlaps = 0;
    for (size_t i = 0; i < part.notes.size(); ++i) {
        if (part.notes[i].key < kLowestVoice || part.notes[i].key > kHighestVoice)
            return false;
        overlaps += i > 0 && part.notes[i].tick + kTolerance < part.notes[i - 1].tick + part.notes[i - 1].length;
    }
    return overlaps * 20 <= part.notes.size();
}

bool HasAnyWords(const Part& part) {
    return std::any_of(part.notes.begin(), part.notes.end(), [](const Note& note) { return !note.words.empty(); });
}

std::set<uint32_t> Starts(const Part& part, bool onlyWithWords) {
    std::set<uint32_t> starts;
    for (const Note& note : part.notes)
        if (!onlyWithWords || !note.words.empty())
            starts.insert(note.tick);
    return starts;
}

/// Most syllables of the one have a note of the other, and most notes of the other a note of the one.
bool MovesWith(const Part& part, const Part& singing) {
    const std::set<uint32_t> own = Starts(part, false);
    const std::set<uint32_t> theirs = Starts(singing, false);
    const std::set<uint32_t> words = Starts(singing, true);
    const auto countIn = [](const std::set<uint32_t>& from, const std::set<uint32_t>& in) {
        return static_cast<size_t>(
            std::count_if(from.begin(), from.end(), [&](uint32_t tick) { return in.count(tick) > 0; }));
    };
    return countIn(words, own) * 5 >= words.size() * 4 && countIn(own, theirs) * 5 >= own.size() * 4;
}

} // namespace

size_t PlaceWords(const std::vector<Syllable>& syllables, Part& part) {
    Places places(part);
    std::vector<Note*> notes;
    notes.reserve(syllables.size());
    for (const Syllable& syllable : syllables)
        notes.push_back(syllable.prolongs ? nullptr : places.Meet(syllable.tick, syllable.word.verse));
    size_t lost = 0;
    for (size_t i = 0; i < syllables.size(); ++i) {
        if (syllables[i].prolongs)
            continue;
        if (!notes[i])
            notes[i] = places.Find(syllables[i].tick, syllables[i].word.verse);
        if (notes[i])
            notes[i]->words.push_back(syllables[i].word);
        else
            ++lost;
    }
    return lost;
}

void FitWords(Song& song, const std::vector<WordLine>& lines) {
    const std::vector<size_t> homes = FindHomes(song, lines);
    const std::vector<Fit> fits = FindFits(song, lines, homes);
    std::vector<bool> isGiven(lines.size());
    std::vector<int> verses(song.parts.size());
    std::vector<std::vector<const Fit*>> ofLine(lines.size());
    for (const Fit& fit : fits)
        ofLine[fit.line].push_back(&fit);
    for (const Fit& fit : fits) {
        if (isGiven[fit.line])
            continue;
        // Its best part has words already: these are another verse of it, unless a free part fits nearly as well that
        // no other line belongs to.
        const auto& others = ofLine[fit.line];
        if (verses[fit.part] > 0 && std::any_of(others.begin(), others.end(), [&](const Fit* other) {
                return verses[other->part] == 0 && other->hits * 10 >= fit.hits * 9 &&
                       (!fit.isOwn || !IsHome(homes, other->part));
            }))
            continue;
        isGiven[fit.line] = true;
        GiveLine(song, fit.part, lines[fit.line].syllables, verses[fit.part]);
        Part& part = song.parts[fit.part];
        part.wordsAreUndivided = lines[fit.line].isUndivided && (verses[fit.part] == 0 || part.wordsAreUndivided);
        verses[fit.part] += LastVerse(lines[fit.line].syllables);
    }
}

void ShareWords(Song& song) {
    std::vector<size_t> singing;
    for (size_t i = 0; i < song.parts.size(); ++i)
        if (HasAnyWords(song.parts[i]))
            singing.push_back(i);
    for (Part& part : song.parts) {
        if (HasAnyWords(part) || !MaySing(part))
            continue;
        const auto with =
            std::find_if(singing.begin(), singing.end(), [&](size_t i) { return MovesWith(part, song.parts[i]); });
        if (with == singing.end())
            continue;
        std::vector<Syllable> syllables;
        for (const Note& note : song.parts[*with].notes)
            for (const Word& word : note.words)
                syllables.push_back({note.tick, word, false});
        PlaceWords(syllables, part);
        part.wordsAreUndivided = song.parts[*with].wordsAreUndivided;
        song.remarks.push_back(NameOf(part) + ": sings the words of " + NameOf(song.parts[*with]) +
                               ", with which it moves");
    }
}

} // namespace torv::songs
