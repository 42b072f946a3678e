#include "torv/database/quill_db_manager.h"

#include "torv/database/error_report.h"
#include "torv/database/external_library.h"
#include "torv/icons/icon_expression.h"
#include "torv/icons/icon_factory.h"
#include "torv/lyrics/converter_modules.h"

namespace {

constexpr const char* kPresetFile = "AiconDB.def";
constexpr const char* kUserFile = "User.def";
constexpr const char* kSharedFolder = "../share/torv";

} // namespace

CQuillDBManager::CQuillDBManager()
    : m_database(std::make_unique<torv::DatabaseLibrary>()), m_editor(std::make_unique<torv::VoiceEditorLibrary>()) {}

CQuillDBManager::~CQuillDBManager() { CloseDatabase(); }

int CQuillDBManager::OpenDatabase() {
    if (m_isOpen || !LoadLibraryA())
        return 0;
    if (!m_voices.OpenDatabase(m_database.get()) || !m_expressions.OpenDatabase(m_database.get())) {
        m_voices.CloseDatabase();
        FreeLibraries();
        return 0;
    }
    m_isOpen = true;
    m_defaultButton = torv::ButtonBitmap::Load(nullptr);
    const CString root = GetModuleFolderPath();
    // What follows is told when it fails, and leaves the rest to be used.
    m_presets.LoadDatabase(root + kPresetFile);
    m_users.LoadDatabase(root + kUserFile);
    m_expressions.BindUserIcons(m_users);
    torv::SetIconCatalogue(this);
    torv::LoadConverters();
    return 1;
}

void CQuillDBManager::CloseDatabase() {
    if (!m_isOpen)
        return;
    m_isOpen = false;
    if (torv::GetIconCatalogue() == this)
        torv::SetIconCatalogue(nullptr);
    m_expressions.CloseDatabase();
    m_voices.CloseDatabase();
    m_presets.CloseDatabase();
    if (m_users.IsModified() && !m_users.SaveDatabase())
        AfxMessageBox("Failed to save UserDB fle !", MB_ICONEXCLAMATION | MB_OK); // the spelling that users know
    m_users.CloseDatabase();
    m_defaultButton = {};
    FreeLibraries();
    torv::FreeConverters();
}

int CQuillDBManager::LoadLibraryA() {
    if (!m_database->Open())
        return 0;
    m_editor->Open();
    return 1;
}

void CQuillDBManager::FreeLibraries() {
    m_editor->Close();
    m_database->Close();
}

CString CQuillDBManager::GetModuleFolderPath() {
    const CString own = torv::LibraryFolder();
    const CString shared = torv::JoinPath(own, kSharedFolder);
    const bool isShared = !torv::CheckFile(torv::JoinPath(own, kPresetFile), false) &&
                          torv::CheckFile(torv::JoinPath(shared, kPresetFile), false);
    return torv::JoinPath(isShared ? shared : own, "");
}

const CQuillDBIF* CQuillDBManager::DatabaseOf(int status) const {
    if (!m_isOpen)
        return nullptr;
    if (status == torv::kStatusSinger)
        return &m_voices;
    if (status == torv::kStatusDynamics)
        return &m_presets;
    return IsUserStatus(status) ? &m_expressions : nullptr;
}

DWORD CQuillDBManager::RegisterIconObject(CIconObject* icon) {
    const int status = icon ? torv::StatusFromID(icon->GetIconID()) : 0;
    if (!m_isOpen || !IsUserStatus(status))
        return 0;
    std::unique_ptr<CIconObject> owned(icon);
    const int variation = m_users.GetNewVariation(status, torv::ArticulationFromID(icon->GetIconID()));
    if (variation < 1)
        return 0;
    icon->SetVariation(variation);
    if (const CIconObject* const added = AddUserIcon(owned))
        return added->GetIconID();
    static_cast<void>(owned.release()); // refused: still the caller's
    return 0;
}

CIconObject* CQuillDBManager::AddUserIcon(std::unique_ptr<CIconObject>& icon) {
    const std::unique_ptr<CIconObject> example =
        torv::MakeIcon(torv::StatusFromID(icon->GetIconID()), 1, 0); // only an icon of the status's class can be read
    if (!torv::IsSameClass(*example, *icon) || m_users.GetModelIconObject(icon->GetIconID()))
        return nullptr;
    CUserDB::MakeStorable(*icon);
    auto* const expression = dynamic_cast<CIconExpression*>(icon.get());
    return !expression || m_expressions.CreateUserItem(*expression) ? m_users.AddIcon(icon) : nullptr;
}

CIconObject* CQuillDBManager::UnregisterIconObject(DWORD id) {
    CIconObject* const icon = m_isOpen ? m_users.GetModelIconObject(id) : nullptr;
    if (!icon)
        return nullptr;
    auto* const expression = dynamic_cast<CIconExpression*>(icon);
    if (expression && !m_expressions.DeleteUserItem(*expression))
        return nullptr;
    return m_users.RemoveIcon(id).release();
}

int CQuillDBManager::ReplaceIconObject(CIconObject* icon) {
    CIconObject* const model = m_isOpen && icon ? m_users.GetModelIconObject(icon->GetIconID()) : nullptr;
    if (!model || !torv::IsSameClass(*model, *icon))
        return 0;
    auto* const kept = dynamic_cast<CIconExpression*>(model);
    if (!kept)
        return m_users.ReplaceIcon(icon);
    // The external library has no change of an item, so that it is dropped and made anew; when that fails the old one
    // is made again.
    const std::unique_ptr<CIconObject> copy = torv::CopyIcon(icon);
    auto& replacement = static_cast<CIconExpression&>(*copy);
    CUserDB::MakeStorable(replacement);
    if (replacement.GetExpressionEntry()->database == 0)
        *replacement.GetExpressionEntry() = *kept->GetExpressionEntry();
    if (!m_expressions.DeleteUserItem(*kept))
        return 0;
    if (!m_expressions.CreateUserItem(replacement)) {
        m_expressions.CreateUserItem(*kept);
        return 0;
    }
    return m_users.ReplaceIcon(&replacement);
}

int CQuillDBManager::RestoreUserIconObject(CIconObject* icon) {
    const DWORD id = icon ? icon->GetIconID() : 0;
    if (!m_isOpen || !IsUserStatus(torv::StatusFromID(id)) || !icon->IsUserIcon())
        return 0;
    std::unique_ptr<CIconObject> owned(icon);
    if (m_users.HasArticulation(torv::StatusFromID(id), torv::ArticulationFromID(id)) && AddUserIcon(owned))
        return 1;
    static_cast<void>(owned.release()); // refused: still the caller's
    return 0;
}

int CQuillDBManager::OpenVoiceEditDialog(int* language, int* program) {
    if (!m_isOpen || !m_editor->IsLoaded() || !language || !program)
        return 0;
    int32_t chosenLanguage = *language;
    int32_t chosenProgram = *program;
    if (m_editor->OpenDialog(nullptr, &chosenLanguage, &chosenProgram) != VEDIT_OK || !m_voices.ReloadDatabase())
        return 0;
    *language = chosenLanguage;
    *program = chosenProgram;
    return 1;
}
