#include "torv/lyrics/converter_modules.h"

namespace torv {
namespace {

constexpr int kLanguages = 2;
HMODULE g_modules[kLanguages];

bool IsLanguage(int language) { return language >= 0 && language < kLanguages; }

} // namespace

HMODULE ConverterModule(int language) { return IsLanguage(language) ? g_modules[language] : nullptr; }

void SetConverterModule(int language, HMODULE module) {
    if (IsLanguage(language))
        g_modules[language] = module;
}

} // namespace torv
