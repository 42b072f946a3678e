#include "torv/lyrics/sampa_transformer.h"

#include "torv/icons/icon_singer.h"
#include "torv/lyrics/converter_modules.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/lyrics/phoneme_converter.h"
#include "torv/platform/language.h"
#include "torv/score/csq_event_anote.h"
#include "torv/score/csq_event_singer.h"
#include "torv/score/sequence_object.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <type_traits>

namespace {

constexpr DWORD kTicksPerBeat = 480;

/// Calls visit(lyric, position, length) for every note with a lyric handle, in song order, while it answers non-zero;
/// the lyric is null when the handle names nothing.
template <class Visit>
int VisitLyrics(CSequenceObject* track, Visit visit) {
    CCsqEventAnote notes;
    if (!notes.Attach(track))
        return 0;
    while (notes.GetNext() == torv::kEventAnote) {
        void* const handle = notes.GetLyricHandle();
        if (handle && !visit(track->LookupLyricObject(handle), notes.GetPosition(), notes.GetNoteLength()))
            return 0;
    }
    return 1;
}

} // namespace

struct CxSampaTransformer::Change {
    CLyricElement* element;
    CLyricElement changed;
};

CxSampaTransformer::CxSampaTransformer() = default;
CxSampaTransformer::~CxSampaTransformer() = default;

CString CxSampaTransformer::GetG2PAVersionString(int language) {
    const HMODULE module = torv::ConverterModule(language);
    const auto version = module ? torv::EntryPoint<G2paGetVersionStringProc>(module, "g2paGetVersionString") : nullptr;
    return version ? CString(version()) : CString();
}

int CxSampaTransformer::FindWord(const char* word, int language) {
    const HMODULE module = torv::ConverterModule(language);
    const auto find = module ? torv::EntryPoint<G2paFindWordProc>(module, "g2paFindWord") : nullptr;
    return find && word ? find(word) : -1;
}

int CxSampaTransformer::LoadFunction(Converters& converters, int language) {
    return converters.emplace_back(language).Bind();
}

int CxSampaTransformer::LoadFunction(Converters& converters) {
    return LoadFunction(converters, torv::kJapanese) && LoadFunction(converters, torv::kEnglish);
}

/// Remembers a converter's error code; whether it is none.
int CxSampaTransformer::Keep(int code) {
    if (code != 0)
        m_nReturnCode = code;
    return code == 0;
}

int CxSampaTransformer::BeginTransform(torv::PhonemeConverter& converter, DWORD value) {
    return Keep(converter.Create(value / kTicksPerBeat));
}

int CxSampaTransformer::SweepOut(torv::PhonemeConverter& converter) { return Keep(converter.EndInput()); }
int CxSampaTransformer::EndTransform(torv::PhonemeConverter& converter) { return Keep(converter.Delete()); }

int CxSampaTransformer::GetJPhoneme(const G2paOutput& output, char* buffer, int size) {
    return torv::JoinSymbols(output, "", buffer, size);
}
int CxSampaTransformer::GetEPhoneme(const G2paOutput& output, char* buffer, int size) {
    return torv::JoinSymbols(output, " ", buffer, size);
}

int CxSampaTransformer::TransformLyricObject(torv::PhonemeConverter& converter, CLyricObject* lyric, DWORD position,
                                             DWORD noteLength) {
    for (int i = 0; i < lyric->GetElementCount(); ++i) {
        const CLyricElement& element = *lyric->GetElementAt(i);
        const DWORD length = torv::ShareOf(noteLength, element.GetDeltaRate());
        if (!Keep(converter.Put(position, length, element.GetLyricString())))
            return 0;
        position += length;
    }
    return 1;
}

int CxSampaTransformer::UpdateLyricObject(torv::PhonemeConverter& converter, CLyricObject* lyric,
                                          std::vector<Change>& changes) {
    int missing = 0;
    for (int i = 0; i < lyric->GetElementCount(); ++i) {
        CString phonemes = converter.TakeResult();
        if (phonemes.IsEmpty()) {
            ++missing;
            phonemes = CLyricObject::GetDefaultPhoneme(converter.Language());
        }
        CLyricElement* const element = lyric->GetElementAt(i);
        if (element->GetPhonemeEditMark())
            continue;
        changes.push_back({element, *element});
        if (!changes.back().changed.SetPhonemeString(phonemes, converter.Language()))
            throw std::bad_alloc();
    }
    return missing;
}

void CxSampaTransformer::TranErrorProcess(int code) {
    MessageBeep(MB_ICONWARNING);
    char text[80];
    std::snprintf(text, sizeof text, "Sampa Transformation Error !\nG2PA.dll return code : %d", code);
    AfxMessageBox(text, MB_ICONWARNING);
}

