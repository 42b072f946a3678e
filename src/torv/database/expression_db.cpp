#include "torv/database/expression_db.h"

#include "torv/database/error_report.h"
#include "torv/database/external_library.h"
#include "torv/database/file_text.h"
#include "torv/database/report_limit.h"
#include "torv/icons/icon_expression.h"
#include "torv/icons/icon_factory.h"
#include "torv/icons/storable.h"
#include "torv/platform/file_handle.h"
#include "torv/typed_file/typed_file.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

constexpr int kMostEntries = 65536; // of one list
/// So many bytes of an ID string stand in a file's name: folders limit the length of names.
constexpr int kMostIDBytes = 90;

CIconExpression& AsExpression(CIconObject& icon) { return static_cast<CIconExpression&>(icon); }

bool IsSameExpression(const tagExpressionEntry& a, const tagExpressionEntry& b) {
    return a.database == b.database && a.idHigh == b.idHigh && a.idLow == b.idLow;
}

void TellStatus(const char* entryPoint, int status) {
    CString text;
    text.Format("%s returned %d", entryPoint, status);
    MessageBeep(MB_ICONEXCLAMATION);
    AfxMessageBox(text, MB_ICONEXCLAMATION | MB_OK);
}

/// A file that goes with the object.
class TemporaryFile {
public:
    explicit TemporaryFile(const CString& path) : m_path(path) {}
    ~TemporaryFile() {
        torv::OrZero([this] {
            torv::RemoveFile(m_path);
            return 1;
        });
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const CString& Path() const { return m_path; }

private:
    CString m_path;
};

CString TemporaryFolder() {
    char folder[4096] = "";
    const DWORD length = GetTempPathA(sizeof folder, folder);
    return length < sizeof folder ? CString(folder) : CString();
}

} // namespace

CExpressionDB::CExpressionDB() = default;
CExpressionDB::~CExpressionDB() { CloseDatabase(); }

bool CExpressionDB::Ask(int status) {
    m_status = status;
    return status == DBM_OK;
}

bool CExpressionDB::HasArticulation(int status, int articulation) const {
    return status >= torv::kStatusAttack && status <= torv::kStatusVibrato && articulation == status;
}

int CExpressionDB::OpenDatabase(torv::DatabaseLibrary* library) {
    CloseDatabase();
    m_library = library;
    const DBMExpDatabaseList* list = nullptr;
    if (!library || !Ask(library->GetExpDB(&list)) || !list || (!list->databases && list->count > 0)) {
        CString details;
        details.Format("DBM_GetExpDB returned %d", m_status);
        torv::ReportError(torv::kMsgDatabaseFailed, "CExpressionDB::OpenDatabase", details);
        CloseDatabase();
        return 0;
    }
    std::vector<int> databases; // the list is the library's, and may change with the next calls
    databases.reserve(static_cast<size_t>(std::clamp<int>(list->count, 0, kMostEntries)));
    for (int i = 0; i < std::min<int>(list->count, kMostEntries); ++i)
        databases.push_back(list->databases[i].number);
    for (const int database : databases) {
        const DBMExpInfo* info = nullptr;
        if (!Ask(library->GetVirtualExpInfo(database, &info)) || !info)
            continue;
        for (int i = 0; info->expressions && i < std::min<int>(info->count, kMostEntries); ++i) {
            const DBMExpression& each = info->expressions[i];
            if (HasArticulation(each.kind, each.kind))
                m_expressions.push_back({database, each.kind, each.high, each.low});
        }
        library->DeleteVirtualExpInfo(info);
    }
    torv::ReportLimit reports;
    for (const Expression& expression : m_expressions)
        ReadExpression(expression, reports);
    reports.TellRest("CExpressionDB::OpenDatabase");
    return 1;
}

void CExpressionDB::CloseDatabase() {
    ReleaseItems();
    RemoveModels();
    m_expressions.clear();
    m_userItems.clear();
    m_itemNumbers.clear();
    m_library = nullptr;
}

void CExpressionDB::ReleaseItems() {
    const DBMExpItems* const items = std::exchange(m_items, nullptr);
    if (items && m_library)
        m_library->DeleteVirtualExpItems(items);
}

