#pragma once

#include "encoding_fixture.h"

#include <algorithm>
#include <string>

/// The engine stream that a chart must become, made in the plainest way: time is looked up from the first tempo on,
/// every block finds its place by itself, and all of them are sorted at the end. It shares nothing with the library's
/// encoder.
class PlainEncoder {
public:
    std::vector<StreamEntry> written; ///< in the order of writing, which is that of messages at one tick
    std::vector<StreamEntry> placed;  ///< by tick, and by time within one
    long lastTick = 0;
    long lastTime = 0;

    /// Times and samples as `settings` says.
    PlainEncoder(Chart& chart, const CxQuillMidiEncoder& settings) : m_chart(chart), m_settings(settings) {
        const int mode = m_track.GetDynamicsMode();
        for (size_t i = 0; i < chart.Events().size(); ++i) {
            const auto& [tick, event] = chart.Events()[i];
            if (event->type == torv::kEventAnote)
                Write(tick, RecordOf<tagCsqEventAnote>(event), i);
            else if (event->type == torv::kEventSinger)
                Write(tick, *IconOf<CIconSinger>(RecordOf<tagCsqEventSinger>(event).iconHandle));
            else if (mode == 0)
                Write(tick, *IconOf<CIconDynamics>(RecordOf<tagCsqEventAicon>(event).iconHandle));
        }
        if (mode == 1)
            Step(PointsOf(*m_track.GetDynamicsBreakPointList()), 0x63);
        const int selectors[] = {0x30, 0x31, 0x32, 0x33, 0x40, 0x41, 0x42, 0x43, 0x50,
                                 0x51, 0x52, 0x53, 0x60, 0x61, 0x62, 0x63, 0x70};
        for (int i = 0; i < 17; ++i) {
            m_selector = selectors[i];
            if (const CBreakPointList* const list = m_track.GetVoiceControlBreakPointList(i))
                Step(PointsOf(*list), 0x55);
        }
        Step(PointsOf(*m_track.GetTremoloDepthBreakPointList()), 0x66);
        Step(PointsOf(*m_track.GetPitchBendBreakPointList()), 0x54);
        Step(PointsOf(*m_track.GetPitchBendSensBreakPointList()), 0x67);
        placed = written;
        std::stable_sort(placed.begin(), placed.end(), [](const StreamEntry& a, const StreamEntry& b) {
            return a.tick != b.tick ? a.tick < b.tick : a.time < b.time;
        });
    }

