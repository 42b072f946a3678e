#include "torv/lyrics/sampa_transformer.h"

#include "torv/icons/icon_singer.h"
#include "torv/lyrics/converter_modules.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/platform/language.h"
#include "torv/score/csq_event_anote.h"
#include "torv/score/csq_event_singer.h"
#include "torv/score/sequence_object.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr DWORD kTicksPerBeat = 480;
constexpr int kGotOutput = 0;
constexpr int kNothingForNow = 1;
constexpr int kPhonemeBytes = 256;
/// A converter that never says "nothing for now" would hold the song for ever.
constexpr size_t kMostOutputsAtOnce = 1000000;

const char* const kCreate = "g2paCreate";
const char* const kDelete = "g2paDelete";
const char* const kPut = "g2paPut";
const char* const kGet = "g2paGet";
const char* const kVersion = "g2paGetVersionString";

/// Appends a slot, which may lack its terminator, as far as there is room.
int AppendSlot(const char* slot, char* buffer, int length, int size) {
    const int slotLength = static_cast<int>(strnlen(slot, G2PA_SLOT_BYTES));
    const int count = std::min(slotLength, size - 1 - length);
    std::memcpy(buffer + length, slot, static_cast<size_t>(count));
    return length + count;
}

int JoinSlots(const G2paOutput& output, const char* separator, char* buffer, int size) {
    int length = 0;
    const int count = std::min<int>(output.count, G2PA_MAX_SLOTS);
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            length = AppendSlot(separator, buffer, length, size);
        length = AppendSlot(output.slots[i], buffer, length, size);
    }
    buffer[length] = '\0';
    return length;
}

} // namespace

CxSampaTransformer::CxSampaTransformer() : m_output() {}
CxSampaTransformer::~CxSampaTransformer() = default;

CString CxSampaTransformer::GetG2PAVersionString(int language) {
    const HMODULE module = torv::ConverterModule(language);
    const auto version = module ? torv::EntryPoint<G2paGetVersionStringProc>(module, kVersion) : nullptr;
    return version ? CString(version()) : CString();
}

int CxSampaTransformer::BindFunctions(Converter& converter, HMODULE module) {
    if (!module)
        return 0;
    converter.create = torv::EntryPoint<G2paCreateProc>(module, kCreate);
    converter.release = converter.create ? torv::EntryPoint<G2paDeleteProc>(module, kDelete) : nullptr;
    converter.put = converter.release ? torv::EntryPoint<G2paPutProc>(module, kPut) : nullptr;
    converter.get = converter.put ? torv::EntryPoint<G2paGetProc>(module, kGet) : nullptr;
    return converter.get != nullptr;
}

int CxSampaTransformer::LoadFunction(int language) {
    m_converters.clear();
    if (!torv::IsLanguage(language))
        return 0;
    Converter converter;
    converter.language = language;
    if (!BindFunctions(converter, torv::ConverterModule(language)))
        return 0;
    m_converters.push_back(std::move(converter));
    return 1;
}

int CxSampaTransformer::LoadFunction() {
    m_converters.clear();
    for (int language = 0; language < torv::kLanguages; ++language) {
        Converter converter;
        converter.language = language;
        if (!BindFunctions(converter, torv::ConverterModule(language)))
            return 0;
        m_converters.push_back(std::move(converter));
    }
    return 1;
}

int CxSampaTransformer::BeginTransform(Converter& converter, DWORD value) {
    converter.handle = converter.create(value / kTicksPerBeat);
    if (converter.handle >= 0)
        return 1;
    m_nReturnCode = converter.handle;
    return 0;
}

int CxSampaTransformer::EndTransform(Converter& converter) {
    const int code = converter.release(converter.handle);
    converter.handle = -1;
    if (code != 0)
        m_nReturnCode = code;
    return code == 0;
}

int CxSampaTransformer::GetJPhoneme(const G2paOutput& output, char* buffer, int size) {
    return JoinSlots(output, "", buffer, size);
}
int CxSampaTransformer::GetEPhoneme(const G2paOutput& output, char* buffer, int size) {
    return JoinSlots(output, " ", buffer, size);
}

int CxSampaTransformer::CollectOutputs(Converter& converter) {
    for (size_t taken = 0; taken < kMostOutputsAtOnce; ++taken) {
        m_output = {};
        const int code = converter.get(converter.handle, &m_output);
        if (code == kNothingForNow)
            return 1;
        if (code != kGotOutput) {
            m_nReturnCode = code;
            return 0;
        }
        char text[kPhonemeBytes];
        const int length = converter.language == torv::kEnglish ? GetEPhoneme(m_output, text, sizeof text)
                                                                : GetJPhoneme(m_output, text, sizeof text);
        converter.results.emplace_back(length > 0 ? text : CLyricObject::GetDefaultPhoneme(converter.language));
    }
    return 0;
}

