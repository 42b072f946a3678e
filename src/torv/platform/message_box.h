#pragma once

#include "torv/platform/export.h"
#include "torv/platform/system.h"

#include <functional>

/// Every message box and beep of the library passes here, so that a host can show them its own way and a test can
/// record them. Handlers may be called from any thread, one that is replaced meanwhile included.
namespace torv {

/// Shows `text` with buttons and icon by `type` (MB_...) and returns the answer (IDOK, IDYES, IDNO...).
using MessageBoxHandler = std::function<int(HWND owner, const char* text, const char* caption, UINT type)>;
/// Sounds the beep of an icon type (MB_ICON...).
using BeepHandler = std::function<void(UINT type)>;

/// Installs a handler, or with an empty one the default: the system's box on Windows; elsewhere the text on standard
/// error and the safe answer (OK where it is the only one, else No, Cancel or Abort). Returns the previous handler,
/// empty for the default.
TORV_API MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler);
/// Likewise for beeps; the default is the system's sound on Windows and silence elsewhere.
TORV_API BeepHandler SetBeepHandler(BeepHandler handler);

/// Asks the handler. A null text shows as empty, a null caption as the application's name.
TORV_API int ShowMessageBox(HWND owner, const char* text, const char* caption, UINT type);
/// Always TRUE.
TORV_API BOOL Beep(UINT type);

} // namespace torv

#if defined(_WIN32)
// The system declares a function of this name; a beep must reach the handler on both systems.
#define MessageBeep(type) torv::Beep(type)
#else
/// torv::Beep.
inline BOOL MessageBeep(UINT type) { return torv::Beep(type); }
#endif
