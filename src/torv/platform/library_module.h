#pragma once

#include "torv/platform/afx/string.h"
#include "torv/platform/export.h"
#include "torv/platform/system.h"

namespace torv {

/// The module that holds this library (in a program that holds its objects, the program). Not counted: never free it.
TORV_API HMODULE LibraryModule();

/// The folder of that module's file, without a separator at its end. Empty when it cannot be told.
TORV_API CString LibraryFolder();

/// An entry point as the type it is called by, or null: by way of a plain pointer, since a FARPROC is none of them.
template <class Proc>
Proc EntryPoint(HMODULE module, const char* name) {
    return reinterpret_cast<Proc>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

} // namespace torv
