#include "torv/database/quill_db_manager.h"

#include "torv/database/error_report.h"
#include "torv/database/external_library.h"
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
    if (m_isOpen)
        return 0;
    m_isOpen = torv::OrZero([this] { return OpenDatabases(); });
    if (!m_isOpen) {
        CloseDatabases();
        return 0;
    }
    torv::AddCatalogue(*this);
    torv::LoadConverters();
    return 1;
}

int CQuillDBManager::OpenDatabases() {
    if (!LoadLibraryA() || !m_voices.OpenDatabase(m_database.get()) || !m_expressions.OpenDatabase(m_database.get()))
        return 0;
    m_defaultButton = torv::ButtonBitmap::Load(nullptr);
    const CString root = GetModuleFolderPath();
    // What follows is told when it fails, and leaves the rest to be used.
    m_presets.LoadDatabase(root + kPresetFile);
    m_users.LoadDatabase(root + kUserFile);
    m_presets.TakeUserIcons(m_users);
    m_expressions.TakeUserIcons(m_users);
    m_expressions.BindUserItems();
    return 1;
}

void CQuillDBManager::CloseDatabases() {
    m_expressions.CloseDatabase();
    m_voices.CloseDatabase();
    m_presets.CloseDatabase();
    m_users.CloseDatabase();
    m_defaultButton = {};
    FreeLibraries();
}

void CQuillDBManager::CloseDatabase() {
    if (!m_isOpen)
        return;
    m_isOpen = false;
    torv::RemoveCatalogue(*this);
    const bool isModified = m_expressions.IsModified() || m_presets.IsModified();
    m_users.TakeUserIcons(m_expressions);
    m_users.TakeUserIcons(m_presets);
    m_expressions.CloseDatabase();
    m_voices.CloseDatabase();
    m_presets.CloseDatabase();
    if (isModified && !m_users.SaveDatabase())
        AfxMessageBox("Failed to save UserDB fle !", MB_ICONEXCLAMATION | MB_OK); // the spelling that users know
    CloseDatabases();
    if (!torv::GetIconCatalogue()) // else another manager is open, whose converters they are too
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
    if (m_isOpen && status == torv::kStatusSinger)
        return &m_voices;
    return const_cast<CQuillDBManager*>(this)->UserDatabaseOf(status);
}

CQuillDBIF* CQuillDBManager::UserDatabaseOf(int status) {
    if (!m_isOpen)
        return nullptr;
    if (status == torv::kStatusDynamics)
        return &m_presets;
    return status >= torv::kStatusAttack && status <= torv::kStatusVibrato ? &m_expressions : nullptr;
}

CQuillDBIF* CQuillDBManager::UserDatabaseOf(const CIconObject* icon) {
    return icon ? UserDatabaseOf(torv::StatusFromID(icon->GetIconID())) : nullptr;
}

DWORD CQuillDBManager::RegisterIconObject(CIconObject* icon) {
    CQuillDBIF* const database = UserDatabaseOf(icon);
    if (!database)
        return 0;
    std::unique_ptr<CIconObject> owned(icon);
    const CIconObject* const registered = torv::OrZero([&] { return database->Register(owned); });
    static_cast<void>(owned.release()); // refused and not destroyed: still the caller's
    return registered ? registered->GetIconID() : 0;
}

CIconObject* CQuillDBManager::UnregisterIconObject(DWORD id) {
    CQuillDBIF* const database = UserDatabaseOf(torv::StatusFromID(id));
    return database ? torv::OrZero([&] { return database->Unregister(id); }).release() : nullptr;
}

int CQuillDBManager::ReplaceIconObject(CIconObject* icon) {
    CQuillDBIF* const database = UserDatabaseOf(icon);
    return database ? torv::OrZero([&] { return database->Replace(*icon); }) : 0;
}

int CQuillDBManager::RestoreUserIconObject(CIconObject* icon) {
    CQuillDBIF* const database = UserDatabaseOf(icon);
    if (!database)
        return 0;
    std::unique_ptr<CIconObject> owned(icon);
    const int result = torv::OrZero([&] { return database->Restore(owned); });
    static_cast<void>(owned.release()); // refused: still the caller's
    return result;
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
