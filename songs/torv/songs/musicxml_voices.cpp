#include "torv/songs/musicxml_voices.h"

#include <algorithm>
#include <set>

namespace torv::songs::musicxml {

namespace {

constexpr uint32_t kShortGrace = kTicksPerQuarter / 8;
constexpr uint32_t kLongGrace = kTicksPerQuarter / 2;

/// What a line of words is to the singer: every pass of a repeat takes its own line, and a line that is the only one is
/// sung each time.
std::vector<Word> ChooseLines(std::vector<Word> words, const PlacedMeasure& measure) {
    if (measure.passes < 2 || words.empty())
        return words;
    const auto hasLine = [&words](int line) {
        return std::any_of(words.begin(), words.end(), [line](const Word& word) { return word.verse == line; });
    };
    const int last = std::max(1, std::max_element(words.begin(), words.end(), [](const Word& a, const Word& b) {
                                     return a.verse < b.verse;
                                 })->verse);
    std::vector<Word> chosen;
    for (int verse = 1; verse <= (last + measure.passes - 1) / measure.passes; ++verse) {
        int line = (verse - 1) * measure.passes + measure.pass;
        if (!hasLine(line) && verse == 1)
            line = 1;
        for (const Word& word : words) {
            if (word.verse != line)
                continue;
            chosen.push_back(word);
            chosen.back().verse = verse;
        }
    }
    return chosen;
}

bool IsFor(const std::vector<int>& passes, int pass) {
    return passes.empty() || std::find(passes.begin(), passes.end(), pass) != passes.end();
}

/// Words that name this pass are sung before all others.
std::vector<Word> WordsOf(const std::vector<WrittenWord>& written, const PlacedMeasure& measure) {
    std::vector<Word> named;
    std::vector<Word> others;
    int line = 0;
    int verse = 0;
    for (const WrittenWord& each : written) {
        if (!IsFor(each.passes, measure.pass))
            continue;
        if (each.passes.empty()) {
            others.push_back(each.word);
            continue;
        }
        verse += each.word.verse == line ? 0 : 1;
        line = each.word.verse;
        named.push_back(each.word);
        named.back().verse = verse;
    }
    return named.empty() ? ChooseLines(std::move(others), measure) : named;
}

/// One voice as it goes along.
class Singer {
public:
    explicit Singer(Part& part) : m_part(part) {}

    void Sing(const WrittenNote& written, const PlacedMeasure& measure) {
        if (!IsFor(written.passes, measure.pass))
            return;
        for (const int number : written.slurStarts)
            m_slurs.insert(number);
        for (const int number : written.slurStops)
            m_slurs.erase(number);
        if (written.isGrace) {
            m_graces.push_back({written.note, written.hasSlash, written.bend});
            m_graces.back().note.words = WordsOf(written.words, measure);
            m_graceTick = measure.tick + written.onset;
            return;
        }
        if (measure.tick + written.onset > m_graceTick)
            SingGracesAfter();
        Note note = written.note;
        note.tick = measure.tick + written.onset;
        note.words = WordsOf(written.words, measure);
        if (!written.isChord)
            m_shift = SingGraces(note);
        note.tick += m_shift;
        note.length -= std::min(m_shift, note.length - 1);
        note.slurred = !m_slurs.empty() || note.slides;
        if (!(written.tieStops && Join(note, written)))
            Add(note, written);
    }

    /// A measure's last grace notes belong to the note before them.
    void EndMeasure() { SingGracesAfter(); }

    /// What was written before does not lead here; but a tie into one ending leads into the others too.
    void Interrupt() {
        m_slurs.clear();
        m_lost += m_graces.size();
        m_graces.clear();
    }
    size_t LostGraces() const { return m_lost + m_graces.size(); }

private:
    /// A note before another, as it is sung.
    struct Grace {
        Note note;
        bool hasSlash;
        double bend;
    };

    void Add(const Note& note, const WrittenNote& written) {
        if (written.tieStarts)
            m_ties[note.key] = m_part.notes.size();
        Put(note, written.bend);
    }

    void Put(const Note& note, double bend) {
        m_part.notes.push_back(note);
        if (bend != (m_part.bends.empty() ? 0 : m_part.bends.back().semitones))
            m_part.bends.push_back({note.tick, bend});
    }

    bool Join(const Note& note, const WrittenNote& written) {
        const auto tie = m_ties.find(note.key);
        if (tie == m_ties.end())
            return false;
        Note& first = m_part.notes[tie->second];
        if (!written.tieStarts)
            m_ties.erase(tie);
        if (first.tick + first.length != note.tick)
            return false;
        if (!first.words.empty() && !note.words.empty()) { // a verse has a syllable more here
            first.slurred = true;
            return false;
        }
        first.length += note.length;
        first.slurred = note.slurred;
        first.slides = note.slides;
        first.fermata = first.fermata || note.fermata;
        first.breathAfter = first.breathAfter || note.breathAfter;
        if (first.words.empty())
            first.words = note.words;
        return true;
    }

    /// Grace notes take their time from the note after them, and the first takes its syllable: it is sung on the beat.
    uint32_t SingGraces(Note& note) {
        if (m_graces.empty())
            return 0;
        const auto count = static_cast<uint32_t>(m_graces.size());
        const uint32_t each = std::min(m_graces.front().hasSlash ? kShortGrace : kLongGrace, note.length / 2 / count);
        uint32_t tick = note.tick;
        for (Grace& before : m_graces) {
            if (each == 0)
                break;
            Note& grace = before.note;
            grace.tick = tick;
            grace.length = each;
            grace.slurred = true;
            if (grace.words.empty())
                grace.words.swap(note.words);
            Put(grace, before.bend);
            tick += each;
        }
        m_graces.clear();
        return tick - note.tick;
    }

