#pragma once

#include "torv/audio/wave_file.h"
#include "torv/synthesis/stream_singer.h"

#include <functional>

namespace torv {

/// Told how far a rendering is, in milliseconds, about ten times per second of sound and at its end; false cancels it.
using ProgressHandler = std::function<bool(DWORD renderedMs, DWORD totalMs)>;

/// Sings the whole stream and appends it to the file, whose rate is the singer's. False when the engine fails, the file
/// takes no more, or the handler cancels. File exceptions pass through.
bool RenderOffline(StreamSinger& singer, CWaveFile& file, const ProgressHandler& progress);

} // namespace torv
