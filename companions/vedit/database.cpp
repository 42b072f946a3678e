#include "database.h"

#include "failure.h"

#include <array>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace vedit {

namespace {

#if defined(_WIN32)

void* LoadBesideUs() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const char*>(&LoadBesideUs), &module);
    // Wide: a trail byte of a two-byte character can look like the separator that is looked for.
    std::array<wchar_t, 32768> path{};
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    const std::wstring own(path.data(), length);
    return LoadLibraryW((own.substr(0, own.find_last_of(L'\\') + 1) + L"DBM.dll").c_str());
}

void Unload(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }

template <typename Entry>
bool Bind(void* module, Entry& entry, const char* name) {
    entry = reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name)));
    return entry != nullptr;
}

#else

void* LoadBesideUs() {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&LoadBesideUs), &info) || !info.dli_fname)
        return nullptr;
    const std::string own = info.dli_fname;
    const size_t folder = own.find_last_of('/') + 1;
    return dlopen(((folder ? own.substr(0, folder) : "./") + "DBM.so").c_str(), RTLD_NOW | RTLD_LOCAL);
}

void Unload(void* module) { dlclose(module); }

template <typename Entry>
bool Bind(void* module, Entry& entry, const char* name) {
    entry = reinterpret_cast<Entry>(dlsym(module, name));
    return entry != nullptr;
}

#endif

} // namespace

std::unique_ptr<Database> Database::Open() {
    std::unique_ptr<Database> database(new Database);
    return database->Load() ? std::move(database) : nullptr;
}

bool Database::Load() {
    m_module = LoadBesideUs();
    DBMInitProc init = nullptr;
    if (!m_module || !Bind(m_module, init, "DBM_Init") || !Bind(m_module, m_delete, "DBM_Delete") ||
        !Bind(m_module, m_get, "DBM_GetVirtualVoiceParameters") ||
        !Bind(m_module, m_set, "DBM_SetVirtualVoiceParameters"))
        return false;
    m_ready = init() == DBM_OK;
    return m_ready;
}

Database::~Database() {
    if (m_ready)
        m_delete();
    if (m_module)
        Unload(m_module);
}

Settings Database::Read(int32_t language, int32_t program) const {
    const DBMVoiceParameters* parameters = nullptr;
    Require(m_get(language, program, &parameters) == DBM_OK && parameters, VEDIT_NO_SUCH);
    Settings settings;
    for (int32_t i = 0; i < parameters->count; ++i)
        settings.emplace_back(parameters->pairs[i].name, parameters->pairs[i].value);
    return settings;
}

void Database::Change(int32_t language, int32_t program, const Settings& changes) const {
    std::vector<DBMTextPair> pairs;
    for (const auto& [name, value] : changes)
        pairs.push_back({name.c_str(), value.c_str()});
    pairs.push_back({});
    const int32_t status = m_set(language, program, pairs.data());
    Require(status != DBM_FILE_ERROR, VEDIT_FILE_ERROR);
    Require(status != DBM_NO_MEMORY, VEDIT_NO_MEMORY);
    Require(status == DBM_OK, VEDIT_BAD_INPUT); // a name that is in use, for one
}

} // namespace vedit