    /// Those that stand behind a note take their time from its end.
    void SingGracesAfter() {
        if (m_graces.empty() || m_part.notes.empty())
            return;
        const Note last = m_part.notes.back();
        const auto count = static_cast<uint32_t>(m_graces.size());
        const uint32_t each = std::min(kShortGrace, last.length / 2 / count);
        if (last.tick + last.length != m_graceTick || each == 0)
            return;
        for (size_t i = m_part.notes.size(); i-- > 0 && m_part.notes[i].tick == last.tick;) {
            m_part.notes[i].length = last.length - each * count;
            m_part.notes[i].slurred = true;
        }
        for (uint32_t i = 0; i < count; ++i) {
            Note& grace = m_graces[i].note;
            grace.tick = m_graceTick - each * (count - i);
            grace.length = each;
            grace.slurred = i + 1 < count || last.slurred;
            Put(grace, m_graces[i].bend);
        }
        m_graces.clear();
    }

    Part& m_part;
    std::set<int> m_slurs;        ///< open ones, by number
    std::map<int, size_t> m_ties; ///< key, and the note that it begins with
    std::vector<Grace> m_graces;
    uint32_t m_graceTick = 0; ///< where they stand
    uint32_t m_shift = 0;     ///< what the chord at hand begins later for its grace notes
    size_t m_lost = 0;
};

/// The dynamics over one staff.
class DynamicsReader {
public:
    void Read(const StaffMarks& marks, uint32_t tick) {
        for (const auto& [onset, level] : marks.levels)
            m_dynamics.push_back({tick + onset, Dynamic::Kind::Level, level, 0});
        for (const Wedge& wedge : marks.wedges)
            ReadWedge(wedge, tick + wedge.onset);
    }
    void Interrupt() { m_open.clear(); }

    std::vector<Dynamic> Take() {
        std::vector<const Dynamic*> levels;
        for (const Dynamic& each : m_dynamics)
            if (each.kind == Dynamic::Kind::Level)
                levels.push_back(&each);
        for (Dynamic& change : m_dynamics)
            if (change.kind != Dynamic::Kind::Level)
                change.level = LevelAt(levels, change.tick + change.length);
        return std::move(m_dynamics);
    }

private:
    void ReadWedge(const Wedge& wedge, uint32_t tick) {
        if (wedge.type != Wedge::Type::Stop) {
            m_open[wedge.number] = {
                tick, wedge.type == Wedge::Type::Crescendo ? Dynamic::Kind::Crescendo : Dynamic::Kind::Diminuendo, "",
                0};
            return;
        }
        const auto open = m_open.find(wedge.number);
        if (open == m_open.end())
            return;
        if (tick > open->second.tick) {
            open->second.length = tick - open->second.tick;
            m_dynamics.push_back(open->second);
        }
        m_open.erase(open);
    }
    /// A change leads to the mark at its end, which may stand a little behind it. The levels are in their order.
    static std::string LevelAt(const std::vector<const Dynamic*>& levels, uint32_t tick) {
        const auto isBefore = [](const Dynamic* each, uint32_t time) { return each->tick < time; };
        const auto level = std::lower_bound(levels.begin(), levels.end(), tick, isBefore);
        return level != levels.end() && (*level)->tick <= tick + kTicksPerQuarter / 2 ? (*level)->level : "";
    }

    std::vector<Dynamic> m_dynamics;
    std::map<int, Dynamic> m_open; ///< by the number of the hairpin
};

} // namespace

Voices SingPart(const WrittenPart& part, const std::vector<PlacedMeasure>& measures) {
    std::map<VoiceId, size_t> indexes;
    for (const WrittenMeasure& measure : part.measures)
        for (const auto& [id, notes] : measure.voices)
            indexes.try_emplace(id, 0);
    Voices voices;
    voices.parts.resize(indexes.size());
    std::vector<Singer> singers;
    for (auto& [id, index] : indexes) {
        index = voices.ids.size();
        voices.ids.push_back(id);
        singers.emplace_back(voices.parts[index]);
    }
    std::map<int, DynamicsReader> dynamics;
    for (const PlacedMeasure& place : measures) {
        if (place.isAfterJump) {
            std::for_each(singers.begin(), singers.end(), [](Singer& singer) { singer.Interrupt(); });
            for (auto& [staff, reader] : dynamics)
                reader.Interrupt();
        }
        if (place.index >= part.measures.size())
            continue;
        const WrittenMeasure& measure = part.measures[place.index];
        for (const auto& [id, notes] : measure.voices) {
            Singer& singer = singers[indexes[id]];
            for (const WrittenNote& note : notes)
                singer.Sing(note, place);
            singer.EndMeasure();
        }
        for (const auto& [staff, marks] : measure.staves)
            dynamics[staff].Read(marks, place.tick);
    }
    std::map<int, std::vector<Dynamic>> ofStaff;
    for (auto& [staff, reader] : dynamics)
        ofStaff[staff] = reader.Take();
    for (size_t i = 0; i < voices.parts.size(); ++i) {
        voices.lostGraces += singers[i].LostGraces();
        voices.parts[i].dynamics = ofStaff[voices.ids[i].staff];
        if (const auto clef = part.clefs.find(voices.ids[i].staff); clef != part.clefs.end())
            voices.parts[i].clef = clef->second;
    }
    return voices;
}

} // namespace torv::songs::musicxml
