#pragma once

#include "casting.h"

namespace torv::c {

/// Gives the notes of a score's part the icons that the host has chosen for single notes. Throws Failure.
void AddOwnIcons(const songs::Score& score, const songs::ScorePart& part, const songs::PartPlan& plan,
                 const songs::Part& songPart, const PartPlanning& planning, const songs::Databases& databases);

/// Puts the host's curves into the part's track.
void AddCurves(const songs::Score& score, const songs::ScorePart& part, const PartPlanning& planning);

} // namespace torv::c