int CxSampaTransformer::TransformLyricObject(Converter& converter, CLyricObject* lyric, DWORD position,
                                             DWORD noteLength) {
    for (int i = 0; i < lyric->GetElementCount(); ++i) {
        const CLyricElement& element = *lyric->GetElementAt(i);
        const DWORD length = torv::ShareOf(noteLength, element.GetDeltaRate());
        const CString text = element.GetLyricString();
        const size_t textBytes = std::max<size_t>(static_cast<size_t>(text.GetLength()) + 1, G2PA_MIN_TEXT_BYTES);
        m_input.assign(offsetof(G2paInput, text) + textBytes, 0);
        std::memcpy(m_input.data() + offsetof(G2paInput, position), &position, sizeof position);
        std::memcpy(m_input.data() + offsetof(G2paInput, length), &length, sizeof length);
        std::memcpy(m_input.data() + offsetof(G2paInput, text), static_cast<const char*>(text),
                    static_cast<size_t>(text.GetLength()));
        if (const int code = converter.put(converter.handle, m_input.data())) {
            m_nReturnCode = code;
            return 0;
        }
        if (!CollectOutputs(converter))
            return 0;
        position += length;
    }
    return 1;
}

// The end of input: what the converter held back comes now.
int CxSampaTransformer::SweepOut(Converter& converter) {
    if (const int code = converter.put(converter.handle, nullptr)) {
        m_nReturnCode = code;
        return 0;
    }
    return CollectOutputs(converter);
}

int CxSampaTransformer::UpdateLyricObject(Converter& converter, CLyricObject* lyric) {
    for (int i = 0; i < lyric->GetElementCount(); ++i) {
        CString phonemes;
        if (converter.used < converter.results.size())
            phonemes = converter.results[converter.used];
        else
            AfxMessageBox("Internal Error", MB_ICONWARNING);
        ++converter.used;
        if (phonemes.IsEmpty())
            phonemes = CLyricObject::GetDefaultPhoneme(converter.language);
        CLyricElement& element = *lyric->GetElementAt(i);
        if (!element.GetPhonemeEditMark())
            element.SetPhonemeString(phonemes, converter.language);
    }
    return 1;
}

void CxSampaTransformer::TranErrorProcess() const {
    MessageBeep(MB_ICONWARNING);
    CString text;
    text.Format("Sampa Transformation Error !\nG2PA.dll return code : %d", m_nReturnCode);
    AfxMessageBox(text, MB_ICONWARNING);
}

/// Calls visit(lyric, position, length) for every note with a lyric handle, in song order, while it answers non-zero;
/// the lyric is null when the handle names nothing.
template <class Visit>
int CxSampaTransformer::VisitLyrics(CSequenceObject* track, Visit visit) {
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

CxSampaTransformer::Converter& CxSampaTransformer::ConverterAt(DWORD position, Mode mode) {
    // Without a singer in force, or with one of another language, Japanese is spoken.
    const int language = mode == Mode::BySinger ? GetLanguage(position) : 0;
    return m_converters[language == torv::kEnglish ? torv::kEnglish : torv::kJapanese];
}

int CxSampaTransformer::Transform(CSequenceObject* track, DWORD value, Mode mode) {
    m_nReturnCode = 0;
    for (size_t i = 0; i < m_converters.size(); ++i) {
        if (BeginTransform(m_converters[i], value))
            continue;
        while (i-- > 0)
            EndTransform(m_converters[i]);
        return 0;
    }
    DWORD previous = 0;
    const int converted = VisitLyrics(track, [&](CLyricObject* lyric, DWORD position, DWORD length) {
        if (!lyric)
            return 0;
        if (!TransformLyricObject(ConverterAt(position, mode), lyric, position - previous, length)) {
            TranErrorProcess();
            return 0;
        }
        previous = position;
        return 1;
    });
    for (Converter& converter : m_converters) {
        SweepOut(converter);
        EndTransform(converter);
    }
    if (!converted)
        return 0;
    const int updated = VisitLyrics(track, [&](CLyricObject* lyric, DWORD position, DWORD) {
        // A lyric may be gone by now: the host runs on while a message is shown.
        return lyric ? UpdateLyricObject(ConverterAt(position, mode), lyric) : 0;
    });
    if (!updated)
        return 0;
    track->SetModify(1);
    return 1;
}

int CxSampaTransformer::DoTransform(CSequenceObject* track, DWORD value, int language) {
    if (!track || !LoadFunction(language))
        return 0;
    return Transform(track, value, Mode::OneLanguage);
}

int CxSampaTransformer::DoTransform(CSequenceObject* track, DWORD value) {
    if (!track || !LoadFunction() || !CreateSingerInfo(track))
        return 0;
    const int result = Transform(track, value, Mode::BySinger);
    m_singers.clear();
    return result;
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
