#pragma once

#include "torv/icons/icon_object.h"

namespace torv {

/// Makes an icon such as a section of a file gives it back: texts of at most 4096 bytes, lengths, numbers and curves in
/// the ranges that reading brings them into, and points at places that are read as they were written, at most a few
/// ten-thousandths before where they were. Throws std::bad_alloc. Without it a curve would creep from one session to
/// the next.
void MakeStorable(CIconObject& icon);

} // namespace torv
