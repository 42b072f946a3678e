#include "torv/database/expression_db.h"

#include "torv/database/error_report.h"
#include "torv/database/external_library.h"
#include "torv/database/user_db.h"
#include "torv/icons/icon_expression.h"
#include "torv/icons/icon_factory.h"
#include "torv/typed_file/typed_file.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kMostEntries = 65536; // of one list
constexpr int kLastNumber = 0x7FFF;
constexpr int kMostReports = 10;
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
    ~TemporaryFile() { torv::RemoveFile(m_path); }
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
    m_reports = 0;
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
        for (int i = 0; info->expressions && i < std::min<int>(info->count, kMostEntries); ++i)
            ReadExpression(database, info->expressions[i]);
        library->DeleteVirtualExpInfo(info);
    }
    return 1;
}

void CExpressionDB::CloseDatabase() {
    ReleaseItems();
    RemoveModels();
    m_userItems.clear();
    m_library = nullptr;
}

void CExpressionDB::ReleaseItems() {
    const DBMExpItems* const items = std::exchange(m_items, nullptr);
    if (items && m_library)
        m_library->DeleteVirtualExpItems(items);
}

const DBMExpItems* CExpressionDB::QueryItems(int database, int high, int low) {
    ReleaseItems();
    if (!Ask(m_library->GetVirtualExpItems(database, high, low, &m_items)))
        m_items = nullptr;
    return m_items;
}

void CExpressionDB::ReadExpression(int database, const DBMExpression& expression) {
    if (!HasArticulation(expression.kind, expression.kind))
        return;
    const DBMExpItems* const items = QueryItems(database, expression.high, expression.low);
    for (int i = 0; items && items->items && i < std::min<int>(items->count, kMostEntries); ++i)
        ReadItem(database, expression, items->items[i]);
}

int CExpressionDB::LastPreset(int status) const {
    const std::vector<CIconObject*> models = GetModels(status, status);
    return models.empty() ? 0 : torv::VariationFromID(models.back()->GetIconID());
}

void CExpressionDB::ReadItem(int database, const DBMExpression& expression, const DBMExpItem& item) {
    // An item's own number is its icon's, so that songs find it again; one that cannot be has the next that is free.
    int number = static_cast<int>(item.value & kLastNumber);
    if (!item.user && (number == 0 || Contains(torv::MakeIconID(expression.kind, expression.kind, number))))
        number = LastPreset(expression.kind) + 1;
    if (number > kLastNumber)
        return;
    const int variation = item.user ? number | static_cast<int>(torv::kUserIconBit) : number;
    std::unique_ptr<CIconObject> icon = torv::MakeIcon(expression.kind, expression.kind, variation);
    const bool isLoaded =
        item.user ? torv::CheckFile(item.fileName, m_reports < kMostReports) && icon->LoadPreset(item.fileName)
                  : LoadModelIconFile(icon.get(), item.fileName ? item.fileName : "", item.idString,
                                      m_reports < kMostReports, "CExpressionDB::LoadPresetModelIcon");
    if (!isLoaded) {
        ++m_reports;
        return;
    }
    CIconExpression& model = AsExpression(*icon);
    *model.GetExpressionEntry() = {database, expression.high, expression.low, item.value};
    model.SetIDString(item.idString);
    model.SetOriginalSingerName(item.singerName);
    model.SetDevelopperName(item.developerName);
    if (item.caption && *item.caption)
        model.SetCaption(item.caption);
    if (!item.user) {
        AddModel(std::move(icon));
        return;
    }
    const std::vector<CIconObject*> presets = GetModels(expression.kind, expression.kind);
    const auto origin = std::find_if(presets.begin(), presets.end(), [&model](CIconObject* preset) {
        return IsSameExpression(*AsExpression(*preset).GetExpressionEntry(), *model.GetExpressionEntry());
    });
    if (origin != presets.end())
        model.SetOriginalVariation((*origin)->GetOriginalVariation());
    m_userItems.push_back(std::move(icon));
}

