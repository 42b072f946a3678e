#pragma once

#include "score_builder.h"

#include <memory>

/// The score's track as the voice engine hears it, its lead included.
std::unique_ptr<CQuillMidiBuffer> MakeEngineStream(Score& score, DWORD presend);

/// When a tick of the file is heard, in milliseconds of the engine's stream.
DWORD StreamTimeOfTick(const Score& score, DWORD tick);
