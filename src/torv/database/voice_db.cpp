#include "torv/database/voice_db.h"

#include "torv/database/error_report.h"
#include "torv/database/external_library.h"
#include "torv/database/report_limit.h"
#include "torv/icons/icon_singer.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

/// As the external library names them, in the order of the record.
constexpr const char* kParameterNames[] = {DBM_PARAMETER_NAMES};
constexpr size_t kParameters = std::size(kParameterNames);
static_assert(kParameters == sizeof(tagVoiceChangeParam::values));
constexpr BYTE kDefaultParameter = 64;
/// A list that never ends is not the library's to give.
constexpr int kMostPairs = 4096;
constexpr int kMostVoices = 65536;

bool IsCode(int number) { return number >= 0 && number <= 0xFF; }
int VariationOf(int language, int program) { return language * 256 + program; }

} // namespace

namespace torv {

void ReleaseVoiceParameters(tagVoiceParameters* record) {
    if (!record)
        return;
    delete[] record->name;
    record->name = nullptr;
}

} // namespace torv

CVoiceDB::~CVoiceDB() { CloseDatabase(); }

bool CVoiceDB::Ask(int status) {
    m_status = status;
    return status == DBM_OK;
}

int CVoiceDB::OpenDatabase(torv::DatabaseLibrary* library) {
    CloseDatabase();
    m_library = library;
    if (!ReloadDatabase()) {
        m_library = nullptr;
        return 0;
    }
    torv::AddCatalogue(*this);
    return 1;
}

void CVoiceDB::CloseDatabase() {
    torv::RemoveCatalogue(*this);
    RemoveModels();
    m_voices.clear();
    m_library = nullptr;
}

int CVoiceDB::ReloadDatabase() {
    RemoveModels();
    m_voices.clear();
    const DBMVoiceList* list = nullptr;
    if (!m_library || !Ask(m_library->GetAllVoice(&list)) || !list || (!list->voices && list->count > 0)) {
        CString details;
        details.Format("DBM_GetAllVoice returned %d", m_status);
        torv::ReportError(torv::kMsgDatabaseFailed, "CVoiceDB::OpenDatabase", details);
        return 0;
    }
    torv::ReportLimit reports;
    for (int i = 0; i < std::min<int>(list->count, kMostVoices); ++i)
        AddVoice(list->voices[i], reports);
    reports.TellRest("CVoiceDB::OpenDatabase");
    return 1;
}

void CVoiceDB::AddVoice(const DBMVoice& listed, torv::ReportLimit& reports) {
    const int language = listed.language;
    const int program = listed.program;
    if (!IsCode(language) || !IsCode(program))
        return; // no singer icon could name it
    const int variation = VariationOf(language, program);
    const Voice voice = ReadVoice(listed);
    if (!m_voices.try_emplace(variation, voice).second) {
        CString details;
        details.Format("language %d, program %d", language, program);
        if (reports.MayReport())
            torv::ReportError(torv::kMsgSingerUsed, voice.name, details);
        return;
    }
    tagSingerIconObject record{};
    record.header.iconId = torv::MakeSingerIconID(language, program);
    record.header.originalVariation = static_cast<DWORD>(variation);
    record.languageCode = static_cast<WORD>(language);
    record.programCode = static_cast<WORD>(program);
    std::unique_ptr<CIconObject> icon = std::make_unique<CIconSinger>();
    static_cast<CIconSinger&>(*icon).ConstructParameter(&record);
    torv::OrBadAlloc(icon->SetIDString(voice.name));
    torv::OrBadAlloc(icon->SetCaption(voice.name));
    AddModel(icon);
}

