#include "torv/songs/score_builder.h"

#include "torv/songs/breaths.h"
#include "torv/songs/hand_phonemes.h"
#include "torv/songs/note_icons.h"
#include "torv/songs/slides.h"
#include "torv/songs/song_error.h"
#include "torv/songs/syllables.h"
#include "torv/songs/tempo_trail.h"
#include "torv/songs/text_encoding.h"
#include "torv/songs/voice_parameters.h"

#include <algorithm>

namespace torv::songs {

namespace {

constexpr DWORD kJoinedToPrevious = 1;
constexpr DWORD kJoinedToNext = 2;
/// The engine hears of a note's duration in 14 bits of milliseconds: longer notes become pieces that are joined.
constexpr DWORD kLongestPieceMilliseconds = 8000;
constexpr DWORD kLongestPieceTicks = 0x7FFF;
constexpr DWORD kConverterValue = 480; // the converters' own value, one beat
constexpr int kHighestKey = 127;
constexpr size_t kMostHandles = 65534;
constexpr WORD kBreathVelocity = 30;               // softly
constexpr DWORD kBreathMilliseconds = 600;         // before the song, with what is held until its first note
constexpr size_t kLongestName = 127;               // what every reader of the engine's MIDI file takes
constexpr double kLongestSong = 3 * 3600 * 1000.0; // milliseconds: a stereo wave at 96 kHz can still hold it

void AddMasterEvent(CMasterTrack& master, DWORD tick, DWORD type, DWORD value) {
    tagMasterEventEntry entry{};
    entry.type = type;
    entry.value = value;
    master.MoveTo(tick);
    master.InsertEvent(&entry);
}

/// Lead measures keep the song's first signature, and a tempo of their own, which makes their length exact. They last
/// so many milliseconds at least.
void BuildMasterTrack(const Song& file, DWORD lead, Score& score) {
    CMasterTrack& master = *score.song->GetMasterTrack();
    Meter first;
    if (!file.meters.empty() && file.meters.front().tick == 0)
        first = file.meters.front();
    const tagTimeSignature signature{static_cast<BYTE>(first.numerator), static_cast<BYTE>(first.denominatorExponent)};
    master.SetInitialTimeSig(signature);
    const DWORD measure =
        static_cast<DWORD>(CSequenceObject::CalcMeasureClock(first.numerator, first.denominatorExponent));
    while (score.leadMilliseconds < lead) {
        score.leadTicks += measure;
        score.leadMilliseconds = CMasterTrack::TicksToTime(score.leadTicks, kDefaultTempo);
    }
    for (const Tempo& tempo : WithoutDrift(file.tempos))
        AddMasterEvent(master, score.leadTicks + tempo.tick, torv::kEventTempo, tempo.microsecondsPerQuarter);
    for (const Meter& change : file.meters)
        if (change.tick > 0)
            AddMasterEvent(master, score.leadTicks + change.tick, torv::kEventTimeSignature,
                           static_cast<DWORD>(change.numerator | change.denominatorExponent << 8));
}

/// Adds events to a track in time order.
class TrackWriter {
public:
    explicit TrackWriter(CSequenceObject* track) { m_builder.OpenBuffer(track); }
    CCsqBuilder& Builder() { return m_builder; }
    template <class Record>
    void Put(DWORD tick, Record* record) {
        m_builder.SetEvent(tick - m_tick, reinterpret_cast<tagChartSeqEvent*>(record));
        m_tick = tick;
    }
    /// A new icon of the databases, attached to the track.
    DWORD Attach(const Databases& databases, DWORD id) {
        CIconObject* const icon = databases.Manager().CreateIconObject(id);
        return icon ? torv::HandleOf(m_builder.RegisterIconObject(icon)) : 0;
    }
    void Close() { m_builder.CloseBuffer(); }

private:
    CCsqBuilder m_builder;
    DWORD m_tick = 0;
};

/// A note without words goes on with the vowel before it.
CLyricObject* MakeLyric(const std::vector<Word>& words, int language) {
    auto* const lyric = new CLyricObject;
    const auto add = [lyric](const std::string& text) {
        CLyricElement* const element = lyric->AddNewElement();
        if (element)
            element->SetLyricString(text.c_str());
        return element;
    };
    for (const Word& word : words) {
        const std::string text = Utf8ToCodePage932(word.text + (word.hyphenAfter ? "-" : ""));
        if (!word.phonemes.empty()) {
            if (CLyricElement* const element = add(text)) {
                element->SetPhonemeString(word.phonemes.c_str(), language);
                element->SetPhonemeEditMark(1);
            }
            continue;
        }
        for (const std::string& syllable : CutIntoSyllables(text, language))
            add(syllable);
    }
    if (words.empty())
        add("-");
    const int count = lyric->GetElementCount();
    for (int i = 0; i < count; ++i)
        lyric->GetElementAt(i)->SetDeltaRate(1, static_cast<DWORD>(count));
    return lyric;
}

/// What is sung where there are no words at all.
CLyricObject* MakeVowel(int language) {
    auto* const lyric = new CLyricObject;
    CLyricElement* const element = lyric->AddNewElement();
    element->SetLyricString(CLyricObject::GetDefaultLyric(language));
    element->SetDeltaRate(1, 1);
    return lyric;
}

/// As the two languages write it.
CLyricObject* MakeBreath(int language) {
    const char* const symbol = language == torv::kJapanese ? "*in" : "Asp";
    Word word;
    word.text = word.phonemes = symbol;
    return MakeLyric({word}, language);
}

std::string Named(const Song& song, const std::string& what) {
    return song.source.empty() ? what : song.source + ": " + what;
}

/// The engine's stream has room for seven bits: a key beyond them would be sung as another one.
void CheckKeys(const Song& song, const std::vector<SungNote>& notes, int transpose) {
    const auto [lowest, highest] = std::minmax_element(
        notes.begin(), notes.end(), [](const SungNote& a, const SungNote& b) { return a.key < b.key; });
    if (lowest->key + transpose < 0 || highest->key + transpose > kHighestKey)
        throw SongError(Named(song, "its notes are from " + std::to_string(lowest->key) + " to " +
                                        std::to_string(highest->key) + ", and 0 to 127 can be sung: transpose it by " +
                                        std::to_string(-lowest->key) + " to " +
                                        std::to_string(kHighestKey - highest->key)));
}

std::vector<SungNote> CutLongNotes(const std::vector<SungNote>& notes, CArray<tagSequenceTimeMap>& map,
                                   DWORD leadTicks) {
    int hint = 0;
    std::vector<SungNote> pieces;
    for (const SungNote& note : notes) {
        const DWORD start = CMasterTrack::SearchTimePosition(leadTicks + note.tick, map, hint);
        int endHint = hint;
        const DWORD milliseconds =
            CMasterTrack::SearchTimePosition(leadTicks + note.tick + note.length, map, endHint) - start;
        const DWORD count = 1 + std::max(milliseconds / kLongestPieceMilliseconds, note.length / kLongestPieceTicks);
        for (DWORD i = 0; i < count; ++i) {
            const auto at = [&](DWORD piece) {
                return static_cast<DWORD>(static_cast<uint64_t>(note.length) * piece / count);
            };
            if (at(i + 1) == at(i))
                continue;
            SungNote piece = note;
            piece.tick = note.tick + at(i);
            piece.length = at(i + 1) - at(i);
            piece.slides = note.slides && i + 1 == count;
            if (i > 0) {
                piece.words.clear();
                piece.joined = true;
            }
            pieces.push_back(std::move(piece));
        }
    }
    return pieces;
}

/// The voices and the dynamics, put among the notes as time goes on.
class Marks {
public:
    Marks(const PartPlan& plan, const Databases& databases, DWORD leadTicks, CSequenceObject* track)
        : m_plan(plan), m_databases(databases), m_leadTicks(leadTicks), m_parameters(track) {}

