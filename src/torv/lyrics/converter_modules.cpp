#include "torv/lyrics/converter_modules.h"

#include "torv/platform/language.h"

#include <cstdio>
#include <new>

namespace torv {
namespace {

struct Converter {
    const char* name;
    HMODULE module = nullptr;
    bool isOwn = false; ///< loaded here, and so to be freed here
};
Converter g_converters[kLanguages] = {{"G2PA_JPN.DLL"}, {"G2PA_ENG.DLL"}};

bool Load(Converter& converter) {
    if (converter.module)
        return true;
    converter.module = LoadLibraryA(converter.name);
    converter.isOwn = converter.module != nullptr;
    if (converter.isOwn)
        return true;
    char text[64];
    std::snprintf(text, sizeof text, "Could not load \"%s\" !", converter.name);
    AfxMessageBox(text, MB_ICONEXCLAMATION | MB_OK);
    return false;
}

void Forget(Converter& converter) {
    if (converter.isOwn)
        FreeLibrary(converter.module);
    converter.module = nullptr;
    converter.isOwn = false;
}

} // namespace

int LoadConverters() {
    try {
        return Load(g_converters[kJapanese]) && Load(g_converters[kEnglish]);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

void FreeConverters() {
    for (Converter& converter : g_converters)
        Forget(converter);
}

HMODULE ConverterModule(int language) { return IsLanguage(language) ? g_converters[language].module : nullptr; }

void SetConverterModule(int language, HMODULE module) {
    if (!IsLanguage(language))
        return;
    Forget(g_converters[language]);
    g_converters[language].module = module;
}

} // namespace torv
