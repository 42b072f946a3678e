#include "own_icons.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace torv::c {

namespace {

constexpr UINT kJoinedToNext = 2;
constexpr DWORD kVibratoDelay = 350; // milliseconds, as is the next one
constexpr DWORD kShortestWithDelay = 600;
constexpr const char* kNone = "none";

const songs::IconKind* const kKinds[] = {&songs::kAttacks, &songs::kReleases, &songs::kTransitions, &songs::kVibratos};

/// The song's notes that a voice sings have the tick and the key that they have there.
const IconNames* IconsAt(const songs::Part& part, const PartPlanning& planning, const songs::SungNote& sung) {
    const auto found = std::lower_bound(
        part.notes.begin(), part.notes.end(), sung, [](const auto& note, const songs::SungNote& wanted) {
            return note.tick != wanted.tick ? note.tick < wanted.tick : note.key < wanted.key;
        });
    if (found == part.notes.end() || found->tick != sung.tick || found->key != sung.key)
        return nullptr;
    return &planning.noteIcons[static_cast<size_t>(found - part.notes.begin())];
}

class Icons {
public:
    Icons(CSequenceObject& track, const songs::Databases& databases, const songs::Score& score)
        : m_track(track), m_databases(databases) {
        score.song->GetMasterTrack()->GetSequenceTimeMap(m_map);
    }

    /// A handle for a new icon, null for "none".
    void* Attach(const std::string& name, torv_icon_kind kind, DWORD length) {
        if (name == kNone)
            return nullptr;
        CIconObject* const icon = m_databases.Manager().CreateIconObject(FindIcon(m_databases, *kKinds[kind], name));
        OrBadAlloc(icon);
        if (kind == TORV_ICON_VIBRATO)
            icon->SetLength(length);
        void* const handle = m_track.AttachIconObject(icon);
        if (!handle)
            delete icon;
        OrBadAlloc(handle);
        return handle;
    }

    /// Where a vibrato sets in, in ticks from its note's start: late in a long one.
    DWORD VibratoDelay(DWORD tick, DWORD length) {
        int hint = 0;
        const DWORD start = CMasterTrack::SearchTimePosition(tick, m_map, hint);
        const DWORD milliseconds = CMasterTrack::SearchTimePosition(tick + length, m_map, hint) - start;
        return milliseconds < kShortestWithDelay
                   ? 0
                   : static_cast<DWORD>(static_cast<uint64_t>(length) * kVibratoDelay / milliseconds);
    }

    static void OrBadAlloc(const void* made) {
        if (!made)
            throw std::bad_alloc();
    }

private:
    CSequenceObject& m_track;
    const songs::Databases& m_databases;
    CArray<tagSequenceTimeMap> m_map;
};

/// A piece of a note: a very long one stands in the score as several.
void Dress(CCsqEventAnote& cursor, const IconNames& names, bool isFirst, bool isLast, Icons& icons) {
    if (isFirst && !names[TORV_ICON_ATTACK].empty())
        cursor.SetNoteHeadIconHandle(icons.Attach(names[TORV_ICON_ATTACK], TORV_ICON_ATTACK, 0), 0);
    const auto tail = cursor.GetNoteAttribute() & kJoinedToNext ? TORV_ICON_TRANSITION : TORV_ICON_RELEASE;
    if (isLast && !names[tail].empty())
        cursor.SetNoteTailIconHandle(icons.Attach(names[tail], tail, 0), 0);
    if (!names[TORV_ICON_VIBRATO].empty()) {
        const DWORD length = cursor.GetNoteLength();
        const DWORD delay = isFirst ? icons.VibratoDelay(cursor.GetPosition(), length) : 0;
        cursor.SetVibratoIconHandle(icons.Attach(names[TORV_ICON_VIBRATO], TORV_ICON_VIBRATO, length - delay), 1);
        cursor.SetVibratoOffset(static_cast<int>(delay));
    }
    cursor.Write();
}

void AddPoint(CBreakPointList& list, DWORD tick, double value) {
    tagBreakPoint point{static_cast<LONG>(tick), static_cast<SHORT>(std::lround(value)), 0};
    list.AddTail(point);
}

/// The engine's bend is 14 bits of a sensitivity in whole semitones, which is the least that the curve needs.
void AddPitch(CSequenceObject& track, DWORD lead, const std::vector<torv_point>& points) {
    constexpr double kMostBend = 8191;
    constexpr double kBends = 8192;
    double most = 1;
    for (const torv_point& point : points)
        most = std::max(most, std::ceil(std::abs(static_cast<double>(point.value))));
    track.GetPitchBendSensBreakPointList()->RemoveAll(); // a file's own bends
    track.GetPitchBendBreakPointList()->RemoveAll();
    AddPoint(*track.GetPitchBendSensBreakPointList(), lead, most);
    for (const torv_point& point : points)
        AddPoint(*track.GetPitchBendBreakPointList(), lead + point.tick,
                 std::min(point.value / most * kBends, kMostBend));
}

CBreakPointList* ListOf(CSequenceObject& track, int32_t curve) {
    if (curve == TORV_CURVE_DYNAMICS)
        return track.GetDynamicsBreakPointList();
    if (curve == TORV_CURVE_TREMOLO)
        return track.GetTremoloDepthBreakPointList();
    const int control = curve - TORV_CURVE_VOICE;
    CBreakPointList* const list = track.GetVoiceControlBreakPointList(control);
    return list ? list : track.CreateVoiceControlBreakPointList(control);
}

} // namespace

void AddOwnIcons(const songs::Score& score, const songs::ScorePart& part, const songs::PartPlan& plan,
                 const songs::Part& songPart, const PartPlanning& planning, const songs::Databases& databases) {
    Icons icons(*part.track, databases, score);
    CCsqEventAnote cursor;
    cursor.Attach(part.track);
    auto sung = plan.line.notes.begin();
    const IconNames* names = nullptr;
    for (size_t i = 0; i < part.notes.size(); ++i) {
        const DWORD tick = part.notes[i].tick - score.leadTicks;
        while (cursor.GetNext() != kEventEnd && cursor.GetPosition() < part.notes[i].tick)
            ; // the breath before it
        while (std::next(sung) != plan.line.notes.end() && std::next(sung)->tick <= tick)
            ++sung;
        const bool isFirst = sung->tick == tick;
        if (isFirst)
            names = IconsAt(songPart, planning, *sung);
        const bool isLast = tick + part.notes[i].length >= sung->tick + sung->length;
        if (names)
            Dress(cursor, *names, isFirst, isLast, icons);
    }
}

void AddCurves(const songs::Score& score, const songs::ScorePart& part, const PartPlanning& planning) {
    for (const auto& [curve, points] : planning.curves) {
        if (curve == TORV_CURVE_PITCH) {
            AddPitch(*part.track, score.leadTicks, points);
            continue;
        }
        CBreakPointList* const list = ListOf(*part.track, curve);
        if (!list)
            throw std::bad_alloc();
        list->RemoveAll();
        for (const torv_point& point : points)
            AddPoint(*list, score.leadTicks + point.tick, point.value);
        if (curve == TORV_CURVE_DYNAMICS)
            part.track->SetDynamicsMode(1);
    }
}

} // namespace torv::c
