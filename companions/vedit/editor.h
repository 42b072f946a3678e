/// The user's own editor.
#pragma once

#include <string>

namespace vedit {

/// The command line that starts it. Fails with VEDIT_NO_EDITOR when none is named, or when one is that would wait for a
/// terminal which is not there.
std::string EditorCommand();
/// Waits until it is closed. Fails with VEDIT_NO_EDITOR when it cannot be run, VEDIT_CANCELLED when it says that it
/// failed.
void RunEditor(const std::string& command, const std::string& file);

} // namespace vedit
