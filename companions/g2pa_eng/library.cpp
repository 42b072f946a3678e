#include "english_converter.h"

namespace g2pa {

namespace {

#if defined(G2PA_ENG_LIBRARY_DICTIONARY)
const g2pa_eng::Dictionary& TheDictionary() { return g2pa_eng::LibraryDictionary(); }
#else
const g2pa_eng::Dictionary& TheDictionary() { return g2pa_eng::RuleDictionary(); }
#endif

} // namespace

std::unique_ptr<Converter> MakeConverter() { return std::make_unique<g2pa_eng::EnglishConverter>(TheDictionary()); }

int FindWord(std::string_view text) { return g2pa_eng::FindWords(TheDictionary(), text); }

#if defined(G2PA_ENG_LIBRARY_DICTIONARY)
const char* const versionText = "G2PA_ENG 1.0";
#else
const char* const versionText = "G2PA_ENG 1.0 (rules)";
#endif
const bool slotsEndWithBlank = false;

} // namespace g2pa
