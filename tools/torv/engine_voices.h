#pragma once

#include <torv/torv.h>

#include <string>

/// What a singer's program is sung by, as docs/engine.md has the engine's programs.
struct EngineVoice {
    bool isPerson;       ///< recorded; the others are synthetic
    int lowest, highest; ///< keys where it sounds best
};

EngineVoice EngineVoiceOf(DWORD singer);
/// A key by its name: 60 is C4.
std::string KeyName(int key);
