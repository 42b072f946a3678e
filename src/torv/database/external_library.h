#pragma once

#include "torv/platform/platform.h"

#include "torv/abi/dbm.h"
#include "torv/abi/vedit.h"

#include <vector>

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
    /// Null when the library lacks the entry point.
    template <class Proc>
    void Bind(Proc& proc, const char* name) {
        proc = EntryPoint<Proc>(m_module, name);
        if (!proc)
            m_missing.push_back(name);
    }
    /// Whether no entry point is missing that is ever called. What is missing is told once while the object lives.
    bool IsComplete();

private:
    HMODULE m_module = nullptr;
    std::vector<const char*> m_missing;
    bool m_isTold = false;
};

/// The database manager's library. Its entry points are callable from Open on until Close; those that this library
/// never calls may be null.
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
