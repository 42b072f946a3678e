// The questions that a host asks of the open databases.
#include "torv/database/external_library.h"
#include "torv/database/quill_db_manager.h"
#include "torv/icons/icon_expression.h"
#include "torv/icons/icon_factory.h"
#include "torv/icons/icon_singer.h"
#include "torv/score/cross_reference_map.h"

namespace {

constexpr const char* kDefaultVariation = "DEFAULT_VARIATION";
constexpr int kStatuses[] = {torv::kStatusAttack,  torv::kStatusRelease,  torv::kStatusTransit,
                             torv::kStatusVibrato, torv::kStatusDynamics, torv::kStatusSinger};

CCrossReferenceMap& MapOf(LPARAM data) { return *reinterpret_cast<CCrossReferenceMap*>(data); }

int AddNumber(LPARAM data, int number, const char* name) {
    return MapOf(data).AddTail(static_cast<DWORD>(number), name) != nullptr;
}

int CALLBACK AddStatus(int status, const char* name, LPARAM data) { return AddNumber(data, status, name); }
int CALLBACK AddArticulation(int, int articulation, const char* name, LPARAM data) {
    return AddNumber(data, articulation, name);
}
int CALLBACK AddVariation(int, int, int variation, const char* name, LPARAM data) {
    return AddNumber(data, variation, name);
}

} // namespace

DWORD CQuillDBManager::MakeIconID(int status, int articulation, int variation) {
    return torv::MakeIconID(status, articulation, variation);
}
DWORD CQuillDBManager::MakeSingerIconID(int high, int low) { return torv::MakeSingerIconID(high, low); }
int CQuillDBManager::StatusFromID(DWORD id) { return torv::StatusFromID(id); }
int CQuillDBManager::ArticulationFromID(DWORD id) { return torv::ArticulationFromID(id); }
int CQuillDBManager::VariationFromID(DWORD id) { return torv::VariationFromID(id); }

DWORD CQuillDBManager::MakeDefaultIconID(int status, int articulation) const {
    return torv::MakeIconID(status, articulation, m_voices.GetDefaultVariation());
}

CIconObject* CQuillDBManager::GetModelIconObject(DWORD id) const {
    const CQuillDBIF* const database = DatabaseOf(torv::StatusFromID(id));
    return database ? database->GetModelIconObject(id) : nullptr;
}

CIconObject* CQuillDBManager::CreateIconObject(DWORD id) const { return CreateIconObject(GetModelIconObject(id)); }

CIconObject* CQuillDBManager::CreateIconObject(int status, int articulation, int variation) const {
    return CreateIconObject(torv::MakeIconID(status, articulation, variation));
}

CIconObject* CQuillDBManager::CreateIconObject(CIconObject* model) { return torv::CopyIcon(model).release(); }

int CQuillDBManager::LoadIconParameter(CIconObject* icon) const {
    CIconObject* const model = icon ? GetModelIconObject(icon->GetIconID()) : nullptr;
    if (!model || !icon->ReplaceParameter(model))
        return 0;
    icon->SetOriginalVariation(model->GetOriginalVariation());
    return 1;
}

int CQuillDBManager::ReloadSingerIcon(CIconSinger* icon, int language, int program) const {
    const bool areCodes = language >= 0 && language <= 0xFF && program >= 0 && program <= 0xFF;
    CIconObject* const model = areCodes ? GetModelIconObject(torv::MakeSingerIconID(language, program)) : nullptr;
    if (!icon || !model || !icon->ReplaceParameter(model))
        return 0;
    icon->SetOriginalVariation(model->GetOriginalVariation());
    return 1;
}

int CQuillDBManager::VerifyIconID(DWORD id) const { return GetModelIconObject(id) != nullptr; }

int CQuillDBManager::LookupIconOverview(DWORD id, tagQuillIconOverview* overview) const {
    const CIconObject* const model = GetModelIconObject(id);
    if (!model)
        return 0;
    if (!overview)
        return 1;
    *overview = {};
    overview->iconId = id;
    overview->originalVariation = model->GetOriginalVariation();
    overview->length = model->GetLength();
    overview->isUserIcon = CIconObject::IsUserIcon(id) && torv::StatusFromID(id) != torv::kStatusSinger;
    overview->button = GetButtonBitmap(id);
    torv::CopyText(overview->idString, sizeof overview->idString, model->GetIDString());
    torv::CopyText(overview->caption, sizeof overview->caption, model->GetCaption());
    if (const auto* const expression = dynamic_cast<const CIconExpression*>(model))
        torv::CopyText(overview->singerName, sizeof overview->singerName, expression->GetOriginalSingerName());
    return 1;
}

int CQuillDBManager::LookupIconOverview(int status, int articulation, int variation,
                                        tagQuillIconOverview* overview) const {
    return LookupIconOverview(torv::MakeIconID(status, articulation, variation), overview);
}