const DBMExpItems* CExpressionDB::QueryItems(const Expression& expression) {
    ReleaseItems();
    if (!Ask(m_library->GetVirtualExpItems(expression.database, expression.high, expression.low, &m_items)))
        m_items = nullptr;
    return m_items && m_items->items ? m_items : nullptr;
}

void CExpressionDB::ReadExpression(const Expression& expression, torv::ReportLimit& reports) {
    const DBMExpItems* const items = QueryItems(expression);
    for (int i = 0; items && i < std::min<int>(items->count, kMostEntries); ++i)
        ReadItem(expression, items->items[i], reports);
}

int CExpressionDB::LastPreset(int status) const {
    const std::vector<CIconObject*> models = GetModels(status, status);
    return models.empty() ? 0 : torv::VariationFromID(models.back()->GetIconID());
}

void CExpressionDB::ReadItem(const Expression& expression, const DBMExpItem& item, torv::ReportLimit& reports) {
    // An item's own number is its icon's, so that songs find it again; one that cannot be has the next that is free.
    const int kind = expression.kind;
    int number = static_cast<int>(item.value & torv::kLastUserNumber);
    if (!item.user && (number == 0 || Contains(torv::MakeIconID(kind, kind, number))))
        number = LastPreset(kind) + 1;
    if (number > torv::kLastUserNumber)
        return;
    const int variation = item.user ? number | static_cast<int>(torv::kUserIconBit) : number;
    std::unique_ptr<CIconObject> icon = torv::MakeIcon(kind, kind, variation);
    torv::OrBadAlloc(icon);
    const char* const path = item.fileName ? item.fileName : "";
    CxTypedFile file;
    const bool isLoaded =
        OpenIconFile(file, path, reports, "CExpressionDB::LoadPresetModelIcon") &&
        (item.user ? icon->LoadPreset(path) : LoadModelIcon(icon.get(), file, torv::FolderPart(path), path));
    CIconExpression& model = AsExpression(*icon);
    *model.GetExpressionEntry() = {expression.database, expression.high, expression.low, item.value};
    torv::OrBadAlloc(model.SetIDString(item.idString));
    model.SetOriginalSingerName(item.singerName);
    model.SetDevelopperName(item.developerName);
    if (item.caption && *item.caption)
        torv::OrBadAlloc(model.SetCaption(item.caption));
    if (!item.user) {
        if (isLoaded)
            AddModel(icon);
        return;
    }
    m_itemNumbers.insert(icon->GetIconID());
    const std::vector<CIconObject*> presets = GetModels(kind, kind);
    const auto origin = std::find_if(presets.begin(), presets.end(), [&model](CIconObject* preset) {
        return IsSameExpression(*AsExpression(*preset).GetExpressionEntry(), *model.GetExpressionEntry());
    });
    if (origin != presets.end())
        model.SetOriginalVariation((*origin)->GetOriginalVariation());
    m_userItems.push_back({std::move(icon), isLoaded});
}

bool CExpressionDB::CompleteEntry(CIconExpression& icon) const {
    tagExpressionEntry& entry = *icon.GetExpressionEntry();
    if (entry.database != 0)
        return true;
    const int status = torv::StatusFromID(icon.GetIconID());
    CIconObject* origin =
        GetModelIconObject(torv::MakeIconID(status, status, static_cast<int>(icon.GetOriginalVariation())));
    if (const std::vector<CIconObject*> models = GetModels(status, status); !origin && !models.empty())
        origin = models.front();
    if (!origin)
        return false;
    entry = *AsExpression(*origin).GetExpressionEntry();
    entry.itemValue = 0;
    return true;
}

