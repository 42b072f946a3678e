#pragma once

#include "torv/icons/icon_object.h"

#include <memory>

namespace torv {

/// A new icon of the status's class; null for a status that has none, and when memory is refused.
TORV_API std::unique_ptr<CIconObject> MakeIcon(int status, int articulation, int variation);

/// Whether the icons are of one class, whatever their statuses say.
TORV_API bool IsSameClass(const CIconObject& a, const CIconObject& b);

/// A copy of the same class; null for null, and when memory is refused.
TORV_API std::unique_ptr<CIconObject> CopyIcon(const CIconObject* icon);

} // namespace torv
