#pragma once

#include "torv/songs/musicxml_measures.h"

namespace torv::songs::musicxml {

/// Puts the second note of each pair where the swing that holds then has it, in all parts, whichever of them says so. A
/// pair with other notes in it, as a triplet, is sung by that voice as it is written.
void PlaySwing(std::vector<WrittenPart>& parts);

} // namespace torv::songs::musicxml
