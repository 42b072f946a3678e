#include "torv/icons/icon_factory.h"

#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_note_release.h"
#include "torv/icons/icon_note_transit.h"
#include "torv/icons/icon_singer.h"
#include "torv/icons/icon_vibrato.h"

#include <typeinfo>

namespace torv {
namespace {

template <class Icon>
bool TryCopy(const CIconObject* icon, std::unique_ptr<CIconObject>& copy) {
    const auto* const same = dynamic_cast<const Icon*>(icon);
    if (same)
        copy = std::make_unique<Icon>(*same);
    return same != nullptr;
}

} // namespace

std::unique_ptr<CIconObject> MakeIcon(int status, int articulation, int variation) {
    return OrZero([&]() -> std::unique_ptr<CIconObject> {
        switch (status) {
        case kStatusAttack:
            return std::make_unique<CIconNoteAttack>(status, articulation, variation);
        case kStatusRelease:
            return std::make_unique<CIconNoteRelease>(status, articulation, variation);
        case kStatusTransit:
            return std::make_unique<CIconNoteTransit>(status, articulation, variation);
        case kStatusVibrato:
            return std::make_unique<CIconVibrato>(status, articulation, variation);
        case kStatusDynamics:
            return std::make_unique<CIconDynamics>(status, articulation, variation);
        case kStatusSinger:
            return std::make_unique<CIconSinger>(status, articulation, variation);
        default:
            return nullptr;
        }
    });
}

bool IsSameClass(const CIconObject& a, const CIconObject& b) { return typeid(a) == typeid(b); }

std::unique_ptr<CIconObject> CopyIcon(const CIconObject* icon) {
    return OrZero([&]() -> std::unique_ptr<CIconObject> {
        std::unique_ptr<CIconObject> copy;
        // Whatever its numbers say: the class decides what there is to copy. A base stands after what derives from it.
        if (!icon || TryCopy<CIconNoteAttack>(icon, copy) || TryCopy<CIconNoteRelease>(icon, copy) ||
            TryCopy<CIconNoteTransit>(icon, copy) || TryCopy<CIconVibrato>(icon, copy) ||
            TryCopy<CIconDynamics>(icon, copy) || TryCopy<CIconSinger>(icon, copy) ||
            TryCopy<CIconExpression>(icon, copy))
            return copy;
        return std::make_unique<CIconObject>(*icon);
    });
}

} // namespace torv