void CExpressionDB::BindUserItems() {
    std::multimap<std::pair<int, std::string>, UserItem> items;
    for (UserItem& item : std::exchange(m_userItems, {})) {
        const std::pair name(torv::StatusFromID(item.icon->GetIconID()), item.icon->GetIDString().GetStdString());
        items.emplace(name, std::move(item));
    }
    for (int status = torv::kStatusAttack; status <= torv::kStatusVibrato; ++status) {
        for (CIconObject* const model : GetModels(status, status)) {
            if (!model->IsUserIcon())
                continue;
            CIconExpression& icon = AsExpression(*model);
            const auto [first, end] = items.equal_range({status, icon.GetIDString().GetStdString()});
            auto item = std::find_if(
                first, end, [model](const auto& each) { return each.second.icon->GetIconID() == model->GetIconID(); });
            item = item == end ? first : item;
            if (item == end) {
                CompleteEntry(icon); // kept by nobody else, yet it must sound
                continue;
            }
            CIconExpression& kept = AsExpression(*item->second.icon);
            *icon.GetExpressionEntry() = *kept.GetExpressionEntry();
            icon.SetOriginalSingerName(kept.GetOriginalSingerName());
            icon.SetDevelopperName(kept.GetDevelopperName());
            items.erase(item);
        }
    }
    for (auto& [key, item] : items) {
        const DWORD id = item.icon->GetIconID();
        const bool mayKeepNumber = (id & torv::kLastUserNumber) != 0 && !Contains(id);
        if (!item.isRead || (!mayKeepNumber && !GiveNewVariation(item.icon)))
            continue;
        torv::MakeStorable(*item.icon);
        AddModel(item.icon);
    }
}

void CExpressionDB::SeeUserItems(int kind) {
    for (const Expression& expression : m_expressions) {
        const DBMExpItems* const items = expression.kind == kind ? QueryItems(expression) : nullptr;
        for (int i = 0; items && i < std::min<int>(items->count, kMostEntries); ++i)
            if (items->items[i].user)
                m_itemNumbers.insert(torv::MakeIconID(kind, kind, static_cast<int>(items->items[i].value)) |
                                     torv::kUserIconBit);
    }
}

bool CExpressionDB::HandOver(CIconExpression& icon) {
    const int status = torv::StatusFromID(icon.GetIconID());
    if (!m_library || !CompleteEntry(icon))
        return false;
    const TemporaryFile file(
        TemporaryFolder() +
        UserExpressionFileName(status, torv::ArticulationFromID(icon.GetIconID()), icon.GetIDString()) + ".aic");
    CxTypedFile expression;
    if (!icon.DescribeUserExpression(&expression) ||
        !expression.WriteAt("Common", "Caption", torv::FileText(icon.GetCaption())) ||
        !expression.SaveAs(file.Path())) {
        torv::ReportError(torv::kMsgFunctionError, "CExpressionDB::CreateUserItem");
        return false;
    }
    tagExpressionEntry& entry = *icon.GetExpressionEntry();
    const DWORD value = icon.GetIconID() & torv::kLastUserNumber;
    const CString id = icon.GetIDString(); // all that needs memory, before the library is asked
    const CString caption = icon.GetCaption();
    const CString singer = icon.GetOriginalSingerName();
    const CString developer = icon.GetDevelopperName();
    const bool isNew = m_itemNumbers.insert(icon.GetIconID()).second;
    if (Ask(m_library->CreateVirtualExpItem(entry.database, entry.idHigh, entry.idLow, value, id, file.Path(), caption,
                                            singer, developer))) {
        entry.itemValue = value;
    } else if (isNew) {
        m_itemNumbers.erase(icon.GetIconID());
    }
    return true;
}

bool CExpressionDB::CreateUserItem(CIconExpression& icon) {
    if (!HandOver(icon))
        return false;
    if (m_status != DBM_OK)
        TellStatus("DBM_CreateVirtualExpItem", m_status);
    return m_status == DBM_OK;
}

bool CExpressionDB::DeleteUserItem(CIconExpression& icon) {
    tagExpressionEntry& entry = *icon.GetExpressionEntry();
    if (!m_library)
        return false;
    if (entry.itemValue == 0)
        return true;
    if (!Ask(m_library->DeleteVirtualExpItem(entry.database, entry.idHigh, entry.idLow, entry.itemValue))) {
        TellStatus("DBM_DeleteVirtualExpItem", m_status);
        return false;
    }
    const int status = torv::StatusFromID(icon.GetIconID());
    m_itemNumbers.erase(torv::MakeIconID(status, status, static_cast<int>(entry.itemValue)) | torv::kUserIconBit);
    entry.itemValue = 0;
    return true;
}

