#include "default_icons.h"

namespace {

constexpr DWORD kShortestWithVibrato = 600; // milliseconds
constexpr DWORD kVibratoDelay = 350;        // milliseconds
constexpr int kVibratoRate = 64;
constexpr int kVibratoDepth = 40;
constexpr int kShapeDuration = 48;
constexpr int kShapeDepth = 48;

} // namespace

CIconObject* MakeSinger(int language, int program) {
    tagSingerIconObject record{};
    record.header.iconId = torv::MakeSingerIconID(language, program);
    record.languageCode = static_cast<WORD>(language);
    record.programCode = static_cast<WORD>(program);
    auto* const icon = new CIconSinger;
    icon->ConstructParameter(&record);
    return icon;
}

CIconObject* MakeAttack() {
    auto* const icon = new CIconNoteAttack(torv::kStatusAttack, 1, 1);
    icon->SetDuration(kShapeDuration);
    icon->SetDepth(kShapeDepth);
    return icon;
}

CIconObject* MakeRelease() {
    auto* const icon = new CIconNoteTransit(torv::kStatusTransit, 3, 1);
    icon->SetDuration(kShapeDuration);
    return icon;
}

CIconObject* MakeVibrato(DWORD ticks, DWORD milliseconds, DWORD& offset) {
    if (milliseconds < kShortestWithVibrato)
        return nullptr;
    offset = static_cast<DWORD>(static_cast<uint64_t>(ticks) * kVibratoDelay / milliseconds);
    auto* const icon = new CIconVibrato(torv::kStatusVibrato, 4, 1);
    icon->SetLength(ticks - offset);
    icon->SetStartDepth(0);
    icon->SetStartRate(kVibratoRate);
    tagBreakPoint full{torv::kIconUnits / 3, kVibratoDepth, 0};
    icon->GetDepthBPList()->AddTail(full);
    return icon;
}
