/// The database library as a host meets it: loaded from the program's own folder and bound by its entry points' names.
#pragma once

#include "companions/companion_module.h"

#include <dbm_abi.h>
#include <doctest/doctest.h>

#include <cstdlib>
#include <string>

namespace dbm_test {

inline void SetEnvironment(const char* name, const std::string& value) {
#if defined(_WIN32)
    _putenv_s(name, value.c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}

struct DbmLibrary {
    DbmLibrary() {
#define DBM_BIND(name) module.Bind(name, "DBM_" #name);
        DBM_ENTRIES(DBM_BIND)
#undef DBM_BIND
    }

    CompanionModule module{"DBM"};
#define DBM_MEMBER(name) DBM##name##Proc name = nullptr;
    DBM_ENTRIES(DBM_MEMBER)
#undef DBM_MEMBER
};

inline const DbmLibrary& Library() {
    static const DbmLibrary library;
    return library;
}

} // namespace dbm_test