CVoiceDB::Voice CVoiceDB::ReadVoice(const DBMVoice& listed) {
    Voice voice{listed.name, {}, {}};
    std::fill(std::begin(voice.parameters.values), std::end(voice.parameters.values), kDefaultParameter);
    char name[256] = "";
    if (Ask(m_library->GetVirtualVoiceName(listed.language, listed.program, name, sizeof name))) {
        name[sizeof name - 1] = '\0';
        voice.name = name;
    }
    const DBMInstalledVoice* installed = nullptr;
    if (Ask(m_library->GetVoice(listed.voice, &installed)) && installed)
        voice.installed = installed->name;
    const DBMVoiceParameters* parameters = nullptr;
    if (!Ask(m_library->GetVirtualVoiceParameters(listed.language, listed.program, &parameters)) || !parameters ||
        !parameters->pairs)
        return voice;
    const DBMTextPair* pair = parameters->pairs;
    for (int i = 0; i < kMostPairs && pair->name; ++i, ++pair) {
        if (!pair->value)
            continue;
        if (std::strcmp(pair->name, DBM_VOICE_NAME) == 0)
            voice.name = pair->value;
        const auto* const found = std::find_if(std::begin(kParameterNames), std::end(kParameterNames),
                                               [pair](const char* known) { return !std::strcmp(known, pair->name); });
        if (found != std::end(kParameterNames))
            voice.parameters.values[found - kParameterNames] = static_cast<BYTE>(torv::ParseInteger(pair->value));
    }
    return voice;
}

bool CVoiceDB::HasArticulation(int status, int articulation) const {
    return status == torv::kStatusSinger && articulation == torv::kSingerArticulation;
}

bool CVoiceDB::FindVoice(BYTE language, BYTE program, CString& name, tagVoiceChangeParam& parameters) const {
    const auto found = m_voices.find(VariationOf(language, program));
    if (found == m_voices.end())
        return false;
    name = found->second.name;
    parameters = found->second.parameters;
    return true;
}

int CVoiceDB::GetVoiceParameters(int language, int program, tagVoiceParameters* record) const {
    const auto found = m_voices.find(VariationOf(language, program));
    if (!record || !IsCode(language) || !IsCode(program) || found == m_voices.end())
        return 0;
    record->name = torv::NewText(found->second.name);
    record->parameters = found->second.parameters;
    return 1;
}

CString CVoiceDB::GetInstalledVoiceName(int language, int program) const {
    const auto found = m_voices.find(VariationOf(language, program));
    const bool isThere = IsCode(language) && IsCode(program) && found != m_voices.end();
    return isThere ? found->second.installed : CString();
}

int CVoiceDB::GetDefaultVariation() const { return m_voices.empty() ? 0 : m_voices.begin()->first; }

int CVoiceDB::GetDefaultVariation(int language) const {
    if (!IsCode(language))
        return GetDefaultVariation();
    const auto first = m_voices.lower_bound(VariationOf(language, 0));
    const bool isThere = first != m_voices.end() && first->first / 256 == language;
    return isThere ? first->first : GetDefaultVariation();
}

int CVoiceDB::CreateVoice(int language, int installedVoice, const char* name, int* program) {
    int32_t chosen = 0;
    if (!m_library || !Ask(m_library->CreateVirtualVoice(language, installedVoice, name, &chosen)))
        return 0;
    if (program)
        *program = chosen;
    return ReloadDatabase();
}

int CVoiceDB::CopyVoice(int language, int program, const char* name, int* newProgram) {
    int32_t chosen = 0;
    if (!m_library || !Ask(m_library->CopyVirtualVoice(language, program, name, &chosen)))
        return 0;
    if (newProgram)
        *newProgram = chosen;
    return ReloadDatabase();
}

int CVoiceDB::RenameVoice(int language, int program, const char* name) {
    return m_library && Ask(m_library->SetVirtualVoiceName(language, program, name)) && ReloadDatabase();
}

int CVoiceDB::MoveVoice(int language, int program, int toLanguage, int toProgram) {
    return m_library && Ask(m_library->MoveVirtualVoice(language, program, toLanguage, toProgram)) && ReloadDatabase();
}

int CVoiceDB::SetVoiceParameters(int language, int program, const tagVoiceChangeParam& parameters) {
    CString values[kParameters];
    DBMTextPair pairs[kParameters + 1]{};
    for (size_t i = 0; i < kParameters; ++i) {
        values[i].Format("%d", parameters.values[i]);
        pairs[i] = {kParameterNames[i], values[i]};
    }
    return m_library && Ask(m_library->SetVirtualVoiceParameters(language, program, pairs)) && ReloadDatabase();
}

int CVoiceDB::DeleteVoice(int language, int program) {
    return m_library && Ask(m_library->DeleteVirtualVoice(language, program)) && ReloadDatabase();
}
