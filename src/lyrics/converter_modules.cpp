#include "torv/lyrics/converter_modules.h"

namespace torv {
namespace {

constexpr int kLanguages = 2;
HMODULE g_modules[kLanguages];
ConverterLoader g_loader{};

bool IsLanguage(int language) { return language >= 0 && language < kLanguages; }

} // namespace

HMODULE ConverterModule(int language) { return IsLanguage(language) ? g_modules[language] : nullptr; }

void SetConverterModule(int language, HMODULE module) {
    if (IsLanguage(language))
        g_modules[language] = module;
}

void SetConverterLoader(const ConverterLoader& loader) { g_loader = loader; }

int LoadConverters() { return g_loader.load ? g_loader.load() : 0; }

void FreeConverters() {
    if (g_loader.free)
        g_loader.free();
}

} // namespace torv
