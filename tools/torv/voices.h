#pragma once

#include <optional>
#include <string>

/// The engine's program number for a voice's name or number; nothing for an unknown one.
std::optional<int> VoiceProgram(const std::string& name);
/// "soprano, tenor, ...", for messages.
std::string VoiceNames();
