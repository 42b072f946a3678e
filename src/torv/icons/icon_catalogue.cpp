#include "torv/icons/icon_catalogue.h"

#include <utility>

namespace torv {

namespace {

VoiceCatalogue* g_voices = nullptr;
IconCatalogue* g_icons = nullptr;

template <class Catalogue>
void Remove(Catalogue*& last, Catalogue& catalogue) {
    Catalogue** at = &last;
    while (*at && *at != &catalogue)
        at = &(*at)->openedBefore;
    if (*at)
        *at = std::exchange(catalogue.openedBefore, nullptr);
}

template <class Catalogue>
void Add(Catalogue*& last, Catalogue& catalogue) {
    Remove(last, catalogue);
    catalogue.openedBefore = std::exchange(last, &catalogue);
}

} // namespace

void AddCatalogue(VoiceCatalogue& catalogue) { Add(g_voices, catalogue); }
void AddCatalogue(IconCatalogue& catalogue) { Add(g_icons, catalogue); }
void RemoveCatalogue(VoiceCatalogue& catalogue) { Remove(g_voices, catalogue); }
void RemoveCatalogue(IconCatalogue& catalogue) { Remove(g_icons, catalogue); }
const VoiceCatalogue* GetVoiceCatalogue() { return g_voices; }
const IconCatalogue* GetIconCatalogue() { return g_icons; }

int IconIndexOf(const CIconObject& icon) { return g_icons ? g_icons->IndexOf(icon) : 0; }

} // namespace torv
