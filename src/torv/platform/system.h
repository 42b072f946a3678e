#pragma once

/// The system's own types and calls: Windows itself, or the same names with the same meaning on POSIX.
#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef STRICT
#define STRICT
#endif
// windows.h comes first: the other two are written in its types.
#include <windows.h>

#include <mmsystem.h>

#include <mmreg.h>
#else
#include "torv/platform/posix/bitmap.h"
#include "torv/platform/posix/clock.h"
#include "torv/platform/posix/dynamic_library.h"
#include "torv/platform/posix/find_file.h"
#include "torv/platform/posix/global_memory.h"
#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/message.h"
#include "torv/platform/posix/midi_out.h"
#include "torv/platform/posix/registry.h"
#include "torv/platform/posix/thread.h"
#include "torv/platform/posix/timer.h"
#include "torv/platform/posix/types.h"
#include "torv/platform/posix/wave_format.h"
#include "torv/platform/posix/wave_out.h"
#include "torv/platform/posix/window.h"
#endif