    /// In a file every message is an event of its own, `interval` ticks behind the one before it in its block, and
    /// behind all that was written to its tick.
    std::vector<StreamEntry> Messages(DWORD interval) const {
        std::vector<StreamEntry> messages;
        for (const StreamEntry& block : written)
            for (DWORD i = 0; i < block.bytes.size(); i += 3) {
                const auto at = block.bytes.begin() + static_cast<std::ptrdiff_t>(i);
                messages.push_back({block.tick + i / 3 * interval, 0, Bytes(at, at + 3)});
            }
        std::stable_sort(messages.begin(), messages.end(), [](auto& a, auto& b) { return a.tick < b.tick; });
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

    template <class Record>
    static const Record& RecordOf(const tagEventHeader* event) {
        return *reinterpret_cast<const Record*>(event);
    }
    template <class Icon>
    Icon* IconOf(DWORD handle) const {
        return dynamic_cast<Icon*>(m_track.LookupIconObject(torv::PointerOf(handle)));
    }

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
        for (const auto& [tick, tempo] : m_chart.Tempos()) {
            const Tempo next{static_cast<long>(tempo), tick, now.Time(tick)};
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

    void Place(long time, const Bytes& bytes) {
        written.push_back({static_cast<DWORD>(TickAt(time)), static_cast<LONG>(time), bytes});
    }
    void Raise(long tick) {
        if (tick > lastTick) {
            lastTick = tick;
            lastTime = TimeAt(tick);
        }
    }

    void Write(long tick, const CIconSinger& singer) {
        const long delay = std::min(TimeAt(tick), m_presend);
        Block language(m_channel, 0x60, delay);
        language.Put(2, singer.GetLanguageCode() % 128);
        Block program(m_channel, 0x53, delay);
        program.Put(2, singer.GetProgramCode() % 128);
        language.bytes.insert(language.bytes.end(), program.bytes.begin(), program.bytes.end());
        Place(TimeAt(tick) - delay, language.bytes);
        Raise(tick);
    }

    void Write(long tick, CIconDynamics& icon) {
        if (TimeAt(tick) < m_presend)
            return;
        const auto above = [this](int value) { return std::clamp(m_level + value, 0, 127); };
        if (torv::ArticulationFromID(icon.GetIconID()) == 1) {
            m_level = icon.GetStartDynamics();
            Value(tick, 0x63, m_level);
            Raise(tick);
            return;
        }
        const auto length = static_cast<long>(icon.GetLength());
        const Points points = PointsOf(*icon.GetDynamicsBPList());
        Points curve;
        if (points.empty() || points[0].at > 0)
            curve.push_back({tick, m_level});
        for (const Point& point : points)
            curve.push_back({tick + Scale(point.at, length, 10000), above(point.value)});
        curve.push_back({tick + length, above(icon.GetEndDynamics())});
        Curve(curve, 0x63, CxQuillMidiEncoder::kDynamicsSlot);
        m_level = above(icon.GetEndDynamics());
    }

    /// One value that sounds at a tick.
    void Value(long tick, int number, int value) {
        Block block(m_channel, number, m_presend);
        int parameter = 2;
        if (number == 0x55)
            block.Put(parameter++, m_selector);
        if (number == 0x54)
            block.Put(parameter, (value + 8192) / 128 & 127, (value + 8192) & 127);
        else if (number == 0x67)
            block.Put(parameter, value & 127, 0);
        else
            block.Put(parameter, value & 127);
        Place(TimeAt(tick) - m_presend, block.bytes);
    }

    void Step(const Points& points, int number) {
        long tick = 0;
        for (const Point& point : points) {
            tick = std::max(tick, point.at);
            if (TimeAt(tick) >= m_presend)
                Value(tick, number, point.value);
        }
        Raise(tick);
    }

    void Curve(const Points& points, int number, CxQuillMidiEncoder::ResolutionSlot slot) {
        const int step = m_settings.GetExtractResolutionAt(slot);
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
            if (tick != start.at)
                sample += static_cast<int>(Scale(next.value - start.value, tick - start.at, next.at - start.at));
            now = tick;
            if (TimeAt(now) >= m_presend) {
                Value(now, number, sample);
                sent = sample;
            }
            tick += step;
        }
        if (tick - step < start.at && start.value != sent)
            Value(now, number, start.value);
        Raise(now);
    }

    void Write(long tick, const tagCsqEventAnote& note, size_t place) {
        const CLyricObject& lyric = *m_track.LookupLyricObject(torv::PointerOf(note.lyricHandle));
        const int syllables = lyric.GetElementCount();
        if (TimeAt(tick) < m_presend || syllables == 0)
            return;
        const bool isFromPrevious = note.noteAttribute & 1;
        const bool isToNext = note.noteAttribute & 2;
        const CIconExpression *attack = nullptr, *release = nullptr, *transition = nullptr;
        if (const auto* const head = IconOf<CIconExpression>(note.noteHeadHandle)) {
            if (StatusOf(head) == 2)
                transition = head;
            else if (StatusOf(head) != 1)
                return;
            else if (!isFromPrevious)
                attack = head;
        }
        if (const auto* const tail = IconOf<CIconExpression>(note.noteTailHandle)) {
            if (StatusOf(tail) == 2)
                transition = tail;
            else if (StatusOf(tail) == 3)
                release = tail;
            else
                return;
        }
        if (isToNext) {
            const auto isNote = [](const auto& event) { return event.second->type == torv::kEventAnote; };
            const auto behind = m_chart.Events().begin() + static_cast<std::ptrdiff_t>(place) + 1;
            const auto next = std::find_if(behind, m_chart.Events().end(), isNote);
            if (next == m_chart.Events().end())
                return;
            const auto* const head = IconOf<CIconExpression>(RecordOf<tagCsqEventAnote>(next->second).noteHeadHandle);
            if (head && StatusOf(head) == 1)
                transition = head;
        }

        const long noteEnd = tick + static_cast<long>(note.noteLength);
        auto* const vibrato = IconOf<CIconVibrato>(note.vibratoHandle);
        const long vibratoStart = vibrato ? std::max(0L, tick + note.vibratoOffset) : 0;
        const long vibratoLength = vibrato ? static_cast<long>(vibrato->GetLength()) : 0;
        const long vibratoEnd = vibratoStart + vibratoLength;
        long start = tick;
        long time = TimeAt(start);
        for (int i = 0; i < syllables; ++i) {
            const CLyricElement& syllable = *lyric.GetElementAt(i);
            const bool isFirst = i == 0;
            const bool isLast = i + 1 == syllables;
            const long share = static_cast<long>(note.noteLength * static_cast<double>(syllable.GetDeltaRate()));
            const long end = isLast ? noteEnd : std::min(noteEnd, start + share);
            const long duration = (TimeAt(end) - time) & 0xFFFF;
            const int type = (isFirst && !isFromPrevious ? 1 : 0) + (isLast && !isToNext ? 2 : 0);

            Block block(note.header.status & 15, 0x50, m_presend);
            int shifted = note.noteNumber + m_track.GetTranspose();
            while (shifted < 0)
                shifted += 12;
            while (shifted > 127)
                shifted -= 12;
            block.Put(2, shifted);
            block.Put(3, note.noteDynamics & 127);
            block.Put(4, static_cast<int>(duration / 128 & 127), static_cast<int>(duration & 127));
            block.Put(5, type);
            if (isFirst && attack)
                PutShape(block, 6, *attack);
            if (isLast && release)
                PutShape(block, 9, *release);
            const long from = std::max(start, vibratoStart);
            const long to = std::min(end, vibratoEnd);
            if (from < to) {
                auto extent = static_cast<int>(Scale(to - from, 127, end - start));
                if (vibratoEnd > end && type < 2)
                    extent = 0;
                if (vibratoEnd <= end && extent == 0)
                    extent = 1;
                PutID(block, 12, *vibrato);
                block.Put(13, torv::ArticulationFromID(vibrato->GetIconID()), extent);
                block.Put(14, static_cast<int>(Scale(from - start, 127, end - start)));
            }
            if (isLast && transition) {
                PutID(block, 15, *transition);
                block.Put(16, torv::ArticulationFromID(transition->GetIconID()), transition->GetDuration() & 127);
            }
            block.Put(17, 1);
            std::string text;
            std::map<size_t, int> advancements;
            for (int k = 0; k < syllable.GetPhonemeCharaCount(); ++k) {
                advancements[text.size()] = syllable.GetConsonantAdvancement(k);
                text += syllable.GetPhonemeChara(k);
            }
            text.resize(std::min<size_t>(text.size(), 16));
            block.Put(18, static_cast<int>(text.size()));
            for (size_t c = 0; c < text.size(); ++c) {
                block.Put(19 + static_cast<int>(c), text[c], advancements.contains(c) ? advancements[c] : -1);
            }
            block.Put(127, 127);
            Place(time - m_presend, block.bytes);
            start += (end - start) & 0xFFFF;
            time += duration;
        }
        if (vibrato) {
            const auto curve = [&](int head, const CBreakPointList& list, int number, auto slot) {
                Points absolute{{vibratoStart, head}};
                for (const Point& point : PointsOf(list))
                    absolute.push_back({vibratoStart + Scale(point.at, vibratoLength, 10000), point.value});
                Curve(absolute, number, slot);
            };
            using E = CxQuillMidiEncoder;
            curve(vibrato->GetStartDepth(), *vibrato->GetDepthBPList(), 0x65, E::kVibratoDepthSlot);
            curve(vibrato->GetStartRate(), *vibrato->GetRateBPList(), 0x64, E::kVibratoRateSlot);
        }
        Raise(noteEnd);
    }

    static int StatusOf(const CIconObject* icon) { return torv::StatusFromID(icon->GetIconID()); }
    static void PutID(Block& block, int parameter, const CIconExpression& icon) {
        block.Put(parameter, icon.GetExpressionID() >> 8, icon.GetExpressionID() & 0xFF);
    }
    static void PutShape(Block& block, int parameter, const CIconExpression& shape) {
        PutID(block, parameter, shape);
        block.Put(parameter + 1, torv::ArticulationFromID(shape.GetIconID()), shape.GetDepth() & 127);
        block.Put(parameter + 2, shape.GetDuration() & 127);
    }

    Chart& m_chart;
    const CxQuillMidiEncoder& m_settings;
    const CSequenceObject& m_track = m_chart.Track();
    const int m_channel = m_track.GetChannel();
    const long m_presend = static_cast<long>(m_settings.GetPresendTime());
    int m_level = 72;
    int m_selector = 0;
};
