#pragma once

#include "torv/platform/platform.h"

/// Where the phoneme converter libraries are found. The application object loads and frees them and says so here; the
/// lyrics, which lie below it, only ask.
namespace torv {

/// 0 Japanese, 1 English. Null when it is not loaded, and for any other language.
TORV_API HMODULE ConverterModule(int language);

/// Any other language is passed over.
TORV_API void SetConverterModule(int language, HMODULE module);

/// How the converters are loaded and freed: the application object's, which stands above those who open databases.
struct ConverterLoader {
    int (*load)();
    void (*free)();
};
TORV_API void SetConverterLoader(const ConverterLoader& loader);

/// 1 when both converters are there; 0 when not, and without an application object.
TORV_API int LoadConverters();
TORV_API void FreeConverters();

} // namespace torv
