#include "score.h"

#include <torv/songs/casting.h>
#include <torv/songs/engine_stream.h>
#include <torv/songs/hand_phonemes.h>

#include <algorithm>

namespace editor {

namespace songs = torv::songs;

namespace {

constexpr int kDrawnDynamics = 1; // the track's dynamics are its list, not its icons
constexpr int kOnlyVerse = 1;
constexpr bool kAsWritten = true;     // what the notes' lengths and velocities say holds
constexpr SHORT kBendRange = 2;       // semitones, as kCurveRanges has it in cents
constexpr int kBendUnits = 8192;      // to the whole range
constexpr UINT kJoinedToPrevious = 1; // bits of a note's attribute
constexpr UINT kJoinedToNext = 2;

songs::Note SungNoteOf(const Note& note, bool& isInWord) {
    songs::Note sung{note.tick, note.length, note.key, note.velocity, {}};
    songs::Word word;
    word.text = note.lyric;
    word.hyphenBefore = isInWord;
    if (word.text.ends_with('-')) {
        word.hyphenAfter = true;
        word.text.pop_back();
    }
    songs::TakePhonemes(word); // "night[n aI t]"
    if (!word.text.empty()) {
        isInWord = word.hyphenAfter;
        sung.words.push_back(std::move(word));
    }
    return sung;
}

/// The document as a song that a file might have had; tracks without notes fall out.
songs::Song SongOf(const Document& document) {
    songs::Song song;
    song.title = document.title;
    for (const TempoChange& tempo : document.tempos)
        song.tempos.push_back({tempo.tick, tempo.microseconds});
    for (const MeterChange& meter : document.meters)
        song.meters.push_back({meter.tick, meter.numerator, meter.denominatorExponent});
    for (const Track& track : document.tracks) {
        songs::Part& part = song.parts.emplace_back();
        part.name = track.name;
        bool isInWord = false;
        for (const Note& note : track.notes)
            part.notes.push_back(SungNoteOf(note, isInWord));
    }
    song.end = EndOf(document);
    songs::CompleteSong(song);
    return song;
}

/// The place of the note that sounds at a tick: of those that begin together the highest, which is the one that is
/// sung.
size_t NoteAt(const std::vector<Note>& notes, uint32_t tick) {
    const auto behind = std::upper_bound(notes.begin(), notes.end(), tick,
                                         [](uint32_t at, const Note& note) { return at < note.tick; });
    return static_cast<size_t>(behind - notes.begin()) - 1;
}

std::string PhonemesOf(const CLyricObject& lyric) {
    std::string text;
    for (int i = 0; i < lyric.GetElementCount(); ++i)
        text += (text.empty() ? "" : " ") + lyric.GetElementAt(i)->GetPhonemeString().GetStdString();
    return text;
}

void AddPoint(CBreakPointList& list, DWORD tick, int value) {
    tagBreakPoint point{static_cast<LONG>(tick), static_cast<SHORT>(value), 0};
    list.AddTail(point);
}

/// Icons of one track by their ids: notes with the same one share it, since a track's handles are few.
class TrackIcons {
public:
    TrackIcons(const Library& library, CSequenceObject* track, std::vector<std::string>& remarks)
        : m_library(library), m_track(track), m_remarks(remarks) {}

