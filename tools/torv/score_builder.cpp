#include "score_builder.h"

#include "default_icons.h"
#include "tempo_trail.h"
#include "text_encoding.h"

#include <algorithm>

namespace {

constexpr DWORD kDefaultTempo = 500000;
constexpr DWORD kJoinedToPrevious = 1;
constexpr DWORD kJoinedToNext = 2;
/// The engine hears of a note's duration in 14 bits of milliseconds: longer notes become pieces that are joined.
constexpr DWORD kLongestPieceMilliseconds = 8000;
constexpr DWORD kLongestPieceTicks = 0x7FFF;
constexpr size_t kMostHandles = 65534;
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
    DWORD Attach(CIconObject* icon) {
        return icon ? static_cast<DWORD>(reinterpret_cast<uintptr_t>(m_builder.RegisterIconObject(icon))) : 0;
    }
    void Close() { m_builder.CloseBuffer(); }

private:
    CCsqBuilder m_builder;
    DWORD m_tick = 0;
};

/// The library's syllables of one text of the file, which share its time. Kana are cut by its rules; a Western text is
/// cut at the hyphens inside it.
void AddElements(CLyricObject& lyric, const std::string& utf8, int language) {
    const std::string bytes = Utf8ToCodePage932(utf8);
    const char* rest = bytes.c_str();
    do {
        CString syllable;
        const char* const after = CLyricObject::SyllabicateLyric(syllable, rest, language);
        if (after == rest)
            syllable = rest;
        syllable.TrimRight();
        if (CLyricElement* const element = lyric.AddNewElement())
            element->SetLyricString(syllable);
        if (after == rest)
            break;
        rest = after;
        while (*rest == ' ')
            ++rest;
    } while (*rest);
}

CLyricObject* MakeLyric(const std::vector<std::string>& syllables, int language) {
    auto* const lyric = new CLyricObject;
    for (const std::string& syllable : syllables)
        AddElements(*lyric, syllable, language);
    const int count = lyric->GetElementCount();
    for (int i = 0; i < count; ++i)
        lyric->GetElementAt(i)->SetDeltaRate(1, static_cast<DWORD>(count));
    return lyric;
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

} // namespace

Score BuildScore(const std::string& path, const MidiSong& file, const VoiceLine& voice, const ScoreOptions& options) {
    const SungNote& last = voice.notes.back();
    if (MillisecondsAt(file.tempos, last.tick + last.length) > kLongestSong)
        throw InputError{path + ": lasts longer than three hours, more than one wave can hold; sing it in parts"};
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
    score.track->SetTranspose(options.transpose);
    score.track->SetInitialLanguage(options.language);

    TrackWriter writer(score.track);
    tagCsqEventSinger* const singer = CCsqBuilder::CreateSingerEvent();
    singer->iconHandle = writer.Attach(MakeSinger(options.language, options.program));
    writer.Put(0, singer);

    const std::string vowel(CLyricObject::GetDefaultLyric(options.language));
    int hint = 0;
    for (size_t i = 0; i < notes.size(); ++i) {
        const SungNote& note = notes[i];
        const DWORD tick = score.leadTicks + note.tick;
        const bool joinsNext = i + 1 < notes.size() && notes[i + 1].joined;
        const DWORD start = CMasterTrack::SearchTimePosition(tick, map, hint);
        int endHint = hint;
        const DWORD milliseconds = CMasterTrack::SearchTimePosition(tick + note.length, map, endHint) - start;

        auto* lyric = MakeLyric(voice.hasLyrics ? note.syllables : std::vector<std::string>{}, options.language);
        if (lyric->GetElementCount() == 0) {
            CLyricElement* const element = lyric->AddNewElement();
            element->SetLyricString(vowel.c_str());
            element->SetDeltaRate(1, 1);
        }
        tagCsqEventAnote* const record = CCsqBuilder::CreateNoteEvent();
        record->noteLength = note.length;
        record->noteNumber = static_cast<WORD>(note.key);
        record->noteDynamics = static_cast<WORD>(note.velocity);
        record->noteAttribute = (note.joined ? kJoinedToPrevious : 0) | (joinsNext ? kJoinedToNext : 0);
        record->lyricHandle = static_cast<DWORD>(reinterpret_cast<uintptr_t>(score.track->AttachLyricObject(lyric)));
        if (!options.plain) {
            if (!note.joined)
                record->noteHeadHandle = writer.Attach(MakeAttack());
            if (!joinsNext)
                record->noteTailHandle = writer.Attach(MakeRelease());
            DWORD offset = 0;
            record->vibratoHandle = writer.Attach(MakeVibrato(note.length, milliseconds, offset));
            record->vibratoOffset = static_cast<LONG>(offset);
        }
        writer.Put(tick, record);
        score.notes.push_back({tick, note.length, note.key, note.velocity, note.joined, lyric});
    }
    writer.Close();
    return score;
}
