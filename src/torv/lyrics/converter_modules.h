#pragma once

#include "torv/platform/platform.h"

/// The phoneme converter libraries, other makers' work, loaded once for the process. No locks: they belong to the
/// thread that the data model belongs to.
namespace torv {

/// Loads the Japanese converter, then the English one, each unless it is loaded already. 1 when both are there. The
/// first that cannot be loaded is reported in a message box and ends it with 0; what was loaded stays. 0 without a
/// message where memory is refused.
int LoadConverters();
void FreeConverters();

/// Null when it is not loaded, and for a number that is no language.
HMODULE ConverterModule(int language);

/// Puts a library that its owner frees in a language's place; one that was loaded here is freed first. Null: none. Any
/// other language is passed over.
void SetConverterModule(int language, HMODULE module);

} // namespace torv
