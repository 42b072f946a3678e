#pragma once

#include "torv/platform/system.h"

#include <optional>
#include <string>

/// What each system does of itself; implemented under posix/ and windows/.
namespace torv {

/// The message box and the beep when no handler is installed.
int SystemMessageBox(HWND owner, const char* text, const char* caption, UINT type);
void SystemBeep(UINT type);

/// The calling thread's active window, or null.
HWND ActiveWindow();

/// A string resource of the library's module.
std::optional<std::string> ModuleString(UINT id);

} // namespace torv
