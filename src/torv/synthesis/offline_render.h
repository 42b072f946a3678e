#pragma once

#include "torv/audio/wave_file.h"
#include "torv/encoding/quill_midi_buffer.h"
#include "torv/synthesis/engine_library.h"

#include <functional>

namespace torv {

/// Told how far a rendering is, in milliseconds, about ten times per second of sound and at its end; false cancels it.
using ProgressHandler = std::function<bool(DWORD renderedMs, DWORD totalMs)>;

/// Steps the engine through the whole stream and appends what it sings to the file, the same samples that a real-time
/// pass from the beginning makes. `rate` is the engine's and the file's, `capacity` a frame at that rate. False when
/// the engine fails, the file takes no more, or the handler cancels; the started engine stops with its
/// holder. File exceptions pass through.
bool RenderOffline(EngineInstance& engine, CQuillMidiBuffer& stream, CWaveFile& file, DWORD rate, DWORD capacity,
                   const ProgressHandler& progress);

} // namespace torv