DWORD CQuillDBManager::ConvertToDefaultIconID(DWORD id) const {
    return ConvertToDefaultIconID(torv::StatusFromID(id), torv::ArticulationFromID(id), torv::VariationFromID(id));
}

DWORD CQuillDBManager::ConvertToDefaultIconID(int status, int articulation, int variation) const {
    if (status == torv::kStatusSinger) {
        articulation = torv::kSingerArticulation;
        variation = GetDefaultSingerVariation(variation >> 8 & 0xFF);
    } else if (status >= torv::kStatusAttack && status <= torv::kStatusDynamics) {
        variation = 1;
    } else {
        return torv::MakeIconID(status, 1, 1);
    }
    return LookupIconOverview(status, articulation, variation, nullptr)
               ? torv::MakeIconID(status, articulation, variation)
               : 0;
}

int CQuillDBManager::GetDefaultSingerVariation(int language) const { return m_voices.GetDefaultVariation(language); }

HBITMAP CQuillDBManager::GetButtonBitmap(DWORD id) const {
    const CIconObject* const model = GetModelIconObject(id);
    if (!model)
        return nullptr;
    const CQuillDBIF* const database = DatabaseOf(torv::StatusFromID(id));
    HBITMAP button = database->GetButtonBitmap(id);
    if (!button)
        button = database->GetButtonBitmap((id & 0xFFFF0000) | (model->GetOriginalVariation() & 0xFFFF));
    return button ? button : m_defaultButton.Get();
}

HBITMAP CQuillDBManager::GetButtonBitmap(int status, int articulation, int variation) const {
    return GetButtonBitmap(torv::MakeIconID(status, articulation, variation));
}

int CQuillDBManager::GetButtonBitmapSize(SIZE& size) const {
    BITMAP bitmap{};
    if (!m_defaultButton.Get() || !GetObjectA(m_defaultButton.Get(), sizeof bitmap, &bitmap))
        return 0;
    size = {bitmap.bmWidth, bitmap.bmHeight};
    return 1;
}

int CQuillDBManager::EnumIconStatus(QuillEnumStatusProc callback, LPARAM data) const {
    int result = m_isOpen;
    if (m_isOpen && callback)
        for (auto status = std::begin(kStatuses); result && status != std::end(kStatuses); ++status)
            result = callback(*status, torv::IconStatusName(*status), data);
    return result;
}

int CQuillDBManager::EnumIconArticulation(int status, QuillEnumArticulationProc callback, LPARAM data) const {
    const CQuillDBIF* const database = DatabaseOf(status);
    return database ? database->EnumIconArticulation(status, callback, data) : 0;
}

int CQuillDBManager::EnumIconVariation(int status, int articulation, QuillEnumVariationProc callback,
                                       LPARAM data) const {
    // Copied first: a callback may register and remove icons.
    std::vector<std::pair<int, CString>> variations;
    const CQuillDBIF* const database = DatabaseOf(status);
    if (!database || !torv::OrZero([&] {
            for (const CIconObject* const icon : database->GetModels(status, articulation))
                variations.emplace_back(torv::VariationFromID(icon->GetIconID()), icon->GetIDString());
            return 1;
        }))
        return 0;
    if (!callback)
        return !variations.empty();
    int result = 0;
    for (const auto& [variation, name] : variations) {
        result = callback(status, articulation, variation, name.IsEmpty() ? kDefaultVariation : name.operator LPCSTR(),
                          data);
        if (!result)
            break;
    }
    return result;
}

int CQuillDBManager::GetStatusReferenceMap(CCrossReferenceMap& map) const {
    map.RemoveAll();
    return torv::OrZero([&] { return EnumIconStatus(AddStatus, reinterpret_cast<LPARAM>(&map)); });
}

int CQuillDBManager::GetArticulationReferenceMap(int status, CCrossReferenceMap& map) const {
    map.RemoveAll();
    return torv::OrZero([&] { return EnumIconArticulation(status, AddArticulation, reinterpret_cast<LPARAM>(&map)); });
}

int CQuillDBManager::GetVariationReferenceMap(int status, int articulation, CCrossReferenceMap& map) const {
    map.RemoveAll();
    return torv::OrZero(
        [&] { return EnumIconVariation(status, articulation, AddVariation, reinterpret_cast<LPARAM>(&map)); });
}

int CQuillDBManager::IndexOf(const CIconObject& icon) const {
    const DWORD id = icon.GetIconID();
    const CQuillDBIF* const database = DatabaseOf(torv::StatusFromID(id));
    return database ? torv::OrZero([&] {
        return database->IndexOf(torv::StatusFromID(id), torv::ArticulationFromID(id), icon.GetIDString());
    })
                    : 0;
}
