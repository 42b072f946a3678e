#pragma once

#include "torv/platform/platform.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// A track written down in plain records, and the engine stream that it must become, made in the plainest way: time is
/// looked up from the first tempo on, every block finds its place by itself, and all of them are sorted at the end. It
/// shares nothing with the library's encoder.
namespace plain {

using Bytes = std::vector<BYTE>;

struct Point {
    long at; ///< tick; in icons ten-thousandths of the length
    int value;
};
using Points = std::vector<Point>;

struct Shape {
    int status, index, high, low, duration, depth;
};
struct Vibrato {
    int index, high, low;
    long length, offset;
    int depth, rate;
    Points depths, rates;
};
struct Phoneme {
    std::string text;
    int advancement;
};
struct Syllable {
    float share;
    std::vector<Phoneme> phonemes;
};
struct Note {
    long tick, length;
    int number, velocity, channel, attribute;
    std::optional<Shape> head, tail;
    std::optional<Vibrato> vibrato;
    std::vector<Syllable> syllables;
};
struct Level {
    long tick, length;
    int articulation, start, end;
    Points points;
};
struct Singer {
    long tick;
    int language, program;
};

struct Song {
    std::map<long, long> tempos; ///< by tick
    std::vector<std::variant<Note, Level, Singer>> events;
    int channel, transpose, dynamicsMode;
    Points dynamics, tremolo, bend, sensitivity;
    std::map<int, Points> controls; ///< by index
    long presend;
    int dynamicsStep, depthStep, rateStep; ///< ticks, or -1: the points only
};

struct Placed {
    long tick, time;
    Bytes bytes;
    bool operator==(const Placed&) const = default;
};

class Encoder {
public:
    std::vector<Placed> written; ///< in the order of writing, which is that of messages at one tick
    std::vector<Placed> placed;  ///< by tick, and by time within one
    long lastTick = 0;
    long lastTime = 0;

    explicit Encoder(const Song& song) : m_song(song) {
        for (size_t i = 0; i < song.events.size(); ++i) {
            if (const Note* note = std::get_if<Note>(&song.events[i]))
                Write(*note, i);
            else if (const Singer* singer = std::get_if<Singer>(&song.events[i]))
                Write(*singer);
            else if (song.dynamicsMode == 0)
                Write(std::get<Level>(song.events[i]));
        }
        if (song.dynamicsMode == 1)
            Step(song.dynamics, 0x63);
        const int selectors[] = {0x30, 0x31, 0x32, 0x33, 0x40, 0x41, 0x42, 0x43, 0x50,
                                 0x51, 0x52, 0x53, 0x60, 0x61, 0x62, 0x63, 0x70};
        for (const auto& [index, points] : song.controls) {
            m_selector = selectors[index];
            Step(points, 0x55);
        }
        Step(song.tremolo, 0x66);
        Step(song.bend, 0x54);
        Step(song.sensitivity, 0x67);
        placed = written;
        std::stable_sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) {
            return a.tick != b.tick ? a.tick < b.tick : a.time < b.time;
        });
    }

    /// In a file every message is an event of its own, `interval` ticks behind the one before it in its block, and
    /// behind all that was written to its tick.
    std::vector<Placed> Messages(DWORD interval) const {
        std::map<long, std::vector<Placed>> ticks;
        for (const Placed& block : written)
            for (size_t i = 0; i < block.bytes.size(); i += 3) {
                const long tick = block.tick + static_cast<long>(i / 3 * interval);
                const auto at = block.bytes.begin() + static_cast<std::ptrdiff_t>(i);
                ticks[tick].push_back({tick, 0, Bytes(at, at + 3)});
            }
        std::vector<Placed> messages;
        for (const auto& [tick, some] : ticks)
            messages.insert(messages.end(), some.begin(), some.end());
        return messages;
    }

