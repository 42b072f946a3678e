#include "torv/songs/musicxml_swing.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace torv::songs::musicxml {

namespace {

constexpr uint32_t kNear = 2; // ticks: divisions need not go into 480

/// The pairs of one measure, from its first beat on or, of a pickup, before its last one.
class SwungMeasure {
public:
    SwungMeasure(const std::vector<Swing>& swings, const WrittenMeasure& measure, bool isPickup)
        : m_swings(swings), m_length(measure.length) {
        const uint32_t pair = 2 * swings.front().unit;
        m_before = isPickup && measure.length % pair > 0 ? pair - measure.length % pair : 0;
    }

    void Play(WrittenMeasure& measure) {
        for (auto& [id, notes] : measure.voices)
            Play(notes);
        for (auto& [staff, marks] : measure.staves) {
            for (auto& [onset, level] : marks.levels)
                onset = m_moved.count(onset) > 0 ? Moved(onset) : onset;
            for (Wedge& wedge : marks.wedges)
                wedge.onset = m_moved.count(wedge.onset) > 0 ? Moved(wedge.onset) : wedge.onset;
        }
    }

private:
    void Play(std::vector<WrittenNote>& notes) {
        m_others.clear();
        for (const WrittenNote& note : notes) {
            const Swing& swing = SwingAt(note.onset);
            const uint32_t in = (note.onset + m_before) % (2 * swing.unit);
            if (in > kNear && std::max(in, swing.unit) - std::min(in, swing.unit) > kNear)
                m_others.insert(PairAt(note.onset, swing));
        }
        for (WrittenNote& note : notes) {
            const uint32_t end = Place(note.onset + note.note.length);
            const uint32_t onset = Place(note.onset);
            if (onset != note.onset)
                m_moved.insert(note.onset);
            note.onset = onset;
            note.note.length = std::max(end, onset + 1) - onset;
        }
    }
    const Swing& SwingAt(uint32_t tick) const {
        size_t at = 0;
        while (at + 1 < m_swings.size() && m_swings[at + 1].onset <= tick)
            ++at;
        return m_swings[at];
    }
    /// Where it begins, counted from before the measure.
    uint32_t PairAt(uint32_t tick, const Swing& swing) const {
        return (tick + m_before) / (2 * swing.unit) * (2 * swing.unit);
    }
    uint32_t Place(uint32_t tick) const {
        const Swing& swing = SwingAt(tick);
        return m_others.count(PairAt(tick, swing)) > 0 ? tick : Moved(tick);
    }
    uint32_t Moved(uint32_t tick) const {
        const Swing& swing = SwingAt(tick);
        const uint32_t pair = PairAt(tick, swing);
        const uint32_t in = tick + m_before - pair;
        const bool isWhole = pair + 2 * swing.unit <= m_length + m_before;
        if (!isWhole || std::max(in, swing.unit) - std::min(in, swing.unit) > kNear)
            return tick;
        const uint32_t moved = pair + static_cast<uint32_t>(std::lround(2 * swing.unit * swing.share));
        return std::max(moved, m_before) - m_before;
    }

    const std::vector<Swing>& m_swings; ///< by onset, the first from the beginning on
    const uint32_t m_length;
    uint32_t m_before = 0;       ///< ticks that the first pair lacks
    std::set<uint32_t> m_others; ///< pairs with notes that stand elsewhere, of the voice at hand
    std::set<uint32_t> m_moved;  ///< where notes stood
};

} // namespace

void PlaySwing(std::vector<WrittenPart>& parts) {
    size_t count = 0;
    for (const WrittenPart& part : parts)
        count = std::max(count, part.measures.size());
    Swing now;
    for (size_t i = 0; i < count; ++i) {
        std::vector<Swing> swings{now};
        swings.front().onset = 0;
        for (const WrittenPart& part : parts)
            if (i < part.measures.size())
                swings.insert(swings.end(), part.measures[i].swings.begin(), part.measures[i].swings.end());
        std::stable_sort(swings.begin(), swings.end(),
                         [](const Swing& a, const Swing& b) { return a.onset < b.onset; });
        while (swings.size() > 1 && swings[1].onset == 0)
            swings.erase(swings.begin());
        now = swings.back();
        if (std::all_of(swings.begin(), swings.end(), [](const Swing& swing) { return swing.share == 0.5; }))
            continue;
        for (WrittenPart& part : parts)
            if (i < part.measures.size())
                SwungMeasure(swings, part.measures[i], i == 0 || part.measures[i].isPickup).Play(part.measures[i]);
    }
}

} // namespace torv::songs::musicxml
