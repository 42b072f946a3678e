#pragma once

/// The class-library subset that the interface is made of: its names and its meaning, the same on both systems.
#include "torv/platform/afx/array.h"
#include "torv/platform/afx/exception.h"
#include "torv/platform/afx/file.h"
#include "torv/platform/afx/file_find.h"
#include "torv/platform/afx/list.h"
#include "torv/platform/afx/map.h"
#include "torv/platform/afx/mem_file.h"
#include "torv/platform/afx/message.h"
#include "torv/platform/afx/object.h"
#include "torv/platform/afx/position.h"
#include "torv/platform/afx/string.h"
#include "torv/platform/afx/win_app.h"
#include "torv/platform/afx/win_thread.h"
#include "torv/platform/afx/wnd.h"
