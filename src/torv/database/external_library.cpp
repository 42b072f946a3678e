#include "torv/database/external_library.h"

#include <utility>

namespace torv {
namespace {

constexpr const char* kDatabaseKey = "SOFTWARE\\CANTORIS\\COMMON\\DBMANAGER";
constexpr const char* kEditorKey = "SOFTWARE\\CANTORIS\\COMMON\\VOICEEDITOR";

} // namespace

bool ExternalLibrary::LoadNamedBy(const char* key) {
    Free();
    const auto path = ReadMachineString(key, "PATH");
    if (path && !path->empty())
        m_module = LoadLibraryA(path->c_str());
    return IsLoaded();
}

void ExternalLibrary::Free() {
    if (const HMODULE module = std::exchange(m_module, nullptr))
        FreeLibrary(module);
}

bool DatabaseLibrary::Open() {
    bool isComplete = LoadNamedBy(kDatabaseKey);
#define TORV_BIND(name) isComplete = isComplete && Bind(name, "DBM_" #name);
    DBM_ENTRIES(TORV_BIND)
#undef TORV_BIND
    if (isComplete && Init() == DBM_OK)
        return true;
    Free();
    return false;
}

void DatabaseLibrary::Close() {
    if (!IsLoaded())
        return;
    Delete();
    Free();
}

void VoiceEditorLibrary::Open() {
    bool isComplete = LoadNamedBy(kEditorKey);
#define TORV_BIND(name) isComplete = isComplete && Bind(name, "VEDIT_" #name);
    TORV_VEDIT_ENTRIES(TORV_BIND)
#undef TORV_BIND
    if (isComplete)
        Init(); // whatever it answers: an editor that is not ready says so when it is asked for
    else
        Free();
}

void VoiceEditorLibrary::Close() {
    if (!IsLoaded())
        return;
    Delete();
    Free();
}

} // namespace torv
