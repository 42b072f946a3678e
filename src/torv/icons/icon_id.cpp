#include "torv/icons/icon_id.h"

namespace torv {

const char* IconStatusName(int status) {
    constexpr const char* kNames[] = {"", "Attack", "Release", "Transit", "Vibrato", "Dynamics", "", "Singer"};
    return status >= 0 && status <= kStatusSinger ? kNames[status] : "";
}

const char* IconArticulationName(int status, int articulation) {
    constexpr const char* kNoteNames[] = {"NoteAttack", "NoteTransition", "NoteRelease", "Vibrato"};
    constexpr const char* kDynamicsNames[] = {"Dynaff", "Crescendo", "Decrescendo"};
    if (status >= kStatusAttack && status <= kStatusVibrato && articulation >= 1 && articulation <= 4)
        return kNoteNames[articulation - 1];
    if (status == kStatusDynamics && articulation >= kDynaff && articulation <= kDecrescendo)
        return kDynamicsNames[articulation - 1];
    return "";
}

} // namespace torv
