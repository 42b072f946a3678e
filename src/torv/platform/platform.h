#pragma once

/// The one door to the system, for the library and for its hosts: nobody else includes anything of an operating system.
/// What only the library needs stands beside it in headers of its own.
#include "torv/platform/afx/afx.h"
#include "torv/platform/arithmetic.h"
#include "torv/platform/export.h"
#include "torv/platform/library_module.h"
#include "torv/platform/message_box.h"
#include "torv/platform/midi_device.h"
#include "torv/platform/path.h"
#include "torv/platform/registry.h"
#include "torv/platform/replaced_file.h"
#include "torv/platform/safe_point.h"
#include "torv/platform/system.h"
#include "torv/platform/text.h"
#include "torv/platform/wave_device.h"
#include "torv/platform/worker_thread.h"
