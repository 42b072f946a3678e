#include "score_builder.h"

#include "errors.h"
#include "syllables.h"
#include "tempo_trail.h"
#include "text_encoding.h"
#include "voice_parameters.h"

#include <algorithm>

namespace {

constexpr DWORD kDefaultTempo = 500000;
constexpr DWORD kJoinedToPrevious = 1;
constexpr DWORD kJoinedToNext = 2;
/// The engine hears of a note's duration in 14 bits of milliseconds: longer notes become pieces that are joined.
constexpr DWORD kLongestPieceMilliseconds = 8000;
constexpr DWORD kLongestPieceTicks = 0x7FFF;
constexpr int kHighestKey = 127;
constexpr size_t kMostHandles = 65534;
constexpr size_t kLongestName = 127;               // what every reader of the engine's MIDI file takes
constexpr double kLongestSong = 3 * 3600 * 1000.0; // milliseconds: a stereo wave at 96 kHz can still hold it

void AddMasterEvent(CMasterTrack& master, DWORD tick, DWORD type, DWORD value) {
    tagMasterEventEntry entry{};
    entry.type = type;
    entry.value = value;
    master.MoveTo(tick);
    master.InsertEvent(&entry);
}

/// Lead measures keep the song's first signature, and a tempo of their own, which makes their length exact.
void BuildMasterTrack(const MidiSong& file, const ScoreOptions& options, Score& score) {
    CMasterTrack& master = *score.song->GetMasterTrack();
    MidiSignature first{0, 4, 2};
    if (!file.signatures.empty() && file.signatures.front().tick == 0)
        first = file.signatures.front();
    const tagTimeSignature signature{static_cast<BYTE>(first.numerator), static_cast<BYTE>(first.denominatorExponent)};
    master.SetInitialTimeSig(signature);
    const DWORD measure =
        static_cast<DWORD>(CSequenceObject::CalcMeasureClock(first.numerator, first.denominatorExponent));
    while (score.leadMilliseconds < options.presend) {
        score.leadTicks += measure;
        score.leadMilliseconds = CMasterTrack::TicksToTime(score.leadTicks, kDefaultTempo);
    }
    for (const MidiTempo& tempo : WithoutDrift(file.tempos))
        AddMasterEvent(master, score.leadTicks + tempo.tick, torv::kEventTempo, tempo.microsecondsPerQuarter);
    for (const MidiSignature& change : file.signatures)
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

CLyricObject* MakeLyric(const std::vector<std::string>& syllables, int language) {
    auto* const lyric = new CLyricObject;
    for (const std::string& syllable : syllables)
        for (const std::string& text : CutIntoSyllables(Utf8ToCodePage932(syllable), language))
            if (CLyricElement* const element = lyric->AddNewElement())
                element->SetLyricString(text.c_str());
    const int count = lyric->GetElementCount();
    for (int i = 0; i < count; ++i)
        lyric->GetElementAt(i)->SetDeltaRate(1, static_cast<DWORD>(count));
    return lyric;
}

/// The engine's stream has room for seven bits: a key beyond them would be sung as another one.
void CheckKeys(const std::string& path, const std::vector<SungNote>& notes, int transpose) {
    const auto [lowest, highest] = std::minmax_element(
        notes.begin(), notes.end(), [](const SungNote& a, const SungNote& b) { return a.key < b.key; });
    if (lowest->key + transpose < 0 || highest->key + transpose > kHighestKey)
        throw InputError{path + ": its notes are from " + std::to_string(lowest->key) + " to " +
                         std::to_string(highest->key) + ", and 0 to 127 can be sung: --transpose goes from " +
                         std::to_string(-lowest->key) + " to " + std::to_string(kHighestKey - highest->key)};
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
            if (i > 0) {
                piece.syllables = {"-"};
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
    Marks(const ScoreOptions& options, const Databases& databases, const Score& score)
        : m_options(options), m_databases(databases), m_score(score), m_parameters(score.track) {}

    void PutUntil(DWORD tick, TrackWriter& writer) {
        const auto isDue = [tick](const std::vector<ScoreMark>& marks, size_t at) {
            return at < marks.size() && marks[at].tick <= tick;
        };
        while (isDue(m_options.voices, m_voice) || isDue(m_options.dynamics, m_dynamics)) {
            const bool isVoice = isDue(m_options.voices, m_voice) &&
                                 (!isDue(m_options.dynamics, m_dynamics) ||
                                  m_options.voices[m_voice].tick <= m_options.dynamics[m_dynamics].tick);
            isVoice ? PutVoice(m_options.voices[m_voice++], writer)
                    : PutDynamics(m_options.dynamics[m_dynamics++], writer);
        }
    }
    /// The language of the voice that sings now.
    int Language() const { return LanguageOfSinger(m_options.voices[m_voice - 1].id); }

private:
    void PutVoice(const ScoreMark& mark, TrackWriter& writer) {
        tagCsqEventSinger* const record = CCsqBuilder::CreateSingerEvent();
        record->iconHandle = writer.Attach(m_databases, mark.id);
        writer.Put(mark.tick ? m_score.leadTicks + mark.tick : 0, record);
        const auto* const singer = dynamic_cast<CIconSinger*>(m_databases.Manager().GetModelIconObject(mark.id));
        tagVoiceChangeParam parameters{};
        if (singer && singer->GetVoiceChangeParam(&parameters))
            m_parameters.Set(m_score.leadTicks + mark.tick, parameters);
    }
    void PutDynamics(const ScoreMark& mark, TrackWriter& writer) {
        tagCsqEventAicon* const record = CCsqBuilder::CreateIconEvent();
        record->iconHandle = writer.Attach(m_databases, mark.id);
        writer.Put(m_score.leadTicks + mark.tick, record);
    }

    const ScoreOptions& m_options;
    const Databases& m_databases;
    const Score& m_score;
    VoiceParameters m_parameters;
    size_t m_voice = 0;
    size_t m_dynamics = 0;
};

} // namespace

Score BuildScore(const std::string& path, const MidiSong& file, const VoiceLine& voice, const ScoreOptions& options,
                 const Databases& databases) {
    const SungNote& last = voice.notes.back();
    if (MillisecondsAt(file.tempos, last.tick + last.length) > kLongestSong)
        throw InputError{path + ": lasts longer than three hours, more than one wave can hold; sing it in parts"};
    CheckKeys(path, voice.notes, options.transpose);
    Score score;
    score.song = std::make_unique<CSequence>();
    score.song->Create(nullptr);
    score.song->SetName(path.c_str());
    BuildMasterTrack(file, options, score);
    CArray<tagSequenceTimeMap> map;
    score.song->GetMasterTrack()->GetSequenceTimeMap(map);
    const std::vector<SungNote> notes = CutLongNotes(voice.notes, map, score.leadTicks);
    if (notes.size() > kMostHandles)
        throw InputError{path + ": " + std::to_string(notes.size()) +
                         " notes are more than one track can give lyrics (" + std::to_string(kMostHandles) +
                         "); sing it in parts"};

    score.track = CSequence::CreateObject();
    score.song->AddObject(score.track);
    score.track->SetName(CutAtCharacter(file.tracks[voice.noteTrack].name, kLongestName).c_str());
    score.track->SetTranspose(options.transpose);
    score.track->SetInitialLanguage(LanguageOfSinger(options.voices.front().id));

    TrackWriter writer(score.track);
    NoteIcons icons(databases, options.expressions, writer.Builder());
    Marks marks(options, databases, score);
    int hint = 0;
    for (size_t i = 0; i < notes.size(); ++i) {
        const SungNote& note = notes[i];
        const DWORD tick = score.leadTicks + note.tick;
        const bool joinsNext = i + 1 < notes.size() && notes[i + 1].joined;
        const DWORD start = CMasterTrack::SearchTimePosition(tick, map, hint);
        int endHint = hint;
        const DWORD milliseconds = CMasterTrack::SearchTimePosition(tick + note.length, map, endHint) - start;
        marks.PutUntil(note.tick, writer);

        auto* lyric = MakeLyric(voice.hasLyrics ? note.syllables : std::vector<std::string>{}, marks.Language());
        if (lyric->GetElementCount() == 0) {
            CLyricElement* const element = lyric->AddNewElement();
            element->SetLyricString(CLyricObject::GetDefaultLyric(marks.Language()));
            element->SetDeltaRate(1, 1);
        }
        tagCsqEventAnote* const record = CCsqBuilder::CreateNoteEvent();
        record->noteLength = note.length;
        record->noteNumber = static_cast<WORD>(note.key);
        record->noteDynamics = static_cast<WORD>(note.velocity);
        record->noteAttribute = (note.joined ? kJoinedToPrevious : 0) | (joinsNext ? kJoinedToNext : 0);
        record->lyricHandle = torv::HandleOf(score.track->AttachLyricObject(lyric));
        record->noteHeadHandle = note.joined ? 0 : icons.Attack();
        record->noteTailHandle = joinsNext ? icons.Transition() : icons.Release();
        DWORD offset = 0;
        record->vibratoHandle = icons.Vibrato(note.length, milliseconds, offset);
        record->vibratoOffset = static_cast<LONG>(offset);
        writer.Put(tick, record);
        score.notes.push_back({tick, note.length, note.key, note.velocity, note.joined, lyric});
    }
    marks.PutUntil(file.end, writer);
    writer.Close();
    return score;
}