private:
    struct Block {
        int channel, number;
        Bytes bytes;
        Block(int onChannel, int ofNumber, long delay) : channel(onChannel), number(ofNumber) {
            Put(0, 0, 0);
            Put(1, static_cast<int>(delay / 128), static_cast<int>(delay % 128));
        }
        void Put(int parameter, int msb, int lsb = -1) {
            const int pairs[][2] = {{99, number}, {98, parameter}, {6, msb}, {38, lsb}};
            for (const auto& [controller, value] : pairs)
                if (value >= 0 && (controller != 38 || value < 128)) // what seven bits do not hold is no LSB
                    for (const int byte : {0xB0 + channel, controller, value})
                        bytes.push_back(static_cast<BYTE>(byte));
        }
    };

    static long Scale(long long a, long long b, long long c) { // to nearest, halves away from zero
        const long long product = a * b;
        return static_cast<long>(product >= 0 ? (2 * product + c) / (2 * c) : -((-2 * product + c) / (2 * c)));
    }

    struct Tempo {
        long tempo, tick, time;
        long Time(long at) const { return time + static_cast<long>((1LL * (at - tick) * tempo + 240) / 480 / 1000); }
        long Tick(long at) const {
            return tick + static_cast<long>(((at - time) * 480000LL + tempo / 2) / tempo); // to the nearest
        }
    };
    template <class Applies>
    Tempo TempoWhere(Applies applies) const {
        Tempo now{500000, 0, 0};
        for (const auto& [tick, tempo] : m_song.tempos) {
            const Tempo next{tempo, tick, now.Time(tick)};
            if (!applies(next))
                break;
            now = next;
        }
        return now;
    }
    long TimeAt(long tick) const {
        return TempoWhere([tick](const Tempo& tempo) { return tempo.tick <= tick; }).Time(tick);
    }
    long TickAt(long time) const {
        return time <= 0 ? 0 : TempoWhere([time](const Tempo& tempo) { return tempo.time <= time; }).Tick(time);
    }

    void Place(long time, const Bytes& bytes) { written.push_back({TickAt(time), time, bytes}); }
    void Raise(long tick) {
        if (tick > lastTick) {
            lastTick = tick;
            lastTime = TimeAt(tick);
        }
    }

    void Write(const Singer& singer) {
        const long delay = std::min(TimeAt(singer.tick), m_song.presend);
        Block language(m_song.channel, 0x60, delay);
        language.Put(2, singer.language % 128);
        Block program(m_song.channel, 0x53, delay);
        program.Put(2, singer.program % 128);
        language.bytes.insert(language.bytes.end(), program.bytes.begin(), program.bytes.end());
        Place(TimeAt(singer.tick) - delay, language.bytes);
        Raise(singer.tick);
    }

    void Write(const Level& level) {
        if (TimeAt(level.tick) < m_song.presend)
            return;
        const auto above = [this](int value) { return std::clamp(m_level + value, 0, 127); };
        if (level.articulation == 1) {
            Value(level.tick, 0x63, level.start);
            m_level = level.start;
            Raise(level.tick);
            return;
        }
        Points curve;
        if (level.points.empty() || level.points[0].at > 0)
            curve.push_back({level.tick, m_level});
        for (const Point& point : level.points)
            curve.push_back({level.tick + Scale(point.at, level.length, 10000), above(point.value)});
        curve.push_back({level.tick + level.length, above(level.end)});
        Curve(curve, 0x63, m_song.dynamicsStep);
        m_level = above(level.end);
    }

    /// One value that sounds at a tick.
    void Value(long tick, int number, int value) {
        Block block(m_song.channel, number, m_song.presend);
        int parameter = 2;
        if (number == 0x55)
            block.Put(parameter++, m_selector);
        if (number == 0x54)
            block.Put(parameter, (value + 8192) / 128 & 127, (value + 8192) & 127);
        else if (number == 0x67)
            block.Put(parameter, value & 127, 0);
        else
            block.Put(parameter, value & 127);
        Place(TimeAt(tick) - m_song.presend, block.bytes);
    }

    void Step(const Points& points, int number) {
        long tick = 0;
        for (const Point& point : points) {
            tick = std::max(tick, point.at);
            if (TimeAt(tick) >= m_song.presend)
                Value(tick, number, point.value);
        }
        Raise(tick);
    }

    void Curve(const Points& points, int number, int step) {
        if (step < 0)
            return Step(points, number);
        Point start = points[0];
        long tick = start.at;
        long now = tick;
        int sent = -1;
        for (size_t i = 1; i < points.size();) {
            const Point& next = points[i];
            int sample = start.value;
            if (tick > next.at) {
                start = next;
                ++i;
                continue;
            }
            if (tick != start.at) {
                if (next.at == start.at) {
                    ++i;
                    continue;
                }
                sample += static_cast<int>(Scale(next.value - start.value, tick - start.at, next.at - start.at));
            }
            now = tick;
            if (TimeAt(now) >= m_song.presend) {
                Value(now, number, sample);
                sent = sample;
            }
            tick += step;
        }
        if (tick - step < start.at && start.value != sent)
            Value(now, number, start.value);
        Raise(now);
    }

    void Write(const Note& note, size_t place) {
        if (TimeAt(note.tick) < m_song.presend || note.syllables.empty())
            return;
        const bool isFromPrevious = note.attribute & 1;
        const bool isToNext = note.attribute & 2;
        std::optional<Shape> attack, release, transition;
        if (note.head) {
            if (note.head->status == 2)
                transition = note.head;
            else if (note.head->status != 1)
                return;
            else if (!isFromPrevious)
                attack = note.head;
        }
        if (note.tail) {
            if (note.tail->status == 2)
                transition = note.tail;
            else if (note.tail->status == 3)
                release = note.tail;
            else
                return;
        }
        if (isToNext) {
            const Note* next = nullptr;
            for (size_t i = place + 1; !next && i < m_song.events.size(); ++i)
                next = std::get_if<Note>(&m_song.events[i]);
            if (!next)
                return;
            if (next->head && next->head->status == 1)
                transition = next->head;
        }

        const long noteEnd = note.tick + note.length;
        const long vibratoStart = note.vibrato ? std::max(0L, note.tick + note.vibrato->offset) : 0;
        const long vibratoEnd = note.vibrato ? vibratoStart + note.vibrato->length : 0;
        long start = note.tick;
        long time = TimeAt(start);
        for (size_t i = 0; i < note.syllables.size(); ++i) {
            const bool isFirst = i == 0;
            const bool isLast = i + 1 == note.syllables.size();
            const long share = static_cast<long>(note.length * static_cast<double>(note.syllables[i].share));
            const long end = isLast ? noteEnd : std::min(noteEnd, start + share);
            const long duration = (TimeAt(end) - time) & 0xFFFF;
            const int type = (isFirst && !isFromPrevious ? 1 : 0) + (isLast && !isToNext ? 2 : 0);

            Block block(note.channel, 0x50, m_song.presend);
            int shifted = note.number + m_song.transpose;
            while (shifted < 0)
                shifted += 12;
            while (shifted > 127)
                shifted -= 12;
            block.Put(2, shifted);
            block.Put(3, note.velocity & 127);
            block.Put(4, static_cast<int>(duration / 128 & 127), static_cast<int>(duration & 127));
            block.Put(5, type);
            if (isFirst && attack)
                PutShape(block, 6, *attack, attack->depth);
            if (isLast && release)
                PutShape(block, 9, *release, 64); // such icons have no depth
            const long from = std::max(start, vibratoStart);
            const long to = std::min(end, vibratoEnd);
            if (from < to) {
                auto extent = static_cast<int>(Scale(to - from, 127, end - start));
                if (vibratoEnd > end && type < 2)
                    extent = 0;
                if (vibratoEnd <= end && extent == 0)
                    extent = 1;
                block.Put(12, note.vibrato->high, note.vibrato->low);
                block.Put(13, note.vibrato->index, extent);
                block.Put(14, static_cast<int>(Scale(from - start, 127, end - start)));
            }
            if (isLast && transition) {
                block.Put(15, transition->high, transition->low);
                block.Put(16, transition->index, transition->duration & 127);
            }
            block.Put(17, 1);
            std::string text;
            std::map<size_t, int> advancements;
            for (const Phoneme& phoneme : note.syllables[i].phonemes) {
                advancements[text.size()] = phoneme.advancement;
                text += phoneme.text;
            }
            text.resize(std::min<size_t>(text.size(), 16));
            block.Put(18, static_cast<int>(text.size()));
            for (size_t c = 0; c < text.size(); ++c) {
                block.Put(19 + static_cast<int>(c), text[c], advancements.contains(c) ? advancements[c] : -1);
            }
            block.Put(127, 127);
            Place(time - m_song.presend, block.bytes);
            start += (end - start) & 0xFFFF;
            time += duration;
        }
        if (note.vibrato) {
            const auto curve = [&](int head, const Points& points, int number, int step) {
                Points absolute{{vibratoStart, head}};
                for (const Point& point : points)
                    absolute.push_back({vibratoStart + Scale(point.at, note.vibrato->length, 10000), point.value});
                Curve(absolute, number, step);
            };
            curve(note.vibrato->depth, note.vibrato->depths, 0x65, m_song.depthStep);
            curve(note.vibrato->rate, note.vibrato->rates, 0x64, m_song.rateStep);
        }
        Raise(noteEnd);
    }

    static void PutShape(Block& block, int parameter, const Shape& shape, int depth) {
        block.Put(parameter, shape.high, shape.low);
        block.Put(parameter + 1, shape.index, depth & 127);
        block.Put(parameter + 2, shape.duration & 127);
    }

    const Song& m_song;
    int m_level = 72;
    int m_selector = 0;
};

} // namespace plain
