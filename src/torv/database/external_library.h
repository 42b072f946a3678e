#pragma once

#include "torv/platform/platform.h"

#include "dbm_abi.h"
#include "vedit_abi.h"

#define TORV_VEDIT_ENTRIES(ENTRY) ENTRY(Init) ENTRY(Delete) ENTRY(OpenDialog) ENTRY(GetVersionString)

namespace torv {

/// A library named by the registry, loaded while the object lives.
class ExternalLibrary {
public:
    ExternalLibrary() = default;
    ~ExternalLibrary() { Free(); }
    ExternalLibrary(const ExternalLibrary&) = delete;
    ExternalLibrary& operator=(const ExternalLibrary&) = delete;

    /// Loads the library that the value "PATH" of a key of the machine's registry names.
    bool LoadNamedBy(const char* key);
    void Free();
    bool IsLoaded() const { return m_module != nullptr; }

protected:
    template <class Proc>
    bool Bind(Proc& proc, const char* name) const {
        proc = EntryPoint<Proc>(m_module, name);
        return proc != nullptr;
    }

private:
    HMODULE m_module = nullptr;
};

/// The database manager's library. Its entry points are callable from Open on until Close.
class DatabaseLibrary : public ExternalLibrary {
public:
    /// Finds, loads, binds and initialises the library; false, with nothing left loaded, when one of these fails.
    bool Open();
    void Close();

#define TORV_MEMBER(name) DBM##name##Proc name = nullptr;
    DBM_ENTRIES(TORV_MEMBER)
#undef TORV_MEMBER
};

/// The voice editor's library, which may be missing.
class VoiceEditorLibrary : public ExternalLibrary {
public:
    void Open();
    void Close();

#define TORV_MEMBER(name) VEDIT##name##Proc name = nullptr;
    TORV_VEDIT_ENTRIES(TORV_MEMBER)
#undef TORV_MEMBER
};

} // namespace torv
