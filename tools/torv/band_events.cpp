#include "band_events.h"

#include <torv/songs/song_clock.h>

#include <algorithm>
#include <cmath>
#include <iterator>

using namespace torv::songs;

namespace {

constexpr int kHighestKey = 127;

/// What notation programs play marks of loudness with.
constexpr struct {
    const char* level;
    int velocity;
} kVelocities[] = {{"ppp", 16}, {"pp", 33}, {"p", 49}, {"mp", 64}, {"mf", 80}, {"f", 96}, {"ff", 112}, {"fff", 126}};

/// The loudness that a part's marks give a note.
class Loudness {
public:
    explicit Loudness(const Part& part) : m_part(part) {}
    int VelocityOf(const Note& note) {
        for (; m_next < m_part.dynamics.size() && m_part.dynamics[m_next].tick <= note.tick; ++m_next)
            for (const auto& row : kVelocities)
                if (m_part.dynamics[m_next].level == row.level)
                    m_velocity = row.velocity;
        return m_velocity > 0 ? m_velocity : note.velocity;
    }

private:
    const Part& m_part;
    size_t m_next = 0;
    int m_velocity = 0;
};

class Collector {
public:
    Collector(const Song& song, const BandPlan& plan) : m_clock(song.tempos), m_plan(plan) {}

    void Add(const Part& part, int channel) {
        const auto put = [&](uint32_t tick, BandEvent::Kind kind, int number, double value) {
            m_events.push_back({FrameOf(tick), kind, channel, number, value});
        };
        for (const Controller& controller : part.controllers)
            put(controller.tick, BandEvent::Kind::Controller, controller.number, controller.value);
        for (const PitchBend& bend : part.bends)
            put(bend.tick, BandEvent::Kind::Bend, 0, bend.semitones);
        Loudness loudness(part);
        for (const Note& note : part.notes) {
            const int key = note.key + (part.IsPercussion() ? 0 : m_plan.transpose);
            const int velocity = loudness.VelocityOf(note);
            if (key < 0 || key > kHighestKey)
                continue;
            put(note.tick, BandEvent::Kind::NoteOn, key, velocity);
            put(note.tick + (note.staccato ? (note.length + 1) / 2 : note.length), BandEvent::Kind::NoteOff, key, 0);
        }
    }
    std::vector<BandEvent> Take() {
        std::stable_sort(m_events.begin(), m_events.end(), [](const BandEvent& a, const BandEvent& b) {
            return a.frame != b.frame ? a.frame < b.frame : a.kind < b.kind;
        });
        return std::move(m_events);
    }

private:
    int64_t FrameOf(uint32_t tick) const {
        return std::llround((m_clock.SecondsAt(tick) - m_plan.start) * m_plan.rate);
    }

    const SongClock m_clock;
    const BandPlan& m_plan;
    std::vector<BandEvent> m_events;
};

} // namespace

std::vector<BandEvent> BandEventsOf(const Song& song, const BandPlan& plan) {
    Collector collector(song, plan);
    for (size_t i = 0; i < plan.parts.size(); ++i)
        collector.Add(song.parts[plan.parts[i]], static_cast<int>(i));
    return collector.Take();
}