    void* Handle(IconSlot slot, const std::string& name) {
        const auto [found, isNew] = m_handles.try_emplace({slot, name}, nullptr);
        if (isNew)
            found->second = New(slot, name, 0);
        return found->second;
    }
    /// A vibrato is as long as it is heard, so that each note has its own.
    void* New(IconSlot slot, const std::string& name, DWORD length) {
        if (name.empty())
            return nullptr;
        const std::optional<DWORD> id = m_library.FindIcon(slot, name);
        CIconObject* const icon = id ? m_manager.CreateIconObject(*id) : nullptr;
        if (!icon) {
            const std::string remark = "there is no icon \"" + name + "\" here: notes are sung without it";
            if (std::find(m_remarks.begin(), m_remarks.end(), remark) == m_remarks.end())
                m_remarks.push_back(remark);
            return nullptr;
        }
        if (length > 0)
            icon->SetLength(length);
        return m_track->AttachIconObject(icon);
    }

private:
    const Library& m_library;
    const CQuillDBManager& m_manager = m_library.Databases().Manager();
    CSequenceObject* m_track;
    std::vector<std::string>& m_remarks;
    std::map<std::pair<IconSlot, std::string>, void*> m_handles;
};

} // namespace

Score::Score(const Document& document, Library& library) {
    const songs::Song song = SongOf(document);
    std::vector<songs::PartPlan> plans;
    for (size_t i = 0; i < document.tracks.size(); ++i) {
        const Track& track = document.tracks[i];
        if (track.notes.empty())
            continue;
        const songs::Part& part = song.parts[plans.size()];
        songs::PartPlan& plan = plans.emplace_back();
        plan.name = track.name;
        plan.line = songs::MakeVoiceLine(part, kOnlyVerse, kAsWritten);
        std::optional<DWORD> voice = library.FindVoice(track.voice);
        if (!voice && !track.voice.empty())
            m_remarks.push_back("there is no voice \"" + track.voice + "\" here: another one sings");
        if (!voice)
            voice = songs::CastVoice(part, plan.line.japanese ? torv::kJapanese : torv::kEnglish, library.Databases());
        plan.voices = {{0, *voice}};
        for (const Mark& mark : track.marks)
            if (const std::optional<DWORD> id = library.FindDynamics(mark.icon))
                plan.dynamics.push_back({mark.tick, *id});
        for (std::string& remark : songs::DropUnknownPhonemes(plan.line, songs::LanguageOfSinger(*voice), song))
            m_remarks.push_back(std::move(remark));
        m_parts.push_back({i, library.Databases().NameOf(*voice), {}});
    }
    m_score = songs::BuildScore(song, plans, {.presend = kPresend}, library.Databases());
    m_score.song->GetMasterTrack()->GetSequenceTimeMap(m_times);
    // The converters read a track as a whole: a syllable's sound depends on its word's other ones.
    songs::AddPhonemes(m_score, library.Messages());
    for (size_t i = 0; i < m_parts.size(); ++i) {
        PutIcons(document.tracks[m_parts[i].track], library, m_score.parts[i], m_parts[i]);
        PutCurves(document.tracks[m_parts[i].track], m_score.parts[i]);
    }
}

/// Walks the track with the library's cursor over notes, and reads their phonemes by the way. A note of more than some
/// seconds stands in the score as several that are joined.
void Score::PutIcons(const Track& track, const Library& library, const songs::ScorePart& sung, Part& part) {
    part.phonemes.resize(track.notes.size());
    TrackIcons icons(library, sung.track, m_remarks);
    CCsqEventAnote cursor;
    cursor.Attach(sung.track);
    while (cursor.GetNext() == torv::kEventAnote) {
        const uint32_t tick = cursor.GetPosition() - m_score.leadTicks;
        const size_t place = NoteAt(track.notes, tick);
        const Note& note = track.notes[place];
        const bool isHead = note.tick == tick;
        const DWORD end = tick + cursor.GetNoteLength();
        const bool isTail = place + 1 == track.notes.size() || end >= std::min(note.End(), track.notes[place + 1].tick);
        if (isHead)
            part.phonemes[place] = PhonemesOf(*sung.track->LookupLyricObject(cursor.GetLyricHandle()));
        // A joined note has no attack, and one that goes on into the next a transition in place of its release.
        if (isHead && !(cursor.GetNoteAttribute() & kJoinedToPrevious))
            cursor.SetNoteHeadIconHandle(icons.Handle(kAttack, note.icons[kAttack]), 0);
        if (isTail) {
            const IconSlot slot = cursor.GetNoteAttribute() & kJoinedToNext ? kTransition : kRelease;
            cursor.SetNoteTailIconHandle(icons.Handle(slot, note.icons[slot]), 0);
        }
        // A vibrato sets in when a third of the note is over.
        const DWORD offset = isHead ? cursor.GetNoteLength() / 3 : 0;
        cursor.SetVibratoIconHandle(icons.New(kVibrato, note.icons[kVibrato], cursor.GetNoteLength() - offset), 0);
        cursor.SetVibratoOffset(static_cast<int>(offset));
        cursor.Write(); // what was set so far was the cursor's own copy
    }
}

/// Lists of points in the score's ticks. A point in the lead would not be sent, so each begins with the song.
void Score::PutCurves(const Track& track, const songs::ScorePart& sung) const {
    if (const Curve& dynamics = track.curves[kDynamics]; !dynamics.empty()) {
        sung.track->SetDynamicsMode(kDrawnDynamics);
        CBreakPointList& list = *sung.track->GetDynamicsBreakPointList();
        AddPoint(list, m_score.leadTicks, ValueAt(dynamics, kDynamics, 0));
        for (const CurvePoint& point : dynamics)
            AddPoint(list, m_score.leadTicks + point.tick, point.value);
    }
    if (const Curve& pitch = track.curves[kPitch]; !pitch.empty()) {
        AddPoint(*sung.track->GetPitchBendSensBreakPointList(), m_score.leadTicks, kBendRange);
        for (const CurvePoint& point : pitch)
            AddPoint(*sung.track->GetPitchBendBreakPointList(), m_score.leadTicks + point.tick,
                     std::min(point.value * kBendUnits / (100 * kBendRange), kBendUnits - 1));
    }
}

std::unique_ptr<CQuillMidiBuffer> Score::MakeStream(size_t part) const {
    return songs::MakeEngineStream(m_score, m_score.parts[part], kPresend);
}

DWORD Score::TimeOf(uint32_t tick) const {
    int hint = 0;
    return CMasterTrack::SearchTimePosition(m_score.leadTicks + tick, m_times, hint);
}

uint32_t Score::TickOf(DWORD milliseconds) const {
    int hint = 0;
    const DWORD tick = CMasterTrack::SearchTickPosition(milliseconds, m_times, hint);
    return std::max(tick, m_score.leadTicks) - m_score.leadTicks;
}

} // namespace editor
