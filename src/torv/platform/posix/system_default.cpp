#include "torv/platform/system_default.h"

#include <cstdio>

namespace torv {
namespace {

/// What does least: nobody is there to be asked.
int SafeAnswer(UINT type) {
    switch (type & MB_TYPEMASK) {
    case MB_OK:
        return IDOK;
    case MB_YESNO:
    case MB_YESNOCANCEL:
        return IDNO;
    case MB_ABORTRETRYIGNORE:
        return IDABORT;
    default:
        return IDCANCEL;
    }
}

} // namespace

int SystemMessageBox([[maybe_unused]] HWND owner, const char* text, const char* caption, UINT type) {
    std::fprintf(stderr, "%s: %s\n", caption, text);
    return SafeAnswer(type);
}

// A sound through the terminal would end up in a redirected stream; a host that wants one installs its handler.
void SystemBeep([[maybe_unused]] UINT type) {}

HWND ActiveWindow() { return nullptr; }

// Resources are compiled in as string tables.
std::optional<std::string> ModuleString([[maybe_unused]] UINT id) { return std::nullopt; }

} // namespace torv
