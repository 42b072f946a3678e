#include "torv/database/quill_db_if.h"

#include "torv/database/error_report.h"
#include "torv/typed_file/typed_file.h"

namespace {

constexpr const char* kDefaultArticulation = "DEFAULT_ARTICURATION"; // the spelling that hosts know
constexpr const char* kGlobalSection = "Common";

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

int CQuillDBIF::CountModels(int status, int articulation) const { return ShelfOf(status, articulation).count; }

int CQuillDBIF::IndexOf(int status, int articulation, const char* idString) const {
    const Shelf& shelf = ShelfOf(status, articulation);
    const auto found = idString && *idString ? shelf.places.find(idString) : shelf.places.end();
    return found == shelf.places.end() ? 0 : found->second;
}

const CQuillDBIF::Shelf& CQuillDBIF::ShelfOf(int status, int articulation) const {
    const auto [place, isNew] = m_shelves.try_emplace(torv::MakeIconID(status, articulation, 0));
    Shelf& shelf = place->second;
    if (isNew)
        for (const CIconObject* const icon : GetModels(status, articulation))
            shelf.places.try_emplace(icon->GetIDString().GetStdString(), ++shelf.count); // of two the first is found
    return shelf;
}

HBITMAP CQuillDBIF::GetButtonBitmap(DWORD id) const {
    const auto found = m_buttons.find(id);
    return found == m_buttons.end() ? nullptr : found->second.Get();
}

CIconObject* CQuillDBIF::AddModel(std::unique_ptr<CIconObject> icon) {
    m_shelves.clear();
    const DWORD id = icon->GetIconID();
    return m_models.insert_or_assign(id, std::move(icon)).first->second.get();
}

std::unique_ptr<CIconObject> CQuillDBIF::TakeModel(DWORD id) {
    auto node = m_models.extract(id);
    if (node.empty())
        return nullptr;
    m_shelves.clear();
    m_buttons.erase(id);
    return std::move(node.mapped());
}

void CQuillDBIF::RemoveModels() {
    m_models.clear();
    m_buttons.clear();
    m_shelves.clear();
}

int CQuillDBIF::LoadPresetModelIcon(CIconObject* icon, const char* folder, const char* name, bool report) {
    return LoadModelIconFile(icon, torv::JoinPath(folder, name) + ".aic", name, report,
                             "CQuillDBIF::LoadPresetModelIcon");
}

int CQuillDBIF::LoadModelIconFile(CIconObject* icon, const char* path, const char* idString, bool report,
                                  const char* function) {
    if (!torv::CheckFile(path, report))
        return 0;
    CxTypedFile file;
    if (!file.Load(path)) {
        if (report)
            torv::ReportError(torv::kMsgFunctionError, function);
        return 0;
    }
    const CString button = file.ReadAt(kGlobalSection, "Button", nullptr);
    const CString folder(path, static_cast<int>(torv::FileNamePart(path) - path));
    m_buttons[icon->GetIconID()] =
        torv::ButtonBitmap::Load(button.IsEmpty() ? CString() : torv::JoinPath(folder, button));
    icon->SetIDString(idString);
    icon->SetOriginalVariation(static_cast<DWORD>(torv::VariationFromID(icon->GetIconID())));
    return icon->LoadPreset(path);
}
