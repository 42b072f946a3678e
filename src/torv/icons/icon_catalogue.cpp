#include "torv/icons/icon_catalogue.h"

namespace torv {

namespace {

const VoiceCatalogue* g_voices = nullptr;
const IconCatalogue* g_icons = nullptr;

} // namespace

void SetVoiceCatalogue(const VoiceCatalogue* catalogue) { g_voices = catalogue; }
const VoiceCatalogue* GetVoiceCatalogue() { return g_voices; }
void SetIconCatalogue(const IconCatalogue* catalogue) { g_icons = catalogue; }
const IconCatalogue* GetIconCatalogue() { return g_icons; }

int IconIndexOf(const CIconObject& icon) { return g_icons ? g_icons->IndexOf(icon) : 0; }

} // namespace torv