    /// A tick of the score; who sings first is there from its beginning.
    void PutUntil(DWORD tick, TrackWriter& writer) {
        const auto isDue = [&](const std::vector<ScoreMark>& marks, size_t at) {
            return at < marks.size() && m_leadTicks + marks[at].tick <= tick;
        };
        if (m_voice == 0)
            PutVoice(m_plan.voices[m_voice++], writer);
        while (isDue(m_plan.voices, m_voice) || isDue(m_plan.dynamics, m_dynamics)) {
            const bool isVoice =
                isDue(m_plan.voices, m_voice) && (!isDue(m_plan.dynamics, m_dynamics) ||
                                                  m_plan.voices[m_voice].tick <= m_plan.dynamics[m_dynamics].tick);
            isVoice ? PutVoice(m_plan.voices[m_voice++], writer) : PutDynamics(m_plan.dynamics[m_dynamics++], writer);
        }
    }
    /// The language of the voice that sings now.
    int Language() const { return LanguageOfSinger(m_plan.voices[m_voice - 1].id); }

private:
    void PutVoice(const ScoreMark& mark, TrackWriter& writer) {
        tagCsqEventSinger* const record = CCsqBuilder::CreateSingerEvent();
        record->iconHandle = writer.Attach(m_databases, mark.id);
        writer.Put(mark.tick ? m_leadTicks + mark.tick : 0, record);
        const auto* const singer = dynamic_cast<CIconSinger*>(m_databases.Manager().GetModelIconObject(mark.id));
        tagVoiceChangeParam parameters{};
        if (singer && singer->GetVoiceChangeParam(&parameters))
            m_parameters.Set(m_leadTicks + mark.tick, parameters);
    }
    void PutDynamics(const ScoreMark& mark, TrackWriter& writer) {
        tagCsqEventAicon* const record = CCsqBuilder::CreateIconEvent();
        record->iconHandle = writer.Attach(m_databases, mark.id);
        writer.Put(m_leadTicks + mark.tick, record);
    }

