#include "english_converter.h"

namespace g2pa {

#if defined(G2PA_ENG_LIBRARY_DICTIONARY)
std::unique_ptr<Converter> MakeConverter() {
    return std::make_unique<g2pa_eng::EnglishConverter>(g2pa_eng::LibraryDictionary());
}
const char* const versionText = "G2PA_ENG 1.0";
#else
std::unique_ptr<Converter> MakeConverter() {
    return std::make_unique<g2pa_eng::EnglishConverter>(g2pa_eng::RuleDictionary());
}
const char* const versionText = "G2PA_ENG 1.0 (rules)";
#endif
const bool slotsEndWithBlank = false;

} // namespace g2pa