bool CExpressionDB::CompleteEntry(CIconExpression& icon) const {
    tagExpressionEntry& entry = *icon.GetExpressionEntry();
    if (entry.database != 0)
        return true;
    const int status = torv::StatusFromID(icon.GetIconID());
    CIconObject* origin =
        GetModelIconObject(torv::MakeIconID(status, status, static_cast<int>(icon.GetOriginalVariation())));
    if (const std::vector<CIconObject*> presets = GetModels(status, status); !origin && !presets.empty())
        origin = presets.front();
    if (!origin)
        return false;
    entry = *AsExpression(*origin).GetExpressionEntry();
    entry.itemValue = 0;
    return true;
}

void CExpressionDB::BindUserIcons(CUserDB& users) {
    std::multimap<std::pair<int, std::string>, std::unique_ptr<CIconObject>> items;
    for (std::unique_ptr<CIconObject>& item : m_userItems) {
        CUserDB::MakeStorable(*item); // as the icons' own texts are
        const int status = torv::StatusFromID(item->GetIconID());
        items.emplace(std::pair(status, item->GetIDString().GetStdString()), std::move(item));
    }
    m_userItems.clear();
    for (int status = torv::kStatusAttack; status <= torv::kStatusVibrato; ++status) {
        for (CIconObject* const user : users.GetModels(status, status)) {
            CIconExpression& icon = AsExpression(*user);
            const auto [first, end] = items.equal_range({status, icon.GetIDString().GetStdString()});
            auto item = std::find_if(
                first, end, [user](const auto& each) { return each.second->GetIconID() == user->GetIconID(); });
            item = item == end ? first : item;
            if (item == end) {
                CompleteEntry(icon); // kept by nobody else, yet it must sound
                continue;
            }
            CIconExpression& kept = AsExpression(*item->second);
            *icon.GetExpressionEntry() = *kept.GetExpressionEntry();
            icon.SetOriginalSingerName(kept.GetOriginalSingerName());
            icon.SetDevelopperName(kept.GetDevelopperName());
            items.erase(item);
        }
    }
    for (auto& [key, item] : items) {
        if (users.AdoptIcon(item))
            continue;
        item->SetVariation(users.GetNewVariation(key.first, key.first));
        users.AdoptIcon(item);
    }
}

int CExpressionDB::CreateUserItem(CIconExpression& icon) {
    const int status = torv::StatusFromID(icon.GetIconID());
    if (!m_library || !CompleteEntry(icon))
        return 0;
    const TemporaryFile file(
        TemporaryFolder() +
        UserExpressionFileName(status, torv::ArticulationFromID(icon.GetIconID()), icon.GetIDString()) + ".aic");
    CxTypedFile expression;
    if (!icon.DescribeUserExpression(&expression) || !expression.SaveAs(file.Path())) {
        torv::ReportError(torv::kMsgFunctionError, "CExpressionDB::CreateUserItem");
        return 0;
    }
    tagExpressionEntry& entry = *icon.GetExpressionEntry();
    const DWORD value = icon.GetIconID() & kLastNumber;
    if (!Ask(m_library->CreateVirtualExpItem(entry.database, entry.idHigh, entry.idLow, value, icon.GetIDString(),
                                             file.Path(), icon.GetCaption(), icon.GetOriginalSingerName(),
                                             icon.GetDevelopperName()))) {
        TellStatus("DBM_CreateVirtualExpItem", m_status);
        return 0;
    }
    entry.itemValue = value;
    return 1;
}

int CExpressionDB::DeleteUserItem(CIconExpression& icon) {
    tagExpressionEntry& entry = *icon.GetExpressionEntry();
    if (!m_library)
        return 0;
    if (entry.itemValue == 0)
        return 1;
    if (!Ask(m_library->DeleteVirtualExpItem(entry.database, entry.idHigh, entry.idLow, entry.itemValue))) {
        TellStatus("DBM_DeleteVirtualExpItem", m_status);
        return 0;
    }
    entry.itemValue = 0;
    return 1;
}

int CExpressionDB::SetUserItemCaption(CIconExpression& icon, const char* caption) {
    const tagExpressionEntry& entry = *icon.GetExpressionEntry();
    return m_library &&
           Ask(m_library->SetVirtualExpItemCaption(entry.database, entry.idHigh, entry.idLow, entry.itemValue,
                                                   caption)) &&
           icon.SetCaption(caption);
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
