#pragma once

/// The one door to the system: the rest of the library includes this file and nothing of any operating system.
#include "torv/platform/afx/afx.h"
#include "torv/platform/arithmetic.h"
#include "torv/platform/export.h"
#include "torv/platform/file_handle.h"
#include "torv/platform/library_module.h"
#include "torv/platform/message_box.h"
#include "torv/platform/new_file.h"
#include "torv/platform/path.h"
#include "torv/platform/registry.h"
#include "torv/platform/replaced_file.h"
#include "torv/platform/safe_point.h"
#include "torv/platform/string_table.h"
#include "torv/platform/system.h"
#include "torv/platform/text.h"
#include "torv/platform/wave_header.h"
#include "torv/platform/worker_thread.h"