CIconObject* CExpressionDB::AddKept(std::unique_ptr<CIconObject>& icon) {
    try {
        CIconObject* const added = AddModel(icon);
        SetModified();
        return added;
    } catch (const std::bad_alloc&) {
        DeleteUserItem(AsExpression(*icon));
        return nullptr;
    }
}

CIconObject* CExpressionDB::Register(std::unique_ptr<CIconObject>& icon) {
    while (GiveNewVariation(icon)) {
        if (!MayRestore(*icon))
            return nullptr;
        torv::MakeStorable(*icon);
        if (!HandOver(AsExpression(*icon)))
            return nullptr;
        const int status = m_status;
        if (status == DBM_OK)
            return AddKept(icon);
        // The number may be another host's by now: then the next one is tried.
        SeeUserItems(torv::StatusFromID(icon->GetIconID()));
        m_status = status;
        if (!IsTaken(icon->GetIconID())) {
            TellStatus("DBM_CreateVirtualExpItem", status);
            return nullptr;
        }
    }
    return nullptr;
}

std::unique_ptr<CIconObject> CExpressionDB::Unregister(DWORD id) {
    CIconObject* const icon = CIconObject::IsUserIcon(id) ? GetModelIconObject(id) : nullptr;
    return icon && DeleteUserItem(AsExpression(*icon)) ? CQuillDBIF::Unregister(id) : nullptr;
}

int CExpressionDB::Replace(const CIconObject& icon) {
    CIconObject* const model = UserIconLike(icon);
    const std::unique_ptr<CIconObject> copy = model ? torv::CopyIcon(&icon) : nullptr;
    if (!copy)
        return 0;
    // The external library has no change of an item, so that it is dropped and made anew; when that fails the old one
    // is made again.
    CIconExpression& kept = AsExpression(*model);
    CIconExpression& replacement = AsExpression(*copy);
    torv::MakeStorable(replacement);
    if (replacement.GetExpressionEntry()->database == 0)
        *replacement.GetExpressionEntry() = *kept.GetExpressionEntry();
    if (!DeleteUserItem(kept))
        return 0;
    if (!CreateUserItem(replacement)) {
        CreateUserItem(kept);
        return 0;
    }
    if (torv::OrZero([&] { return CQuillDBIF::Replace(replacement); }))
        return 1;
    DeleteUserItem(replacement);
    CreateUserItem(kept);
    return 0;
}

int CExpressionDB::Restore(std::unique_ptr<CIconObject>& icon) {
    if (!MayRestore(*icon))
        return 0;
    torv::MakeStorable(*icon);
    return CreateUserItem(AsExpression(*icon)) && AddKept(icon);
}

int CExpressionDB::SetUserItemCaption(CIconExpression& icon, const char* caption) {
    CIconObject* const model = UserIconLike(icon);
    if (!model || !caption)
        return 0;
    const tagExpressionEntry& entry = *AsExpression(*model).GetExpressionEntry();
    const auto keep = [&](const char* text) {
        return entry.itemValue == 0 || Ask(m_library->SetVirtualExpItemCaption(entry.database, entry.idHigh,
                                                                               entry.idLow, entry.itemValue, text));
    };
    const std::optional<CString> before = torv::OrZero([&] { return std::optional(model->GetCaption()); });
    if (!before || !keep(caption))
        return 0;
    const int isChanged = torv::OrZero([&] {
        torv::OrBadAlloc(model->SetCaption(caption));
        torv::MakeStorable(*model);
        return icon.SetCaption(caption);
    });
    if (!isChanged) {
        model->SetCaption(*before);
        keep(*before);
        return 0;
    }
    SetModified();
    return 1;
}

CString CExpressionDB::UserExpressionFileName(int status, int articulation, const char* idString) {
    CString name;
    name.Format("ux%02x_", static_cast<unsigned>(status * 16 + articulation) & 0xFF);
    for (int i = 0; idString && idString[i] && i < kMostIDBytes; ++i) {
        CString digits;
        digits.Format("%02x", static_cast<unsigned char>(idString[i]) ^ 0xFFU);
        name += digits;
    }
    return name;
}
