#include "torv/database/quill_db_if.h"

#include "torv/database/error_report.h"
#include "torv/database/report_limit.h"
#include "torv/icons/icon_factory.h"
#include "torv/icons/storable.h"
#include "torv/typed_file/typed_file.h"

namespace {

constexpr const char* kDefaultArticulation = "DEFAULT_ARTICURATION"; // the spelling that hosts know
constexpr const char* kGlobalSection = "Common";
constexpr DWORD kArticulationBits = 0xFFFF0000;

} // namespace

CQuillDBIF::~CQuillDBIF() = default;

int CQuillDBIF::EnumIconArticulation(int status, QuillEnumArticulationProc callback, LPARAM data) const {
    int result = 0;
    for (int articulation = 1; articulation <= 0xFF; ++articulation) {
        if (!HasArticulation(status, articulation))
            continue;
        if (!callback)
            return 1;
        const char* const name = torv::IconArticulationName(status, articulation);
        result = callback(status, articulation, *name ? name : kDefaultArticulation, data);
        if (!result)
            break;
    }
    return result;
}

CIconObject* CQuillDBIF::GetModelIconObject(DWORD id) const {
    const auto found = m_models.find(id);
    return found == m_models.end() ? nullptr : found->second.get();
}

std::vector<CIconObject*> CQuillDBIF::GetModels(int status, int articulation) const {
    std::vector<CIconObject*> models;
    const auto end = m_models.upper_bound(torv::MakeIconID(status, articulation, 0xFFFF));
    for (auto at = m_models.lower_bound(torv::MakeIconID(status, articulation, 0)); at != end; ++at)
        models.push_back(at->second.get());
    return models;
}

int CQuillDBIF::IndexOf(int status, int articulation, const char* idString) const {
    const Shelf& shelf = ShelfOf(status, articulation);
    const auto found = idString && *idString ? shelf.places.find(idString) : shelf.places.end();
    return found == shelf.places.end() ? 0 : found->second;
}

const CQuillDBIF::Shelf& CQuillDBIF::ShelfOf(int status, int articulation) const {
    const DWORD id = torv::MakeIconID(status, articulation, 0);
    if (const auto known = m_shelves.find(id); known != m_shelves.end())
        return known->second;
    Shelf shelf;
    int place = 0;
    for (const CIconObject* const icon : GetModels(status, articulation))
        shelf.places.try_emplace(icon->GetIDString().GetStdString(), ++place); // of two the first is found
    return m_shelves.emplace(id, std::move(shelf)).first->second;
}

HBITMAP CQuillDBIF::GetButtonBitmap(DWORD id) const {
    const auto found = m_buttons.find(id);
    return found == m_buttons.end() ? nullptr : found->second.Get();
}

int CQuillDBIF::GetNewVariation(int status, int articulation) const {
    if (!HasArticulation(status, articulation))
        return 0;
    const DWORD first = torv::MakeIconID(status, articulation, 0) | torv::kUserIconBit;
    int& number = m_lowestFree.try_emplace(first & kArticulationBits, 1).first->second;
    while (number <= torv::kLastUserNumber && IsTaken(first + static_cast<DWORD>(number)))
        ++number;
    return number <= torv::kLastUserNumber ? torv::VariationFromID(first + static_cast<DWORD>(number)) : 0;
}

bool CQuillDBIF::GiveNewVariation(std::unique_ptr<CIconObject>& icon) const {
    const DWORD id = icon->GetIconID();
    const int variation = GetNewVariation(torv::StatusFromID(id), torv::ArticulationFromID(id));
    if (variation < 1)
        icon.reset();
    else
        icon->SetVariation(variation);
    return variation >= 1;
}

CIconObject* CQuillDBIF::Register(std::unique_ptr<CIconObject>& icon) {
    if (!GiveNewVariation(icon))
        return nullptr;
    CIconObject* const given = icon.get();
    return Restore(icon) ? given : nullptr;
}

std::unique_ptr<CIconObject> CQuillDBIF::Unregister(DWORD id) {
    if (!CIconObject::IsUserIcon(id) || !Contains(id))
        return nullptr;
    SetModified();
    return TakeModel(id);
}

