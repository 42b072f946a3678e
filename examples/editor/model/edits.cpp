#include "edits.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace editor {

namespace {

bool IsBefore(const Note& a, const Note& b) { return a.tick != b.tick ? a.tick < b.tick : a.key < b.key; }

/// Sorts the notes, and has the selection follow them.
void Sort(Track& track, Selection& selection) {
    std::vector<size_t> order(track.notes.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&track](size_t a, size_t b) { return IsBefore(track.notes[a], track.notes[b]); });
    std::vector<size_t> placeOf(order.size());
    std::vector<Note> sorted(order.size());
    for (size_t i = 0; i < order.size(); ++i) {
        placeOf[order[i]] = i;
        sorted[i] = std::move(track.notes[order[i]]);
    }
    track.notes = std::move(sorted);
    for (size_t& place : selection)
        place = placeOf[place];
    std::sort(selection.begin(), selection.end());
}

/// The curve's points in [from, to) are replaced; what it had at `to` begins there again.
void ReplaceStretch(Curve& curve, CurveKind kind, uint32_t from, uint32_t to, const Curve& points) {
    const int behind = ValueAt(curve, kind, to);
    const auto isBefore = [](const CurvePoint& point, uint32_t tick) { return point.tick < tick; };
    auto at = curve.erase(std::lower_bound(curve.begin(), curve.end(), from, isBefore),
                          std::lower_bound(curve.begin(), curve.end(), to, isBefore));
    if (at == curve.end() || at->tick != to)
        at = curve.insert(at, {to, behind});
    curve.insert(at, points.begin(), points.end());
    // Points that change nothing would only grow the engine's stream.
    int value = kCurveRanges[kind].usual;
    std::erase_if(curve,
                  [&value](const CurvePoint& point) { return std::exchange(value, point.value) == point.value; });
}

} // namespace

size_t AddNote(Track& track, Note note) {
    if (track.notes.size() >= kMostNotes)
        return track.notes.size();
    const auto at = std::upper_bound(track.notes.begin(), track.notes.end(), note, IsBefore);
    const auto place = static_cast<size_t>(at - track.notes.begin());
    track.notes.insert(at, std::move(note));
    return place;
}

void MoveNotes(Track& track, Selection& selection, int64_t ticks, int keys) {
    for (const size_t place : selection) {
        const Note& note = track.notes[place];
        ticks = std::clamp<int64_t>(ticks, -int64_t{note.tick}, int64_t{kLastTick} - note.End());
        keys = std::clamp(keys, -note.key, kHighestKey - note.key);
    }
    for (const size_t place : selection) {
        track.notes[place].tick = static_cast<uint32_t>(track.notes[place].tick + ticks);
        track.notes[place].key += keys;
    }
    Sort(track, selection);
}

void StretchNotes(Track& track, const Selection& selection, int64_t ticks, uint32_t shortest) {
    for (const size_t place : selection) {
        Note& note = track.notes[place];
        const int64_t least = std::min(shortest, note.length);
        note.length = static_cast<uint32_t>(std::clamp(note.length + ticks, least, int64_t{kLastTick} - note.tick));
    }
}

bool CutNote(Track& track, size_t note, uint32_t tick) {
    if (note >= track.notes.size() || track.notes.size() >= kMostNotes || tick <= track.notes[note].tick ||
        tick >= track.notes[note].End())
        return false;
    Note second = track.notes[note];
    second.tick = tick;
    second.length = track.notes[note].End() - tick;
    second.lyric.clear();
    second.icons[kAttack].clear();
    track.notes[note].length -= second.length;
    track.notes[note].icons[kRelease].clear();
    AddNote(track, std::move(second));
    return true;
}

void EraseNotes(Track& track, Selection& selection) {
    for (auto place = selection.rbegin(); place != selection.rend(); ++place)
        track.notes.erase(track.notes.begin() + static_cast<ptrdiff_t>(*place));
    selection.clear();
}

std::vector<Note> CopyNotes(const Track& track, const Selection& selection) {
    std::vector<Note> notes;
    for (const size_t place : selection) {
        notes.push_back(track.notes[place]);
        notes.back().tick -= track.notes[selection.front()].tick;
    }
    return notes;
}

void PasteNotes(Track& track, Selection& selection, const std::vector<Note>& notes, uint32_t tick) {
    selection.clear();
    for (Note note : notes) {
        if (track.notes.size() >= kMostNotes || note.tick > kLastTick - tick ||
            note.length > kLastTick - tick - note.tick)
            break;
        note.tick += tick;
        selection.push_back(track.notes.size());
        track.notes.push_back(std::move(note));
    }
    Sort(track, selection);
}

std::vector<std::string> SyllablesOf(std::string_view line) {
    std::vector<std::string> syllables;
    std::string syllable;
    bool isInBrackets = false;
    const auto end = [&] {
        if (!syllable.empty())
            syllables.push_back(std::exchange(syllable, {}));
    };
    for (const char c : line) {
        isInBrackets = c == '[' || (isInBrackets && c != ']');
        if (!isInBrackets && (c == ' ' || c == '\t')) {
            end();
            continue;
        }
        syllable += c;
        if (!isInBrackets && c == '-')
            end();
    }
    end();
    for (std::string& each : syllables)
        if (each == "-" || each == "_")
            each.clear();
    return syllables;
}

size_t TypeLyrics(Track& track, size_t first, std::string_view line) {
    for (std::string& syllable : SyllablesOf(line)) {
        if (first >= track.notes.size())
            break;
        track.notes[first++].lyric = std::move(syllable);
    }
    return first;
}

void SetIcon(Track& track, const Selection& selection, IconSlot slot, const std::string& name) {
    for (const size_t place : selection)
        track.notes[place].icons[slot] = name;
}

void SetMark(Track& track, uint32_t tick, const std::string& icon) {
    const auto at = std::lower_bound(track.marks.begin(), track.marks.end(), tick,
                                     [](const Mark& mark, uint32_t time) { return mark.tick < time; });
    const bool isThere = at != track.marks.end() && at->tick == tick;
    if (icon.empty() && isThere)
        track.marks.erase(at);
    else if (isThere)
        at->icon = icon;
    else if (!icon.empty())
        track.marks.insert(at, {tick, icon});
}

void DrawCurve(Curve& curve, CurveKind kind, CurvePoint from, CurvePoint to) {
    if (from.tick > to.tick)
        std::swap(from, to);
    const auto [name, lowest, highest, usual] = kCurveRanges[kind];
    Curve points;
    const uint32_t first = from.tick - from.tick % kCurveStep;
    for (uint32_t tick = first; tick <= to.tick; tick += kCurveStep) {
        const double share =
            from.tick == to.tick ? 1 : (std::max(tick, from.tick) - from.tick) / double(to.tick - from.tick);
        const auto value =
            static_cast<int>(from.value + share * (to.value - from.value) + (to.value < from.value ? -0.5 : 0.5));
        points.push_back({tick, std::clamp(value, lowest, highest)});
    }
    ReplaceStretch(curve, kind, first, points.back().tick + kCurveStep, points);
}

void EraseCurve(Curve& curve, CurveKind kind, uint32_t from, uint32_t to) {
    if (from > to)
        std::swap(from, to);
    from -= from % kCurveStep;
    ReplaceStretch(curve, kind, from, to - to % kCurveStep + kCurveStep, {{from, kCurveRanges[kind].usual}});
}

} // namespace editor