torv::PhonemeConverter& CxSampaTransformer::ConverterAt(DWORD position, Converters& converters) const {
    // Without a singer in force, or with one of another language, it is the first one's: Japanese of both.
    const auto isSung = [language = GetLanguage(position)](const auto& each) { return each.Language() == language; };
    const auto found = std::find_if(converters.begin(), converters.end(), isSung);
    return found == converters.end() ? converters.front() : *found;
}

int CxSampaTransformer::PutLyrics(CSequenceObject* track, Converters& converters, Outcome& outcome) {
    DWORD previous = 0;
    return VisitLyrics(track, [&](CLyricObject* lyric, DWORD position, DWORD length) {
        if (!lyric)
            return 0;
        outcome.hasFailed =
            !TransformLyricObject(ConverterAt(position, converters), lyric, position - previous, length);
        outcome.code = m_nReturnCode;
        previous = position;
        return outcome.hasFailed ? 0 : 1;
    });
}

/// For a track all of whose lyrics were put. Nothing is changed before all changes are made.
void CxSampaTransformer::StoreResults(CSequenceObject* track, Converters& converters, Outcome& outcome) const {
    std::vector<Change> changes;
    VisitLyrics(track, [&](CLyricObject* lyric, DWORD position, DWORD) {
        outcome.missingResults += UpdateLyricObject(ConverterAt(position, converters), lyric, changes);
        return true;
    });
    static_assert(std::is_nothrow_move_assignable_v<CLyricElement>);
    for (Change& change : changes)
        *change.element = std::move(change.changed);
    track->SetModify(1);
}

CxSampaTransformer::Outcome CxSampaTransformer::Convert(CSequenceObject* track, DWORD value, Converters& converters) {
    Outcome outcome;
    for (torv::PhonemeConverter& converter : converters)
        if (!BeginTransform(converter, value))
            return {};
    outcome.result = PutLyrics(track, converters, outcome);
    for (torv::PhonemeConverter& converter : converters) {
        SweepOut(converter);
        EndTransform(converter);
    }
    if (outcome.result)
        StoreResults(track, converters, outcome);
    return outcome;
}

template <class Load>
int CxSampaTransformer::Transform(CSequenceObject* track, DWORD value, Load load) {
    if (!track)
        return 0;
    Outcome outcome;
    try {
        Converters converters;
        m_singers.clear();
        if (!load(converters))
            return 0;
        m_nReturnCode = 0;
        outcome = Convert(track, value, converters);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    // From here on nothing is touched but what stands on the stack: the host runs on while a message is shown.
    if (outcome.hasFailed)
        TranErrorProcess(outcome.code);
    for (int i = 0; i < outcome.missingResults; ++i)
        AfxMessageBox("Internal Error", MB_ICONWARNING);
    return outcome.result;
}

int CxSampaTransformer::DoTransform(CSequenceObject* track, DWORD value, int language) {
    return Transform(track, value, [=](Converters& converters) { return LoadFunction(converters, language); });
}

int CxSampaTransformer::DoTransform(CSequenceObject* track, DWORD value) {
    return Transform(track, value,
                     [=, this](Converters& converters) { return LoadFunction(converters) && CreateSingerInfo(track); });
}

int CxSampaTransformer::GetSingerCount(CSequenceObject* track) {
    CCsqEventSinger singers;
    int count = 0;
    if (singers.Attach(track))
        while (singers.GetNext() == torv::kEventSinger)
            ++count;
    return count;
}

int CxSampaTransformer::CreateSingerInfo(CSequenceObject* track) {
    m_singers.clear();
    m_singers.reserve(static_cast<size_t>(GetSingerCount(track)));
    CCsqEventSinger singers;
    if (!singers.Attach(track))
        return 0;
    while (singers.GetNext() == torv::kEventSinger)
        if (const auto* const icon = dynamic_cast<CIconSinger*>(track->LookupIconObject(singers.GetIconHandle())))
            m_singers.push_back({singers.GetPosition(), icon->GetLanguageCode()});
    return 1;
}

int CxSampaTransformer::GetLanguage(DWORD position) const {
    // An entry exactly here answers first, and of several the first; else the last one before.
    const auto at = std::lower_bound(m_singers.begin(), m_singers.end(), position,
                                     [](const TSingerInfo& singer, DWORD tick) { return singer.position < tick; });
    if (at != m_singers.end() && at->position == position)
        return at->language;
    return at == m_singers.begin() ? -1 : (at - 1)->language;
}