int CQuillDBIF::Replace(const CIconObject& icon) {
    CIconObject* const model = UserIconLike(icon);
    const std::unique_ptr<CIconObject> copy = model ? torv::CopyIcon(&icon) : nullptr;
    if (!copy)
        return 0;
    torv::MakeStorable(*copy);
    if (!model->ReplaceParameter(copy.get()))
        return 0;
    model->SetOriginalVariation(copy->GetOriginalVariation());
    m_shelves.clear();
    SetModified();
    return 1;
}

int CQuillDBIF::Restore(std::unique_ptr<CIconObject>& icon) {
    if (!MayRestore(*icon))
        return 0;
    torv::MakeStorable(*icon);
    AddModel(icon);
    SetModified();
    return 1;
}

CIconObject* CQuillDBIF::UserIconLike(const CIconObject& icon) const {
    CIconObject* const model = icon.IsUserIcon() ? GetModelIconObject(icon.GetIconID()) : nullptr;
    return model && torv::IsSameClass(*model, icon) ? model : nullptr;
}

bool CQuillDBIF::MayRestore(const CIconObject& icon) const {
    const DWORD id = icon.GetIconID();
    if (!CIconObject::IsUserIcon(id) || (id & torv::kLastUserNumber) == 0 || Contains(id) ||
        !HasArticulation(torv::StatusFromID(id), torv::ArticulationFromID(id)))
        return false;
    // Only an icon of its status's class can be read again.
    const auto example = torv::MakeIcon(torv::StatusFromID(id), torv::ArticulationFromID(id), 0);
    torv::OrBadAlloc(example);
    return torv::IsSameClass(*example, icon);
}

void CQuillDBIF::TakeUserIcons(CQuillDBIF& from) {
    for (auto at = from.m_models.begin(); at != from.m_models.end();) {
        const auto model = at++;
        const DWORD id = model->first;
        if (CIconObject::IsUserIcon(id) && HasArticulation(torv::StatusFromID(id), torv::ArticulationFromID(id)))
            m_models.insert(from.m_models.extract(model));
    }
    for (CQuillDBIF* const database : {this, &from}) {
        database->m_shelves.clear();
        database->m_lowestFree.clear();
    }
}

CIconObject* CQuillDBIF::AddModel(std::unique_ptr<CIconObject>& icon) {
    CIconObject* const added = icon.get();
    m_models.try_emplace(added->GetIconID()).first->second = std::move(icon);
    m_shelves.clear();
    return added;
}

std::unique_ptr<CIconObject> CQuillDBIF::TakeModel(DWORD id) {
    auto node = m_models.extract(id);
    if (node.empty())
        return nullptr;
    m_shelves.clear();
    m_lowestFree.erase(id & kArticulationBits);
    m_buttons.erase(id);
    return std::move(node.mapped());
}

void CQuillDBIF::RemoveModels() {
    m_models.clear();
    m_buttons.clear();
    m_shelves.clear();
    m_lowestFree.clear();
    m_isModified = false;
}

bool CQuillDBIF::OpenIconFile(CxTypedFile& file, const char* path, torv::ReportLimit& reports, const char* function) {
    if (!torv::CheckFile(path, false)) {
        if (reports.MayReport())
            torv::ReportError(torv::kMsgFileNotFound, path);
        return false;
    }
    if (file.Load(path))
        return true;
    if (reports.MayReport())
        torv::ReportError(torv::kMsgFunctionError, function);
    return false;
}

int CQuillDBIF::LoadPresetModelIcon(CIconObject* icon, const char* folder, const char* name,
                                    torv::ReportLimit& reports) {
    const CString path = torv::JoinPath(folder, name) + ".aic";
    CxTypedFile file;
    if (!OpenIconFile(file, path, reports, "CQuillDBIF::LoadPresetModelIcon"))
        return 0;
    torv::OrBadAlloc(icon->SetIDString(name));
    return LoadModelIcon(icon, file, folder, path);
}

int CQuillDBIF::LoadModelIcon(CIconObject* icon, const CxTypedFile& file, const char* folder, const char* path) {
    const CString button = file.ReadAt(kGlobalSection, "Button", nullptr);
    m_buttons[icon->GetIconID()] =
        torv::ButtonBitmap::Load(button.IsEmpty() ? CString() : torv::JoinPath(folder, button));
    icon->SetOriginalVariation(static_cast<DWORD>(torv::VariationFromID(icon->GetIconID())));
    return icon->LoadPreset(path);
}
