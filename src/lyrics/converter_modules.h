#pragma once

#include "torv/platform/platform.h"

/// Where the phoneme converter libraries are found. The application object loads and frees them and says so here; the
/// lyrics, which lie below it, only ask.
namespace torv {

/// 0 Japanese, 1 English. Null when it is not loaded, and for any other language.
TORV_API HMODULE ConverterModule(int language);

/// Any other language is passed over.
TORV_API void SetConverterModule(int language, HMODULE module);

} // namespace torv
