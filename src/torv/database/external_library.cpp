#include "torv/database/external_library.h"

#include "torv/database/error_report.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace torv {
namespace {

constexpr const char* kDatabaseKey = "SOFTWARE\\CANTORIS\\COMMON\\DBMANAGER";
constexpr const char* kEditorKey = "SOFTWARE\\CANTORIS\\COMMON\\VOICEEDITOR";
/// A library of another make may do without them.
constexpr std::string_view kNeverCalled[] = {"DBM_AddVoice",         "DBM_DeleteVoice",        "DBM_ActivateDialog",
                                             "DBM_GetVersionString", "DBM_GetVoiceParameters", "DBM_AddExp",
                                             "DBM_DeleteExp",        "VEDIT_GetVersionString"};

} // namespace

bool ExternalLibrary::LoadNamedBy(const char* key) {
    Free();
    m_missing.clear();
    const auto path = ReadMachineString(key, "PATH");
    if (path && !path->empty())
        m_module = LoadLibraryA(path->c_str());
    return IsLoaded();
}

void ExternalLibrary::Free() {
    if (const HMODULE module = std::exchange(m_module, nullptr))
        FreeLibrary(module);
}

bool ExternalLibrary::IsComplete() {
    if (!m_missing.empty() && !std::exchange(m_isTold, true)) {
        CString names;
        for (const char* const name : m_missing)
            names += names.IsEmpty() ? CString(name) : CString(", ") + name;
        ReportError(kMsgFunctionError, names);
    }
    return std::all_of(m_missing.begin(), m_missing.end(), [](const char* name) {
        return std::find(std::begin(kNeverCalled), std::end(kNeverCalled), name) != std::end(kNeverCalled);
    });
}

bool DatabaseLibrary::Open() {
    if (!LoadNamedBy(kDatabaseKey))
        return false;
#define TORV_BIND(name) Bind(name, "DBM_" #name);
    DBM_ENTRIES(TORV_BIND)
#undef TORV_BIND
    if (IsComplete() && Init() == DBM_OK)
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
    if (!LoadNamedBy(kEditorKey))
        return;
#define TORV_BIND(name) Bind(name, "VEDIT_" #name);
    TORV_VEDIT_ENTRIES(TORV_BIND)
#undef TORV_BIND
    if (IsComplete())
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