    const PartPlan& m_plan;
    const Databases& m_databases;
    const DWORD m_leadTicks;
    VoiceParameters m_parameters;
    size_t m_voice = 0;
    size_t m_dynamics = 0;
};

void AddPoints(const std::vector<CurvePoint>& points, DWORD leadTicks, CBreakPointList& list) {
    for (const CurvePoint& point : points) {
        tagBreakPoint entry{static_cast<LONG>(leadTicks + point.tick), static_cast<SHORT>(point.value), 0};
        list.AddTail(entry);
    }
}

void PutCurves(const Curves& curves, DWORD leadTicks, CSequenceObject& track) {
    constexpr int kByCurve = 1;
    if (!curves.dynamics.empty())
        track.SetDynamicsMode(kByCurve);
    AddPoints(curves.dynamics, leadTicks, *track.GetDynamicsBreakPointList());
    AddPoints(curves.bends, leadTicks, *track.GetPitchBendBreakPointList());
    if (!curves.bends.empty())
        AddPoints({{0, curves.bendRange}}, leadTicks, *track.GetPitchBendSensBreakPointList());
}

ScorePart BuildPart(const Song& song, const PartPlan& plan, const Databases& databases, CArray<tagSequenceTimeMap>& map,
                    const Score& score) {
    std::vector<SungNote> notes = CutLongNotes(plan.line.notes, map, score.leadTicks);
    SpreadPhonemes(notes, LanguageOfSinger(plan.voices.front().id));
    const SongClock clock(song.tempos);
    const std::vector<Breath> breaths =
        plan.breathes ? BreathsBefore(notes, score.leadTicks, clock) : std::vector<Breath>(notes.size());
    const size_t lyricCount =
        notes.size() + static_cast<size_t>(std::count_if(breaths.begin(), breaths.end(),
                                                         [](const Breath& breath) { return breath.length > 0; }));
    if (lyricCount > kMostHandles)
        throw SongError(Named(song, std::to_string(lyricCount) + (plan.breathes ? " notes and breaths" : " notes") +
                                        " are more than one track can give lyrics (" + std::to_string(kMostHandles) +
                                        "); sing it in parts"));
    ScorePart part;
    part.track = CSequence::CreateObject();
    score.song->AddObject(part.track);
    part.track->SetName(CutAtCharacter(plan.name, kLongestName).c_str());
    part.track->SetInitialLanguage(LanguageOfSinger(plan.voices.front().id));

    TrackWriter writer(part.track);
    NoteIcons icons(databases, plan.expressions, writer.Builder());
    Marks marks(plan, databases, score.leadTicks, part.track);
    Curves curves = plan.curves;
    const std::vector<bool> areBent = BendSlides(notes, clock, curves);
    int hint = 0;
    for (size_t i = 0; i < notes.size(); ++i) {
        const SungNote& note = notes[i];
        const DWORD tick = score.leadTicks + note.tick;
        const bool joinsNext = i + 1 < notes.size() && notes[i + 1].joined;
        const DWORD start = CMasterTrack::SearchTimePosition(tick, map, hint);
        int endHint = hint;
        const DWORD milliseconds = CMasterTrack::SearchTimePosition(tick + note.length, map, endHint) - start;
        if (breaths[i].length > 0) {
            marks.PutUntil(tick - breaths[i].ahead, writer);
            tagCsqEventAnote* const breath = CCsqBuilder::CreateNoteEvent();
            breath->noteLength = breaths[i].length;
            breath->noteNumber = static_cast<WORD>(note.key);
            breath->noteDynamics = kBreathVelocity;
            breath->lyricHandle = torv::HandleOf(part.track->AttachLyricObject(MakeBreath(marks.Language())));
            writer.Put(tick - breaths[i].ahead, breath);
        }
        marks.PutUntil(tick, writer);

        CLyricObject* lyric =
            plan.line.hasWords ? MakeLyric(note.words, marks.Language()) : MakeVowel(marks.Language());
        tagCsqEventAnote* const record = CCsqBuilder::CreateNoteEvent();
        record->noteLength = note.length;
        record->noteNumber = static_cast<WORD>(note.key);
        record->noteDynamics = static_cast<WORD>(note.velocity);
        record->noteAttribute = (note.joined ? kJoinedToPrevious : 0) | (joinsNext ? kJoinedToNext : 0);
        record->lyricHandle = torv::HandleOf(part.track->AttachLyricObject(lyric));
        record->noteHeadHandle = note.joined ? 0 : icons.Attack();
        if (!areBent[i])
            record->noteTailHandle = !joinsNext ? icons.Release() : note.slides ? icons.Slide() : icons.Transition();
        DWORD offset = 0;
        record->vibratoHandle = areBent[i] ? 0 : icons.Vibrato(note.length, milliseconds, offset);
        record->vibratoOffset = static_cast<LONG>(offset);
        writer.Put(tick, record);
        part.notes.push_back({tick, note.length, note.key, note.velocity, note.joined, lyric});
    }
    marks.PutUntil(score.leadTicks + song.end, writer);
    writer.Close();
    PutCurves(curves, score.leadTicks, *part.track);
    return part;
}

} // namespace

Score BuildScore(const Song& song, const std::vector<PartPlan>& parts, const ScoreOptions& options,
                 const Databases& databases) {
    for (const PartPlan& plan : parts) {
        const SungNote& last = plan.line.notes.back();
        if (MillisecondsAt(song.tempos, last.tick + last.length) > kLongestSong)
            throw SongError(
                Named(song, "lasts longer than three hours, more than one wave can hold; sing it in parts"));
        CheckKeys(song, plan.line.notes, options.transpose);
    }
    Score score;
    score.song = std::make_unique<CSequence>();
    score.song->Create(nullptr);
    score.song->SetName(song.source.c_str());
    const bool breathes = std::any_of(parts.begin(), parts.end(), [](const PartPlan& plan) { return plan.breathes; });
    BuildMasterTrack(song, options.presend + (breathes ? kBreathMilliseconds : 0), score);
    CArray<tagSequenceTimeMap> map;
    score.song->GetMasterTrack()->GetSequenceTimeMap(map);
    for (const PartPlan& plan : parts) {
        score.parts.push_back(BuildPart(song, plan, databases, map, score));
        score.parts.back().track->SetTranspose(options.transpose);
    }
    return score;
}

void AddPhonemes(Score& score, const MessageCatcher& messages) {
    CxSampaTransformer transformer;
    for (const ScorePart& part : score.parts)
        if (!transformer.DoTransform(part.track, kConverterValue))
            throw SongError("the lyrics cannot be turned into phonemes" +
                            (messages.Last().empty() ? "" : " (" + messages.Last() + ")") +
                            ": put the phoneme converters beside the program, or name their folder in "
                            "TORV_LIBRARY_PATH");
}

} // namespace torv::songs
